#include "calibration/start_values.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "calibration/interruption.h"
#include "calibration/joint_solve.h"
#include "calibration/planar_pose.h"
#include "calibration/sighting_residuals.h"

namespace calibration {

namespace {

// The sightings of one camera. Each sighting has a pose of its own, so that a lens can be estimated before the links
// between prints and moments are known.
class LensAlone {
public:
    LensAlone(const Observations &all, int camera) {
        alone.cameras = {all.cameras[size_t(camera)]};
        alone.prints = all.prints;
        for (const Sighting &sighting : all.sightings) {
            if (sighting.isUsed && all.photographs[size_t(sighting.photograph)].camera == camera) {
                add(sighting);
            }
        }
        std::stable_sort(alone.sightings.begin(), alone.sightings.end(),
                         [](const Sighting &a, const Sighting &b) { return a.corners.size() > b.corners.size(); });
        for (Sighting &sighting : alone.sightings) {
            sighting.photograph = int(&sighting - alone.sightings.data());
        }
    }

    bool isEmpty() const { return alone.sightings.empty(); }

    // Keeps only some of the sightings, and only some corners of each.
    void keepFew(size_t fewSightings, size_t fewCorners) {
        if (alone.sightings.size() > fewSightings) {
            // The sightings with the most corners come first. The kept ones are spread over about the first half, so
            // that their poses usually differ. If there are fewer than 4 * fewSightings sightings, the first ones are
            // kept.
            const size_t stride = std::max<size_t>(1, alone.sightings.size() / 2 / fewSightings);
            std::vector<Sighting> few;
            for (size_t i = 0; few.size() < fewSightings; i += stride) {
                few.push_back(alone.sightings[i]);
            }
            alone.sightings = few;
        }
        for (Sighting &sighting : alone.sightings) {
            sighting.photograph = int(&sighting - alone.sightings.data());
            const size_t stride = (sighting.corners.size() + fewCorners - 1) / fewCorners;
            std::vector<SeenCorner> corners;
            for (size_t i = 0; i < sighting.corners.size(); i += stride) {
                corners.push_back(sighting.corners[i]);
            }
            sighting.corners = corners;
        }
        alone.photographs.resize(alone.sightings.size());
        alone.moments = int(alone.sightings.size());
    }

    // Improves the lens. Returns the rms of the residuals in standard deviations; infinity if the solve fails. Each
    // sighting contributes to this rms only up to a limit, so that a bad sighting does not dominate.
    double improve(Eigen::VectorXd &intrinsics, double robustScale, int iterations) const {
        constexpr double roughly = 1e-4;
        Estimate estimate = poses(intrinsics);
        SolveOptions options;
        options.freedom.rig = false;
        options.freedom.prints = false;
        options.robustScale = robustScale;
        options.iterations = iterations;
        options.tolerance = roughly;
        if (!solveJointly(alone, options, estimate)) {
            return std::numeric_limits<double>::infinity();
        }
        intrinsics = estimate.intrinsics.front();
        return rmsOf(estimate);
    }

private:
    void add(const Sighting &sighting) {
        Sighting copy = sighting;
        copy.photograph = int(alone.photographs.size());
        alone.photographs.push_back({"", 0, alone.moments});
        alone.moments++;
        alone.sightings.push_back(std::move(copy));
    }

    Estimate poses(const Eigen::VectorXd &intrinsics) const {
        Estimate estimate;
        estimate.intrinsics = {intrinsics};
        estimate.cameraFromRig.resize(1);
        estimate.hasCamera = {true};
        estimate.worldFromPrint.resize(alone.prints.size());
        estimate.shapes.resize(alone.prints.size());
        estimate.groups.assign(alone.prints.size(), 0);
        estimate.rigFromWorld.resize(size_t(alone.moments));
        estimate.hasMoment.assign(size_t(alone.moments), false);
        for (const Sighting &sighting : alone.sightings) {
            const PrintShape &shape = estimate.shapes[size_t(sighting.print)];
            if (const auto pose = planarPose(alone, sighting, intrinsics, shape)) {
                const auto moment = size_t(alone.photographs[size_t(sighting.photograph)].moment);
                estimate.rigFromWorld[moment] = pose->cameraFromPrint;
                estimate.hasMoment[moment] = true;
            }
        }
        return estimate;
    }

