// The entry point everywhere but on Windows.
#include "app/program.h"

int main(int argc, char **argv) {
    return runProgram(argc, argv);
}
