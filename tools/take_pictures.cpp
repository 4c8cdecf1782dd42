// Takes the manual's pictures of LmCalTab and of a printed page. Run this tool when LmCalTab or the page has changed:
//
//   tests/with_desktop.sh BUILD/tools/take_pictures manual/pages/images
#include <QApplication>
#include <QDir>
#include <QPainter>
#include <QScreen>
#include <QTemporaryDir>
#include <QtTest>
#include <cstdio>

#include "lmlib/tree_command.h"
#include "tests/end_to_end/desktop.h"
#include "tests/end_to_end/driven_program.h"

namespace {

void save(const QImage &picture, const QString &fileName) {
    constexpr int smallest = 0;
    picture.convertToFormat(QImage::Format_RGB888).save(fileName, "PNG", smallest);
}

QImage screenAt(const QRect &place) {
    return QGuiApplication::primaryScreen()->grabWindow(0).toImage().copy(place);
}

void drawMouse(QImage &picture, QPoint tip) {
    const QPolygon arrow({{0, 0}, {0, 17}, {4, 13}, {7, 20}, {10, 19}, {7, 12}, {12, 12}});
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::black);
    painter.setBrush(Qt::white);
    painter.drawPolygon(arrow.translated(tip));
}

void takeWindow(const Desktop &desktop, const QDir &folder) {
    DrivenProgram program(desktop);
    if (!program.start(LMCALTAB_BUILD_TREE "/bin/LmCalTab", {})) {
        qFatal("The program does not start.");
    }
    const QStringList names{"official", "custom", "flexible", "assembly", "halcon"};
    for (int page = 0; page < names.size(); ++page) {
        program.showPage(static_cast<DrivenProgram::Page>(page));
        QTest::qWait(500);
        save(screenAt(program.placeOf("MainWindow")), folder.filePath(names[page] + ".png"));
    }
    program.moveMouse(program.placeOfText("halconGridSpacing").topLeft() + QPoint(20, 4));
    const QString tip = program.waitForOtherWindow();
    if (tip.isEmpty()) {
        qFatal("The tool tip does not show.");
    }
    QTest::qWait(500);
    // The picture includes the window's frame. A mouse pointer is drawn onto the link in the tool tip, because a
    // picture of the screen does not contain the pointer.
    const QRect place = program.placeOf("MainWindow").adjusted(-1, -20, 1, 5);
    QImage picture = screenAt(place);
    drawMouse(picture, program.geometryOf(tip).topLeft() - place.topLeft() + QPoint(50, 28));
    save(picture, folder.filePath("tool-tip.png"));
}

void takePrintedPage(const QDir &folder) {
    const QTemporaryDir temporary;
    const QString document = temporary.filePath("page.pdf");
    const TreeCommand command("GenerateCalibrationPattern");
    const TreeItem pattern = command.parameters()["Patterns"][0];
    command.parameters()["Filename"] = document.toLocal8Bit().toStdString();
    pattern["Type"] = "SingleCustom";
    pattern["GridSpacing"] = 16.0;
    pattern["Thickness"] = 3.0;
    pattern["Polarity"] = true;
    command.execute(true);
    const QString picture = temporary.filePath("page");
    QProcess::execute("pdftoppm", {"-r", "75", "-png", "-singlefile", document, picture});
    save(QImage(picture + ".png"), folder.filePath("printed-page.png"));
}

}  // namespace

int main(int argumentCount, char **arguments) {
    const Desktop desktop{};
    const QApplication application(argumentCount, arguments);
    if (argumentCount != 2) {
        std::fputs("Usage: take_pictures FOLDER\n", stderr);
        return 2;
    }
    const QDir folder(QString::fromLocal8Bit(arguments[1]));
    takeWindow(desktop, folder);
    takePrintedPage(folder);
    return 0;
}
