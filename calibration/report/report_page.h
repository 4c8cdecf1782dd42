// Writes a calibration as one HTML page for the user. The page begins with the verdict; the numbers and figures that
// support it follow. It needs no other file, no network and no script. Any browser can show it, in light or dark
// colours, and print it.
//
// The page is UTF-8 and well-formed XML. The same input gives the same page, byte for byte. Names may contain any
// bytes; bytes that are not UTF-8 are shown as U+FFFD. The size of the page is limited: if there are very many
// photographs, figures show a sample of them, and tables end with a row that says how many rows are left out. All
// functions may be called from several threads at the same time.
#pragma once

#include <string>
#include <vector>

#include "calibration/calibrate.h"

namespace calibration {

// A file that was left out of the observations. The reason is a sentence.
struct UnreadFile {
    std::string name;
    std::string reason;
};

struct ReportInput {
    std::string title = "Camera calibration";
    // The bytes of a small JPEG file for each photograph of the observations. An entry may be empty, and so may the
    // list. At most 300 thumbnails are shown. A thumbnail of more than 40,000 bytes is left out.
    std::vector<std::string> thumbnails;
    std::vector<UnreadFile> unread;
};

std::string reportPage(const Calibration &calibration, const ReportInput &input = {});

}  // namespace calibration
