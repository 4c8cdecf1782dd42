// Tests the conversion of binary items to pictures, for every layout that the library can return.
#include "ui/library_image.h"

#include <gtest/gtest.h>

#include <QFrame>
#include <QGraphicsScene>
#include <QGraphicsView>
#include <limits>

#include "lmlib/lm_lib_exception.h"
#include "tests/scripted_lmlib64/scripted_lmlib64.h"
#include "tests/value_printing.h"

namespace {

using scripted_lmlib64::Binary;

QImage convert(const Binary &item, bool mirrorHorizontally = false, bool mirrorVertically = false,
               bool rotate180 = false, double valueScale = 1.0, int quarterTurns = 0) {
    scripted_lmlib64::reset();
    scripted_lmlib64::setBinary("/Image", item);
    return imageFromBinaryItem("/Image", mirrorHorizontally, mirrorVertically, rotate180, valueScale, quarterTurns);
}

// Returns the grey values. The rows are separated by "/".
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

TEST(LibraryImage, isIndexedGrayForOneChannelAndRgbForMore) {
    // The picture has three columns, so the toolkit pads each row to four bytes.
    const QImage gray = convert(Binary{3, 2, 1, {0, 1, 200, 254, 255, 128}});
    EXPECT_EQ(gray.format(), QImage::Format_Indexed8);
    EXPECT_EQ(gray.colorTable(), makeColorTable("gray", 256));
    EXPECT_EQ(grays(gray), "0 1 200 / 254 255 128");

    const QImage color = convert(Binary{1, 2, 3, {10, 20, 30, 40, 50, 60}});
    EXPECT_EQ(color.format(), QImage::Format_RGB888);
    EXPECT_EQ(color.pixel(0, 0), qRgb(10, 20, 30));
    EXPECT_EQ(color.pixel(0, 1), qRgb(40, 50, 60));

    // An item with more than one channel is read as RGB, but never beyond its bytes. If its rows are too short for RGB,
    // there is no picture.
    EXPECT_EQ(convert(Binary{2, 1, 4, {1, 2, 3, 4, 5, 6, 7, 8}}).pixel(1, 0), qRgb(4, 5, 6));
    EXPECT_TRUE(convert(Binary{2, 1, 2, {1, 2, 3, 4}}).isNull());
    EXPECT_TRUE(convert(Binary{2, 2, 1, {}}).isNull());
}

TEST(LibraryImage, isRefusedIfTheFormatDoesNotFitTheBytes) {
    const struct {
        const char *name;
        int width, height, channels;
    } rows[] = {{"one byte too few", 5, 1, 1},
                {"one byte too many", 3, 1, 1},
                {"channels missing", 4, 1, 3},
                {"no width", 0, 4, 1},
                {"no channel", 2, 2, 0},
                {"negative width and height", -2, -2, 1},
                {"negative width and channels", -2, 2, -1},
                {"product is 4 in 32 bits", 0x40000001, 4, 1},
                {"product is 4 in 64 bits", 2147418113, 429509837, 20}};
    for (const auto &row : rows) {
        try {
            convert(Binary{row.width, row.height, row.channels, {1, 2, 3, 4}});
            ADD_FAILURE() << row.name;
        } catch (const LmLibException &exception) {
            EXPECT_EQ(exception.errorCode, 16) << row.name;
            EXPECT_EQ(exception.itemPath, "/Image");
        }
    }
}

TEST(LibraryImage, failuresCarryPathAndCode) {
    const struct {
        const char *function;
        int scripted, reported;
    } rows[] = {{"lmLibGetBinaryInfo", 13, 13},
                {"lmLibGetCount", 9, 9},
                {"lmLibGetBinary", 15, 15},
                {"lmLibGetBinary", 0, 7}};  // the call succeeds, but reports that nothing was copied
    for (const auto &row : rows) {
        scripted_lmlib64::reset();
        scripted_lmlib64::setBinary("/Image", Binary{2, 1, 1, {1, 2}});
        scripted_lmlib64::setResult(row.function, "/Image", row.scripted);
        try {
            imageFromBinaryItem("/Image", false, false, false, 1.0, 0);
            ADD_FAILURE() << row.function;
        } catch (const LmLibException &exception) {
            EXPECT_EQ(exception.errorCode, row.reported);
            EXPECT_EQ(exception.itemPath, "/Image");
        }
    }
}

TEST(LibraryImage, scalesRoundsAndClampsValues) {
    const std::pair<double, const char *> rows[] = {{1.0, "0 1 3 100 200 255"},
                                                    {2.0, "0 2 6 200 255 255"},
                                                    {0.5, "0 1 2 50 100 128"},  // halves are rounded up
                                                    {0.0, "0 0 0 0 0 0"},
                                                    {-1.0, "0 0 0 0 0 0"},
                                                    {1e300, "0 255 255 255 255 255"},
                                                    {std::numeric_limits<double>::quiet_NaN(), "0 0 0 0 0 0"}};
    for (const auto &[scale, values] : rows) {
        EXPECT_EQ(grays(convert(Binary{6, 1, 1, {0, 1, 3, 100, 200, 255}}, false, false, false, scale)), values)
            << scale;
    }
}

TEST(LibraryImage, turnsThenMirrors) {
    const struct {
        bool mirrorHorizontally, mirrorVertically, rotate180;
        int quarterTurns;    // clockwise; a negative number turns nothing
        const char *values;  // the result for "1 2 3 4 / 5 6 7 8"
    } rows[] = {
        {false, false, false, 0, "1 2 3 4 / 5 6 7 8"},     {true, false, false, 0, "4 3 2 1 / 8 7 6 5"},
        {false, true, false, 0, "5 6 7 8 / 1 2 3 4"},      {false, false, true, 0, "8 7 6 5 / 4 3 2 1"},
        {true, false, true, 0, "5 6 7 8 / 1 2 3 4"},       {true, true, true, 0, "1 2 3 4 / 5 6 7 8"},
        {false, false, false, 1, "5 1 / 6 2 / 7 3 / 8 4"},  // clockwise
        {false, false, false, 2, "8 7 6 5 / 4 3 2 1"},     {false, false, false, 3, "4 8 / 3 7 / 2 6 / 1 5"},
        {false, false, false, 4, "1 2 3 4 / 5 6 7 8"},     {false, false, false, 2147483645, "5 1 / 6 2 / 7 3 / 8 4"},
        {false, false, false, -3, "1 2 3 4 / 5 6 7 8"},    {true, false, false, 1, "1 5 / 2 6 / 3 7 / 4 8"}};
    for (const auto &row : rows) {
        const QImage image = convert(Binary{4, 2, 1, {1, 2, 3, 4, 5, 6, 7, 8}}, row.mirrorHorizontally,
                                     row.mirrorVertically, row.rotate180, 1.0, row.quarterTurns);
        EXPECT_EQ(grays(image), row.values) << "row " << &row - rows;
        EXPECT_EQ(image.format(), QImage::Format_Indexed8);
    }
}

TEST(LibraryImage, isTheSameAsAPixmap) {
    convert(Binary{2, 1, 1, {10, 20}});
    EXPECT_EQ(grays(pixmapFromBinaryItem("/Image", true, false, false, 2.0, 0).toImage()), "40 20");
}

TEST(ColorTable, isGrayOrJetOfAnyLength) {
    const QVector<QRgb> gray = makeColorTable("gray", 300);
    ASSERT_EQ(gray.size(), 300);
    EXPECT_EQ(gray[0], 0xFF000000U);
    EXPECT_EQ(gray[255], 0xFFFFFFFFU);
    EXPECT_EQ(gray[257], 0xFF010101U);
    EXPECT_EQ(makeColorTable("GRAY", 300), gray);
    for (const char *name : {"grey", "gray ", "", "jets"}) {
        EXPECT_TRUE(makeColorTable(name, 256).isEmpty()) << name;
    }
    EXPECT_TRUE(makeColorTable("gray", 0).isEmpty());
    EXPECT_TRUE(makeColorTable("jet", -1).isEmpty());
    EXPECT_EQ(makeColorTable("jet", 1).size(), 1);
    EXPECT_EQ(makeColorTable("Jet", 9), (QVector<QRgb>{qRgb(0, 0, 128), qRgb(0, 0, 255), qRgb(0, 128, 255),
                                                       qRgb(0, 255, 255), qRgb(128, 255, 128), qRgb(255, 255, 0),
                                                       qRgb(255, 128, 0), qRgb(255, 0, 0), qRgb(128, 0, 0)}));
}

TEST(ViewOfAScene, isFittedToWhatTheSceneHolds) {
    QGraphicsScene scene(-500, -500, 1000, 1000);
    scene.addRect(QRectF(100, 50, 400, 100), Qt::NoPen);
    QGraphicsView view(&scene);
    view.setFrameShape(QFrame::NoFrame);
    view.setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    view.setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    view.resize(204, 304);
    view.show();  // gives the viewport its size
    fitViewToScene(&view);
    EXPECT_EQ(scene.sceneRect(), QRectF(100, 50, 400, 100));
    EXPECT_EQ(view.transform().m11(), 0.5);
    EXPECT_EQ(view.transform().m22(), view.transform().m11());
    EXPECT_LT((view.mapToScene(view.viewport()->rect().center()) - QPointF(300, 100)).manhattanLength(), 5);
    QGraphicsView withoutScene;
    fitViewToScene(&withoutScene);
}

}  // namespace
