// Finds out how the prints of a calibration look: the kind of each pattern and the content of its code. This is taken
// from the readings of the photographs, because the calibration does not store it.
#pragma once

#include <QVector>
#include <optional>
#include <vector>

#include "calibration/calibrate.h"
#include "pattern_reader/pattern_reader.h"
#include "viewer/session/session_photograph.h"

struct PrintLook {
    pattern_reader::PatternKind kind = pattern_reader::PatternKind::Board;
    int tile = -1;                    // as in PatternReading
    bool isTopLeftSquareDark = true;  // the square above and to the left of the first point; true for a plate
    std::optional<pattern_reader::PatternValues> values;  // empty if no information block was read
};

// Returns the look of each print; empty for a print whose points form no grid (Print::cells is empty), and for a print
// of which `photographs` has no reading. `photographIds` has the session's id of each photograph of the calibration.
std::vector<std::optional<PrintLook>> looksOf(const calibration::Calibration &calibration,
                                              const std::vector<int> &photographIds,
                                              const QVector<SessionPhotograph> &photographs);
