// The names of the kinds of patterns that the JSON document, the Python package and the pictures of readings use.
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
