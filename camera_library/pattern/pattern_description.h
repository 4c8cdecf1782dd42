// What a client asked for, after every value has been checked: plain values, no tree nodes, no geometry.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

namespace lmlib64 {

enum class PatternKind { Catalogue, Single, Flexible, Assembly, Halcon };

/// One pattern. Lengths are in millimetres, pairs are x then y.
struct PatternDescription {
    PatternKind kind = PatternKind::Halcon;
    std::string type;                   ///< "Type" as given; empty for the Halcon-style plate, which has none
    double gridSpacing = 0.0;           ///< 0: the pattern has no extent yet
    double thickness = 0.0;             ///< of the plate
    bool polarity = true;               ///< false: dark and light exchanged
    std::array<int, 2> gridSize{};      ///< inner corners of a checkerboard, marks of a plate
    std::array<double, 2> offset{};     ///< where the reference point lies in the common coordinate system
    std::optional<int> assemblyNumber;  ///< position within an assembly, from 0
    bool hasOffset = false;             ///< whether it was given: then a plate's code holds it
    bool encoding = true;               ///< whether the plate carries its code; true for all other kinds
    bool coded = true;                  ///< whether a code is drawn: false where this or the command's Encoding is

    bool hasExtent() const { return gridSpacing > 0.0; }
};

/// All that one run of the command is to do. At least one of the two outputs is asked for.
struct PatternRequest {
    bool encoding = true;                 ///< false draws every pattern plain
    std::optional<int> imageSize;         ///< longer side of the preview images in pixels
    std::optional<std::string> fileName;  ///< in the local 8-bit encoding, ends in .pdf or .json
    std::vector<PatternDescription> patterns;
};

}  // namespace lmlib64
