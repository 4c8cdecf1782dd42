// Benchmarks of LmView with many photographs. They measure the time from dropping the photographs onto the window to
// the result, and compare it with the time that decoding the photographs takes. They also measure the memory, the
// longest time during which the window does not answer, and the time to calibrate anew. They take minutes, so
// run_all.sh does not run them. They need a POSIX system.
//
//   viewer_bench FOLDER [ROUNDS]
//
// The photographs in FOLDER must be made by BUILD/tools/render_example FOLDER 100.
//
// Each measurement runs in its own process, and the processes take turns.
#include <sys/resource.h>

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QListView>
#include <QProcess>
#include <QProgressBar>
#include <QScrollBar>
#include <QTemporaryDir>
#include <QTextBrowser>
#include <QTimer>
#include <atomic>
#include <map>
#include <opencv2/imgcodecs.hpp>
#include <thread>

#include "bench/measurement.h"
#include "bench/viewer/file_drop.h"
#include "viewer/settings_panel.h"
#include "viewer/viewer_window.h"

namespace {

constexpr int recalibratedPhotographs = 50;
constexpr int manyPhotographs = 1000;
constexpr int fewPhotographs = 100;

double megabytesNow() {
    QFile file("/proc/self/statm");
    return file.open(QIODevice::ReadOnly) ? file.readAll().split(' ').value(1).toDouble() * 4 / 1024 : 0;
}

double peakMegabytes() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return double(usage.ru_maxrss) / 1024;
}

double threadMilliseconds() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return 1e3 * double(time.tv_sec) + 1e-6 * double(time.tv_nsec);
}

// Finds the event during which the window did not answer for the longest time. Events are compared by their processor
// time, because elapsed times on a busy machine depend more on the other programs.
class WatchedApplication : public QApplication {
public:
    using QApplication::QApplication;

    bool notify(QObject *receiver, QEvent *event) override {
        if (depth > 0) {
            return QApplication::notify(receiver, event);
        }
        const QByteArray name =
            QByteArray(receiver->metaObject()->className()) + " " + QByteArray::number(int(event->type()));
        const double begin = threadMilliseconds();
        QElapsedTimer clock;
        clock.start();
        ++depth;
        isCounted = true;
        const bool isDone = QApplication::notify(receiver, event);
        --depth;
        const double processor = threadMilliseconds() - begin;
        if (isCounted && processor > longest) {
            longest = processor;
            longestElapsed = double(clock.nsecsElapsed()) * 1e-6;
            longestEvent = name;
        }
        return isDone;
    }

    // Does not count the event that is being handled, because the measurement itself caused it.
    void leaveOut() { isCounted = false; }

    void beginAgain() { longest = longestElapsed = 0; }

    double longest = 0;         // ms; the greatest processor time of one event
    double longestElapsed = 0;  // ms; the elapsed time of that event
    QByteArray longestEvent;    // class of that event's receiver, and type of that event

private:
    int depth = 0;
    bool isCounted = true;
};

QStringList photographsIn(const QString &folder, int count) {
    QStringList files;
    for (const QFileInfo &file : QDir(folder).entryInfoList({"*.jpg"}, QDir::Files).mid(0, count)) {
        files << file.absoluteFilePath();
    }
    return files;
}

using Figures = std::map<QString, double>;

void print(const Figures &figures) {
    for (const auto &[name, value] : figures) {
        std::printf("%s %.6g\n", qPrintable(name), value);
    }
}

// Decodes the files on all processors.
void decode(const QStringList &files, int flags) {
    const Time begin = now();
    std::atomic<int> next{0};
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < std::thread::hardware_concurrency(); ++i) {
        threads.emplace_back([&] {
            for (int file = next++; file < files.size(); file = next++) {
                if (cv::imread(files[file].toStdString(), flags).empty()) {
                    std::exit(2);
                }
            }
        });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    const Time time = now() - begin;
    print({{"processor", time.processor}, {"elapsed", time.elapsed}});
}

// A window of LmView that is set to Arrangement::Assembly, as it is if LmView is opened with the button in LmCalTab.
class MeasuredWindow {
public:
    explicit MeasuredWindow(const QString &recoveryFolder = {}) : window(recoveryFolder) {
        window.setArrangement(Arrangement::Assembly);
        window.show();
        QApplication::processEvents();
    }

