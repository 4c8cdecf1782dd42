// Makes scenes as simulated_scene.h does, but renders their photographs with the synthetic camera and reads these with
// the pattern reader. So the corners have the reader's real errors instead of simulated noise.
#pragma once

#include <vector>

#include "bench/calibration/simulated_scene.h"

namespace calibration_bench {

struct RenderedScene {
    SimulatedScene scene;  // contains the truth
    // The true world coordinates of every corner of each print, in mm. The bend is included.
    std::vector<std::vector<Eigen::Vector3d>> corners;
    // The observations that follow from reading the pictures.
    calibration::Observations read;
};

// The prints must be the patterns of an assembly, with 15 x 15 corners each; print n is pattern n. The first print is
// bent: its middle is `bend` mm nearer to the viewer than the points 7.5 squares to the left and right of the middle.
// Each lens must have the same focal length in x and y. Only its first two distortion coefficients may differ from 0.
RenderedScene renderAndRead(const SceneDraft &draft, double bend, unsigned seed);

}  // namespace calibration_bench
