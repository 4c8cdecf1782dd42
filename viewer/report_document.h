// The report's page in the words of Qt's rich text, which knows no style sheets with variables, no grids and no SVG.
#pragma once

#include <QByteArray>
#include <QImage>
#include <QString>
#include <vector>

struct ReportFigure {
    QString title;    // empty if it has none
    QByteArray svg;   // with its colours as attributes
    QString caption;  // empty if it has none
    bool isWide = false;
};

struct ReportDocument {
    QString title;
    // Refers to figures as images "figure:INDEX", and to pictures as "picture:INDEX".
    QString html;
    std::vector<ReportFigure> figures;
    std::vector<QImage> pictures;
};

// Empty html if the page is not well-formed XML.
ReportDocument reportDocument(const std::string &page);