    double rmsOf(const Estimate &estimate) const {
        constexpr double worst = 1e3;  // limit of the rms of one sighting
        std::vector<double> squares;
        for (const Sighting &sighting : alone.sightings) {
            const SightingResiduals residuals(alone, sighting, 0);
            Eigen::VectorXd values(residuals.rows());
            const bool isSeen = takesPart(alone, sighting, estimate) &&
                                residuals.evaluate(blocksOf(alone, sighting, estimate), values.data(), nullptr);
            squares.push_back(isSeen ? std::min(values.squaredNorm() / residuals.rows(), worst * worst)
                                     : worst * worst);
        }
        double sum = 0;
        for (const double square : squares) {
            sum += square / double(squares.size());
        }
        return std::sqrt(sum);
    }

    Observations alone;
};

// Focal lengths to try, in pixels.
std::vector<double> focalLengths(const Camera &camera) {
    const double side = std::max(camera.width, camera.height);
    if (camera.lens != LensModel::Fisheye) {
        std::vector<double> lengths;
        for (const double factor : {0.5, 0.75, 1.1, 1.6, 2.5, 4.0, 8.0}) {
            lengths.push_back(factor * side);
        }
        return lengths;
    }
    std::vector<double> lengths;
    const double degree = std::acos(-1.0) / 180;
    // Fields of view to try, along the longer side of the picture.
    for (const double degrees : {40, 70, 100, 130, 160, 190, 220}) {
        lengths.push_back(side / (degrees * degree));
    }
    return lengths;
}

Eigen::VectorXd plainLens(const Camera &camera, double focalLength) {
    Eigen::VectorXd intrinsics = Eigen::VectorXd::Zero(parameterCount(camera.lens));
    intrinsics.head<4>() << focalLength, focalLength, (camera.width - 1) / 2.0, (camera.height - 1) / 2.0;
    return intrinsics;
}

// Finds the poses of prints, moments and cameras by following the photographs that link them. The most reliable
// sightings are followed first.
class PoseTree {
public:
    PoseTree(const Observations &seen, std::vector<Eigen::VectorXd> lenses,
             const std::vector<std::optional<RigidMotion>> &known)
        : observations(seen) {
        estimate.intrinsics = std::move(lenses);
        estimate.cameraFromRig.resize(observations.cameras.size());
        for (size_t camera = 0; camera < observations.cameras.size(); camera++) {
            estimate.hasCamera.push_back(rigOrigin(observations, int(camera)) == int(camera));
        }
        estimate.rigFromWorld.resize(size_t(observations.moments));
        estimate.hasMoment.assign(size_t(observations.moments), false);
        estimate.worldFromPrint.resize(observations.prints.size());
        estimate.groups.assign(observations.prints.size(), -1);
        estimate.shapes.resize(observations.prints.size());
        photographs.resize(observations.photographs.size());
        for (size_t i = 0; i < observations.sightings.size(); i++) {
            const Sighting &sighting = observations.sightings[i];
            if (known.empty() || !known[i]) {
                measure(sighting);
            } else if (sighting.isUsed) {
                links.push_back({&sighting, *known[i], knownReliability + double(sighting.corners.size())});
            }
        }
        std::stable_sort(links.begin(), links.end(),
                         [](const Link &a, const Link &b) { return a.reliability > b.reliability; });
    }

    Estimate grow() {
        int group = 0;
        for (size_t print = 0; print < observations.prints.size(); print++) {
            if (estimate.groups[print] < 0 && isSeen(int(print))) {
                estimate.groups[print] = group;
                groupOf = group++;
                while (extend()) {
                }
            }
        }
        return estimate;
    }

private:
    struct Link {
        const Sighting *sighting;
        RigidMotion cameraFromPrint;
        double reliability;  // the number of corners, less if they fit badly; more than 1e9 if the pose is known
    };
    static constexpr double knownReliability = 1e9;

    void measure(const Sighting &sighting) {
        const Photograph &photograph = observations.photographs[size_t(sighting.photograph)];
        const Eigen::VectorXd &lens = estimate.intrinsics[size_t(photograph.camera)];
        if (!sighting.isUsed || lens.size() == 0) {
            return;
        }
        Interruption::check();
        if (const auto pose = planarPose(observations, sighting, lens, estimate.shapes[size_t(sighting.print)])) {
            links.push_back({&sighting, pose->cameraFromPrint, double(sighting.corners.size()) / (1 + pose->rms)});
        }
    }

    bool isSeen(int print) const {
        return std::any_of(links.begin(), links.end(), [&](const Link &link) { return link.sighting->print == print; });
    }

