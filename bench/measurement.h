// Measures calls alternately in many short rounds, and prints the results as a table. Each row has a figure, the figure
// that it is compared with, their ratio, and the bound on the ratio. Times are in milliseconds unless the caller
// converts them.
//
// The speed of a machine changes from one second to the next, most of all if other programs use it too. Therefore the
// calls to be compared are measured in turn. Each round gives one quotient of their processor times, and the ratio in
// the table is the median of these quotients. Waiting costs no processor time, so elapsed times are measured too. Of
// these, the time of the fastest round is used, because other programs have disturbed it least.
#pragma once

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <ctime>
#include <functional>
#include <iterator>
#include <string>
#include <vector>

struct Time {
    double processor = 0.0;  // of all threads of the process
    double elapsed = 0.0;    // 0 if it is not measured

    Time operator-(const Time &other) const { return {processor - other.processor, elapsed - other.elapsed}; }
    Time operator/(double divisor) const { return {processor / divisor, elapsed / divisor}; }
};

// One time per round.
using Times = std::vector<Time>;

// The current processor time and elapsed time, each counted from an unspecified moment.
inline Time now() {
    const auto elapsed = std::chrono::steady_clock::now().time_since_epoch();
    return {1e3 * static_cast<double>(std::clock()) / CLOCKS_PER_SEC,
            std::chrono::duration<double, std::milli>(elapsed).count()};
}

template <class Call>
Time timeOf(Call call) {
    const Time start = now();
    call();
    return now() - start;
}

// Returns a quantile: the value below which about this share of the values lies. A share of 0.5 gives the median.
inline double quantile(std::vector<double> values, double share) {
    const auto at = values.begin() + std::lround(share * static_cast<double>(values.size() - 1));
    std::nth_element(values.begin(), at, values.end());
    return *at;
}

inline double median(const std::vector<double> &values) {
    return quantile(values, 0.5);
}

// Measures each kind of call once per round. The first three rounds do not count. The kinds take turns in being the
// first of a round.
inline std::vector<Times> measureAlternately(int rounds, const std::vector<std::function<Time()>> &kinds) {
    constexpr int warmUps = 3;
    std::vector<Times> times(kinds.size());
    for (int round = -warmUps; round < rounds; ++round) {
        for (std::size_t i = 0; i < kinds.size(); ++i) {
            const std::size_t kind = (i + static_cast<std::size_t>(round + warmUps)) % kinds.size();
            const Time time = kinds[kind]();
            if (round >= 0) {
                times[kind].push_back(time);
            }
        }
    }
    return times;
}

// Prints Markdown rows. A ratio above its bound is marked "(over)". `exitCode` returns 1 only if a ratio was more than
// twice its bound, because noise alone does not make a ratio that large. A bound of 0 means that there is none. The
// column "Ratio of elapsed times" compares the elapsed times of the fastest rounds. It has no bound, because these
// times still contain much noise on a busy machine.
class Table {
public:
    explicit Table(const char *title) {
        std::printf(
            "\n### %s\n\n| What | Measured | Compared with | Ratio | Middle half of the ratios | Ratio of "
            "elapsed times | Highest allowed ratio |\n|---|---|---|---|---|---|---|\n",
            title);
    }

    // Compares times with reference times from the same rounds.
    void row(const std::string &what, const Times &times, const char *unit, const std::string &reference,
             const Times &referenceTimes, double bound) {
        std::vector<double> ratios;
        std::transform(times.begin(), times.end(), referenceTimes.begin(), std::back_inserter(ratios),
                       [](const Time &time, const Time &other) { return time.processor / other.processor; });
        beginRow(what, processorMedian(times), unit, reference, processorMedian(referenceTimes));
        std::printf("%.2f | %.2f to %.2f | ", median(ratios), quantile(ratios, 0.25), quantile(ratios, 0.75));
        if (fastest(referenceTimes) > 0.0) {
            std::printf("%.2f ", fastest(times) / fastest(referenceTimes));
        }
        std::printf("| ");
        endRow(median(ratios), bound);
    }

    // Compares the elapsed time of the fastest round with a fixed limit.
    void row(const std::string &what, const Times &times, const char *unit, double limit) {
        figure(what, fastest(times), unit, "limit", limit, 1.0);
    }

    // Compares figures that were not measured in rounds.
    void figure(const std::string &what, double figure, const char *unit, const std::string &reference,
                double referenceFigure, double bound) {
        beginRow(what, figure, unit, reference, referenceFigure);
        std::printf("%.2f | | | ", figure / referenceFigure);
        endRow(figure / referenceFigure, bound);
    }

    int exitCode() const { return failed ? 1 : 0; }

private:
    static double processorMedian(const Times &times) {
        std::vector<double> values;
        std::transform(times.begin(), times.end(), std::back_inserter(values),
                       [](const Time &time) { return time.processor; });
        return median(values);
    }

    static double fastest(const Times &times) {
        return std::min_element(times.begin(), times.end(),
                                [](const Time &time, const Time &other) { return time.elapsed < other.elapsed; })
            ->elapsed;
    }

    static void beginRow(const std::string &what, double figure, const char *unit, const std::string &reference,
                         double referenceFigure) {
        std::printf("| %s | %.4g %s | %s: %.4g %s | ", what.c_str(), figure, unit, reference.c_str(), referenceFigure,
                    unit);
    }

    void endRow(double ratio, double bound) {
        if (bound > 0.0) {
            std::printf("%.2f%s |\n", bound, ratio > bound ? " (over)" : "");
        } else {
            std::printf("|\n");
        }
        std::fflush(stdout);
        failed = failed || (bound > 0.0 && ratio > 2.0 * bound);
    }

    bool failed = false;
};
