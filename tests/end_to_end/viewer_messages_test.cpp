// What the program tells its user when the viewer cannot be started, read off the screen.
#include <QApplication>
#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLabel>
#include <QMessageBox>
#include <QTemporaryDir>
#include <QtTest>
#include <cstddef>
#include <cstring>

#include "tests/end_to_end/desktop.h"
#include "tests/end_to_end/driven_program.h"

class ViewerMessagesTest : public QObject {
    Q_OBJECT

public:
    explicit ViewerMessagesTest(const Desktop &userDesktop) : desktop(userDesktop) {}

private slots:
    void initTestCase();
    void cleanup();

    void tellsWhyItCannot_data();
    void tellsWhyItCannot();

private:
    bool startProgram(const QString &viewer);

    const Desktop &desktop;
    QTemporaryDir folder;
    QScopedPointer<DrivenProgram> program;
};

namespace {

// What differs from the picture's first pixel.
QRect inkOf(const QImage &picture) {
    QRect ink;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            if (picture.pixel(x, y) != picture.pixel(0, 0)) {
                ink |= QRect(x, y, 1, 1);
            }
        }
    }
    return ink;
}

// How the text of a warning looks on this screen, with some empty space on all sides.
QImage pictureOfText(const QString &text) {
    constexpr int space = 8;
    QMessageBox box(QMessageBox::Warning, "Error", text, QMessageBox::Ok);
    box.setAttribute(Qt::WA_DontShowOnScreen);
    box.show();
    QCoreApplication::processEvents();
    auto *label = box.findChild<QLabel *>("qt_msgbox_label");
    label->setContentsMargins(2 * space, 2 * space, 2 * space, 2 * space);
    label->setFixedSize(label->sizeHint());
    const QImage picture = label->grab().toImage().convertToFormat(QImage::Format_RGB32);
    return picture.copy(inkOf(picture).adjusted(-space, -space, space, space));
}

bool isAt(const QImage &part, const QImage &whole, QPoint place) {
    for (int y = 0; y < part.height(); ++y) {
        const uchar *row = whole.constScanLine(place.y() + y) + 4 * static_cast<std::ptrdiff_t>(place.x());
        if (std::memcmp(part.constScanLine(y), row, 4 * static_cast<std::size_t>(part.width())) != 0) {
            return false;
        }
    }
    return true;
}

bool showsText(const QString &window, const QString &text) {
    const QImage expected = pictureOfText(text);
    const QImage contents = DrivenProgram::contentsOf(window).convertToFormat(QImage::Format_RGB32);
    for (int y = 0; y + expected.height() <= contents.height(); ++y) {
        for (int x = 0; x + expected.width() <= contents.width(); ++x) {
            if (isAt(expected, contents, {x, y})) {
                return true;
            }
        }
    }
    return false;
}

}  // namespace

void ViewerMessagesTest::initTestCase() {
    QVERIFY(folder.isValid());
    program.reset(new DrivenProgram(desktop));
}

void ViewerMessagesTest::cleanup() {
    program->stop();
}

bool ViewerMessagesTest::startProgram(const QString &viewer) {
    const QJsonObject script{{"nodes", QJsonObject{{"/Path/Application/LmView", viewer}}}};
    QFile file(folder.filePath("script.json"));
    if (!file.open(QIODevice::WriteOnly)) {
        return false;
    }
    file.write(QJsonDocument(script).toJson());
    file.close();
    return program->start(LMCALTAB_BUILD_TREE "/bin/LmCalTab",
                          {{"LD_LIBRARY_PATH", LMCALTAB_SCRIPTED_LIBRARY_FOLDER}, {"LMLIB64_SCRIPT", file.fileName()}});
}

void ViewerMessagesTest::tellsWhyItCannot_data() {
    QTest::addColumn<QString>("viewer");
    QTest::addColumn<QString>("text");
    QTest::newRow("not there") << "/nowhere/LmView"
                               << "/nowhere/LmView does not exist";
    QTest::newRow("no text in the tree") << ""
                                         << " does not exist";
    QTest::newRow("a data file") << "/etc/passwd"
                                 << "/etc/passwd is not executable";
}

void ViewerMessagesTest::tellsWhyItCannot() {
    QFETCH(QString, viewer);
    QFETCH(QString, text);
    QVERIFY(startProgram(viewer));
    program->moveMouse(program->placeOf("calibrateBtn").center());
    program->click();
    const QString message = program->waitForOtherWindow();
    QVERIFY(!message.isEmpty());
    QCOMPARE(program->titleOf(message), "Error");
    QTRY_VERIFY(showsText(message, text));
    QVERIFY(!showsText(message, text + "."));
    QVERIFY(!showsText(message, text.chopped(1)));
    // One button, which closes it.
    desktop.press({"Return"});
    QVERIFY(program->waitForNoOtherWindow(3000));
}

int main(int argc, char **argv) {
    const Desktop desktop;
    useDesktop(desktop);
    const QApplication application(argc, argv);
    ViewerMessagesTest test(desktop);
    return QTest::qExec(&test, argc, argv);
}

#include "viewer_messages_test.moc"
