// Gives typed access to the nodes of the camera library's tree. A TreeItem names one node by its path and is a plain
// value. The node need not exist. Creating or copying a TreeItem, or forming the path of a child, never calls the
// library.
//
// Every other operation makes exactly one call into the library and checks the result code, unless stated otherwise
// below. If the code is not 0, the operation throws LmLibException with the item's path. Texts are passed unchanged, in
// the library's narrow encoding. Texts that the library returns are copied at once.
//
//   TreeItem parameters = command.parameters();
//   parameters["ImageSize"] = 2000;                  // writes the node
//   double x = parameters["Offset"][0].asDouble();   // reads /…/Offset/\0
//
// Assigning one TreeItem to another copies the path, not the node.
#pragma once

#include <cstdint>
#include <string>
#include <type_traits>

class TreeItem {
public:
    // The root of the tree.
    TreeItem() = default;
    explicit TreeItem(std::string path);

    // The first operator returns the child with this name, the second the element with this index. The name is not
    // escaped. These functions do not call the library.
    TreeItem operator[](const std::string &name) const;
    TreeItem operator[](std::int32_t index) const;
    const std::string &path() const { return itemPath; }

    // Writes the node and returns the value. A number must be an int32_t or a double. A boolean must be a bool;
    // pointers and integers are not converted to booleans.
    const std::string &operator=(const std::string &value) const;
    const char *operator=(const char *value) const;
    std::int32_t operator=(std::int32_t value) const;
    double operator=(double value) const;
    template <typename Boolean, typename = std::enable_if_t<std::is_same_v<Boolean, bool>>>
    bool operator=(Boolean value) const {
        return setBool(value);
    }
    void setNull() const;

    // A null text from the library is returned as the empty string.
    std::string asString() const;
    // Does the same as asString(), but returns the empty string after a failure instead of throwing.
    std::string asStringUnchecked() const;
    std::int32_t asInt() const;
    double asDouble() const;
    bool asBool() const;
    // Returns the node and everything below it as JSON text; `numberPrecision` is the number of significant digits.
    std::string asJson(bool prettyPrint, std::int32_t numberPrecision, bool allowScientificFormat) const;

    // Returns the number of children.
    std::int32_t count() const;
    // Returns the node's own name.
    std::string name() const;

    // False if the node is absent, which is not a failure here.
    bool exists() const;
    // These functions throw if the node is absent.
    bool isNull() const;
    bool isNumber() const;
    bool isString() const;
    bool isBoolean() const;
    bool isObject() const;

    void erase() const;
    // Makes a child of this node with a new name that begins with `baseName`.
    TreeItem makeUniqueItem(const std::string &baseName) const;

private:
    bool setBool(bool value) const;
    std::int32_t type() const;

    std::string itemPath;
};

// Returns the string or number in the node. Returns the default if the node is absent, has another type or cannot be
// read. Throws if the query for the node's existence or type fails.
std::string asStringOr(const TreeItem &item, const std::string &defaultValue);
double asDoubleOr(const TreeItem &item, double defaultValue);
