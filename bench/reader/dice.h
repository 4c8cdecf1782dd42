// Makes random numbers. The seed determines all of them.
#pragma once

#include <cmath>
#include <random>

namespace reader_bench {

class Dice {
public:
    explicit Dice(unsigned seed) : random(seed) {}
    double real(double low, double high) { return std::uniform_real_distribution<double>(low, high)(random); }
    // The logarithm of the result is uniformly distributed.
    double logarithmic(double low, double high) { return std::exp(real(std::log(low), std::log(high))); }
    int whole(int low, int high) { return std::uniform_int_distribution<int>(low, high)(random); }
    bool chance(double probability) { return real(0, 1) < probability; }

    std::mt19937 random;  // for functions that take a generator
};

}  // namespace reader_bench
