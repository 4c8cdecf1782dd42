// Checks the result of a call into the camera library.
#pragma once

#include <cstdint>
#include <string>

// Throws LmLibException with the path and the code, but without a command slot, if the code is not 0.
void checkResult(const std::string &itemPath, std::int32_t code);
