// Benchmarks of the programs' start, exit and memory. LmCalTab is compared with two empty windows of the same toolkit:
// one with OpenGL (the toolkit's default), and one without it (as in LmCalTab). LmView is compared with an empty window
// that loads the same libraries. The programs run in turn, and each run ends after the first picture. This needs a
// POSIX system.
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "bench/measurement.h"

namespace {

// The runs of one program.
struct Runs {
    std::string program;
    bool withOpenGl = true;
    Times firstPicture = {};  // from the start of the process
    Times exit = {};
    std::vector<double> peakMegabytes = {};  // resident memory of each run
};

double milliseconds(const timeval &time) {
    return 1e3 * static_cast<double>(time.tv_sec) + 1e-3 * static_cast<double>(time.tv_usec);
}

void start(Runs &runs) {
    int ends[2];
    if (pipe(ends) != 0) {
        std::exit(2);
    }
    const double begin = now().elapsed;
    const pid_t child = fork();
    if (child == 0) {
        dup2(ends[1], STDOUT_FILENO);
        dup2(open("/dev/null", O_WRONLY), STDERR_FILENO);
        if (!runs.withOpenGl) {
            setenv("QT_XCB_GL_INTEGRATION", "none", 1);
        }
        execl(runs.program.c_str(), runs.program.c_str(), nullptr);
        _exit(127);
    }
    close(ends[1]);
    char text[64] = {};
    const auto length = read(ends[0], text, sizeof text - 1);
    close(ends[0]);
    int status = 0;
    rusage usage{};
    wait4(child, &status, 0, &usage);
    Time firstPicture;
    if (length <= 0 || status != 0 ||
        std::sscanf(text, "%lf %lf", &firstPicture.processor, &firstPicture.elapsed) != 2) {
        std::fprintf(stderr, "%s painted nothing\n", runs.program.c_str());
        std::exit(2);
    }
    runs.firstPicture.push_back(firstPicture - Time{0.0, begin});
    runs.exit.push_back({milliseconds(usage.ru_utime) + milliseconds(usage.ru_stime), now().elapsed - begin});
    runs.peakMegabytes.push_back(static_cast<double>(usage.ru_maxrss) / 1024.0);
}

void startInTurn(std::vector<Runs> &kinds, std::size_t rounds) {
    for (std::size_t i = 0; i < rounds * kinds.size(); ++i) {
        start(kinds[i % kinds.size()]);
    }
}

}  // namespace

int main(int /*argc*/, char **argv) {
    const std::string folder = std::string(argv[0]).substr(0, std::string(argv[0]).rfind('/') + 1);
    // With a new data folder, LmView finds no sessions that a crash has left.
    std::string home = "/tmp/start_bench-XXXXXX";
    if (mkdtemp(home.data()) == nullptr || setenv("XDG_DATA_HOME", home.c_str(), 1) != 0) {
        return 2;
    }
    std::vector<Runs> kinds{{folder + "start_probe"}, {folder + "empty_window"}, {folder + "empty_window", false}};
    startInTurn(kinds, 31);
#ifdef WITH_VIEWER
    std::vector<Runs> viewers{{folder + "viewer_start_probe"}, {folder + "empty_viewer_window"}};
    startInTurn(viewers, 15);
#endif
    rmdir(home.c_str());
    const Runs &program = kinds[0];
    const Runs &empty = kinds[1];
    const Runs &emptyWithoutOpenGl = kinds[2];
    Table table("Start and memory");
    table.row("start to the first picture", program.firstPicture, "ms", "an empty window", empty.firstPicture, 1.3);
    table.row("start to exit", program.exit, "ms", "an empty window", empty.exit, 1.3);
    table.row("elapsed time from start to exit", program.exit, "ms", 300.0);
    table.row("start to the first picture", program.firstPicture, "ms", "an empty window without OpenGL",
              emptyWithoutOpenGl.firstPicture, 0);
    // While the first picture of 2000 x 2000 pixels is made, four copies of it are in memory at the same time: the copy
    // in the library, the program's buffer and the image (4 MB each), and the pixmap with four bytes per pixel (16 MB).
    constexpr double picturesMegabytes = 2000.0 * 2000.0 * (1 + 1 + 1 + 4) / 1048576.0;
    table.figure("peak memory", median(program.peakMegabytes), "MiB", "an empty window and the pictures",
                 median(emptyWithoutOpenGl.peakMegabytes) + picturesMegabytes, 1.4);
#ifdef WITH_VIEWER
    table.row("LmView: start to the first picture", viewers[0].firstPicture, "ms",
              "an empty window with LmView's libraries", viewers[1].firstPicture, 1.5);
#endif
    return table.exitCode();
}
