#include "calibration/moved_prints.h"

#include <algorithm>
#include <map>
#include <optional>
#include <tuple>
#include <utility>

#include "calibration/dense_solve.h"
#include "calibration/lone_poses.h"
#include "calibration/relative_places.h"

namespace calibration {

namespace {

// Errors of the lens and of the shapes add to the noise. It is assumed that they multiply the variances by at most this
// factor.
constexpr double greatestExcess = 25;

// Returns the pose of print b relative to print a in one photograph, as a difference from `reference` (see
// RelativePose). Empty if the covariance of the difference cannot be inverted.
std::optional<RelativePose> relativePose(const LonePose &a, const LonePose &b, const RigidMotion &reference) {
    const Eigen::Matrix3d back = rotationMatrix(a.cameraFromPrint.rotation).transpose();
    const Eigen::Vector3d apart = b.cameraFromPrint.translation - a.cameraFromPrint.translation;
    RelativePose pose;
    pose.offset << rotationVector(back * rotationMatrix(b.cameraFromPrint.rotation) *
                                  rotationMatrix(reference.rotation).transpose()),
        back * apart - reference.translation;
    pose.byScale << Eigen::Vector3d::Zero(), back * b.cameraFromPrint.translation;
    Matrix6 byA = Matrix6::Zero();
    byA.topLeftCorner<3, 3>() = -back;
    byA.bottomRightCorner<3, 3>() = -back;
    byA.bottomLeftCorner<3, 3>() = back * crossMatrix(apart);
    Matrix6 byB = Matrix6::Zero();
    byB.topLeftCorner<3, 3>() = back;
    byB.bottomRightCorner<3, 3>() = back;
    const Matrix6 covariance = byA * a.covariance * byA.transpose() + byB * b.covariance * byB.transpose();
    const auto information = solvePositive(covariance, Matrix6::Identity());
    if (!information) {
        return std::nullopt;
    }
    pose.information = (*information + information->transpose()) / 2;
    return pose;
}

// Two prints, and the photographs that show both.
struct Pair {
    size_t a = 0, b = 0;  // prints
    // One entry for each photograph:
    std::vector<std::pair<size_t, size_t>> sightings;  // of a, and of b
    std::vector<RelativePose> poses;                   // of b relative to a
    std::vector<int> places;                           // the numbers from placesOf()
};

std::vector<Pair> pairsOf(const Observations &observations, const Estimate &estimate,
                          const std::vector<std::optional<LonePose>> &poses) {
    std::map<std::tuple<int, int>, std::vector<size_t>> byTime;  // sightings by moment and photograph
    for (size_t i = 0; i < poses.size(); i++) {
        if (poses[i]) {
            const int photograph = observations.sightings[i].photograph;
            byTime[{observations.photographs[size_t(photograph)].moment, photograph}].push_back(i);
        }
    }
    std::map<std::pair<size_t, size_t>, Pair> pairs;
    for (const auto &[time, some] : byTime) {
        for (const size_t i : some) {
            for (const size_t j : some) {
                const auto a = size_t(observations.sightings[i].print);
                const auto b = size_t(observations.sightings[j].print);
                if (a >= b) {
                    continue;
                }
                const RigidMotion reference = estimate.worldFromPrint[a].inverse() * estimate.worldFromPrint[b];
                if (const auto pose = relativePose(*poses[i], *poses[j], reference)) {
                    Pair &pair = pairs[{a, b}];
                    pair.a = a;
                    pair.b = b;
                    pair.sightings.emplace_back(i, j);
                    pair.poses.push_back(*pose);
                }
            }
        }
    }
    std::vector<Pair> result;
    result.reserve(pairs.size());
    for (auto &[prints, pair] : pairs) {
        result.push_back(std::move(pair));
    }
    return result;
}

// Returns the ratio of the true variances to those that the poses state, limited to the range from 1 to greatestExcess.
// It is computed from the lower quartile of the changes between successive poses: even if a print sometimes moved, most
// successive poses are at the same place, so the smaller changes are only noise.
double excessOf(const std::vector<Pair> &pairs) {
    constexpr double quarter = 3.4546;  // the first quartile of chi-squared with 6 degrees of freedom
    std::vector<double> changes;
    for (const Pair &pair : pairs) {
        for (size_t i = 1; i < pair.poses.size(); i++) {
            changes.push_back(squaredDistance(pair.poses[i - 1], pair.poses[i]));
        }
    }
    if (changes.empty()) {
        return 1;
    }
    const auto one = changes.begin() + std::ptrdiff_t(changes.size() / 4);
    std::nth_element(changes.begin(), one, changes.end());
    return std::clamp(*one / quarter, 1.0, greatestExcess);
}

// Decides in which sightings a print has moved. Prints are settled one by one: the decision is made for all sightings
// of one print before the next print is chosen. The next print is the one with the most contradictions (see
// mostContradicted).
class Settlement {
public:
    Settlement(const Observations &seen, std::vector<Pair> all)
        : pairs(std::move(all)), isMoved(seen.sightings.size()), isSettled(seen.prints.size()) {
        for (Pair &pair : pairs) {
            agreeOnScale(pair.poses);
        }
        const double excess = excessOf(pairs);
        for (Pair &pair : pairs) {
            pair.places = placesOf(pair.poses, excess);
        }
    }

