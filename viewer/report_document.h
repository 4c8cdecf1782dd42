// Converts the report's web page to Qt's rich text, which has no variables in style sheets, no grids and no SVG.
#pragma once

#include <QByteArray>
#include <QImage>
#include <QString>
#include <vector>

struct ReportFigure {
    QString title;        // empty if it has none
    QByteArray svg;       // with colours in attributes, because Qt does not apply the page's style sheet to it
    QString caption;      // empty if it has none
    bool isWide = false;  // as wide as the page; otherwise two figures stand side by side
};

struct ReportDocument {
    QString title;
    // An image with the source "figure:INDEX" stands for figures[INDEX], and one with the source "picture:INDEX" for
    // pictures[INDEX].
    QString html;
    std::vector<ReportFigure> figures;
    std::vector<QImage> pictures;
};

// Returns a document with an empty `html` if the page is not well-formed XML or has no <main>.
ReportDocument reportDocument(const std::string &page);
