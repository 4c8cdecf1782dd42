// Start, exit and memory of the program, compared with an empty window of the same toolkit: as such a window comes,
// and without the OpenGL that the program does without. All run as processes of their own and end themselves after
// the first picture. For POSIX systems.
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

#include "bench/measurement.h"

namespace {

struct Run {
    double firstPicture = 0.0;  // milliseconds from the start of the process
    double exit = 0.0;
    double peakMegabytes = 0.0;  // resident
};

Run start(const std::string &program) {
    int ends[2];
    if (pipe(ends) != 0) {
        std::exit(2);
    }
    const double begin = milliseconds();
    const pid_t child = fork();
    if (child == 0) {
        dup2(ends[1], STDOUT_FILENO);
        dup2(open("/dev/null", O_WRONLY), STDERR_FILENO);
        execl(program.c_str(), program.c_str(), nullptr);
        _exit(127);
    }
    close(ends[1]);
    char text[64] = {};
    const auto length = read(ends[0], text, sizeof text - 1);
    close(ends[0]);
    int status = 0;
    rusage usage{};
    wait4(child, &status, 0, &usage);
    if (length <= 0 || status != 0) {
        std::fprintf(stderr, "%s painted nothing\n", program.c_str());
        std::exit(2);
    }
    return {std::atof(text) - begin, milliseconds() - begin, static_cast<double>(usage.ru_maxrss) / 1024.0};
}

Run medianRun(const std::string &program) {
    std::vector<double> firstPicture;
    std::vector<double> exit;
    std::vector<double> peak;
    for (int i = 0; i < 15; ++i) {
        const Run run = start(program);
        firstPicture.push_back(run.firstPicture);
        exit.push_back(run.exit);
        peak.push_back(run.peakMegabytes);
    }
    return {median(firstPicture), median(exit), median(peak)};
}

}  // namespace

int main(int /*argc*/, char **argv) {
    const std::string folder = std::string(argv[0]).substr(0, std::string(argv[0]).rfind('/') + 1);
    const Run program = medianRun(folder + "start_probe");
    const Run empty = medianRun(folder + "empty_window");
    setenv("QT_XCB_GL_INTEGRATION", "none", 1);
    const Run emptyWithoutOpenGl = medianRun(folder + "empty_window");
    Table table("Start and memory");
    table.row("start to the first picture", program.firstPicture, "ms", "an empty window", empty.firstPicture, 1.3);
    table.row("start to exit", program.exit, "ms", "an empty window", empty.exit, 1.3);
    table.row("start to the first picture", program.firstPicture, "ms", "an empty window without OpenGL",
              emptyWithoutOpenGl.firstPicture, 0);
    // The pictures of 2000 x 2000 that stand side by side while the first one is made: the library's (4 MB), the
    // buffer it is copied to and the image (4 MB each), and the pixmap, which has four bytes per pixel (16 MB).
    constexpr double picturesMegabytes = 2000.0 * 2000.0 * (1 + 1 + 1 + 4) / 1048576.0;
    table.row("peak memory", program.peakMegabytes, "MiB", "an empty window and the pictures",
              emptyWithoutOpenGl.peakMegabytes + picturesMegabytes, 1.4);
    return table.exitCode();
}
