#include "tests/end_to_end/driven_program.h"

#include <QApplication>
#include <QLineEdit>
#include <QPixmap>
#include <QScreen>
#include <QTabBar>
#include <QTabWidget>
#include <QtTest>

#include "generator/main_window.h"
#include "tests/end_to_end/desktop.h"

namespace {

// Returns the places of the widgets in the program's main window. The program runs in another process, so the places
// are measured in a second main window, which belongs to this process. The second window has the same size, style and
// fonts as the program's window, but is never visible on the screen.
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

DrivenProgram::DrivenProgram(const Desktop &userDesktop) : desktop(userDesktop), places(layOutWidgets()) {}

DrivenProgram::~DrivenProgram() {
    stop();
}

bool DrivenProgram::start(const QString &program, const QMap<QString, QString> &environment,
                          const QStringList &arguments) {
    QProcessEnvironment whole = QProcessEnvironment::systemEnvironment();
    for (auto entry = environment.begin(); entry != environment.end(); ++entry) {
        whole.insert(entry.key(), entry.value());
    }
    process.setProcessEnvironment(whole);
    process.setProcessChannelMode(QProcess::ForwardedChannels);
    process.start(program, arguments);
    if (!process.waitForStarted()) {
        return false;
    }
    return QTest::qWaitFor(
        [this] {
            mainWindow = visibleWindows({"--name", "^Generate Calibration Pattern$"}).value(0);
            return !mainWindow.isEmpty() && geometryOf(mainWindow).size() == QSize(899, 553);
        },
        20000);
}

void DrivenProgram::stop() {
    process.terminate();
    if (!process.waitForFinished(5000)) {
        process.kill();
        process.waitForFinished();
    }
    mainWindow.clear();
}

bool DrivenProgram::endsWell(int milliseconds) {
    const bool hasEnded = process.state() == QProcess::NotRunning || process.waitForFinished(milliseconds);
    return hasEnded && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
}

bool DrivenProgram::showPage(Page page) {
    moveMouse(placeOf(QString("tab/%1").arg(page)).center());
    click();
    // Moves the mouse off the tab, so that no tool tip of the tab disturbs what follows.
    moveMouse(placeOf("groupBox").center());
    QTest::qWait(200);
    return isRunning();
}

QRect DrivenProgram::placeOf(const QString &objectName) const {
    return places[objectName].translated(geometryOf(mainWindow).topLeft());
}

QRect DrivenProgram::placeOfText(const QString &spinBoxName) const {
    return placeOf(spinBoxName + "/text");
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

QStringList DrivenProgram::otherWindows() const {
    QStringList windows = visibleWindows({"--class", "LmCalTab"});
    windows.removeAll(mainWindow);
    return windows;
}

QStringList DrivenProgram::visibleWindows(const QStringList &condition) const {
    const QStringList search{"search", "--all", "--onlyvisible", "--pid", QString::number(process.processId())};
    return desktop.xdotool(search + condition).split('\n', Qt::SkipEmptyParts);
}

QString DrivenProgram::waitForOtherWindow(int milliseconds) const {
    static_cast<void>(QTest::qWaitFor([this] { return !otherWindows().isEmpty(); }, milliseconds));
    return otherWindows().value(0);
}

bool DrivenProgram::waitForNoOtherWindow(int milliseconds) const {
    return QTest::qWaitFor([this] { return otherWindows().isEmpty(); }, milliseconds);
}

QRect DrivenProgram::geometryOf(const QString &window) {
    // xwininfo is used here, because xdotool counts the frame of a window twice.
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
