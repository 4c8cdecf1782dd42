#include "camera_library/tree/json_text.h"

#include <array>
#include <charconv>
#include <cmath>
#include <nlohmann/json.hpp>
#include <utility>
#include <vector>

#include "camera_library/tree/path.h"

namespace lmlib64 {

namespace {

constexpr std::size_t indentation = 4;
constexpr std::string_view replacementCharacter = "\xEF\xBF\xBD";

// Returns the length of the UTF-8 character at the beginning of the text; 0 if there is none. The text must not be
// empty.
std::size_t characterLength(std::string_view text) {
    const auto byte = [text](std::size_t index) {
        return index < text.size() ? static_cast<unsigned char>(text[index]) : 0U;
    };
    const auto follows = [byte](std::size_t index) { return (byte(index) & 0xC0U) == 0x80U; };
    const unsigned first = byte(0);
    const unsigned second = byte(1);
    if (first < 0x80U) {
        return 1;
    }
    if (first >= 0xC2U && first <= 0xDFU) {
        return follows(1) ? 2 : 0;
    }
    if (first >= 0xE0U && first <= 0xEFU) {
        const bool overlong = first == 0xE0U && second < 0xA0U;
        const bool surrogate = first == 0xEDU && second > 0x9FU;
        return follows(1) && follows(2) && !overlong && !surrogate ? 3 : 0;
    }
    if (first >= 0xF0U && first <= 0xF4U) {
        const bool overlong = first == 0xF0U && second < 0x90U;
        const bool tooGreat = first == 0xF4U && second > 0x8FU;
        return follows(1) && follows(2) && follows(3) && !overlong && !tooGreat ? 4 : 0;
    }
    return 0;
}

void appendControlCharacter(std::string &text, char character) {
    constexpr std::string_view hexDigits = "0123456789abcdef";
    switch (character) {
        case '\n':
            text += "\\n";
            break;
        case '\r':
            text += "\\r";
            break;
        case '\t':
            text += "\\t";
            break;
        default:
            text += "\\u00";
            text += hexDigits[static_cast<unsigned char>(character) >> 4U];
            text += hexDigits[static_cast<unsigned char>(character) & 0xFU];
    }
}

void appendString(std::string &text, std::string_view string) {
    text += '"';
    while (!string.empty()) {
        const char first = string.front();
        const std::size_t length = characterLength(string);
        if (length == 0) {
            text += replacementCharacter;
        } else if (static_cast<unsigned char>(first) < 0x20U) {
            appendControlCharacter(text, first);
        } else {
            if (first == '"' || first == '\\') {
                text += '\\';
            }
            text.append(string.substr(0, length));
        }
        string.remove_prefix(length == 0 ? 1 : length);
    }
    text += '"';
}

void appendLine(std::string &text, const JsonFormat &format, std::size_t depth) {
    if (format.pretty) {
        text += '\n';
        text.append(depth * indentation, ' ');
    }
}

void appendNode(std::string &text, const Node &node, const JsonFormat &format, std::size_t depth);

void appendObject(std::string &text, const NodeObject &object, const JsonFormat &format, std::size_t depth) {
    text += '{';
    bool first = true;
    for (const auto &[name, child] : object) {
        if (!first) {
            text += ',';
        }
        first = false;
        appendLine(text, format, depth + 1);
        appendString(text, name);
        text += format.pretty ? ": " : ":";
        appendNode(text, child, format, depth + 1);
    }
    if (!object.empty()) {
        appendLine(text, format, depth);
    }
    text += '}';
}

void appendArray(std::string &text, const NodeArray &array, const JsonFormat &format, std::size_t depth) {
    text += '[';
    bool first = true;
    for (const Node &element : array) {
        if (!first) {
            text += ',';
        }
        first = false;
        appendLine(text, format, depth + 1);
        appendNode(text, element, format, depth + 1);
    }
    if (!array.empty()) {
        appendLine(text, format, depth);
    }
    text += ']';
}

NodeObject describeBinary(const Binary &binary) {
    return {{"Width", binary.width},
            {"Height", binary.height},
            {"ChannelCount", binary.channelCount},
            {"BytesPerElement", binary.bytesPerElement},
            {"IsFloat", binary.isFloat},
            {"Timestamp", binary.timestamp},
            {"ByteCount", static_cast<double>(binary.bytes.size())}};
}

void appendNode(std::string &text, const Node &node, const JsonFormat &format, std::size_t depth) {
    switch (node.type()) {
        case LmLibTypeNumber:
            appendJsonNumber(text, std::get<double>(node.value), format);
            break;
        case LmLibTypeString:
            appendString(text, std::get<std::string>(node.value));
            break;
        case LmLibTypeBoolean:
            text += std::get<bool>(node.value) ? "true" : "false";
            break;
        case LmLibTypeObject:
            appendObject(text, std::get<NodeObject>(node.value), format, depth);
            break;
        case LmLibTypeArray:
            appendArray(text, std::get<NodeArray>(node.value), format, depth);
            break;
        case LmLibTypeBinary:
            appendObject(text, describeBinary(*std::get<NodeBinary>(node.value)), format, depth);
            break;
        default:
            text += "null";
    }
}

// A decimal number: its significant digits without trailing zeros, and the power of ten of its first digit.
struct Decimal {
    std::string digits;
    int exponent = 0;
};

// Rounds a non-negative number to `precision` significant digits. If `precision` is 0, the result has as few digits as
// are needed to read back the same number.
Decimal decimalOf(double number, int precision) {
    std::array<char, 40> buffer{};
    char *const end = buffer.data() + buffer.size();
    constexpr auto form = std::chars_format::scientific;
    const auto written = precision == 0 ? std::to_chars(buffer.data(), end, number, form)
                                        : std::to_chars(buffer.data(), end, number, form, precision - 1);
    // The text has the form d.ddde+xx or de+xx.
    const std::string_view scientific(buffer.data(), static_cast<std::size_t>(written.ptr - buffer.data()));
    const std::size_t exponentMark = scientific.find('e');
    Decimal decimal;
    decimal.digits = scientific.substr(0, 1);
    if (exponentMark > 2) {
        decimal.digits += scientific.substr(2, exponentMark - 2);
        decimal.digits.erase(decimal.digits.find_last_not_of('0') + 1);
    }
    const std::size_t sign = exponentMark + 1;
    const char *exponentStart = scientific.data() + sign + (scientific[sign] == '+' ? 1 : 0);
    std::from_chars(exponentStart, written.ptr, decimal.exponent);
    return decimal;
}

// Adds the digits in positional notation. The place value of the first digit is 10^firstPower.
void appendDigits(std::string &text, const std::string &digits, int firstPower) {
    if (firstPower < 0) {
        text.append("0.").append(static_cast<std::size_t>(-firstPower - 1), '0').append(digits);
        return;
    }
    const std::size_t whole = static_cast<std::size_t>(firstPower) + 1;
    text.append(digits, 0, whole);
    if (digits.size() > whole) {
        text.append(".").append(digits, whole);
    } else {
        text.append(whole - digits.size(), '0');
    }
}

// Builds nodes from the events of the parser. The parser calls these functions for one value after the other and does
// not recurse, so deeply nested text does not need a deep stack.
class NodeBuilder : public nlohmann::json_sax<nlohmann::json> {
public:
    explicit NodeBuilder(std::size_t depthBound) : maximumDepth(depthBound) {}

