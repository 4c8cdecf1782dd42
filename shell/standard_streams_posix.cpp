#include <cstdio>

#include "shell/standard_streams.h"

namespace shell {

void writeError(const std::string &text) {
    std::fwrite(text.data(), 1, text.size(), stderr);
}

void prepareStandardStreams() {}

}  // namespace shell
