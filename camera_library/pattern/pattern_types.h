// The types of patterns, and everything in which one differs from another: pattern_types.cpp has one entry for each.
// A new type is a new entry; nothing else in the library asks for the type.
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

// What carries a pattern's code: a part of the position code's plane, one of its tiles, or a plate's dots.
enum class CodeCarrier { Plane, Tile, Plate };

// How the parameter "Type" selects the type: by the type's own name, by naming a board of the catalogue, or by absence.
enum class SelectedBy { Name, CatalogueBoard, NoType };

struct PatternType {
    SelectedBy selectedBy;
    std::string_view name;            // as the value of "Type"; empty unless that selects it
    std::string_view errorName;       // as an error text calls it, such as "a pattern of type "Flexible""
    std::string_view title;           // what titles and captions begin with; empty: the value of "Type"
    std::string_view fileKind;        // "Kind" in the pattern file
    PatternParameterList parameters;  // the ones that it can have
    std::array<int, 2> gridSize;      // lattice points along x and y; {} if "GridSize" is one of the parameters
    CodeCarrier codeCarrier;
    // The shapes of a checked description; the code is null if the pattern is plain.
    PatternGeometry (*draw)(const PatternDescription &description, const CodeCells *code);
};

// All types, to iterate over.
class PatternTypes {
public:
    const PatternType *begin() const;
    const PatternType *end() const;
};

// The type of a pattern with this "Type", or without one; null if there is none. Lives as long as the program.
const PatternType *findPatternType(const std::optional<std::string> &typeName);

bool hasParameter(const PatternType &type, PatternParameter parameter);

}  // namespace lmlib64
