#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <cstdio>
#include <cstdlib>
#include <initializer_list>
#include <iostream>

#include "shell/standard_streams.h"

namespace shell {

namespace {

UINT terminalEncoding = 0;

}  // namespace

void writeError(const std::string &text) {
    std::fwrite(text.data(), 1, text.size(), stderr);
    std::fflush(stderr);
}

void prepareStandardStreams() {
    std::cerr.setstate(std::ios_base::failbit);
    // In text mode, a line feed would become two characters, and an input would end at the first byte with the value
    // 26.
    for (std::FILE *stream : {stdin, stdout, stderr}) {
        _setmode(_fileno(stream), _O_BINARY);
    }
    terminalEncoding = GetConsoleOutputCP();
    if (terminalEncoding != 0) {
        SetConsoleOutputCP(GetACP());
        // The terminal belongs to the shell that started the program. The shell expects its own encoding afterwards.
        std::atexit([] { SetConsoleOutputCP(terminalEncoding); });
    }
}

}  // namespace shell
