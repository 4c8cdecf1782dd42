// Takes the pattern's description out of a PDF that the camera library wrote. It may not be found in other PDFs, or if
// another program has saved the PDF again.
#pragma once

#include <string>
#include <string_view>

namespace pattern_reader {

// The attached JSON text. Throws std::runtime_error with the reason, a clause without a full stop, if there is none.
std::string attachedPattern(std::string_view pdf);

}  // namespace pattern_reader
