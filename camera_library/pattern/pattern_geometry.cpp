#include "camera_library/pattern/pattern_geometry.h"

#include "camera_library/pattern/checkerboard.h"
#include "camera_library/pattern/code_cells.h"
#include "camera_library/pattern/halcon_plate.h"

namespace lmlib64 {

PatternGeometry geometryOf(const PatternDescription &description) {
    const std::optional<CodeCells> code = codeCellsOf(description);
    const CodeCells *cells = code ? &*code : nullptr;
    if (description.kind == PatternKind::Halcon) {
        return halconPlate(description.gridSpacing, description.polarity, cells);
    }
    return checkerboard(description.gridSize, description.gridSpacing, description.polarity, cells);
}

}  // namespace lmlib64
