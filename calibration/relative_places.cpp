#include "calibration/relative_places.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "calibration/dense_solve.h"
#include "calibration/joint_solve.h"

namespace calibration {

namespace {

// Two mean poses count as clearly different, and not just by chance, if their squared Mahalanobis distance is larger
// than this number times `excess` (see placesOf). The limit is high for two reasons: a pose has 6 degrees of freedom,
// and the time of a change is chosen to make the distance between the means before and after it as large as possible.
constexpr double clearDistance = 60;

// The weighted mean of several poses at the same place.
struct Fused {
    Matrix6 information = Matrix6::Zero();
    Vector6 weighted = Vector6::Zero();  // sum of information * offset

    void add(const Fused &other) {
        information += other.information;
        weighted += other.weighted;
    }
    Fused without(const Fused &other) const { return {information - other.information, weighted - other.weighted}; }
    // Returns by how much the weighted sum of the squared offsets shrinks if the mean is subtracted from each offset.
    double explained() const { return weighted.dot(Vector6(solveSymmetric(information, weighted))); }
};

Fused fusedOf(const RelativePose &pose) {
    return {pose.information, pose.information * pose.offset};
}

// Returns the squared Mahalanobis distance between two means.
double distanceOf(const Fused &a, const Fused &b) {
    Fused both = a;
    both.add(b);
    return a.explained() + b.explained() - both.explained();
}

// Returns the inverse covariance of the difference of two poses, which is the inverse of the sum of their covariances.
Matrix6 informationOfChange(const RelativePose &a, const RelativePose &b) {
    const Matrix6 sum = a.information + b.information;
    return a.information - a.information * Matrix6(solveSymmetric(sum, a.information));
}

class Timeline {
public:
    Timeline(const std::vector<RelativePose> &poses, double clear) : clearSquare(clear), sums(1), places(poses.size()) {
        for (const RelativePose &pose : poses) {
            sums.push_back(sums.back());
            sums.back().add(fusedOf(pose));
        }
        cut(0, poses.size());
        // The stretches with the most poses come first.
        std::stable_sort(stretches.begin(), stretches.end(),
                         [](const Stretch &a, const Stretch &b) { return a.second - a.first > b.second - b.first; });
    }

    std::vector<int> run() {
        std::vector<Fused> known;
        for (const Stretch &stretch : stretches) {
            const Fused fused = between(stretch.first, stretch.second);
            const auto place = std::find_if(known.begin(), known.end(),
                                            [&](const Fused &one) { return distanceOf(one, fused) < clearSquare; });
            std::fill(places.begin() + std::ptrdiff_t(stretch.first), places.begin() + std::ptrdiff_t(stretch.second),
                      int(place - known.begin()));
            if (place == known.end()) {
                known.push_back(fused);
            } else {
                place->add(fused);
            }
        }
        return places;
    }

private:
    using Stretch = std::pair<size_t, size_t>;  // the index of the first pose, and the index after the last pose

    Fused between(size_t first, size_t last) const { return sums[last].without(sums[first]); }

    // Finds the time at which the means of the poses before and after it differ most. If this change is clear, cuts the
    // poses there, and then cuts both parts in the same way. Otherwise adds the poses as one stretch.
    void cut(size_t first, size_t last) {
        double greatest = clearSquare;
        size_t middle = first;
        for (size_t i = first + 1; i < last; i++) {
            const double change = distanceOf(between(first, i), between(i, last));
            if (change > greatest) {
                greatest = change;
                middle = i;
            }
        }
        if (middle == first) {
            stretches.emplace_back(first, last);
            return;
        }
        cut(first, middle);
        cut(middle, last);
    }

    double clearSquare;
    std::vector<Fused> sums;  // for each index, the sum of all poses before it
    std::vector<Stretch> stretches;
    std::vector<int> places;
};

}  // namespace

void agreeOnScale(std::vector<RelativePose> &poses) {
    // Each entry has the scale that the change from one pose to the next suggests, and the weight of this suggestion.
    // The first entry is the prior. The weighted median ignores the changes at which the print moved.
    std::vector<std::pair<double, double>> opinions{{0, 1 / printPrior}};
    double sum = opinions.front().second;
    for (size_t i = 1; i < poses.size(); i++) {
        const Vector6 change = poses[i].offset - poses[i - 1].offset;
        const Vector6 byScale = poses[i].byScale - poses[i - 1].byScale;
        const Vector6 weighted = informationOfChange(poses[i - 1], poses[i]) * byScale;
        const double square = weighted.dot(byScale);
        if (square > 0) {
            opinions.emplace_back(-weighted.dot(change) / square, std::sqrt(square));
            sum += std::sqrt(square);
        }
    }
    std::sort(opinions.begin(), opinions.end());
    size_t middle = 0;
    double half = opinions[0].second;
    while (half < sum / 2) {
        middle++;
        half += opinions[middle].second;
    }
    for (RelativePose &pose : poses) {
        pose.offset += opinions[middle].first * pose.byScale;
    }
}

double squaredDistance(const RelativePose &a, const RelativePose &b) {
    return distanceOf(fusedOf(a), fusedOf(b));
}

std::vector<int> placesOf(const std::vector<RelativePose> &poses, double excess) {
    return Timeline(poses, clearDistance * excess).run();
}

}  // namespace calibration
