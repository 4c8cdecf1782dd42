// The entry point on all systems except Windows.
#include "app/program.h"

int main(int argc, char **argv) {
    return runProgram(argc, argv);
}
