// Binary items turned to pictures, over every shape the library can hand out.
#include <QGraphicsScene>
#include <QGraphicsView>
#include <QtTest>
#include <cmath>
#include <limits>

#include "lmlib/lm_lib_exception.h"
#include "tests/scripted_lmlib64/scripted_lmlib64.h"
#include "ui/library_image.h"

using Bytes = std::vector<std::uint8_t>;

namespace {

scripted_lmlib64::Binary binary(int width, int height, int channelCount, const Bytes &bytes) {
    scripted_lmlib64::Binary item;
    item.width = width;
    item.height = height;
    item.channelCount = channelCount;
    item.bytes = bytes;
    return item;
}

QImage convert(const scripted_lmlib64::Binary &item, bool mirrorHorizontally = false, bool mirrorVertically = false,
               bool rotate180 = false, double valueScale = 1.0, int quarterTurns = 0) {
    scripted_lmlib64::setBinary("/Image", item);
    return imageFromBinaryItem("/Image", mirrorHorizontally, mirrorVertically, rotate180, valueScale, quarterTurns);
}

// The grey values, rows separated by "/".
QString grays(const QImage &image) {
    QStringList rows;
    for (int y = 0; y < image.height(); ++y) {
        QStringList row;
        for (int x = 0; x < image.width(); ++x) {
            row << QString::number(qRed(image.pixel(x, y)));
        }
        rows << row.join(' ');
    }
    return rows.join(" / ");
}

}  // namespace

class LibraryImageTest : public QObject {
    Q_OBJECT

private slots:
    void init() { scripted_lmlib64::reset(); }
    void oneChannelIsIndexedGray();
    void threeChannelsAreRgb();
    void otherChannelCountsStayWithinTheBytes();
    void callsTheLibraryThreeTimes();
    void itemWithoutBytesIsNull_data();
    void itemWithoutBytesIsNull();
    void rejectsBytesThatDoNotFitTheFormat_data();
    void rejectsBytesThatDoNotFitTheFormat();
    void failuresCarryPathAndCode_data();
    void failuresCarryPathAndCode();
    void scalesValues_data();
    void scalesValues();
    void turnsAndMirrors_data();
    void turnsAndMirrors();
    void pixmapShowsTheSame();
    void colorTables();
    void fitsTheViewToTheScene();
    void leavesViewWithoutSceneAlone();
};

void LibraryImageTest::oneChannelIsIndexedGray() {
    // Three columns: a width that the toolkit pads to four bytes per row.
    const QImage image = convert(binary(3, 2, 1, {0, 1, 200, 254, 255, 128}));
    QCOMPARE(image.format(), QImage::Format_Indexed8);
    QCOMPARE(image.size(), QSize(3, 2));
    QCOMPARE(image.colorTable(), makeColorTable("gray", 256));
    QCOMPARE(image.pixel(2, 0), qRgb(200, 200, 200));
    QCOMPARE(grays(image), QString("0 1 200 / 254 255 128"));
}

void LibraryImageTest::threeChannelsAreRgb() {
    const QImage image = convert(binary(1, 2, 3, {10, 20, 30, 40, 50, 60}));
    QCOMPARE(image.format(), QImage::Format_RGB888);
    QCOMPARE(image.pixel(0, 0), qRgb(10, 20, 30));
    QCOMPARE(image.pixel(0, 1), qRgb(40, 50, 60));
}

void LibraryImageTest::otherChannelCountsStayWithinTheBytes() {
    const QImage four = convert(binary(2, 1, 4, {1, 2, 3, 4, 5, 6, 7, 8}));
    QCOMPARE(four.format(), QImage::Format_RGB888);
    QCOMPARE(four.pixel(1, 0), qRgb(4, 5, 6));
    // Rows too short for RGB: the toolkit gives no picture.
    QVERIFY(convert(binary(2, 1, 2, {1, 2, 3, 4})).isNull());
}

void LibraryImageTest::callsTheLibraryThreeTimes() {
    convert(binary(2, 2, 1, {1, 2, 3, 4}));
    QCOMPARE(scripted_lmlib64::callLines(),
             (std::vector<std::string>{"lmLibGetBinaryInfo /Image width height channelCount isFloat",
                                       "lmLibGetCount /Image", "lmLibGetBinary /Image 4 bytesCopied"}));
}

void LibraryImageTest::itemWithoutBytesIsNull_data() {
    QTest::addColumn<QSize>("size");
    QTest::newRow("no extent") << QSize(0, 0);
    QTest::newRow("stated extent") << QSize(20, 10);
}

