// Extracts the pattern's description from a PDF that the camera library wrote. If another program wrote the PDF or has
// saved it again, the description may not be found.
#pragma once

#include <string>
#include <string_view>

namespace pattern_reader {

// Returns the attached JSON text. If there is none, or if it is damaged, throws std::runtime_error. what() gives the
// reason, as a clause without a full stop.
std::string attachedPattern(std::string_view pdf);

}  // namespace pattern_reader
