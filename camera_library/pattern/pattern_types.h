// The types of patterns, and everything in which they differ. pattern_types.cpp has one entry for each type. A new type
// is a new entry; no other code in the library depends on the type.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

#include "camera_library/pattern/pattern_parameter.h"

namespace lmlib64 {

struct CodeCells;
struct PatternDescription;
struct PatternGeometry;

// The carrier of a pattern's code. Plane: a part of the plane of the position code. Tile: one of the tiles of the
// position code, which are not parts of the plane. Plate: the dots of a plate.
enum class CodeCarrier { Plane, Tile, Plate };

// The way in which the parameter "Type" selects a type of pattern: "Type" is the type's own name, it names a board of
// the catalogue, or it is absent.
enum class SelectedBy { Name, CatalogueBoard, NoType };

struct PatternType {
    SelectedBy selectedBy;
    std::string_view name;            // the value of "Type"; empty unless `selectedBy` is Name
    std::string_view errorName;       // what error texts call such a pattern: `a pattern of type "Flexible"`
    std::string_view title;           // titles and captions begin with this text; if empty, with the value of "Type"
    std::string_view fileKind;        // "Kind" in the pattern file
    PatternParameterList parameters;  // the parameters that the type can have
    std::array<int, 2> gridSize;      // lattice points along x and y; {} if "GridSize" is one of the parameters
    CodeCarrier codeCarrier;
    // Returns the shapes of a checked description. The code is null if the pattern has none.
    PatternGeometry (*draw)(const PatternDescription &description, const CodeCells *code);
};

// All types, to iterate over.
class PatternTypes {
public:
    const PatternType *begin() const;
    const PatternType *end() const;
};

// Returns the type of a pattern with this "Type". For a pattern without "Type", `typeName` is std::nullopt. Returns
// null if no type matches. The result lives as long as the program.
const PatternType *findPatternType(const std::optional<std::string> &typeName);

bool hasParameter(const PatternType &type, PatternParameter parameter);

}  // namespace lmlib64
