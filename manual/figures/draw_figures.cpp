// Draws the figures of the manual into the folder named on the command line. It runs when the manual is built, so that
// every figure shows what the library of that build makes.
#include <QDir>
#include <exception>
#include <iostream>

#include "camera_library/lmlib64.h"
#include "lmlib/lm_lib_exception.h"
#include "manual/figures/figure.h"
#include "manual/figures/library_pattern.h"

namespace {

constexpr QPointF PatternTopLeft(124.0, 60.0);
constexpr double RightMargin = 132.0;
constexpr double BottomMargin = 64.0;
constexpr int Pixels = 864;  // gives each square and each mark of the patterns drawn here a whole number of pixels

QString millimetres(double value) {
    return QString::number(value, 'g', 6) + " mm";
}

// Places a pattern's picture in a figure, and converts the pattern's millimetres to the figure's units.
struct PlacedPattern {
    PlacedPattern(const LibraryPattern &libraryPattern, QPointF topLeft, double width)
        : pattern(libraryPattern),
          scale(width / (libraryPattern.outerSize.width() + 2.0 * libraryPattern.quietZone)),
          place(topLeft, QSizeF(width, (libraryPattern.outerSize.height() + 2.0 * libraryPattern.quietZone) * scale)) {}

    QPointF at(QPointF mm) const {
        return place.topLeft() + (mm + QPointF(pattern.quietZone, pattern.quietZone)) * scale;
    }
    QPointF at(int column, int row) const { return at(pattern.point(column, row)); }
    QPointF outerTopLeft() const { return at(QPointF(0.0, 0.0)); }
    QPointF outerBottomRight() const { return at(QPointF(pattern.outerSize.width(), pattern.outerSize.height())); }

    void draw(Figure &figure) const {
        figure.picture(pattern.picture, place);
        figure.dashedFrame(place);
    }

