// Computes the residuals of a sighting (projected minus observed corners, in standard deviations) and their derivatives
// with respect to everything that can vary. The model of the whole scene is:
//
//   pixel = projection(cameraFromRig * rigFromWorld * worldFromPrint * printedPoint(shape, drawn))
#pragma once

#include <array>
#include <vector>

#include "calibration/observations.h"

namespace calibration {

// The blocks of parameters that a sighting depends on. Arrays such as BlockPointers have this order.
enum class Block { Intrinsics, CameraFromRig, RigFromWorld, WorldFromPrint, Shape };
constexpr int blockCount = 5;

using BlockPointers = std::array<const double *, blockCount>;

class SightingResiduals {
public:
    // `robustScale` is the scale of Cauchy's loss in standard deviations: the larger a residual is in relation to it,
    // the less the corner counts. With 0, plain least squares are used. This object keeps references to the
    // observations and to the sighting, which must outlive it.
    SightingResiduals(const Observations &observations, const Sighting &sighting, double robustScale);

    int corners() const { return int(seen.size()); }  // the number of used corners
    int rows() const { return 2 * corners(); }
    int blockSize(Block block) const;

    // Writes rows() values to `residuals`. `jacobians` is null or has one pointer per block; each pointer is null or
    // has room for rows() x blockSize() values, row by row. Returns false if a corner cannot be projected.
    bool evaluate(const BlockPointers &blocks, double *residuals, double *const *jacobians) const;

private:
    bool evaluateResiduals(const BlockPointers &blocks, double *residuals) const;
    bool evaluateAll(const BlockPointers &blocks, double *residuals, double *const *jacobians) const;
    // Sets the two residuals of a corner that is projected to `image`. Returns their derivatives with respect to
    // `image`.
    Eigen::Matrix2d weigh(const SeenCorner &corner, const Eigen::Vector2d &image, double *residual) const;

    const Camera &camera;
    const Print &print;
    std::vector<const SeenCorner *> seen;
    double reach;
    double robustScale;
};

// Returns half the diagonal of the rectangle around the print's drawn points, in mm.
double reachOf(const Print &print);

// Returns pointers to those blocks of parameters in the estimate that the sighting depends on.
BlockPointers blocksOf(const Observations &observations, const Sighting &sighting, const Estimate &estimate);

}  // namespace calibration
