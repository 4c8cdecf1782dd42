// The differences between where corners were seen and where the estimate puts them, in standard deviations, with their
// derivatives by everything that can vary. This is the only place that has the model of the whole scene:
//
//   pixel = projection(cameraFromRig * rigFromWorld * worldFromPrint * printedPoint(shape, drawn))
#pragma once

#include <array>
#include <vector>

#include "calibration/observations.h"

namespace calibration {

// The blocks of parameters that a sighting depends on, in the order of their arrays.
enum class Block { Intrinsics, CameraFromRig, RigFromWorld, WorldFromPrint, Shape };
constexpr int blockCount = 5;

using BlockPointers = std::array<const double *, blockCount>;

class SightingResiduals {
public:
    // robustScale, in standard deviations: a corner with a larger residual counts less, the larger the residual is
    // (Cauchy's loss); 0 for plain least squares. Keeps references to the observations, which must outlive this object.
    SightingResiduals(const Observations &observations, const Sighting &sighting, double robustScale);

    int corners() const { return int(seen.size()); }  // the used ones
    int rows() const { return 2 * corners(); }
    int blockSize(Block block) const;

    // residuals: rows() values. jacobians: null, or one pointer per block, which is null or has room for
    // rows() x blockSize values, row by row. False if a corner cannot be projected.
    bool evaluate(const BlockPointers &blocks, double *residuals, double *const *jacobians) const;

private:
    const Camera &camera;
    const Print &print;
    std::vector<const SeenCorner *> seen;
    double reach;
    double robustScale;
};

// Half the diagonal of the print's drawn points.
double reachOf(const Print &print);

// The blocks of a sighting within an estimate.
BlockPointers blocksOf(const Observations &observations, const Sighting &sighting, const Estimate &estimate);

}  // namespace calibration
