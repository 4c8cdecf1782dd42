// Checks the result of a call into the camera library.
#pragma once

#include <cstdint>
#include <string>

// If the code is not 0, throws LmLibException with the path and the code, but without a command slot.
void checkResult(const std::string &itemPath, std::int32_t code);
