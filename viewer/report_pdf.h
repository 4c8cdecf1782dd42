// Converts the report's web page to a PDF with A4 pages. The PDF has the texts, tables and figures of the web page. The
// figures stay vector graphics.
#pragma once

#include <QByteArray>
#include <string>

// Converts a page that calibration::reportPage made. The conversion takes up to a second, so call it on a background
// thread. Returns an empty array if the page is not well-formed XML or has no <main>.
QByteArray reportPdf(const std::string &page);
