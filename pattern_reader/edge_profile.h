// Gives the grey levels across a blurred straight border as a function of the distance from the border. Distances are
// in standard deviations of the blur.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>

namespace pattern_reader {

// The cumulative standard normal distribution and its density, from a table for distances up to 4, with linear
// interpolation.
class EdgeProfile {
public:
    struct Value {
        float level;  // 0 far on the dark side, 1 far on the light side
        float slope;  // per standard deviation
    };

    static const EdgeProfile &shared();

    Value at(float distance) const {
        const float place = std::clamp(distance * float(perUnit) + float(count) / 2, 0.0F, float(count));
        const auto i = size_t(int(place));
        const float f = place - float(int(i));
        return {values[i].level + f * (values[i + 1].level - values[i].level),
                values[i].slope + f * (values[i + 1].slope - values[i].slope)};
    }

private:
    EdgeProfile();

    static constexpr int perUnit = 64;
    static constexpr int count = 8 * perUnit;
    std::array<Value, size_t(count) + 2> values{};
};

}  // namespace pattern_reader
