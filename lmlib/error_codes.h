// The names of the camera library's result codes, as messages and debug lines use them.
#pragma once

#include <cstdint>

// Returns the name of a result code ("ItemInexistent" for 3); empty if the value is not a result code.
const char *errorName(std::int32_t code);
