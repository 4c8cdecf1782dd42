// The controller: what starts an update, what an update changes, and what a failing one leaves as it was.
#include <QAbstractButton>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QGraphicsPixmapItem>
#include <QGraphicsView>
#include <QMetaMethod>
#include <QResizeEvent>
#include <QSpinBox>
#include <QTabWidget>
#include <QtTest>

#include "generator/main_window.h"
#include "lmlib/lm_lib_exception.h"
#include "tests/generator/driven_window.h"
#include "tests/generator/recorded_calls.h"

using driven_window::find;
using Change = std::function<void(MainWindow &)>;
Q_DECLARE_METATYPE(Change)

namespace {

QList<QGraphicsItem *> sceneItems(const MainWindow &window) {
    return find<QGraphicsView>(window, "preview")->scene()->items();
}

QGraphicsPixmapItem *picture(const MainWindow &window) {
    const auto items = sceneItems(window);
    return items.size() == 1 ? qgraphicsitem_cast<QGraphicsPixmapItem *>(items.first()) : nullptr;
}

void setPictureOf(int width, int height, unsigned char value) {
    scripted_lmlib64::CommandScript script;
    script.image.emplace();
    script.image->width = width;
    script.image->height = height;
    script.image->bytes.assign(static_cast<std::size_t>(width) * static_cast<std::size_t>(height), value);
    scripted_lmlib64::setCommand("GenerateCalibrationPattern", {script});
}

Change setCount(const char *name, int value) {
    return [=](MainWindow &window) { find<QSpinBox>(window, name)->setValue(value); };
}

Change setLength(const char *name, double value) {
    return [=](MainWindow &window) { find<QDoubleSpinBox>(window, name)->setValue(value); };
}

Change choose(const char *name, int index) {
    return [=](MainWindow &window) { find<QComboBox>(window, name)->setCurrentIndex(index); };
}

Change click(const char *name) {
    return [=](MainWindow &window) { find<QAbstractButton>(window, name)->click(); };
}

// How much of the viewport, without the margin of 2 pixels that the view keeps, the picture fills in its tighter
// direction; above 1 it does not fit.
double filling(const MainWindow &window) {
    const auto *view = find<QGraphicsView>(window, "preview");
    const QRectF shown = view->transform().mapRect(view->sceneRect());
    const QSizeF room = view->viewport()->size() - QSize(4, 4);
    return std::max(shown.width() / room.width(), shown.height() / room.height());
}

}  // namespace

class MainWindowTest : public QObject {
    Q_OBJECT

private slots:
    void init() { scripted_lmlib64::loadDefaultScript(); }
    void opensOnTheOfficialPageWithAPicture();
    void slotsHaveTheirOrder();
    void everyInputUpdatesOnce_data();
    void everyInputUpdatesOnce();
    void displaysDoNotUpdate();
    void encodingChoiceEnablesItsInputs();
    void showsThePictureSmoothly();
    void emptyImageEmptiesThePicture();
    void failureKeepsThePictureAndIsReportedOnce_data();
    void failureKeepsThePictureAndIsReportedOnce();
    void failedCommandShowsItsReasonAndTheNextChangeTriesAgain();
    void firstUpdateMayFail();
    void failingCatalogueLeavesTheConstructor();
    void emptyCatalogueWritesNoPattern();
    void refitsWhenShownAndResizedWithoutTheLibrary();
};

void MainWindowTest::opensOnTheOfficialPageWithAPicture() {
    const MainWindow window;
    QCOMPARE(find<QTabWidget>(window, "patternType")->currentIndex(), 0);
    QVERIFY(picture(window) != nullptr);
    QCOMPARE(picture(window)->pixmap().size(), QSize(4, 4));
    // Building the form, filling the lists and connecting cause no further update.
    QCOMPARE(recorded_calls::count("lmLibMakeUniqueItem"), 2);
    QCOMPARE(recorded_calls::count("lmLibSetString /Execute/1/Command GetModelInfo"), 1);
    QCOMPARE(recorded_calls::count("lmLibSetString /Execute/2/Command GenerateCalibrationPattern"), 1);
    QCOMPARE(scripted_lmlib64::nodeJson("/Execute"), std::string("{}"));
    QVERIFY(window.parent() == nullptr);
    QVERIFY(find(window, "saveBtn")->isEnabled() && find(window, "calibrateBtn")->isEnabled());
}

void MainWindowTest::slotsHaveTheirOrder() {
    const QMetaObject &meta = MainWindow::staticMetaObject;
    QCOMPARE(meta.className(), "MainWindow");
    QList<QByteArray> methods;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        QCOMPARE(meta.method(i).methodType(), QMetaMethod::Slot);
        methods << meta.method(i).methodSignature();
    }
    QCOMPARE(methods, (QList<QByteArray>{"update()", "savePatterns()", "openCalTabCalibration()"}));
    QCOMPARE(meta.propertyOffset(), meta.propertyCount());
}

