#include "calibration/model_choice.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <future>
#include <limits>
#include <set>

#include "calibration/dense_solve.h"
#include "calibration/held_out.h"
#include "calibration/interruption.h"
#include "calibration/outliers.h"
#include "calibration/start_values.h"

namespace calibration {

namespace {

// These numbers of moments, and of corners per sighting, are enough to tell models apart.
constexpr size_t enoughMoments = 60;
constexpr size_t enoughCorners = 80;

// The models that are compared. The fewer coefficients a model has, the more it is preferred.
constexpr std::array<LensModel, 5> models = {LensModel::Pinhole4, LensModel::Fisheye, LensModel::Pinhole5,
                                             LensModel::Pinhole8, LensModel::Pinhole12};

bool isFisheye(LensModel lens) {
    return lens == LensModel::Fisheye;
}

void thinOut(Sighting &sighting) {
    const size_t stride = (sighting.corners.size() + enoughCorners - 1) / enoughCorners;
    std::vector<SeenCorner> kept;
    // Each photograph starts at another corner, so that the photographs do not all keep the same corners.
    for (size_t i = size_t(sighting.photograph) % std::max<size_t>(stride, 1); i < sighting.corners.size();
         i += stride) {
        kept.push_back(sighting.corners[i]);
    }
    sighting.corners = std::move(kept);
}

// Returns the sightings of one camera, or of all cameras if `camera` is -1, at a limited number of moments. Each
// sighting keeps only some of its corners.
Observations enough(const Observations &all, int camera) {
    const auto isMeant = [&](const Sighting &sighting) {
        return sighting.isUsed && (camera < 0 || all.photographs[size_t(sighting.photograph)].camera == camera);
    };
    std::set<int> moments;
    for (const Sighting &sighting : all.sightings) {
        if (isMeant(sighting)) {
            moments.insert(all.photographs[size_t(sighting.photograph)].moment);
        }
    }
    std::set<int> taken;
    size_t number = 0;
    for (const int moment : moments) {
        // The moments that are taken are evenly spread.
        if (number * enoughMoments / moments.size() != (number + 1) * enoughMoments / moments.size() ||
            moments.size() <= enoughMoments) {
            taken.insert(moment);
        }
        number++;
    }
    Observations some{all.cameras, all.photographs, all.prints, {}, all.moments};
    if (camera >= 0) {
        // Assigns all photographs to `camera`, so that `camera` is the first camera of its rig. Otherwise, the first
        // camera of the rig could be one without sightings here, and `camera` would get no pose in the rig.
        for (Photograph &photograph : some.photographs) {
            photograph.camera = camera;
        }
    }
    for (const Sighting &sighting : all.sightings) {
        if (isMeant(sighting) && taken.count(all.photographs[size_t(sighting.photograph)].moment) > 0) {
            some.sightings.push_back(sighting);
            thinOut(some.sightings.back());
        }
    }
    return some;
}

// One of the models that are compared. All are solved on the same corners.
struct Candidate {
    Observations observations;
    Estimate estimate;
    Freedom freedom;
    std::optional<std::vector<double>> deviations;  // the factors of solveRobustly(); empty if it failed
    std::vector<std::optional<double>> errors;      // those of heldOutErrors()