void LibraryImageTest::itemWithoutBytesIsNull() {
    QFETCH(QSize, size);
    QVERIFY(convert(binary(size.width(), size.height(), 1, {})).isNull());
    QCOMPARE(scripted_lmlib64::callLines().back(), std::string("lmLibGetBinary /Image 0 bytesCopied"));
}

void LibraryImageTest::rejectsBytesThatDoNotFitTheFormat_data() {
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("height");
    QTest::addColumn<int>("channels");
    QTest::newRow("one too few") << 5 << 1 << 1;
    QTest::newRow("one too many") << 3 << 1 << 1;
    QTest::newRow("channels missing") << 4 << 1 << 3;
    QTest::newRow("no width") << 0 << 4 << 1;
    QTest::newRow("no channel") << 2 << 2 << 0;
    QTest::newRow("negative width and height") << -2 << -2 << 1;
    QTest::newRow("negative width and channels") << -2 << 2 << -1;
    QTest::newRow("product is 4 in 32 bits") << 0x40000001 << 4 << 1;
    QTest::newRow("product is 4 in 64 bits") << 2147418113 << 429509837 << 20;
}

void LibraryImageTest::rejectsBytesThatDoNotFitTheFormat() {
    QFETCH(int, width);
    QFETCH(int, height);
    QFETCH(int, channels);
    try {
        convert(binary(width, height, channels, {1, 2, 3, 4}));
        QFAIL("no exception");
    } catch (const LmLibException &exception) {
        QCOMPARE(exception.errorCode, 16);
        QCOMPARE(exception.itemPath, std::string("/Image"));
    }
}

void LibraryImageTest::failuresCarryPathAndCode_data() {
    QTest::addColumn<QByteArray>("function");
    QTest::addColumn<int>("scripted");
    QTest::addColumn<int>("reported");
    QTest::addColumn<int>("calls");
    QTest::newRow("format") << QByteArray("lmLibGetBinaryInfo") << 13 << 13 << 1;
    QTest::newRow("byte count") << QByteArray("lmLibGetCount") << 9 << 9 << 2;
    QTest::newRow("data") << QByteArray("lmLibGetBinary") << 15 << 15 << 3;
    // The call succeeds and says that nothing was copied.
    QTest::newRow("short copy") << QByteArray("lmLibGetBinary") << 0 << 7 << 3;
}

void LibraryImageTest::failuresCarryPathAndCode() {
    QFETCH(QByteArray, function);
    QFETCH(int, scripted);
    QFETCH(int, reported);
    QFETCH(int, calls);
    scripted_lmlib64::setResult(function.toStdString(), "/Image", scripted);
    try {
        convert(binary(2, 1, 1, {1, 2}));
        QFAIL("no exception");
    } catch (const LmLibException &exception) {
        QCOMPARE(exception.errorCode, reported);
        QCOMPARE(exception.itemPath, std::string("/Image"));
        QVERIFY(exception.commandSlot == nullptr);
    }
    // The last call is the line for the debug log.
    QCOMPARE(static_cast<int>(scripted_lmlib64::calls().size()), calls + 1);
}

void LibraryImageTest::scalesValues_data() {
    QTest::addColumn<double>("scale");
    QTest::addColumn<QString>("values");  // of 0, 1, 3, 100, 200, 255
    QTest::newRow("1") << 1.0 << "0 1 3 100 200 255";
    QTest::newRow("2") << 2.0 << "0 2 6 200 255 255";
    QTest::newRow("0.5, halves up") << 0.5 << "0 1 2 50 100 128";
    QTest::newRow("0") << 0.0 << "0 0 0 0 0 0";
    QTest::newRow("-1") << -1.0 << "0 0 0 0 0 0";
    QTest::newRow("huge") << 1e300 << "0 255 255 255 255 255";
    QTest::newRow("no number") << std::numeric_limits<double>::quiet_NaN() << "0 0 0 0 0 0";
}

void LibraryImageTest::scalesValues() {
    QFETCH(double, scale);
    QFETCH(QString, values);
    QCOMPARE(grays(convert(binary(6, 1, 1, {0, 1, 3, 100, 200, 255}), false, false, false, scale)), values);
}