void MainWindowTest::everyInputUpdatesOnce_data() {
    QTest::addColumn<Change>("change");
    QTest::addColumn<int>("updates");
    const auto row = [](const char *name, const Change &change, int updates = 1) {
        QTest::newRow(name) << change << updates;
    };
    row("patternType", [](MainWindow &window) { find<QTabWidget>(window, "patternType")->setCurrentIndex(4); });
    for (const char *name : {"officialPattern", "singleGridSpacing", "singleThickness", "assemblyGridSpacing"}) {
        row(name, choose(name, 1));
    }
    for (const char *name : {"singlePolarity", "flexiblePolarity", "assemblyPolarity"}) {
        row(name, click(name));
    }
    for (const char *name : {"flexibleWidth", "flexibleHeight", "flexibleOffsetXSpacings", "flexibleOffsetYSpacings",
                             "assemblyNumberOfPatterns", "halconOffsetXSpacings", "halconOffsetYSpacings"}) {
        row(name, setCount(name, 9));
    }
    for (const char *name : {"flexibleGridSpacing", "halconThickness", "halconOuterSize"}) {
        row(name, setLength(name, 42));
    }
    // One button goes on and another off, each with its own signal.
    row("halconEncodeNothing", click("halconEncodeNothing"), 2);
    row("halconEncodeOffset", click("halconEncodeOffset"), 2);
    row("halconEncodeSpacing, on already", click("halconEncodeSpacing"), 0);
}

void MainWindowTest::everyInputUpdatesOnce() {
    QFETCH(Change, change);
    QFETCH(int, updates);
    MainWindow window;
    scripted_lmlib64::clearCalls();
    change(window);
    QCOMPARE(recorded_calls::count("lmLibSetInt /Execute"), updates);  // "ImageSize"
    QCOMPARE(recorded_calls::count("lmLibMakeUniqueItem"), updates);
}

void MainWindowTest::displaysDoNotUpdate() {
    MainWindow window;
    scripted_lmlib64::clearCalls();
    for (const char *name : {"halconGridSpacing", "halconOffsetXMM", "halconOffsetYMM", "flexibleOuterWidth",
                             "flexibleOuterHeight", "flexibleOffsetXMM", "flexibleOffsetYMM"}) {
        auto *display = find<QDoubleSpinBox>(window, name);
        QVERIFY2(!display->isEnabled(), name);
        display->setValue(77);
    }
    QCOMPARE(recorded_calls::all(), QStringList());
}

void MainWindowTest::encodingChoiceEnablesItsInputs() {
    MainWindow window;
    const auto enabled = [&window] {
        QList<bool> states;
        for (const char *name : {"halconThickness", "halconOffsetXSpacings", "halconOffsetYSpacings"}) {
            states << find(window, name)->isEnabled();
        }
        return states;
    };
    QCOMPARE(enabled(), (QList<bool>{true, false, false}));
    find<QAbstractButton>(window, "halconEncodeOffset")->click();
    QCOMPARE(enabled(), (QList<bool>{false, true, true}));
    find<QAbstractButton>(window, "halconEncodeSpacing")->click();
    QCOMPARE(enabled(), (QList<bool>{true, false, false}));
    find<QAbstractButton>(window, "halconEncodeNothing")->click();
    QCOMPARE(enabled(), (QList<bool>{false, true, true}));
}

void MainWindowTest::showsThePictureSmoothly() {
    MainWindow window;
    setPictureOf(20, 10, 200);
    window.update();
    QCOMPARE(picture(window)->pixmap().size(), QSize(20, 10));
    QCOMPARE(picture(window)->pixmap().toImage().pixel(7, 3), qRgb(200, 200, 200));
    QCOMPARE(picture(window)->transformationMode(), Qt::SmoothTransformation);
    QCOMPARE(find<QGraphicsView>(window, "preview")->sceneRect(), picture(window)->sceneBoundingRect());
}

void MainWindowTest::emptyImageEmptiesThePicture() {
    MainWindow window;
    setPictureOf(0, 0, 0);
    window.update();
    QVERIFY(picture(window) != nullptr);
    QVERIFY(picture(window)->pixmap().isNull());
}

void MainWindowTest::failureKeepsThePictureAndIsReportedOnce_data() {
    QTest::addColumn<QByteArray>("function");
    QTest::addColumn<QByteArray>("path");
    const auto row = [](const char *function, const char *path) {
        QTest::newRow((QByteArray(function) + path).constData()) << QByteArray(function) << QByteArray(path);
    };
    row("lmLibMakeUniqueItem", "/Execute");
    row("lmLibSetBool", "*/Parameters/Encoding");
    row("lmLibSetInt", "*/Parameters/ImageSize");
    row("lmLibSetDouble", "*/Parameters/Patterns/\\0/GridSpacing");
    row("lmLibSetString", "*/Command");
    row("lmLibWaitForType", "*/Command");
    row("lmLibGetBinaryInfo", "*/Result/Patterns/\\0");
    row("lmLibGetCount", "*/Result/Patterns/\\0");
    row("lmLibGetBinary", "*/Result/Patterns/\\0");
}