    void solve(const std::vector<Bend> &bends, const std::vector<MeasuredPrint> &measured) {
        setShapes(observations, bends, measured, estimate, freedom);
        deviations = solveRobustly(observations, freedom, estimate);
    }
};

// Runs a step for all candidates at the same time. The candidates are independent of each other.
void forEach(std::vector<Candidate> &candidates, const std::function<void(Candidate &)> &step) {
    std::vector<std::future<void>> running;
    running.reserve(candidates.size());
    for (Candidate &candidate : candidates) {
        running.push_back(std::async(std::launch::async, [&step, &candidate, isCancelled = Interruption::current()]() {
            const Interruption interruption(isCancelled);
            step(candidate);
        }));
    }
    for (std::future<void> &one : running) {
        one.get();
    }
}

// Solves all candidates and computes their errors. `bends` has one entry for each candidate, or a single one for all.
// For each camera, the errors of all candidates are in units of the same standard deviation: the smallest among
// the candidates. If each candidate's own standard deviation were the unit, a bad model would look as good as the best.
void compare(std::vector<Candidate> &candidates, const std::vector<std::vector<Bend>> &bends,
             const std::vector<MeasuredPrint> &measured) {
    forEach(candidates, [&](Candidate &candidate) {
        candidate.solve(bends[std::min(size_t(&candidate - candidates.data()), bends.size() - 1)], measured);
    });
    std::vector<double> least(candidates.front().observations.cameras.size(), std::numeric_limits<double>::infinity());
    for (const Candidate &candidate : candidates) {
        for (size_t camera = 0; candidate.deviations && camera < least.size(); camera++) {
            least[camera] = std::min(least[camera], (*candidate.deviations)[camera]);
        }
    }
    forEach(candidates, [&](Candidate &candidate) {
        candidate.errors.assign(candidate.observations.sightings.size(), std::nullopt);
        if (candidate.deviations) {
            std::vector<double> factors = least;
            for (size_t camera = 0; camera < factors.size(); camera++) {
                factors[camera] /= (*candidate.deviations)[camera];
            }
            scaleDeviations(candidate.observations, factors);
            candidate.errors = heldOutErrors(candidate.observations, candidate.freedom, candidate.estimate);
        }
    });
}

std::vector<std::vector<std::optional<double>>> errorsOf(const std::vector<Candidate> &candidates) {
    std::vector<std::vector<std::optional<double>>> errors;
    errors.reserve(candidates.size());
    for (const Candidate &candidate : candidates) {
        errors.push_back(candidate.errors);
    }
    return errors;
}

// True if the free numbers of a print's shape differ from 0 by more than their uncertainty explains. Checks only the
// numbers with index `first` and higher.
bool isBendClear(const Candidate &candidate, const Covariance &covariance, size_t print, int first) {
    const std::vector<int> &free = candidate.freedom.shapes[print];
    const auto from = std::find(free.begin(), free.end(), first) - free.begin();
    const auto count = Eigen::Index(free.size()) - from;
    Eigen::VectorXd numbers(count);
    for (Eigen::Index i = 0; i < count; i++) {
        numbers(i) = candidate.estimate.shapes[print].numbers[size_t(free[size_t(from + i)])];
    }
    // The covariance has the variance of all residuals as a factor (see covariance.h). Here this factor is divided out
    // again: it is meaningless, because it includes the residuals of bad sightings. The result follows only from the
    // corners' standard deviations. These are right, because solveRobustly() derives them from the good residuals.
    const Eigen::MatrixXd spread =
        covariance.shape(int(print)).bottomRightCorner(count, count) / covariance.varianceFactor();
    // Chi-squared with `count` degrees of freedom has the mean `count` and the variance 2 * `count`.
    const double square = numbers.dot(solveSymmetric(spread, numbers).col(0));
    return square > double(count) + 5 * std::sqrt(2 * double(count));
}

// Takes back bends that cannot be distinguished from 0. The comparison chooses such bends because it lets either all
// prints bend or none. If one print is really bent but is treated as flat, the poses become wrong. The model in which
// all prints bend avoids this, so it predicts even photographs of flat prints better.
void takeBack(Candidate &candidate, const std::vector<MeasuredPrint> &measured, std::vector<Bend> &bends) {
    for (bool changed = true; changed;) {
        changed = false;
        candidate.solve(bends, measured);
        const std::optional<Covariance> covariance =
            covarianceOf(candidate.observations, candidate.freedom, candidate.estimate);
        for (size_t print = 0; covariance && print < bends.size(); print++) {
            const int first = bends[print] == Bend::Cubic ? PrintShape::bend + 3 : PrintShape::bend;
            if (bends[print] != Bend::Flat && covariance->shape(int(print)).size() > 0 &&
                !isBendClear(candidate, *covariance, print, first)) {
                bends[print] = bends[print] == Bend::Cubic ? Bend::Quadratic : Bend::Flat;
                changed = true;
            }
        }
    }
}

// Converts intrinsics to another model of the same kind, pinhole or fisheye.
Eigen::VectorXd withModel(const Eigen::VectorXd &intrinsics, LensModel lens) {
    Eigen::VectorXd result = Eigen::VectorXd::Zero(parameterCount(lens));
    const Eigen::Index kept = std::min(result.size(), intrinsics.size());
    result.head(kept) = intrinsics.head(kept);
    return result;
}

std::vector<Candidate> lensCandidates(const Observations &some, int camera, const std::vector<LensStart> &starts) {
    std::vector<Candidate> candidates;
    for (const LensStart &start : starts) {
        Candidate candidate;
        candidate.observations = some;
        candidate.observations.cameras[size_t(camera)].lens = start.lens;
        std::vector<Eigen::VectorXd> lenses(some.cameras.size());
        lenses[size_t(camera)] = start.intrinsics;
        candidate.estimate = startPoses(candidate.observations, std::move(lenses));
        for (const LensModel lens : models) {
            if (isFisheye(lens) == isFisheye(start.lens)) {
                candidates.push_back(candidate);
                candidates.back().observations.cameras[size_t(camera)].lens = lens;
                candidates.back().estimate.intrinsics[size_t(camera)] = withModel(start.intrinsics, lens);
            }
        }
    }
    const auto coefficients = [&](const Candidate &one) {
        return coefficientCount(one.observations.cameras[size_t(camera)].lens);
    };
    std::stable_sort(candidates.begin(), candidates.end(),
                     [&](const Candidate &a, const Candidate &b) { return coefficients(a) < coefficients(b); });
    return candidates;
}

}  // namespace

std::vector<LensStart> startLenses(const Observations &observations, int camera, std::optional<LensModel> model) {
    const std::vector<LensModel> wanted =
        model ? std::vector<LensModel>{*model} : std::vector<LensModel>{LensModel::Pinhole5, LensModel::Fisheye};
    std::vector<std::future<LensStart>> running;
    running.reserve(wanted.size());
    for (const LensModel lens : wanted) {
        running.push_back(
            std::async(std::launch::async, [&observations, camera, lens, isCancelled = Interruption::current()]() {
                const Interruption interruption(isCancelled);
                Observations some = observations;
                some.cameras[size_t(camera)].lens = lens;
                LensStart start{lens, {}, 0};
                start.rms = startLens(some, camera, start.intrinsics).value_or(0);
                return start;
            }));
    }
    std::vector<LensStart> starts;
    for (std::future<LensStart> &one : running) {
        LensStart start = one.get();
        if (start.intrinsics.size() > 0) {
            starts.push_back(std::move(start));
        }
    }
    std::stable_sort(starts.begin(), starts.end(),
                     [](const LensStart &a, const LensStart &b) { return a.rms < b.rms; });
    return starts;
}

LensChoice chooseLens(const Observations &observations, int camera, const std::vector<LensStart> &starts,
                      const std::vector<Bend> &bends, const std::vector<MeasuredPrint> &measured) {
    std::vector<Candidate> candidates = lensCandidates(enough(observations, camera), camera, starts);
    compare(candidates, {bends}, measured);
    const std::vector<std::vector<std::optional<double>>> errors = errorsOf(candidates);
    const std::vector<bool> all(errors.front().size(), true);
    LensChoice choice{starts.front(), {}};
    const size_t preferred = preferredModel(errors, all);
    if (!meanError(errors[preferred], all)) {
        return choice;
    }
    choice.chosen.lens = candidates[preferred].observations.cameras[size_t(camera)].lens;
    choice.chosen.intrinsics = candidates[preferred].estimate.intrinsics[size_t(camera)];
    for (const Candidate &candidate : candidates) {
        const std::vector<Sighting> &sightings = candidate.observations.sightings;
        if (const std::optional<double> mean = meanError(candidate.errors, all)) {
            // Converts the mean square along one axis, in units of the variance, to the rms of distances in pixels. The
            // standard deviation of the first corner stands for that of all corners.
            const double sigma = sightings.front().corners.front().sigma;
            choice.trials.push_back(
                {candidate.observations.cameras[size_t(camera)].lens, std::sqrt(2 * *mean) * sigma});
        }
    }
    return choice;
}

std::vector<Bend> chooseBends(const Observations &observations, const Estimate &estimate,
                              const std::vector<MeasuredPrint> &measured) {
    const std::vector<Bend> levels = {Bend::Flat, Bend::Quadratic, Bend::Cubic};
    Candidate first;
    first.observations = enough(observations, -1);
    first.estimate = estimate;
    std::vector<Candidate> candidates(levels.size(), first);
    std::vector<std::vector<Bend>> tried;
    tried.reserve(levels.size());
    for (const Bend level : levels) {
        tried.emplace_back(observations.prints.size(), level);
    }
    compare(candidates, tried, measured);
    const std::vector<std::vector<std::optional<double>>> errors = errorsOf(candidates);
    std::vector<Bend> bends;
    for (size_t print = 0; print < observations.prints.size(); print++) {
        std::vector<bool> counts;
        counts.reserve(first.observations.sightings.size());
        for (const Sighting &sighting : first.observations.sightings) {
            counts.push_back(size_t(sighting.print) == print);
        }
        bends.push_back(levels[preferredModel(errors, counts)]);
    }
    takeBack(first, measured, bends);
    return bends;
}

}  // namespace calibration
