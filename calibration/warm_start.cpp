#include "calibration/warm_start.h"

#include <algorithm>
#include <limits>
#include <map>
#include <set>
#include <tuple>

#include "calibration/outliers.h"
#include "calibration/planar_pose.h"
#include "calibration/print_freedom.h"
#include "calibration/sighting_residuals.h"
#include "calibration/start_values.h"

namespace calibration {

namespace {

// A new sighting is left out at first if the scale of its residuals (scaleOfLengths) is at least this large. Good
// sightings have a scale of about 1.
constexpr double greatestScale = 3;
constexpr double robustScale = 6;
// At least this share of the sightings must be the same as before.
constexpr double leastSame = 0.5;
// At least this many sightings of a print must be in use for each sighting of this print that is left out.
constexpr int usedForEachLeftOut = 2;
constexpr int greatestRounds = 4;

int cameraOf(const Observations &observations, const Sighting &sighting) {
    return observations.photographs[size_t(sighting.photograph)].camera;
}

bool haveSameCorners(const Sighting &a, const Sighting &b) {
    return std::equal(a.corners.begin(), a.corners.end(), b.corners.begin(), b.corners.end(),
                      [](const SeenCorner &one, const SeenCorner &other) {
                          return one.point == other.point && one.image == other.image;
                      });
}

class WarmStart {
public:
    WarmStart(const Observations &all, const Calibration &before, const std::vector<int> &equal,
              const CalibrateOptions &how, Calibration &target)
        : given(all), previous(before), same(equal), options(how), result(target) {}

    bool run() {
        result.observations = given;
        if (!takeOver()) {
            return false;
        }
        place();
        setShapes(result.observations, bendsOf(previous.freedom), options.measured, result.estimate, result.freedom);
        return placeNewMoments() && solve() && isClearWhichCount();
    }

private:
    const Sighting *before(size_t sighting) const {
        return same[sighting] < 0 ? nullptr : &previous.observations.sightings[size_t(same[sighting])];
    }

    // Takes over the lens models, the factors of the standard deviations, and which sightings and corners are left out.
    // Returns false if too few sightings are the same as before, or if a camera has no such sighting.
    bool takeOver() {
        std::vector<double> factors(given.cameras.size(), 0);
        size_t count = 0;
        for (size_t i = 0; i < given.sightings.size(); i++) {
            const Sighting *old = before(i);
            if (old != nullptr && given.sightings[i].isUsed && !old->corners.empty()) {
                Sighting &sighting = result.observations.sightings[i];
                factors[size_t(cameraOf(given, sighting))] = old->corners[0].sigma / sighting.corners[0].sigma;
                sighting.isUsed = old->isUsed;
                for (size_t k = 0; k < sighting.corners.size(); k++) {
                    sighting.corners[k].isUsed = sighting.corners[k].isUsed && old->corners[k].isUsed;
                }
                count++;
            }
        }
        if (double(count) < leastSame * double(given.sightings.size()) ||
            std::count(factors.begin(), factors.end(), 0) > 0) {
            return false;
        }
        scaleDeviations(result.observations, factors);
        for (size_t i = 0; i < given.cameras.size(); i++) {
            result.observations.cameras[i].lens = previous.observations.cameras[i].lens;
        }
        return true;
    }

    // Finds the poses of prints, cameras and moments again, because if some photographs are gone, the others may no
    // longer be linked. Sightings that took part before keep their poses.
    void place() {
        std::vector<std::optional<RigidMotion>> known(given.sightings.size());
        Observations observations = result.observations;
        for (size_t i = 0; i < known.size(); i++) {
            const Sighting *old = before(i);
            observations.sightings[i].isUsed = given.sightings[i].isUsed;
            if (old != nullptr && takesPart(previous.observations, *old, previous.estimate)) {
                const Photograph &photograph = previous.observations.photographs[size_t(old->photograph)];
                known[i] = previous.estimate.cameraFromRig[size_t(photograph.camera)] *
                           previous.estimate.rigFromWorld[size_t(photograph.moment)] *
                           previous.estimate.worldFromPrint[size_t(old->print)];
            }
        }
        result.estimate = startPoses(observations, previous.estimate.intrinsics, known);
        result.estimate.shapes = previous.estimate.shapes;
    }