    // Waits until a new result is shown, and returns the time since `begin`. If `isOfAll` is true, waits for the last
    // result, after which no work is left.
    Time waitForResult(const Time &begin, bool isOfAll) {
        const auto *text = window.findChild<QTextBrowser *>();
        const auto *progress = window.findChild<QProgressBar *>();
        QEventLoop loop;
        Time time;
        QObject::connect(text, &QTextBrowser::textChanged, &loop, [&] {
            if (text->toPlainText().contains("fx")) {
                time = now() - begin;
                QTimer::singleShot(0, &loop, [&] {
                    if (!isOfAll || progress->isHidden()) {
                        loop.quit();
                    }
                });
            }
        });
        loop.exec();
        return time;
    }

    ViewerWindow window;
};

void dropPhotographs(WatchedApplication &application, const QStringList &files) {
    MeasuredWindow measured;
    application.beginAgain();
    const Time begin = now();
    drop(measured.window, files);
    const Time first = measured.waitForResult(begin, false);
    const Time all = measured.waitForResult(begin, true);
    std::fprintf(stderr, "longest event: %s, %.1f ms of processor time, %.1f ms elapsed\n",
                 application.longestEvent.constData(), application.longest, application.longestElapsed);
    print({{"first processor", first.processor},
           {"first elapsed", first.elapsed},
           {"all processor", all.processor},
           {"all elapsed", all.elapsed},
           {"longest event", application.longest},
           {"peak", peakMegabytes()}});
}

void recalibrate(WatchedApplication &application, const QStringList &files) {
    MeasuredWindow measured;
    drop(measured.window, files);
    measured.waitForResult(now(), true);
    auto *model = measured.window.findChild<QListView *>("photographs")->model();
    std::vector<double> processor;
    std::vector<double> elapsed;
    application.beginAgain();
    for (int row = 0; row < 10; ++row) {
        const Time begin = now();
        model->setData(model->index(row, 0), Qt::Unchecked, Qt::CheckStateRole);
        const Time time = measured.waitForResult(begin, true);
        processor.push_back(time.processor);
        elapsed.push_back(time.elapsed);
    }
    print({{"processor", median(processor)}, {"elapsed", median(elapsed)}, {"longest event", application.longest}});
}

// Scrolls through the list and returns the processor time of the longest step, in milliseconds.
double longestScrollStep(QListView &list) {
    double longest = 0;
    QScrollBar *bar = list.verticalScrollBar();
    const int step = qMax(1, bar->pageStep() / 3);
    for (int value = 0; value < bar->maximum(); value += step) {
        const double begin = threadMilliseconds();
        bar->setValue(value);
        list.viewport()->repaint();
        longest = std::max(longest, threadMilliseconds() - begin);
    }
    return longest;
}

void readMany(WatchedApplication &application, const QStringList &files) {
    // Each of the few pictures gets many file names, because the list never has a file twice. All these files are read
    // and shown. The calibration uses each picture once, so the memory of a calibration with many pictures is not
    // measured.
    const QTemporaryDir folder;
    QStringList names;
    for (int i = 0; i < manyPhotographs; ++i) {
        names << folder.filePath(QString("photograph-%1.jpg").arg(i + 1, 4, 10, QChar('0')));
        QFile::link(files[i % files.size()], names.back());
    }
    const QTemporaryDir copies;
    MeasuredWindow measured(copies.path());
    // The settings give the lens model and rule out bent prints, so the calibration has no models to choose.
    // Choosing models from so few pictures would not be realistic for a session with this many photographs.
    SessionSettings settings;
    settings.arrangement = Arrangement::Assembly;
    settings.lens = calibration::LensModel::Pinhole5;
    settings.mayBend = false;
    emit measured.window.findChild<SettingsPanel *>()->edited(settings);
    drop(measured.window, names.mid(0, fewPhotographs));
    measured.waitForResult(now(), true);
    const double few = megabytesNow();
    application.beginAgain();
    drop(measured.window, names.mid(fewPhotographs));
    auto *list = measured.window.findChild<QListView *>("photographs");
    double whileReading = 0;
    QTimer scrolling;
    QObject::connect(&scrolling, &QTimer::timeout, list, [&] {
        application.leaveOut();
        whileReading = std::max(whileReading, longestScrollStep(*list));
    });
    scrolling.start(1000);
    measured.waitForResult(now(), true);
    scrolling.stop();
    const double many = megabytesNow();
    const double whileKept = application.longest;
    std::fprintf(stderr, "longest event: %s, %.1f ms of processor time, %.1f ms elapsed\n",
                 application.longestEvent.constData(), application.longest, application.longestElapsed);
    print({{"megabytes", (many - few) / (manyPhotographs - fewPhotographs)},
           {"longest event", whileKept},
           {"peak", peakMegabytes()},
           {"longest scroll", std::max(whileReading, longestScrollStep(*list))}});
}

