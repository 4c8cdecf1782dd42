// The report as a PDF: the same texts, tables and figures as the web page, set for A4. Figures stay vectors.
#pragma once

#include <QByteArray>
#include <string>

// page: as calibration::reportPage returns it. Returns an empty array if it is not such a page. Takes up to a second;
// for a background thread.
QByteArray reportPdf(const std::string &page);
