// The goals that the reader is held to, each with what was measured.
#pragma once

#include <string>
#include <vector>

#include "bench/reader/comparison.h"
#include "bench/reader/condition_table.h"

namespace reader_bench {

struct EmptyResult {
    unsigned number = 0;
    int kind = 0;
    int readings = 0;
};

struct Goal {
    std::string what;
    std::string measured;
    bool met = false;
};

std::vector<Goal> readingGoals(const std::vector<PictureResult> &results, const std::vector<EmptyResult> &empty);
std::vector<Goal> comparisonGoals(const Comparison &comparison);

// A table in Markdown; true if all are met.
bool printGoals(const std::vector<Goal> &goals);

}  // namespace reader_bench
