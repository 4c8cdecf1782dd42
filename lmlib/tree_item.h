// Typed access to the nodes of the camera library's tree. A TreeItem names one node by its path and is a plain
// value: making, copying or navigating one never calls the library, and the node need not exist.
//
// Every other operation is exactly one call into the library followed by its result check: any code but 0 is
// thrown as LmLibException with the item's path, exceptions being named below. Texts are passed as they are, in
// the library's narrow encoding; what the library returns is copied at once.
//
//   TreeItem parameters = command.parameters();
//   parameters["ImageSize"] = 2000;                  // writes the node
//   double x = parameters["Offset"][0].asDouble();   // reads /…/Offset/\0
//
// Assigning one TreeItem to another copies the name, not the node.
#pragma once

#include <cstdint>
#include <string>
#include <type_traits>

class TreeItem {
public:
    // The root of the tree.
    TreeItem() = default;
    explicit TreeItem(std::string path);

    // The child of this name, which is not escaped; the element of this index. No library call.
    TreeItem operator[](const std::string &name) const;
    TreeItem operator[](std::int32_t index) const;
    const std::string &path() const { return itemPath; }

    // Each writes the node and returns the value written. A number must be an int32_t or a double, and only a
    // bool is a boolean: another pointer or integer type does not turn into one.
    const std::string &operator=(const std::string &value) const;
    const char *operator=(const char *value) const;
    std::int32_t operator=(std::int32_t value) const;
    double operator=(double value) const;
    template <typename Boolean, typename = std::enable_if_t<std::is_same_v<Boolean, bool>>>
    bool operator=(Boolean value) const {
        return setBool(value);
    }
    void setNull() const;

    // A null text from the library reads as the empty string.
    std::string asString() const;
    // As asString(), but the empty string on every failure, and never throws.
    std::string asStringUnchecked() const;
    std::int32_t asInt() const;
    double asDouble() const;
    bool asBool() const;
    // The node and all below it; numberPrecision is in significant digits.
    std::string asJson(bool prettyPrint, std::int32_t numberPrecision, bool allowScientificFormat) const;

    // The number of children.
    std::int32_t count() const;
    // The node's own name.
    std::string name() const;

    // False for an absent node, which is no failure here.
    bool exists() const;
    // These throw for an absent node.
    bool isNull() const;
    bool isNumber() const;
    bool isString() const;
    bool isBoolean() const;
    bool isObject() const;

    void erase() const;
    // A new child of this node whose name begins with baseName and was not there before.
    TreeItem makeUniqueItem(const std::string &baseName) const;

private:
    bool setBool(bool value) const;
    std::int32_t type() const;

    std::string itemPath;
};

// The string or number in the node, or the default where the node is absent, of another type or fails to be
// read. A failing look at whether it is there, or at its type, still throws.
std::string asStringOr(const TreeItem &item, const std::string &defaultValue);
double asDoubleOr(const TreeItem &item, double defaultValue);