    // A moment is new if the earlier result used none of its sightings. Gives each new moment the pose that fits its
    // sightings best. Sightings that do not fit this pose are left out for the time being. New sightings of other
    // moments are left out, too, if they do not fit. Returns false if a solve fails, or if it is not clear which
    // sightings of a moment fit.
    bool placeNewMoments() {
        std::set<int> known;
        std::map<int, std::vector<size_t>> unknown;
        for (size_t i = 0; i < given.sightings.size(); i++) {
            const Sighting *old = before(i);
            if (old != nullptr && old->isUsed) {
                known.insert(momentOf(i));
            }
        }
        for (size_t i = 0; i < given.sightings.size(); i++) {
            if (given.sightings[i].isUsed && hasPose(given, given.sightings[i], result.estimate)) {
                if (known.count(momentOf(i)) == 0) {
                    unknown[momentOf(i)].push_back(i);
                } else if (before(i) == nullptr) {
                    startNew(i);
                }
            }
        }
        for (const auto &[moment, sightings] : unknown) {
            if (placeMoment(moment, sightings)) {
                sharp.insert(moment);
            }
        }
        return unknown.empty() || improve(unknown);
    }

    int momentOf(size_t sighting) const {
        return given.photographs[size_t(given.sightings[sighting].photograph)].moment;
    }

    double scaleOf(size_t sighting) const {
        const Sighting &one = result.observations.sightings[sighting];
        const std::vector<double> lengths =
            residualLengths(result.observations, one, blocksOf(result.observations, one, result.estimate));
        return lengths.empty() ? std::numeric_limits<double>::infinity() : scaleOfLengths(lengths);
    }

    // Gives the moment the pose that fits its sightings best. Returns true if one of the sightings fits in the pose
    // that is computed from this sighting alone.
    bool placeMoment(int moment, const std::vector<size_t> &sightings) {
        bool fitsAlone = false;
        RigidMotion &rigFromWorld = result.estimate.rigFromWorld[size_t(moment)];
        RigidMotion best = rigFromWorld;
        double least = std::numeric_limits<double>::infinity();
        for (const size_t i : sightings) {
            const Sighting &sighting = given.sightings[i];
            const auto camera = size_t(cameraOf(given, sighting));
            const auto pose = planarPose(result.observations, sighting, result.estimate.intrinsics[camera],
                                         result.estimate.shapes[size_t(sighting.print)]);
            if (!pose) {
                continue;
            }
            rigFromWorld = result.estimate.cameraFromRig[camera].inverse() * pose->cameraFromPrint *
                           result.estimate.worldFromPrint[size_t(sighting.print)].inverse();
            fitsAlone = fitsAlone || scaleOf(i) < greatestScale;
            double sum = 0;  // each sighting adds only up to a limit, so that a single bad one cannot decide
            for (const size_t other : sightings) {
                sum += std::min(scaleOf(other), 10 * greatestScale);
            }
            if (sum < least) {
                least = sum;
                best = rigFromWorld;
            }
        }
        rigFromWorld = best;
        return fitsAlone;
    }

    bool improve(const std::map<int, std::vector<size_t>> &unknown) {
        Observations some = result.observations;
        for (Sighting &sighting : some.sightings) {
            sighting.isUsed = false;
        }
        for (const auto &[moment, sightings] : unknown) {
            for (const size_t i : sightings) {
                some.sightings[i].isUsed = true;
            }
        }
        SolveOptions placing;
        placing.freedom = {false, false, false, false, {}, {}};
        placing.robustScale = robustScale;
        if (!solveJointly(some, placing, result.estimate)) {
            return false;
        }
        for (const auto &[moment, sightings] : unknown) {
            size_t fitting = 0;
            for (const size_t i : sightings) {
                startNew(i);
                fitting += result.observations.sightings[i].isUsed ? 1U : 0U;
            }
            // If at most half of the moment's sightings fit, it is not clear which of the prints moved. This does not
            // matter if no sighting fits even in a pose of its own, because then the photographs are blurred or
            // misread.
            if (2 * fitting <= sightings.size() && sharp.count(moment) > 0) {
                return false;
            }
        }
        return true;
    }

    // Makes the first decision about a sighting: whether it is used, and which of its corners are.
    void startNew(size_t sighting) {
        Sighting &one = result.observations.sightings[sighting];
        const std::vector<double> lengths =
            residualLengths(result.observations, one, blocksOf(result.observations, one, result.estimate));
        const double scale = scaleOfLengths(lengths);
        one.isUsed = !lengths.empty() && scale < greatestScale;
        for (size_t k = 0; k < lengths.size(); k++) {
            one.corners[k].isUsed = given.sightings[sighting].corners[k].isUsed &&
                                    (!one.isUsed || lengths[k] < 2 * greatestLength * std::max(scale, 1.0));
        }
    }

