// A node of the library's tree, with everything below it, as a plain value. It has neither a path nor a lock; tree.h
// adds both.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "camera_library/lmlib64.h"

namespace lmlib64 {

// A block of bytes and its format. The comment on lmLibGetBinaryInfo explains the format. Copies of a node share one
// block.
struct Binary {
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::int32_t channelCount = 1;
    std::int32_t bytesPerElement = 1;
    bool isFloat = false;
    double timestamp = 0.0;  // seconds since 1970
    std::vector<std::uint8_t> bytes;
};

class Node;
using NodeObject = std::map<std::string, Node, std::less<>>;
using NodeArray = std::vector<Node>;
using NodeBinary = std::shared_ptr<const Binary>;

// One node and everything below it. A default-constructed node is null: it exists and has the type null. An absent node
// has no Node object.
class Node {
public:
    // The alternatives are in the order of LmLibType, from null to binary.
    using Value = std::variant<std::nullptr_t, double, std::string, bool, NodeObject, NodeArray, NodeBinary>;

    Node() : value(nullptr) {}
    Node(double number) : value(number) {}
    Node(int number) : value(static_cast<double>(number)) {}
    Node(bool boolean) : value(boolean) {}
    Node(const char *text) : value(std::string(text)) {}
    Node(std::string text) : value(std::move(text)) {}
    Node(NodeObject object) : value(std::move(object)) {}
    Node(NodeArray array) : value(std::move(array)) {}
    Node(NodeBinary binary) : value(std::move(binary)) {}

    LmLibType type() const { return static_cast<LmLibType>(value.index() + 1); }

    // Returns the child with this name; nullptr if there is none or if this node is not an object.
    const Node *find(std::string_view name) const;

    Value value;
};

inline const Node *Node::find(std::string_view name) const {
    const auto *object = std::get_if<NodeObject>(&value);
    if (object == nullptr) {
        return nullptr;
    }
    const auto child = object->find(name);
    return child == object->end() ? nullptr : &child->second;
}

}  // namespace lmlib64