    const LibraryPattern &pattern;
    double scale;
    QRectF place;
};

QSizeF figureSize(const PlacedPattern &placed) {
    return {placed.place.right() + RightMargin, placed.place.bottom() + BottomMargin};
}

void writeCount(Figure &figure, const PlacedPattern &placed, const QString &text) {
    figure.text({placed.place.right() + RightMargin - 12.0, placed.place.bottom() + 46.0}, text, Figure::Anchor::End);
}

void dimensionOuterSize(Figure &figure, const PlacedPattern &placed) {
    const QPointF topLeft = placed.outerTopLeft();
    const QPointF bottomRight = placed.outerBottomRight();
    const QSizeF size = placed.pattern.outerSize;
    figure.dimensionAlongX(topLeft.x(), bottomRight.x(), placed.place.top() - 22.0, topLeft.y(),
                           "outer size " + millimetres(size.width()));
    figure.dimensionAlongY(topLeft.y(), bottomRight.y(), placed.place.left() - 22.0, topLeft.x(),
                           millimetres(size.height()));
}

// Marks the distance between two lattice points of the bottom row that are one grid spacing apart.
void dimensionGridSpacing(Figure &figure, const PlacedPattern &placed, int pointsApart) {
    const int row = placed.pattern.rows - 1;
    const QPointF from = placed.at(0, row);
    const QPointF to = placed.at(pointsApart, row);
    figure.dimensionAlongX(from.x(), to.x(), placed.place.bottom() + 22.0, from.y(), QString());
    figure.label({from.x(), placed.place.bottom() + 22.0 + 24.0},
                 "grid spacing " + millimetres(placed.pattern.gridSpacing), Figure::Anchor::Start);
}

void dimensionSquareSide(Figure &figure, const PlacedPattern &placed) {
    const int column = placed.pattern.columns - 1;
    const QPointF from = placed.at(column, 0);
    const QPointF to = placed.at(column, 1);
    figure.dimensionAlongY(from.y(), to.y(), placed.place.right() + 22.0, from.x(),
                           millimetres((placed.pattern.point(column, 1) - placed.pattern.point(column, 0)).y()));
}

// Marks the first and the last corner. A size such as 21 × 13 is the number of corners along x and along y, including
// these two corners.
void ringOuterCorners(Figure &figure, const PlacedPattern &placed) {
    const int columns = placed.pattern.columns;
    const int rows = placed.pattern.rows;
    figure.ring(placed.at(0, 0), 8.0);
    figure.ring(placed.at(columns - 1, rows - 1), 8.0);
    writeCount(figure, placed, QString("size %1 × %2").arg(columns).arg(rows));
}

Figure checkerboardFigure(const LibraryPattern &pattern, const QString &description, double width) {
    const PlacedPattern placed(pattern, PatternTopLeft, width);
    Figure figure(figureSize(placed), description);
    placed.draw(figure);
    dimensionOuterSize(figure, placed);
    dimensionGridSpacing(figure, placed, 2);
    dimensionSquareSide(figure, placed);
    ringOuterCorners(figure, placed);
    return figure;
}

LibraryPattern officialPattern() {
    return makeLibraryPattern(
        [](const TreeItem &item) {
            item["Type"] = "Plate12";
            item["GridSpacing"] = 12.0;
            item["Thickness"] = 2.0;
            item["Polarity"] = true;
        },
        Pixels);
}

LibraryPattern singlePattern(bool polarity) {
    return makeLibraryPattern(
        [polarity](const TreeItem &item) {
            item["Type"] = "SingleCustom";
            item["GridSpacing"] = 16.0;
            item["Thickness"] = 3.0;
            item["Polarity"] = polarity;
        },
        Pixels);
}

LibraryPattern flexiblePattern() {
    return makeLibraryPattern(
        [](const TreeItem &item) {
            item["Type"] = "Flexible";
            item["GridSize"][0] = 21;
            item["GridSize"][1] = 13;
            item["GridSpacing"] = 12.5;
            item["Offset"][0] = 18.75;
            item["Offset"][1] = -12.5;
            item["Polarity"] = true;
        },
        Pixels);
}

LibraryPattern assemblyPattern(int number) {
    return makeLibraryPattern(
        [number](const TreeItem &item) {
            item["Type"] = "Assembly";
            item["AssemblyPattern"] = number;
            item["GridSpacing"] = 24.0;
            item["Polarity"] = true;
        },
        Pixels);
}

LibraryPattern halconPattern() {
    return makeLibraryPattern(
        [](const TreeItem &item) {
            item["GridSpacing"] = 12.5;
            item["Thickness"] = 2.0;
            item["Encoding"] = true;
        },
        Pixels);
}

Figure flexibleFigure() {
    const LibraryPattern pattern = flexiblePattern();
    Figure figure = checkerboardFigure(
        pattern,
        "A flexible pattern of 21 by 13 corners with its outer size, its grid spacing and its reference corner", 400.0);
    const PlacedPattern placed(pattern, PatternTopLeft, 400.0);
    const QPointF reference = placed.at(pattern.referencePoint());
    figure.ring(reference, 8.0);
    figure.line(reference, {placed.place.right() + 22.0, reference.y()});
    figure.label({placed.place.right() + 28.0, reference.y() - 2.0}, "lies at", Figure::Anchor::Start);
    figure.label({placed.place.right() + 28.0, reference.y() + 18.0}, "the offset", Figure::Anchor::Start);
    return figure;
}

Figure halconFigure() {
    const LibraryPattern pattern = halconPattern();
    const PlacedPattern placed(pattern, PatternTopLeft, 360.0);
    Figure figure(figureSize(placed),
                  "A Halcon-style plate with its outer size, its grid spacing and the mark of its top-left corner");
    placed.draw(figure);
    dimensionOuterSize(figure, placed);
    dimensionGridSpacing(figure, placed, 1);
    writeCount(figure, placed, QString("%1 × %2 marks").arg(pattern.columns).arg(pattern.rows));
    const QPointF corner = placed.outerTopLeft() + QPointF(30.0, 30.0);
    figure.ring(corner, 24.0);
    figure.label({corner.x() - 60.0, 24.0}, "corner mark");
    figure.line({corner.x() - 40.0, 30.0}, corner - QPointF(14.0, 20.0));
    return figure;
}

Figure polarityFigure() {
    const LibraryPattern dark = singlePattern(true);
    const LibraryPattern light = singlePattern(false);
    const PlacedPattern left(dark, {10.0, 10.0}, 260.0);
    const PlacedPattern right(light, {290.0, 10.0}, 260.0);
    Figure figure({560.0, 310.0}, "The same pattern with polarity checked and not checked");
    left.draw(figure);
    right.draw(figure);
    figure.text({left.place.center().x(), 298.0}, "“Polarity” checked");
    figure.text({right.place.center().x(), 298.0}, "not checked");
    return figure;
}

// An example of three patterns fixed to one part. Only the patterns themselves are to scale.
Figure assembledFigure() {
    Figure figure({620.0, 310.0}, "Three patterns of an assembly, fixed to one part at any angle");
    struct Place {
        QPointF topLeft;
        double degrees;
    };
    const std::vector<Place> places{{{40.0, 70.0}, -8.0}, {{230.0, 30.0}, 5.0}, {{420.0, 90.0}, 14.0}};
    for (int number = 0; number < static_cast<int>(places.size()); ++number) {
        const Place &place = places[static_cast<std::size_t>(number)];
        const LibraryPattern pattern = assemblyPattern(number);
        const PlacedPattern placed(pattern, place.topLeft, 165.0);
        figure.beginTurned(place.degrees, placed.place.center());
        placed.draw(figure);
        figure.label({placed.place.center().x(), placed.place.bottom() + 22.0}, QString("pattern %1").arg(number));
        figure.end();
    }
    return figure;
}

void drawAll(const QDir &folder) {
    checkerboardFigure(officialPattern(), "An official plate with its outer size, grid spacing and square side", 360.0)
        .write(folder.filePath("official.svg"));
    checkerboardFigure(singlePattern(true), "A custom pattern with its outer size, grid spacing and square side", 360.0)
        .write(folder.filePath("custom.svg"));
    flexibleFigure().write(folder.filePath("flexible.svg"));
    checkerboardFigure(assemblyPattern(0), "Pattern 0 of an assembly with its outer size and grid spacing", 360.0)
        .write(folder.filePath("assembly.svg"));
    halconFigure().write(folder.filePath("halcon.svg"));
    polarityFigure().write(folder.filePath("polarity.svg"));
    assembledFigure().write(folder.filePath("assembled.svg"));
}

int run(const QString &folder) {
    try {
        drawAll(QDir(folder));
        return 0;
    } catch (const LmLibException &exception) {
        std::cerr << "The library refused a figure: " << exception.errorName << " at " << exception.itemPath << '\n';
    } catch (const std::exception &exception) {
        std::cerr << exception.what() << '\n';
    }
    return 1;
}

}  // namespace

int main(int argumentCount, char **arguments) {
    if (argumentCount != 2) {
        std::cerr << "Usage: draw_figures FOLDER\n";
        return 2;
    }
    const int status = run(QString::fromLocal8Bit(arguments[1]));
    lmLibFinalize(nullptr);
    return status;
}
