// Converts the report's web page to Qt's rich text, which has no variables in style sheets, no grids and no SVG.
#pragma once

#include <QByteArray>
#include <QImage>
#include <QString>
#include <vector>

struct ReportFigure {
    QString title;    // empty if it has none
    QByteArray svg;   // its colours are attributes instead of classes
    QString caption;  // empty if it has none
    bool isWide = false;
};

struct ReportDocument {
    QString title;
    // An image with the source "figure:INDEX" stands for a figure, and an image with the source "picture:INDEX" stands
    // for a picture.
    QString html;
    std::vector<ReportFigure> figures;
    std::vector<QImage> pictures;
};

// Returns a document with an empty `html` if the page is not well-formed XML.
ReportDocument reportDocument(const std::string &page);