    std::vector<size_t> run() {
        while (const std::optional<size_t> print = mostContradicted()) {
            settle(*print);
        }
        std::vector<size_t> result;
        for (size_t i = 0; i < isMoved.size(); i++) {
            if (isMoved[i]) {
                result.push_back(i);
            }
        }
        return result;
    }

private:
    // Returns the number of photographs that show a pair, but not at its most frequent place. Sightings that are
    // already marked as moved do not count.
    size_t contradictions(const Pair &pair) const {
        std::map<int, size_t> counts;
        size_t all = 0;
        size_t most = 0;
        for (size_t i = 0; i < pair.places.size(); i++) {
            if (!isMoved[pair.sightings[i].first] && !isMoved[pair.sightings[i].second]) {
                all++;
                most = std::max(most, ++counts[pair.places[i]]);
            }
        }
        return all - most;
    }

    // Returns the print to settle next. This is the unsettled print that is in the most pairs with contradictions. If
    // several unsettled prints are in equally many of these pairs, it is the one with the most contradicting
    // photographs. Empty if no unsettled print is in a pair with contradictions.
    std::optional<size_t> mostContradicted() const {
        struct Count {
            size_t prints = 0, photographs = 0;
        };
        std::vector<Count> counts(isSettled.size());
        for (const Pair &pair : pairs) {
            if (const size_t photographs = contradictions(pair)) {
                for (const size_t print : {pair.a, pair.b}) {
                    counts[print].prints++;
                    counts[print].photographs += photographs;
                }
            }
        }
        std::optional<size_t> result;
        for (size_t i = 0; i < counts.size(); i++) {
            // Of equally contradicted prints, the last is taken, because the first print is the origin of the world.
            if (counts[i].prints > 0 && !isSettled[i] &&
                (!result || std::tie(counts[i].prints, counts[i].photographs) >=
                                std::tie(counts[*result].prints, counts[*result].photographs))) {
                result = i;
            }
        }
        return result;
    }

    // Groups the sightings of a print by place. The other prints vote on whether two sightings are at the same place
    // (see votesAbout). If the sum of these votes is positive, the two sightings get the same place. The place with the
    // most sightings is kept. For a sighting at another place, the votes on all of its pairs with sightings at the kept
    // place are added. If this sum is negative, the sighting is marked as moved.
    void settle(size_t print) {
        isSettled[print] = true;
        const std::map<std::pair<size_t, size_t>, int> votes = votesAbout(print);
        std::map<size_t, size_t> parents;  // a forest; the root of a tree is the first sighting of a place
        for (const auto &[two, vote] : votes) {
            parents.emplace(two.first, two.first);
            parents.emplace(two.second, two.second);
        }
        const auto placeOf = [&](size_t sighting) {
            while (parents[sighting] != sighting) {
                sighting = parents[sighting] = parents[parents[sighting]];
            }
            return sighting;
        };
        for (const auto &[two, vote] : votes) {
            if (vote > 0) {
                const auto [first, second] = std::minmax({placeOf(two.first), placeOf(two.second)});
                parents[second] = first;
            }
        }
        std::map<size_t, int> sizes;
        for (const auto &[sighting, parent] : parents) {
            sizes[placeOf(sighting)]++;
        }
        // Of equally large places, the earliest is kept.
        const auto kept = std::max_element(sizes.begin(), sizes.end(),
                                           [](const auto &one, const auto &two) { return one.second < two.second; });
        std::map<size_t, int> agreement;
        for (const auto &[two, vote] : votes) {
            agreement[two.first] += placeOf(two.second) == kept->first ? vote : 0;
            agreement[two.second] += placeOf(two.first) == kept->first ? vote : 0;
        }
        for (const auto &[sighting, parent] : parents) {
            if (placeOf(sighting) != kept->first && agreement[sighting] < 0) {
                isMoved[sighting] = true;
            }
        }
    }

    // Returns the sum of votes for each pair of sightings of `print`. The two sightings are in two photographs. Every
    // other print that both photographs show has a vote, unless its sighting in one of these photographs is marked as
    // moved. The vote is 1 if `print` has the same place relative to the other print in both photographs, and -1 if the
    // places differ. The pairs are sorted by the indices of their sightings. If the sightings are in the order of
    // time, so are the pairs.
    std::map<std::pair<size_t, size_t>, int> votesAbout(size_t print) const {
        std::map<std::pair<size_t, size_t>, int> votes;
        for (const Pair &pair : pairs) {
            if (pair.a != print && pair.b != print) {
                continue;
            }
            std::vector<std::pair<size_t, int>> seen;  // sighting and place
            for (size_t i = 0; i < pair.places.size(); i++) {
                const auto &[first, second] = pair.sightings[i];
                if (!isMoved[first] && !isMoved[second]) {
                    seen.emplace_back(pair.a == print ? first : second, pair.places[i]);
                }
            }
            for (size_t i = 0; i < seen.size(); i++) {
                for (size_t j = i + 1; j < seen.size(); j++) {
                    votes[std::minmax(seen[i].first, seen[j].first)] += seen[i].second == seen[j].second ? 1 : -1;
                }
            }
        }
        return votes;
    }

    std::vector<Pair> pairs;
    std::vector<bool> isMoved;    // of each sighting
    std::vector<bool> isSettled;  // of each print
};

bool hasPairs(const Observations &observations) {
    std::map<int, int> prints;  // the first print seen in each photograph
    return std::any_of(observations.sightings.begin(), observations.sightings.end(), [&](const Sighting &sighting) {
        return sighting.isUsed && prints.emplace(sighting.photograph, sighting.print).first->second != sighting.print;
    });
}

}  // namespace

std::vector<size_t> findMoved(const Observations &observations, const Freedom &freedom, const Estimate &estimate) {
    if (!hasPairs(observations)) {
        return {};
    }
    const std::vector<std::optional<LonePose>> poses = findLonePoses(observations, freedom, estimate);
    return Settlement(observations, pairsOf(observations, estimate, poses)).run();
}

}  // namespace calibration