    // Solves and decides about outliers in turn, until no decision changes, but at most four times. Returns false if a
    // solve fails, or if the decision changes about a sighting that is also in the earlier result. Also returns false
    // if the decision about any sighting still changes in the last round. If only decisions about single corners change
    // in the last round, solves once more and accepts the result.
    bool solve() {
        SolveOptions exact;
        exact.freedom = result.freedom;
        exact.isNear = true;
        for (int round = 0; round < greatestRounds; round++) {
            if (!solveJointly(result.observations, exact, result.estimate)) {
                return false;
            }
            const std::vector<bool> used = usedSightings();
            if (!decideOutliers(given, result.observations, result.estimate)) {
                return true;
            }
            const std::vector<bool> now = usedSightings();
            for (size_t i = 0; i < now.size(); i++) {
                if (now[i] != used[i] && before(i) != nullptr) {
                    return false;
                }
            }
            if (round + 1 == greatestRounds && now != used) {
                return false;
            }
        }
        return solveJointly(result.observations, exact, result.estimate).has_value();
    }

    std::vector<bool> usedSightings() const {
        std::vector<bool> used;
        used.reserve(result.observations.sightings.size());
        for (const Sighting &sighting : result.observations.sightings) {
            used.push_back(sighting.isUsed);
        }
        return used;
    }

    // True if at least twice as many sightings of each print are in use as are left out. This must hold separately for
    // the photographs that show only this print and for those that also show other prints. If the print was moved, the
    // photographs with several prints decide which of its places is used, and photographs that show only this print
    // must not outvote them.
    bool isClearWhichCount() const {
        std::map<int, int> shown;  // sightings in each photograph
        for (const Sighting &sighting : given.sightings) {
            shown[sighting.photograph] += sighting.isUsed ? 1 : 0;
        }
        struct Balance {
            int used = 0, leftOut = 0;
        };
        std::map<std::tuple<int, bool>, Balance> balances;  // for each print, with and without other prints beside it
        for (size_t i = 0; i < given.sightings.size(); i++) {
            const Sighting &sighting = given.sightings[i];
            Balance &balance = balances[{sighting.print, shown[sighting.photograph] > 1}];
            balance.used += result.observations.sightings[i].isUsed ? 1 : 0;
            balance.leftOut += sighting.isUsed && !result.observations.sightings[i].isUsed ? 1 : 0;
        }
        return std::all_of(balances.begin(), balances.end(),
                           [](const auto &one) { return one.second.used >= usedForEachLeftOut * one.second.leftOut; });
    }

    const Observations &given;
    const Calibration &previous;
    const std::vector<int> &same;
    const CalibrateOptions &options;
    Calibration &result;
    std::set<int> sharp;  // new moments with a sighting that fits alone
};

}  // namespace

std::vector<int> sameSightings(const Observations &given, const Observations &previous) {
    // Corners are computed from brightness, so two photographs never agree in all digits by chance. A key has the
    // camera, the print, the number of corners, and x and y of the first corner.
    using Key = std::tuple<int, int, size_t, double, double>;
    const auto keyOf = [](const Observations &all, const Sighting &one) {
        const Eigen::Vector2d first = one.corners.empty() ? Eigen::Vector2d(0, 0) : one.corners.front().image;
        return Key(cameraOf(all, one), one.print, one.corners.size(), first.x(), first.y());
    };
    std::map<Key, int> known;
    for (size_t i = 0; i < previous.sightings.size(); i++) {
        known.emplace(keyOf(previous, previous.sightings[i]), int(i));
    }
    std::vector<int> same;
    same.reserve(given.sightings.size());
    for (const Sighting &sighting : given.sightings) {
        const auto found = known.find(keyOf(given, sighting));
        const bool isSame =
            found != known.end() && haveSameCorners(sighting, previous.sightings[size_t(found->second)]);
        same.push_back(isSame ? found->second : -1);
    }
    return same;
}

bool solveFromPrevious(const Observations &given, const Calibration &previous, const std::vector<int> &same,
                       const CalibrateOptions &options, Calibration &result) {
    return WarmStart(given, previous, same, options, result).run();
}

}  // namespace calibration
