#include "viewer/session/print_look.h"

#include <QMap>
#include <algorithm>

using pattern_reader::PatternCorner;
using pattern_reader::PatternKind;
using pattern_reader::PatternReading;

namespace {

struct Match {
    const PatternReading *reading = nullptr;  // null if there is none
    const PatternCorner *corner = nullptr;    // the sighting's first corner
};

// Returns the reading that a sighting was made from: the one with a corner at exactly the image position of the
// sighting's first corner.
Match readingOf(const calibration::Sighting &sighting, const PatternReadings &readings) {
    const Eigen::Vector2d &image = sighting.corners.front().image;
    for (const PatternReading &reading : readings) {
        for (const PatternCorner &corner : reading.corners) {
            if (double(corner.image.x) == image.x() && double(corner.image.y) == image.y()) {
                return {&reading, &corner};
            }
        }
    }
    return {};
}

PrintLook lookOf(const Match &match, const Eigen::Vector2i &cell) {
    const int step = match.reading->kind == PatternKind::Plate ? 2 : 1;
    const cv::Point firstPoint = match.corner->lattice - step * cv::Point(cell.x(), cell.y());
    PrintLook look;
    look.kind = match.reading->kind;
    look.tile = match.reading->tile;
    look.values = match.reading->values;
    // The square above and to the left of point (x, y) has column x - 1 and row y - 1. The sum of this column and row
    // is even exactly if x + y is even.
    look.isTopLeftSquareDark =
        look.kind == PatternKind::Plate || ((firstPoint.x + firstPoint.y) % 2 == 0) == match.reading->evenSquaresDark;
    return look;
}

}  // namespace

std::vector<std::optional<PrintLook>> looksOf(const calibration::Calibration &calibration,
                                              const std::vector<int> &photographIds,
                                              const QVector<SessionPhotograph> &photographs) {
    QMap<int, const SessionPhotograph *> byId;
    for (const SessionPhotograph &photograph : photographs) {
        byId[photograph.id] = &photograph;
    }
    const calibration::Observations &observations = calibration.observations;
    std::vector<std::optional<PrintLook>> looks(observations.prints.size());
    for (const calibration::Sighting &sighting : observations.sightings) {
        std::optional<PrintLook> &look = looks[size_t(sighting.print)];
        const calibration::Print &print = observations.prints[size_t(sighting.print)];
        const SessionPhotograph *photograph = byId.value(photographIds[size_t(sighting.photograph)]);
        if ((look && look->values) || sighting.corners.empty() || print.cells.empty() || photograph == nullptr ||
            !photograph->readings) {
            continue;
        }
        const Match match = readingOf(sighting, *photograph->readings);
        if (match.reading != nullptr && (!look || match.reading->values)) {
            look = lookOf(match, print.cells[size_t(sighting.corners.front().point)]);
        }
    }
    return looks;
}