Figures measureInProcess(const QStringList &arguments) {
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(QCoreApplication::applicationFilePath(), arguments);
    process.waitForFinished(-1);
    if (process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0) {
        std::fprintf(stderr, "failed: %s\n", qPrintable(arguments.join(' ')));
        std::exit(2);
    }
    Figures figures;
    for (const QByteArray &line : process.readAllStandardOutput().split('\n')) {
        const int space = line.lastIndexOf(' ');
        if (space > 0) {
            figures[line.left(space)] = line.mid(space + 1).toDouble();
        }
    }
    return figures;
}

int measureAll(const QString &folder, int rounds) {
    Times colour;
    Times grey;
    Times first;
    Times all;
    double peak = 0;
    double longest = 0;
    for (int round = 0; round < rounds; ++round) {
        const auto timeIn = [](Figures figures, const QString &prefix) {
            return Time{figures[prefix + "processor"], figures[prefix + "elapsed"]};
        };
        colour.push_back(timeIn(measureInProcess({"colour", folder}), ""));
        const Figures dropped = measureInProcess({"drop", folder});
        first.push_back(timeIn(dropped, "first "));
        all.push_back(timeIn(dropped, "all "));
        grey.push_back(timeIn(measureInProcess({"grey", folder}), ""));
        peak = std::max(peak, dropped.at("peak"));
        longest = std::max(longest, dropped.at("longest event"));
    }
    Table table("LmView with many photographs");
    table.row("100 photographs of 12 megapixels, from the drop to the first result", first, "ms",
              "decoding them in colour", colour, 1.6);
    table.row("from the drop to the first result", first, "ms", "decoding them in grey", grey, 0);
    table.row("from the drop to the result of all 100", all, "ms", "decoding them in colour", colour, 0);
    table.figure("peak memory", peak, "MiB", "limit", 600, 1.0);
    table.figure("longest event of the window while 100 photographs are read and calibrated", longest, "ms", "limit",
                 100, 1.0);
    Figures again = measureInProcess({"recalibrate", folder});
    table.figure("calibrating anew when one more of 50 photographs is left out", again["processor"], "ms", "limit", 500,
                 1.0);
    table.figure("elapsed time of calibrating anew", again["elapsed"], "ms", "limit", 500, 1.0);
    table.figure("longest event of the window while up to 49 of 50 photographs are calibrated anew",
                 again["longest event"], "ms", "limit", 100, 1.0);
    Figures many = measureInProcess({"many", folder});
    table.figure(
        "longest event of the window while photographs 101 to 1,000 are read and a recovery copy of the session is "
        "saved",
        many["longest event"], "ms", "limit", 100, 1.0);
    table.figure("memory for each of 1,000 photographs", many["megabytes"], "MiB", "limit", 0.3, 1.0);
    table.figure("longest step of scrolling through 1,000 photographs", many["longest scroll"], "ms", "limit", 16, 1.0);
    return table.exitCode();
}

}  // namespace

int main(int argc, char **argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    cv::setNumThreads(1);  // as in the program
    WatchedApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments().mid(1);
    const QString kind = arguments.value(0);
    const QString folder = arguments.value(1);
    if (kind == "colour") {
        decode(photographsIn(folder, fewPhotographs), cv::IMREAD_COLOR | cv::IMREAD_IGNORE_ORIENTATION);
    } else if (kind == "grey") {
        decode(photographsIn(folder, fewPhotographs), cv::IMREAD_GRAYSCALE | cv::IMREAD_IGNORE_ORIENTATION);
    } else if (kind == "drop") {
        dropPhotographs(application, photographsIn(folder, fewPhotographs));
    } else if (kind == "recalibrate") {
        recalibrate(application, photographsIn(folder, recalibratedPhotographs));
    } else if (kind == "many") {
        readMany(application, photographsIn(QStringLiteral(VIEWER_EXAMPLE), fewPhotographs));
    } else if (QFileInfo(kind).isDir()) {
        return measureAll(kind, qMax(1, arguments.value(1, "3").toInt()));
    } else {
        std::fputs("Usage: viewer_bench FOLDER [ROUNDS]\n", stderr);
        return 2;
    }
    return 0;
}
