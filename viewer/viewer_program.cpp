#include "viewer/viewer_program.h"

#include <QApplication>
#include <QDir>
#include <QIcon>
#include <QStandardPaths>
#include <cstdint>
#include <cstdio>
#include <opencv2/core/utility.hpp>

#include "camera_library/lmlib64.h"
#include "tooltips/tool_tip_helper.h"
#include "viewer/viewer_window.h"

namespace {

const char *const help =
    "Usage: LmView [OPTIONS] [FILE|FOLDER]...\n"
    "Calibrates cameras, rigs and assemblies from photographs of calibration patterns.\n"
    "Opens photographs, folders, pattern files (JSON, PDF), a session (.lmview) or a video.\n"
    "\n"
    "  --caltab-calibration  calibrate an assembly: patterns that are fixed to each other\n"
    "  --help                print this help\n"
    "  --version             print the version\n";

struct Arguments {
    bool isAssembly = false;
    QStringList files;
    int exitCode = -1;  // if it is 0 or greater, the program ends at once with this code
};

// Prints the text on standard output. Returns the exit code: 1 if the text could not be written, for example to a full
// disk.
int print(const char *text) {
    if (std::fputs(text, stdout) >= 0 && std::fflush(stdout) == 0) {
        return 0;
    }
    std::fputs("LmView: Standard output cannot be written.\n", stderr);
    return 1;
}

Arguments parse(const QStringList &given) {
    Arguments arguments;
    bool isOptionsEnd = false;
    for (const QString &argument : given) {
        if (isOptionsEnd || !argument.startsWith("-")) {
            arguments.files << argument;
        } else if (argument == "--") {
            isOptionsEnd = true;
        } else if (argument == "--caltab-calibration") {
            arguments.isAssembly = true;
        } else if (argument == "--help") {
            arguments.exitCode = print(help);
        } else if (argument == "--version") {
            arguments.exitCode = print("LmView " LMCALTAB_VERSION "\n");
        } else {
            std::fprintf(stderr, "LmView: unknown option %s\n%s", qPrintable(argument), help);
            arguments.exitCode = 2;
        }
        if (arguments.exitCode >= 0) {
            break;
        }
    }
    return arguments;
}

}  // namespace

int runViewer(int argc, char **argv) {
    // The arguments are parsed before the application is made, because --help and --version need no display. But
    // -platform, -style and -display are options of the toolkit. If one of them is given, the arguments are parsed
    // after the application has removed this option and its value.
    QStringList given;
    for (int i = 1; i < argc; ++i) {
        given << QString::fromLocal8Bit(argv[i]);
    }
    const bool isForToolkit = given.contains("-platform") || given.contains("-style") || given.contains("-display");
    Arguments arguments = isForToolkit ? Arguments() : parse(given);
    if (arguments.exitCode >= 0) {
        return arguments.exitCode;
    }
    QApplication application(argc, argv);
    QCoreApplication::setApplicationName("LmView");
    QCoreApplication::setApplicationVersion(LMCALTAB_VERSION);
    Q_INIT_RESOURCE(vistrel);
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/vistrel/vistrel.png")));
    if (isForToolkit) {
        arguments = parse(QCoreApplication::arguments().mid(1));
        if (arguments.exitCode >= 0) {
            return arguments.exitCode;
        }
    }
    cv::setNumThreads(1);  // the session already reads photographs on several threads, so OpenCV's would not help
    int exitCode = 0;
    {
        ViewerWindow window(
            QDir(QStandardPaths::writableLocation(QStandardPaths::AppLocalDataLocation)).filePath("running-sessions"));
        VistrelToolTipHelper toolTipHelper;
        application.installEventFilter(&toolTipHelper);
        if (arguments.isAssembly) {
            window.setArrangement(Arrangement::Assembly);
        }
        window.open(arguments.files);
        window.show();
        exitCode = QApplication::exec();
    }
    std::int32_t ignored = 0;
    lmLibFinalize(&ignored);
    return exitCode;
}
