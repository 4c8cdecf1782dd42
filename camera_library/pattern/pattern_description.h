// The description of a pattern that a client asked for, as plain values. Every value has been checked. The description
// does not contain the pattern's shapes; see pattern_geometry.h.
#pragma once

#include <array>
#include <optional>
#include <string>

#include "camera_library/pattern/pattern_types.h"

namespace lmlib64 {

// One pattern. Lengths are in millimetres, pairs are x then y.
struct PatternDescription {
    const PatternType *type = nullptr;  // set in every description
    std::string typeName;               // "Type" as given; empty if there is none
    double gridSpacing = 0.0;           // 0: the pattern has no extent
    double thickness = 0.0;             // of the board that carries the print
    bool polarity = true;               // false: dark and light exchanged
    std::array<int, 2> gridSize{};      // lattice points: inner corners, or marks
    // "Offset". Empty if the type has no "Offset", and for a plate whose "Offset" is not given.
    std::optional<std::array<double, 2>> offset;
    std::optional<int> assemblyNumber;  // position within an assembly, from 0
    bool encodingParameter = true;      // the pattern's own "Encoding"
    bool isCoded = true;                // false if the pattern's or the command's "Encoding" is false

    // Returns the position of the reference point (see Lattice) in the coordinate system that all offsets refer to.
    std::array<double, 2> referencePosition() const { return offset.value_or(std::array<double, 2>{}); }
    bool hasExtent() const { return gridSpacing > 0.0; }
};

}  // namespace lmlib64
