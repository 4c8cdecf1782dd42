// Converts a node and everything below it to JSON text, and back. The conversion uses neither paths nor locks and
// does not depend on the locale.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "camera_library/lmlib64.h"
#include "camera_library/tree/node.h"

namespace lmlib64 {

// The format of numbers and lines; see lmLibGetJson.
struct JsonFormat {
    bool pretty = false;  // one line per child, indented by four spaces
    // Significant digits of a number that is not whole; 0: the fewest from which the same number can be read back.
    int precision = 0;
    bool allowScientific = false;  // exponents for very small and very large numbers
};

constexpr int maximumJsonPrecision = 18;

// Adds the node's JSON text. In strings and names, each byte that is not valid UTF-8 becomes U+FFFD.
void appendJson(std::string &text, const Node &node, const JsonFormat &format);

// Adds the number as JSON; null for infinities and not-a-number.
void appendJsonNumber(std::string &text, double number, const JsonFormat &format);

// Sets the node to the content of the text. Returns LmLibResultNestingLimitReached if containers nest deeper than
// `maximumDepth` (0: no containers), and LmLibResultCouldNotInterpretJsonText for everything else that lmLibSetJson
// refuses. After an error the node is unchanged.
LmLibResult parseJson(std::string_view text, std::size_t maximumDepth, Node &node);

}  // namespace lmlib64
