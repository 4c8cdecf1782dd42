#include "tests/end_to_end/driven_program.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QPixmap>
#include <QScreen>
#include <QTabBar>
#include <QTabWidget>
#include <QtTest>

#include "generator/main_window.h"
#include "tests/end_to_end/desktop.h"

namespace {

template <typename Condition>
bool waitUntil(int milliseconds, Condition condition) {
    QElapsedTimer timer;
    timer.start();
    do {
        if (condition()) {
            return true;
        }
        QTest::qWait(50);
    } while (timer.elapsed() < milliseconds);
    return false;
}

// Finds the places of the program's widgets. They are taken from a window in this process, which is laid out with the
// same size, style and fonts, but never shown.
QMap<QString, QRect> layOutWidgets() {
    MainWindow window;
    QMap<QString, QRect> places{{"MainWindow", window.rect()}};
    window.setAttribute(Qt::WA_DontShowOnScreen);
    window.show();
    const auto placeOf = [&window](const QWidget *widget) {
        return QRect(widget->mapTo(&window, QPoint(0, 0)), widget->size());
    };
    auto *pages = window.findChild<QTabWidget *>("patternType");
    for (int page = 0; page < pages->count(); ++page) {
        pages->setCurrentIndex(page);
        QCoreApplication::processEvents();
        const QRect tab = pages->tabBar()->tabRect(page);
        places[QString("tab/%1").arg(page)] = tab.translated(placeOf(pages->tabBar()).topLeft());
        for (const QWidget *widget : pages->currentWidget()->findChildren<QWidget *>()) {
            places[widget->objectName()] = placeOf(widget);
            if (widget->objectName() == "qt_spinbox_lineedit") {
                places[widget->parent()->objectName() + "/text"] = placeOf(widget);
            }
        }
    }
    for (const QWidget *widget : window.findChildren<QWidget *>()) {
        if (!places.contains(widget->objectName())) {
            places[widget->objectName()] = placeOf(widget);
        }
    }
    return places;
}

}  // namespace

void useDesktop(const Desktop &desktop) {
    qputenv("DISPLAY", desktop.display().toLocal8Bit());
    qputenv("QT_QPA_PLATFORM", "xcb");
    for (const char *setting : {"XDG_CURRENT_DESKTOP", "DESKTOP_SESSION", "KDE_FULL_SESSION", "QT_STYLE_OVERRIDE",
                                "QT_QPA_PLATFORMTHEME", "QT_SCALE_FACTOR"}) {
        qunsetenv(setting);
    }
}

DrivenProgram::DrivenProgram(const Desktop &userDesktop) : desktop(userDesktop), places(layOutWidgets()) {}

DrivenProgram::~DrivenProgram() {
    stop();
}

bool DrivenProgram::start(const QString &program, const QMap<QString, QString> &environment,
                          const QStringList &arguments) {
    QProcessEnvironment whole = QProcessEnvironment::systemEnvironment();
    for (auto entry = environment.begin(); entry != environment.end(); ++entry) {
        if (entry.value().isNull()) {
            whole.remove(entry.key());
        } else {
            whole.insert(entry.key(), entry.value());
        }
    }
    process.setProcessEnvironment(whole);
    process.setProcessChannelMode(QProcess::ForwardedChannels);
    process.start(program, arguments);
    if (!process.waitForStarted()) {
        return false;
    }
    return waitUntil(20000, [this] {
        mainWindow = visibleWindows({"--name", "^Generate Calibration Pattern$"}).value(0);
        return !mainWindow.isEmpty() && geometryOf(mainWindow).size() == QSize(899, 553);
    });
}

void DrivenProgram::stop() {
    if (isRunning()) {
        process.terminate();
        if (!process.waitForFinished(5000)) {
            process.kill();
            process.waitForFinished();
        }
    }
    mainWindow.clear();
}

bool DrivenProgram::endsWell(int milliseconds) {
    const bool hasEnded = process.state() == QProcess::NotRunning || process.waitForFinished(milliseconds);
    return hasEnded && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
}