    LmLibResult code = LmLibResultCouldNotInterpretJsonText;
    Node root;

    bool null() override { return add(nullptr); }
    bool boolean(bool value) override { return add(value); }
    bool number_integer(number_integer_t value) override { return add(static_cast<double>(value)); }
    bool number_unsigned(number_unsigned_t value) override { return add(static_cast<double>(value)); }
    bool number_float(number_float_t value, const string_t & /*text*/) override { return add(value); }
    bool string(string_t &value) override { return isText(value) && add(std::move(value)); }
    bool binary(binary_t & /*value*/) override { return false; }
    bool start_object(std::size_t /*size*/) override { return open(NodeObject()); }
    bool start_array(std::size_t /*size*/) override { return open(NodeArray()); }
    bool end_object() override { return close(); }
    bool end_array() override { return close(); }
    bool key(string_t &value) override {
        name = std::move(value);
        return isText(name) && Path::isName(name);
    }
    bool parse_error(std::size_t /*position*/, const std::string & /*token*/,
                     const nlohmann::json::exception & /*error*/) override {
        return false;
    }

private:
    // True if the text has no null character, at which the interface's C strings would end.
    static bool isText(std::string_view text) { return text.find('\0') == std::string_view::npos; }

    // Returns the node that gets the next value: the root, a new element of the innermost open array, or the child
    // `name` of the innermost open object. If the object already has this child, the new value replaces the old one.
    Node &next() {
        if (containers.empty()) {
            return root;
        }
        if (auto *array = std::get_if<NodeArray>(&containers.back()->value)) {
            return array->emplace_back();
        }
        return std::get<NodeObject>(containers.back()->value)[std::move(name)];
    }
    template <typename Value>
    bool add(Value value) {
        next().value = std::move(value);
        return true;
    }
    template <typename Container>
    bool open(Container container) {
        if (containers.size() >= maximumDepth) {
            code = LmLibResultNestingLimitReached;
            return false;
        }
        Node &node = next();
        node.value = std::move(container);
        containers.push_back(&node);
        return true;
    }
    bool close() {
        containers.pop_back();
        return true;
    }

    const std::size_t maximumDepth;
    std::string name;
    // The open containers, from the outermost to the innermost. A container does not move in memory while another one
    // inside it is open.
    std::vector<Node *> containers;
};

}  // namespace

void appendJsonNumber(std::string &text, double number, const JsonFormat &format) {
    if (!std::isfinite(number)) {
        text += "null";
        return;
    }
    if (number == 0.0 && std::signbit(number)) {
        text += "-0.0";  // "-0" would be read back as an integer and lose its sign
        return;
    }
    const bool whole = number == std::trunc(number);
    const Decimal decimal = decimalOf(std::fabs(number), whole ? 0 : format.precision);
    const bool withExponent = format.allowScientific && (decimal.exponent < -5 || decimal.exponent > 16);
    if (std::signbit(number)) {
        text += '-';
    }
    appendDigits(text, decimal.digits, withExponent ? 0 : decimal.exponent);
    if (withExponent) {
        text.append("e").append(std::to_string(decimal.exponent));
    }
}

void appendJson(std::string &text, const Node &node, const JsonFormat &format) {
    appendNode(text, node, format, 0);
}

LmLibResult parseJson(std::string_view text, std::size_t maximumDepth, Node &node) {
    if (text.size() > LMLIB_MAXIMUM_JSON_SIZE) {
        return LmLibResultCouldNotInterpretJsonText;
    }
    NodeBuilder builder(maximumDepth);
    if (!nlohmann::json::sax_parse(text.begin(), text.end(), &builder)) {
        return builder.code;
    }
    node = std::move(builder.root);
    return LmLibResultOperationSucceeded;
}

}  // namespace lmlib64