    // Follows the most reliable link that yields a new pose. Returns false if there is none.
    bool extend() {
        for (const Link &link : links) {
            const auto print = size_t(link.sighting->print);
            std::optional<RigidMotion> &cameraFromWorld = photographs[size_t(link.sighting->photograph)];
            if (estimate.groups[print] >= 0 && !cameraFromWorld) {
                cameraFromWorld = link.cameraFromPrint * estimate.worldFromPrint[print].inverse();
                spread();
                return true;
            }
            if (estimate.groups[print] < 0 && cameraFromWorld) {
                estimate.worldFromPrint[print] = cameraFromWorld->inverse() * link.cameraFromPrint;
                estimate.groups[print] = groupOf;
                return true;
            }
        }
        return false;
    }

    // Computes the poses of moments and cameras from the poses of photographs. From the poses of moments and cameras,
    // computes the poses of further photographs. Repeats this until there are no new poses.
    void spread() {
        for (bool isNew = true; isNew;) {
            isNew = false;
            for (size_t i = 0; i < photographs.size(); i++) {
                const auto camera = size_t(observations.photographs[i].camera);
                const auto moment = size_t(observations.photographs[i].moment);
                const bool hasCamera = estimate.hasCamera[camera];
                const bool hasMoment = estimate.hasMoment[moment];
                if (photographs[i] && hasCamera && !hasMoment) {
                    estimate.rigFromWorld[moment] = estimate.cameraFromRig[camera].inverse() * *photographs[i];
                    estimate.hasMoment[moment] = true;
                    isNew = true;
                } else if (photographs[i] && !hasCamera && hasMoment) {
                    estimate.cameraFromRig[camera] = *photographs[i] * estimate.rigFromWorld[moment].inverse();
                    estimate.hasCamera[camera] = true;
                    isNew = true;
                } else if (!photographs[i] && hasCamera && hasMoment) {
                    photographs[i] = estimate.cameraFromRig[camera] * estimate.rigFromWorld[moment];
                    isNew = true;
                }
            }
        }
    }

    const Observations &observations;
    Estimate estimate;
    std::vector<Link> links;
    std::vector<std::optional<RigidMotion>> photographs;  // cameraFromWorld
    int groupOf = 0;                                      // the group that is being extended
};

}  // namespace

int rigOrigin(const Observations &observations, int camera) {
    // Cameras that took photographs at the same moment belong together. Cameras that are linked only through other
    // cameras belong together, too. At first, the origin of each camera is its own index. Then each camera takes the
    // least origin among the cameras that share a moment with it, again and again, until no origin changes.
    std::vector<int> origin(observations.cameras.size());
    for (size_t i = 0; i < origin.size(); i++) {
        origin[i] = int(i);
    }
    for (bool changed = true; changed;) {
        changed = false;
        std::vector<int> least(size_t(observations.moments), int(origin.size()));
        for (const Photograph &photograph : observations.photographs) {
            int &one = least[size_t(photograph.moment)];
            one = std::min(one, origin[size_t(photograph.camera)]);
        }
        for (const Photograph &photograph : observations.photographs) {
            int &one = origin[size_t(photograph.camera)];
            if (least[size_t(photograph.moment)] < one) {
                one = least[size_t(photograph.moment)];
                changed = true;
            }
        }
    }
    return origin[size_t(camera)];
}

std::optional<double> startLens(const Observations &observations, int camera, Eigen::VectorXd &intrinsics) {
    LensAlone all(observations, camera);
    if (all.isEmpty()) {
        return std::nullopt;
    }
    // A few sightings with few corners are enough to tell focal lengths apart. The start value itself needs more
    // sightings and corners.
    LensAlone few = all;
    few.keepFew(10, 50);
    all.keepFew(40, 100);
    // Residuals beyond the robust scale, which is in standard deviations, have little weight. The scale of the first
    // solve is large, because all residuals are large as long as the focal length is wrong.
    constexpr double firstScale = 300;
    constexpr double secondScale = 30;
    double least = std::numeric_limits<double>::infinity();
    for (const double focalLength : focalLengths(observations.cameras[size_t(camera)])) {
        Eigen::VectorXd lens = plainLens(observations.cameras[size_t(camera)], focalLength);
        few.improve(lens, firstScale, 30);
        const double rms = few.improve(lens, secondScale, 30);
        if (rms < least && lens(0) > 0 && lens(1) > 0) {
            least = rms;
            intrinsics = lens;
        }
    }
    if (!std::isfinite(least)) {
        return std::nullopt;
    }
    return all.improve(intrinsics, secondScale, 50);
}

Estimate startPoses(const Observations &observations, std::vector<Eigen::VectorXd> intrinsics,
                    const std::vector<std::optional<RigidMotion>> &known) {
    return PoseTree(observations, std::move(intrinsics), known).grow();
}

}  // namespace calibration
