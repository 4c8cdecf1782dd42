// A photograph that a calibration cannot use.
#pragma once

#include <string>

namespace calibration {

struct UnusedPhotograph {
    std::string name;
    std::string reason;  // a whole sentence, without the photograph's name
};

}  // namespace calibration
