// Finds the round marks of plates. The marks form a square lattice with a pitch of four times their radius.
#pragma once

#include <vector>

#include "pattern_reader/corner_lattice.h"
#include "pattern_reader/image_level.h"
#include "pattern_reader/point_detector.h"
#include "pattern_reader/round_marks.h"

namespace pattern_reader {

// A piece of a lattice of round marks. Cells and axes are as in CornerLattice; marks[i] belongs to
// lattice.corners[i].
struct MarkLattice {
    CornerLattice lattice;
    std::vector<RoundMark> marks;
};

// Finds lattices of at least `leastMarks` marks among the blobs of pyramid level `number`. The result is sorted from
// large to small.
std::vector<MarkLattice> findMarkLattices(const std::vector<ImageLevel> &levels, size_t number,
                                          const std::vector<DarkBlob> &blobs, size_t leastMarks);

}  // namespace pattern_reader
