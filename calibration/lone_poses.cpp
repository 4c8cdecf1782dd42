#include "calibration/lone_poses.h"

#include <algorithm>
#include <array>

#include "calibration/dense_solve.h"
#include "calibration/outliers.h"
#include "calibration/planar_pose.h"
#include "calibration/sighting_residuals.h"

namespace calibration {

namespace {

// The pose of a sighting is estimated from about this many of its corners, because more would hardly improve it.
constexpr size_t enoughCorners = 60;
// The limit for the standard deviation of a sighting's residuals, as a multiple of the standard deviation in good
// sightings. A sighting above the limit is blurred or misread, and its pose is useless.
constexpr double greatestScaleAlone = 3;

// Gives each sighting a pose of its own, so that no pose depends on where prints are relative to each other.
class LoneSightings {
public:
    LoneSightings(const Observations &all, const Freedom &free, const Estimate &joint) : freedom(free) {
        apart = {all.cameras, {}, all.prints, {}, 0};
        estimate = joint;
        estimate.cameraFromRig.assign(all.cameras.size(), {});
        estimate.hasCamera.assign(all.cameras.size(), true);
        estimate.worldFromPrint.assign(all.prints.size(), {});
        estimate.groups.assign(all.prints.size(), 0);
        estimate.rigFromWorld.clear();
        estimate.hasMoment.clear();
        freedom.rig = false;
        freedom.prints = false;
        for (std::vector<int> &shape : freedom.shapes) {
            // The scale may not vary, because one sighting cannot tell a larger print from a nearer one. The bend may
            // vary even if the joint estimate has flat prints, because prints that moved may have spoilt the choice
            // between flat and bent prints.
            shape = {PrintShape::ratio, PrintShape::shear, PrintShape::bend, PrintShape::bend + 1,
                     PrintShape::bend + 2};
        }
        for (const Sighting &sighting : all.sightings) {
            add(all, sighting, joint);
        }
        apart.moments = int(apart.photographs.size());
    }

    std::vector<std::optional<LonePose>> poses() {
        std::vector<std::optional<LonePose>> result(apart.sightings.size());
        if (solveRobustly(apart, freedom, estimate)) {
            std::transform(apart.sightings.begin(), apart.sightings.end(), result.begin(),
                           [&](const Sighting &sighting) { return poseOf(sighting); });
        }
        return result;
    }

private:
    void add(const Observations &all, const Sighting &sighting, const Estimate &joint) {
        const int camera = all.photographs[size_t(sighting.photograph)].camera;
        const auto number = int(apart.photographs.size());
        apart.photographs.push_back({"", camera, number});
        apart.sightings.push_back(sighting);
        Sighting &copy = apart.sightings.back();
        copy.photograph = number;
        const size_t stride = (copy.corners.size() + enoughCorners - 1) / enoughCorners;
        for (size_t i = 0; i < copy.corners.size(); i++) {
            copy.corners[i].isUsed = copy.corners[i].isUsed && i % stride == 0;
        }
        const std::optional<RigidMotion> start =
            sighting.isUsed ? startOf(all, sighting, copy, joint) : std::optional<RigidMotion>();
        estimate.rigFromWorld.push_back(start.value_or(RigidMotion()));
        estimate.hasMoment.push_back(start.has_value());
    }

    // Returns the start value of a sighting's pose. If the print is far away, it looks nearly the same when it is
    // tilted the other way, and a single sighting could give the wrong one of these two poses. So the start value is
    // the pose in the joint estimate, unless this pose is unknown or fits much worse than the pose from the sighting
    // alone.
    std::optional<RigidMotion> startOf(const Observations &all, const Sighting &sighting, const Sighting &alone,
                                       const Estimate &joint) const {
        const int camera = all.photographs[size_t(sighting.photograph)].camera;
        const Eigen::VectorXd &lens = joint.intrinsics[size_t(camera)];
        if (lens.size() == 0) {
            return std::nullopt;
        }
        const auto planar = planarPose(apart, alone, lens, joint.shapes[size_t(sighting.print)]);
        if (!planar || !hasPose(all, sighting, joint)) {
            return planar ? std::optional(planar->cameraFromPrint) : std::nullopt;
        }
        const std::vector<double> lengths = residualLengths(all, sighting, blocksOf(all, sighting, joint));
        if (lengths.empty() || scaleOfLengths(lengths) > 2 * planar->rms) {
            return planar->cameraFromPrint;
        }
        const Photograph &photograph = all.photographs[size_t(sighting.photograph)];
        return joint.cameraFromRig[size_t(camera)] * joint.rigFromWorld[size_t(photograph.moment)] *
               joint.worldFromPrint[size_t(sighting.print)];
    }

    std::optional<LonePose> poseOf(Sighting sighting) const {
        if (!takesPart(apart, sighting, estimate)) {
            return std::nullopt;
        }
        const BlockPointers blocks = blocksOf(apart, sighting, estimate);
        const std::vector<double> lengths = residualLengths(apart, sighting, blocks);
        const double scale = scaleOfLengths(lengths);
        if (lengths.empty() || scale > greatestScaleAlone) {
            return std::nullopt;
        }
        for (size_t i = 0; i < lengths.size(); i++) {
            sighting.corners[i].isUsed = sighting.corners[i].isUsed && lengths[i] < greatestLength * scale;
        }
        const SightingResiduals residuals(apart, sighting, 0);
        Eigen::VectorXd values(residuals.rows());
        Eigen::Matrix<double, Eigen::Dynamic, 6, Eigen::RowMajor> byPose(residuals.rows(), 6);
        std::array<double *, blockCount> jacobians{};
        jacobians[size_t(Block::RigFromWorld)] = byPose.data();
        if (!residuals.evaluate(blocks, values.data(), jacobians.data())) {
            return std::nullopt;
        }
        const auto inverse = solvePositive(byPose.transpose() * byPose, Matrix6::Identity());
        if (!inverse) {
            return std::nullopt;
        }
        LonePose pose{estimate.rigFromWorld[size_t(sighting.photograph)], *inverse};
        Matrix6 turn = Matrix6::Identity();
        turn.topLeftCorner<3, 3>() = leftJacobian(pose.cameraFromPrint.rotation);
        pose.covariance = scale * scale * turn * pose.covariance * turn.transpose();
        return pose;
    }

    Observations apart;
    Freedom freedom;
    Estimate estimate;
};

}  // namespace

std::vector<std::optional<LonePose>> findLonePoses(const Observations &observations, const Freedom &freedom,
                                                   const Estimate &joint) {
    return LoneSightings(observations, freedom, joint).poses();
}

}  // namespace calibration
