// Prints the measurements of one part of the benchmark as a Markdown table, and remembers whether a goal was missed.
#pragma once

#include <cstdio>
#include <string>

namespace calibration_bench {

class GoalTable {
public:
    explicit GoalTable(const char *title) {
        std::printf("\n### %s\n\n| What | Measured | Goal |\n|---|---|---|\n", title);
    }

    // Prints a figure that has no goal.
    void figure(const std::string &what, const std::string &measured) { print(what, measured, ""); }
    void figure(const std::string &what, double measured, const char *unit) { print(what, text(measured, unit), ""); }

    void atMost(const std::string &what, double measured, double most, const char *unit) {
        judge(what, measured, "at most " + text(most, unit), unit, measured <= most);
    }
    void atLeast(const std::string &what, double measured, double least, const char *unit) {
        judge(what, measured, "at least " + text(least, unit), unit, measured >= least);
    }
    void within(const std::string &what, double measured, double least, double most, const char *unit) {
        judge(what, measured, text(least, "") + " to " + text(most, unit), unit, measured >= least && measured <= most);
    }
    void holds(const std::string &what, const std::string &measured, bool isMet) {
        print(what, measured, isMet ? "met" : "**missed**");
        failed = failed || !isMet;
    }

    bool isMissed() const { return failed; }

private:
    static std::string text(double value, const char *unit) {
        char buffer[64];
        std::snprintf(buffer, sizeof buffer, "%.4g%s%s", value, *unit == 0 ? "" : " ", unit);
        return buffer;
    }

    void judge(const std::string &what, double measured, const std::string &goal, const char *unit, bool isMet) {
        print(what, text(measured, unit), goal + (isMet ? "" : " (**missed**)"));
        failed = failed || !isMet;
    }

    static void print(const std::string &what, const std::string &measured, const std::string &goal) {
        std::printf("| %s | %s | %s |\n", what.c_str(), measured.c_str(), goal.c_str());
        std::fflush(stdout);
    }

    bool failed = false;
};

}  // namespace calibration_bench