void LibraryImageTest::turnsAndMirrors_data() {
    QTest::addColumn<QVector<bool>>("flags");  // mirror horizontally, vertically, rotate by 180 degrees
    QTest::addColumn<int>("turns");
    QTest::addColumn<QString>("values");  // of "1 2 3 4 / 5 6 7 8"
    const auto row = [](const char *name, const QVector<bool> &flags, int turns, const char *values) {
        QTest::newRow(name) << flags << turns << QString(values);
    };
    row("as it is", {false, false, false}, 0, "1 2 3 4 / 5 6 7 8");
    row("mirrored horizontally", {true, false, false}, 0, "4 3 2 1 / 8 7 6 5");
    row("mirrored vertically", {false, true, false}, 0, "5 6 7 8 / 1 2 3 4");
    row("half a turn", {false, false, true}, 0, "8 7 6 5 / 4 3 2 1");
    row("half a turn cancels a mirroring", {true, false, true}, 0, "5 6 7 8 / 1 2 3 4");
    row("half a turn cancels both mirrorings", {true, true, true}, 0, "1 2 3 4 / 5 6 7 8");
    row("a quarter turn is clockwise", {false, false, false}, 1, "5 1 / 6 2 / 7 3 / 8 4");
    row("two quarter turns", {false, false, false}, 2, "8 7 6 5 / 4 3 2 1");
    row("three quarter turns", {false, false, false}, 3, "4 8 / 3 7 / 2 6 / 1 5");
    row("four quarter turns", {false, false, false}, 4, "1 2 3 4 / 5 6 7 8");
    row("very many quarter turns", {false, false, false}, 2147483645, "5 1 / 6 2 / 7 3 / 8 4");
    row("turns back are none", {false, false, false}, -3, "1 2 3 4 / 5 6 7 8");
    row("turned before mirrored", {true, false, false}, 1, "1 5 / 2 6 / 3 7 / 4 8");
}

void LibraryImageTest::turnsAndMirrors() {
    QFETCH(QVector<bool>, flags);
    QFETCH(int, turns);
    QFETCH(QString, values);
    const QImage image = convert(binary(4, 2, 1, {1, 2, 3, 4, 5, 6, 7, 8}), flags[0], flags[1], flags[2], 1.0, turns);
    QCOMPARE(grays(image), values);
    QCOMPARE(image.format(), QImage::Format_Indexed8);
}

void LibraryImageTest::pixmapShowsTheSame() {
    scripted_lmlib64::setBinary("/Image", binary(2, 1, 1, {10, 20}));
    const QPixmap pixmap = pixmapFromBinaryItem("/Image", true, false, false, 2.0, 0);
    QCOMPARE(grays(pixmap.toImage()), QString("40 20"));
}

void LibraryImageTest::colorTables() {
    const QVector<QRgb> gray = makeColorTable("gray", 300);
    QCOMPARE(gray.size(), 300);
    QCOMPARE(gray[0], 0xFF000000U);
    QCOMPARE(gray[255], 0xFFFFFFFFU);
    QCOMPARE(gray[257], 0xFF010101U);
    QCOMPARE(makeColorTable("GRAY", 300), gray);
    for (const char *name : {"grey", "gray ", "", "jets"}) {
        QVERIFY2(makeColorTable(name, 256).isEmpty(), name);
    }
    QVERIFY(makeColorTable("gray", 0).isEmpty());
    QVERIFY(makeColorTable("jet", -1).isEmpty());
    QCOMPARE(makeColorTable("jet", 1).size(), 1);
    // At t = 0, 1/8, 3/8, 5/8, 7/8 and 1.
    const QVector<QRgb> jet = makeColorTable("Jet", 9);
    QCOMPARE(jet[0], qRgb(0, 0, 128));
    QCOMPARE(jet[1], qRgb(0, 0, 255));
    QCOMPARE(jet[3], qRgb(0, 255, 255));
    QCOMPARE(jet[5], qRgb(255, 255, 0));
    QCOMPARE(jet[7], qRgb(255, 0, 0));
    QCOMPARE(jet[8], qRgb(128, 0, 0));
    QCOMPARE(jet[2], qRgb(0, 128, 255));
}

void LibraryImageTest::fitsTheViewToTheScene() {
    QGraphicsScene scene(-500, -500, 1000, 1000);
    scene.addRect(QRectF(100, 50, 400, 100), Qt::NoPen);
    QGraphicsView view(&scene);
    view.setFrameShape(QFrame::NoFrame);
    view.setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    view.setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    view.resize(204, 304);
    view.show();  // gives the viewport its size
    fitViewToScene(&view);
    QCOMPARE(scene.sceneRect(), QRectF(100, 50, 400, 100));
    QCOMPARE(view.transform().m11(), 0.5);
    QCOMPARE(view.transform().m22(), 0.5);
    QVERIFY((view.mapToScene(view.viewport()->rect().center()) - QPointF(300, 100)).manhattanLength() < 5);
}

void LibraryImageTest::leavesViewWithoutSceneAlone() {
    QGraphicsView view;
    view.scale(3, 3);
    fitViewToScene(&view);
    QCOMPARE(view.transform().m11(), 3.0);
}

QTEST_MAIN(LibraryImageTest)
#include "library_image_test.moc"
