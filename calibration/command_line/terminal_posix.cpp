#include <unistd.h>

#include "calibration/command_line/terminal.h"

bool isErrorTerminal() {
    return isatty(STDERR_FILENO) != 0;
}
