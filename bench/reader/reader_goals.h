// Defines the goals that the reader must meet, and checks whether the measured values meet them.
#pragma once

#include <string>
#include <vector>

#include "bench/reader/comparison.h"
#include "bench/reader/condition_table.h"

namespace reader_bench {

// The result for a picture without a pattern.
struct EmptyResult {
    unsigned number = 0;
    int kind = 0;      // an EmptyKind
    int readings = 0;  // patterns that the reader reports although there are none
};

struct Goal {
    std::string what;
    std::string measured;
    bool met = false;
};

std::vector<Goal> readingGoals(const std::vector<PictureResult> &results, const std::vector<EmptyResult> &empty);
std::vector<Goal> comparisonGoals(const Comparison &comparison);

// Prints a Markdown table. Returns true if all goals are met.
bool printGoals(const std::vector<Goal> &goals);

}  // namespace reader_bench
