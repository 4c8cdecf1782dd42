// The settings that the user makes for a session, and their JSON form in a session file.
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
    Cameras,   // each camera is calibrated by itself
    Rig,       // cameras that are fixed to each other; momentsOfRig() finds the photographs of the same moment
    Assembly,  // like Cameras, but several patterns that are fixed to each other get a common coordinate system
};

// A corner of a print, named by the number of its pattern and by its column and row in the pattern's file.
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
    double gridSpacing = 0;      // mm, of patterns that do not encode it; 0 if unknown
    std::optional<QSize> board;  // columns and rows of inner corners of a plain checkerboard, at least 3 x 3
    double boardSquare = 0;      // mm; 0 if unknown
    QStringList patternFiles;    // JSON or PDF files of the printed patterns
    // Measured size divided by drawn size, in x and y. The key is the number of the pattern, or -1 if it has no number.
    QMap<int, QPointF> measured;
    std::optional<int> reference;  // the results have the axes of the pattern with this number, see chosenAxes()
    // The corners at the origin, on the x axis, and in the plane of x and y. If they are set, they define the axes
    // instead of the reference pattern.
    std::optional<std::array<NamedCorner, 3>> frame;
};
bool operator==(const SessionSettings &a, const SessionSettings &b);

QJsonObject toJson(const SessionSettings &settings);

// A session from a newer version can be opened, because unknown keys are ignored. Lenses and arrangements with unknown
// names are ignored, too. Lengths, ratios, board sizes and reference patterns are ignored if they are out of range.
SessionSettings settingsFromJson(const QJsonObject &json);
