#include "camera_library/pattern/pattern_geometry.h"

#include "camera_library/pattern/code_cells.h"

namespace lmlib64 {

PatternGeometry geometryOf(const PatternDescription &description) {
    const std::optional<CodeCells> code = codeCellsOf(description);
    return description.type->draw(description, code ? &*code : nullptr);
}

}  // namespace lmlib64
