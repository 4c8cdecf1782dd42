// The check that follows every single call into the camera library.
#pragma once

#include <cstdint>
#include <string>

// Does nothing for code 0; throws LmLibException with the path, the code and no command slot for any other.
void checkResult(const std::string &itemPath, std::int32_t code);
