// The names of pattern kinds, as used in the JSON document, in the Python package and in the pictures of readings.
#pragma once

#include "pattern_reader/pattern_reader.h"

namespace pattern_reader {

inline const char *nameOf(PatternKind kind) {
    switch (kind) {
        case PatternKind::Plane:
            return "plane";
        case PatternKind::Tile:
            return "tile";
        case PatternKind::Plate:
            return "plate";
        case PatternKind::Board:
            return "board";
    }
    return "";
}

}  // namespace pattern_reader
