#include <io.h>

#include <cstdio>

#include "calibration/command_line/terminal.h"

bool isErrorTerminal() {
    return _isatty(_fileno(stderr)) != 0;
}
