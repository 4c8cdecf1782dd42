// A photograph that gives a calibration nothing.
#pragma once

#include <string>

namespace calibration {

struct UnusedPhotograph {
    std::string name;
    std::string reason;  // a whole sentence that does not name it
};

}  // namespace calibration
