// Medians of repeated runs, and the table that every benchmark prints: a figure, what it is compared with in the
// same run, their ratio and the bound on it. Times are in milliseconds.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <string>
#include <vector>

inline double milliseconds() {
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

inline double median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

// The median time of a call, after some that do not count.
template <class Call>
double medianTime(int repetitions, Call call) {
    constexpr int warmUps = 3;
    std::vector<double> times;
    for (int i = 0; i < repetitions + warmUps; ++i) {
        const double start = milliseconds();
        call();
        if (i >= warmUps) {
            times.push_back(milliseconds() - start);
        }
    }
    return median(std::move(times));
}

// Prints Markdown rows and remembers whether a ratio is over twice its bound, which noise does not explain.
class Table {
public:
    explicit Table(const char *title) {
        std::printf("\n### %s\n\n| What | Figure | Compared with | Ratio | Bound |\n|---|---|---|---|---|\n", title);
    }

    // A bound of 0 is none.
    void row(const std::string &what, double figure, const char *unit, const std::string &reference,
             double referenceFigure, double bound) {
        const double ratio = figure / referenceFigure;
        std::printf("| %s | %.4g %s | %s: %.4g %s | %.2f | ", what.c_str(), figure, unit, reference.c_str(),
                    referenceFigure, unit, ratio);
        if (bound > 0.0) {
            std::printf("%.2f%s |\n", bound, ratio > bound ? " (over)" : "");
        } else {
            std::printf(" |\n");
        }
        std::fflush(stdout);
        failed = failed || (bound > 0.0 && ratio > 2.0 * bound);
    }

    int exitCode() const { return failed ? 1 : 0; }

private:
    bool failed = false;
};
