// The check that follows every call into the camera library.
#pragma once

#include <cstdint>
#include <string>

// Throws LmLibException with the path, the code and no command slot unless the code is 0.
void checkResult(const std::string &itemPath, std::int32_t code);
