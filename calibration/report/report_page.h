// Writes a calibration as one HTML page for its user: the verdict first, then what it rests on, in numbers and figures.
// The page needs no other file, no network and no script. It opens in any browser, in light and dark, and prints well.
//
// The page is UTF-8 and also well-formed XML. The same input gives the same page, byte for byte. Names may hold any
// bytes; what is not UTF-8 is shown as U+FFFD. The page's size is bounded, however many photographs there are: figures
// then show a sample, and tables end with a row that says how many are left out.
// Every function may be called from any thread at the same time.
#pragma once

#include <string>
#include <vector>

#include "calibration/calibrate.h"

namespace calibration {

// A file that never became a photograph of the observations, with the reason as a sentence.
struct UnreadFile {
    std::string name;
    std::string reason;
};

struct ReportInput {
    std::string title = "Camera calibration";
    // A small JPEG file of each photograph, as bytes; an entry may be empty, and the list too. At most 300 of at most
    // 40,000 bytes are shown.
    std::vector<std::string> thumbnails;
    std::vector<UnreadFile> unread;
};

std::string reportPage(const Calibration &calibration, const ReportInput &input = {});

}  // namespace calibration