void MainWindowTest::failureKeepsThePictureAndIsReportedOnce() {
    QFETCH(QByteArray, function);
    QFETCH(QByteArray, path);
    MainWindow window;
    const qint64 picturedBefore = picture(window)->pixmap().cacheKey();
    setPictureOf(20, 10, 200);
    scripted_lmlib64::setResult(function.toStdString(), path.toStdString(), 7);
    const auto message = driven_window::closeNextMessageBox();

    find<QDoubleSpinBox>(window, "halconOuterSize")->setValue(200);

    QVERIFY2(message->contains("InternalError"), qPrintable(*message));
    QVERIFY(QApplication::activeModalWidget() == nullptr);
    QCOMPARE(picture(window)->pixmap().cacheKey(), picturedBefore);
    QCOMPARE(find<QDoubleSpinBox>(window, "halconGridSpacing")->value(), 25.0);
    QCOMPARE(scripted_lmlib64::nodeJson("/Execute"), std::string("{}"));
}

void MainWindowTest::failedCommandShowsItsReasonAndTheNextChangeTriesAgain() {
    MainWindow window;
    const qint64 picturedBefore = picture(window)->pixmap().cacheKey();
    scripted_lmlib64::setCommand("GenerateCalibrationPattern",
                                 {scripted_lmlib64::CommandScript::failing("TooThick", "The plate is too thick.")});
    bool slotStoodWhileReported = false;
    QString message;
    driven_window::whenOpened<QMessageBox>([&](QMessageBox *box) {
        message = box->text();
        slotStoodWhileReported = scripted_lmlib64::hasNode("/Execute/3/Result/ErrorText");
        box->accept();
    });
    window.update();
    QCOMPARE(message, QString("An LmLib error occurred while executing the command:\nGenerateCalibrationPattern: \n"
                              "TooThick: The plate is too thick."));
    QVERIFY(slotStoodWhileReported);
    QCOMPARE(scripted_lmlib64::nodeJson("/Execute"), std::string("{}"));
    QCOMPARE(picture(window)->pixmap().cacheKey(), picturedBefore);

    setPictureOf(20, 10, 200);
    window.update();
    QCOMPARE(picture(window)->pixmap().size(), QSize(20, 10));
}

void MainWindowTest::firstUpdateMayFail() {
    scripted_lmlib64::setCommand("GenerateCalibrationPattern",
                                 {scripted_lmlib64::CommandScript::failing("NotNow", "Later.")});
    const auto message = driven_window::closeNextMessageBox();
    MainWindow window;
    QVERIFY(message->endsWith("NotNow: Later."));
    QVERIFY(sceneItems(window).isEmpty());
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
}

void MainWindowTest::failingCatalogueLeavesTheConstructor() {
    scripted_lmlib64::setCommand("GetModelInfo",
                                 {scripted_lmlib64::CommandScript::failing("NoCatalogue", "There is none.")});
    QVERIFY_EXCEPTION_THROWN(MainWindow(), LmLibException);
    QVERIFY(QApplication::topLevelWidgets().isEmpty());
}

void MainWindowTest::emptyCatalogueWritesNoPattern() {
    scripted_lmlib64::loadScript(R"({"commands": {"GetModelInfo": {"result": {"CalTabs": []}}}})");
    const MainWindow window;
    const QStringList previewCalls = recorded_calls::all().filter("/Execute/2");
    QCOMPARE(previewCalls, recorded_calls::updateCalls(2, {}).mid(1));
}

void MainWindowTest::refitsWhenShownAndResizedWithoutTheLibrary() {
    setPictureOf(2000, 1000, 128);
    MainWindow window;
    scripted_lmlib64::clearCalls();
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QVERIFY2(std::abs(filling(window) - 1.0) < 0.01, qPrintable(QString::number(filling(window))));
    for (const QSize size : {QSize(1400, 900), QSize(899, 553)}) {
        window.resize(size);
        QCoreApplication::processEvents();
        QVERIFY2(std::abs(filling(window) - 1.0) < 0.01, qPrintable(QString::number(filling(window))));
    }
    find<QGraphicsView>(window, "preview")->resetTransform();
    window.hide();
    window.show();
    QVERIFY2(std::abs(filling(window) - 1.0) < 0.01, qPrintable(QString::number(filling(window))));
    QCOMPARE(recorded_calls::all(), QStringList());
}

QTEST_MAIN(MainWindowTest)
#include "main_window_test.moc"