bool DrivenProgram::moveWindow(QPoint position) {
    // A window manager may place the frame, not the contents, at the position. The second round corrects that.
    QPoint requested = position;
    for (int round = 0; round < 2; ++round) {
        desktop.xdotool({"windowmove", mainWindow, QString::number(requested.x()), QString::number(requested.y())});
        QRect last;
        const bool isAtRest = waitUntil(5000, [&] {
            const QRect before = last;
            last = geometryOf(mainWindow);
            return last == before;
        });
        if (!isAtRest) {
            return false;
        }
        requested += position - last.topLeft();
    }
    return true;
}

bool DrivenProgram::showPage(Page page) {
    moveMouse(placeOfTab(page).center());
    click();
    // Moves the mouse off the tab, so that no tip of the tab disturbs what follows.
    moveMouse(placeInWindow(places["groupBox"]).center());
    QTest::qWait(200);
    return isRunning();
}

QRect DrivenProgram::placeOf(const QString &objectName) const {
    return placeInWindow(places[objectName]);
}

QRect DrivenProgram::placeOfTab(Page page) const {
    return placeInWindow(places[QString("tab/%1").arg(page)]);
}

QRect DrivenProgram::placeOfText(const QString &spinBoxName) const {
    return placeInWindow(places[spinBoxName + "/text"]);
}

QRect DrivenProgram::placeInWindow(const QRect &place) const {
    return place.isNull() ? place : place.translated(geometryOf(mainWindow).topLeft());
}

void DrivenProgram::moveMouse(QPoint position) const {
    constexpr int steps = 12;
    const QStringList location = desktop.xdotool({"getmouselocation", "--shell"}).split('\n');
    const QPoint from(location.value(0).mid(2).toInt(), location.value(1).mid(2).toInt());
    QStringList moves;
    for (int step = 1; step <= steps; ++step) {
        const QPoint at = from + (position - from) * step / steps;
        moves << "mousemove" << QString::number(at.x()) << QString::number(at.y()) << "sleep"
              << "0.005";
    }
    desktop.xdotool(moves);
}

void DrivenProgram::click() const {
    desktop.xdotool({"click", "1"});
}

void DrivenProgram::clickOn(const QRect &place) const {
    moveMouse({place.left() + qMin(place.width() / 2, 30), place.center().y()});
    click();
}

QVector<QString> DrivenProgram::otherWindows() const {
    QVector<QString> windows;
    for (const QString &window : visibleWindows({"--class", "LmCalTab"})) {
        if (window != mainWindow) {
            windows << window;
        }
    }
    return windows;
}

QStringList DrivenProgram::visibleWindows(const QStringList &condition) const {
    const QStringList search{"search", "--all", "--onlyvisible", "--pid", QString::number(process.processId())};
    return desktop.xdotool(search + condition).split('\n', Qt::SkipEmptyParts);
}

QString DrivenProgram::waitForOtherWindow(int milliseconds) const {
    waitUntil(milliseconds, [this] { return !otherWindows().isEmpty(); });
    return otherWindows().value(0);
}

bool DrivenProgram::waitForNoOtherWindow(int milliseconds) const {
    return waitUntil(milliseconds, [this] { return otherWindows().isEmpty(); });
}

QRect DrivenProgram::geometryOf(const QString &window) {
    // xdotool counts the frame of a window twice.
    QProcess tool;
    tool.start("xwininfo", {"-id", window});
    tool.waitForFinished();
    QMap<QString, int> values;
    for (const QString &line : QString::fromLocal8Bit(tool.readAllStandardOutput()).split('\n')) {
        values[line.section(':', 0, 0).trimmed()] = line.section(':', 1).toInt();
    }
    return {values["Absolute upper-left X"], values["Absolute upper-left Y"], values["Width"], values["Height"]};
}

QImage DrivenProgram::contentsOf(const QString &window) {
    return QGuiApplication::primaryScreen()->grabWindow(window.toULongLong()).toImage();
}
