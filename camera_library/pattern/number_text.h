// Numbers as a person reads them, the same in every locale.
#pragma once

#include <string>

namespace lmlib64 {

/// The shortest text that reads back as the same number: 12.5, 0.1, 100.
std::string numberText(double number);

}  // namespace lmlib64
