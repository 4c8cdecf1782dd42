#include "viewer/viewer_program.h"

int main(int argc, char **argv) {
    return runViewer(argc, argv);
}
