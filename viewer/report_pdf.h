// Makes a PDF of the report with A4 pages. It has the texts, tables and figures of the web page. The figures stay
// vector graphics.
#pragma once

#include <QByteArray>
#include <string>

// Converts a page that calibration::reportPage made. Returns an empty array if the page is not well-formed XML. This
// takes up to a second, so call it on a background thread.
QByteArray reportPdf(const std::string &page);
