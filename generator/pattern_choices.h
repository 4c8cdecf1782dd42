// The pattern types and the values offered in the form's choice lists.
#pragma once

#include <array>

// The number of a type is the index of its page in the form.
enum class PatternType { Official = 0, Single = 1, Flexible = 2, Assembly = 3, Halcon = 4 };

// The choices in millimetres, in the order of the items of the form's lists. The index of the selected item is the
// index of the choice.
constexpr std::array<double, 14> GridSpacingChoices{1, 1.5, 2, 3, 4, 6, 8, 12, 16, 24, 32, 48, 64, 96};
constexpr std::array<double, 6> ThicknessChoices{0, 1, 2, 3, 4, 5};

// The initially selected items: 12 mm and 0 mm.
constexpr int initialGridSpacingIndex = 7;
constexpr int initialThicknessIndex = 0;
