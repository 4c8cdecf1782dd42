// How the prints of a calibration look, beyond the points that the calibration knows: what kind of pattern each is, and
// what its code says. All of it comes from the readings of the photographs.
#pragma once

#include <QVector>
#include <optional>
#include <vector>

#include "calibration/calibrate.h"
#include "pattern_reader/pattern_reader.h"
#include "viewer/session/session_photograph.h"

struct PrintLook {
    pattern_reader::PatternKind kind = pattern_reader::PatternKind::Board;
    int tile = -1;                                        // as in PatternReading
    bool isTopLeftSquareDark = true;                      // of the squares around the points; true for a plate
    std::optional<pattern_reader::PatternValues> values;  // empty if no information block was read
};

// The look of each print; empty for a print that no photograph shows. photographIds are the session's numbers of the
// calibration's photographs.
std::vector<std::optional<PrintLook>> looksOf(const calibration::Calibration &calibration,
                                              const std::vector<int> &photographIds,
                                              const QVector<SessionPhotograph> &photographs);
