#include "camera_library/pattern/pattern_geometry.h"

#include "camera_library/pattern/checkerboard.h"
#include "camera_library/pattern/halcon_plate.h"

namespace lmlib64 {

PatternGeometry geometryOf(const PatternDescription &description) {
    if (description.kind == PatternKind::Halcon) {
        return halconPlate(description.gridSpacing, description.polarity);
    }
    return checkerboard(description.gridSize, description.gridSpacing, description.polarity);
}

}  // namespace lmlib64
