// Scenes as in simulated_scene.h, but photographed by the synthetic camera and read by the pattern reader: the whole
// road from a print to its corners.
#pragma once

#include <vector>

#include "bench/calibration/simulated_scene.h"

namespace calibration_bench {

struct RenderedScene {
    SimulatedScene scene;  // with the truth
    // Every corner of every print in the world, mm, as the camera saw it.
    std::vector<std::vector<Eigen::Vector3d>> corners;
    // What was read in the pictures.
    calibration::Observations read;
};

// The prints must be the patterns of an assembly, 15 x 15 corners; print n is pattern n. The middle of the first print
// stands out above its left and right edges by `bend` mm. The lenses must have equal focal lengths and at most two
// coefficients.
RenderedScene renderAndRead(const SceneDraft &draft, double bend, unsigned seed);

}  // namespace calibration_bench
