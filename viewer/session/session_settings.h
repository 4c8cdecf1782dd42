// What the user sets for a session, and its JSON form within a session file.
#pragma once

#include <QJsonObject>
#include <QMap>
#include <QPointF>
#include <QSize>
#include <QStringList>
#include <array>
#include <optional>

#include "calibration/lens_model.h"

// How the photographs belong together.
enum class Arrangement {
    Cameras,   // every camera by itself
    Rig,       // photographs with the same index or name were taken at one moment by cameras fixed to each other
    Assembly,  // as Cameras; several patterns that are fixed to each other get a common coordinate system
};

// A corner of a print: the number of the pattern, and column and row in its file.
struct NamedCorner {
    int pattern = 0;
    int column = 0;
    int row = 0;
};
inline bool operator==(const NamedCorner &a, const NamedCorner &b) {
    return a.pattern == b.pattern && a.column == b.column && a.row == b.row;
}

struct SessionSettings {
    Arrangement arrangement = Arrangement::Cameras;
    std::optional<calibration::LensModel> lens;  // chosen automatically if absent
    bool mayBend = true;
    double gridSpacing = 0;        // mm; of patterns that do not carry theirs; 0 if unknown
    std::optional<QSize> board;    // columns and rows of inner corners of a plain checkerboard, 3 x 3 at least
    double boardSquare = 0;        // mm; 0 if unknown
    QStringList patternFiles;      // what was printed: JSON or PDF
    QMap<int, QPointF> measured;   // by pattern number: measured size divided by the size in the drawing, x and y
    std::optional<int> reference;  // the pattern whose axes the results have; the first one if absent
    // Origin, a point on the x axis, and a point in the plane of x and y; used instead of the reference pattern.
    std::optional<std::array<NamedCorner, 3>> frame;
};
bool operator==(const SessionSettings &a, const SessionSettings &b);

QJsonObject toJson(const SessionSettings &settings);

// Unknown keys, and values out of range, are ignored: a session from a newer version opens with what is understood.
SessionSettings settingsFromJson(const QJsonObject &json);
