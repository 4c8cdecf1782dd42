#include "pattern_reader/edge_profile.h"

#include <cmath>

namespace pattern_reader {

EdgeProfile::EdgeProfile() {
    const double pi = std::acos(-1.0);
    for (int i = 0; i <= count + 1; i++) {
        const double t = (double(i) - 0.5 * count) / perUnit;
        values[size_t(i)] = {float(0.5 * std::erfc(-t / std::sqrt(2.0))),
                             float(std::exp(-t * t / 2) / std::sqrt(2 * pi))};
    }
}

const EdgeProfile &EdgeProfile::shared() {
    static const EdgeProfile profile;
    return profile;
}

}  // namespace pattern_reader
