#include "camera_library/tree/node_access.h"

#include <utility>

namespace lmlib64 {

namespace {

// Sets `child` to the child that the part names. Sets it to null if the node has no such child but could have one.
LmLibResult findChild(const Node &node, const PathPart &part, const Node *&child) {
    child = nullptr;
    if (part.isIndex) {
        const auto *array = std::get_if<NodeArray>(&node.value);
        if (array == nullptr) {
            return LmLibResultItemTypeNotCompatible;
        }
        if (part.index < array->size()) {
            child = &(*array)[part.index];
        }
        return LmLibResultOperationSucceeded;
    }
    const auto *object = std::get_if<NodeObject>(&node.value);
    if (object == nullptr) {
        return LmLibResultItemTypeNotCompatible;
    }
    const auto found = object->find(part.name);
    if (found != object->end()) {
        child = &found->second;
    }
    return LmLibResultOperationSucceeded;
}

// Makes the nodes for the path from this part to the end, puts the value at the end, and returns the first node.
Node chain(Path::Iterator part, Path::Iterator end, Node &value) {
    if (part == end) {
        return std::move(value);
    }
    const PathPart current = *part;
    Node inner = chain(++part, end, value);
    if (current.isIndex) {
        NodeArray array;
        array.push_back(std::move(inner));
        return array;
    }
    NodeObject object;
    object.emplace(current.name, std::move(inner));
    return object;
}

// Adds a new child to the parent, with the name or index in `part`. Also makes the nodes on the rest of the path, and
// puts the value at the path's end. The parent must not have this child yet.
LmLibResult graft(Node &parent, const Path::Iterator &part, const Path::Iterator &end, Node &value) {
    auto *array = std::get_if<NodeArray>(&parent.value);
    if (array != nullptr && part->index != array->size()) {
        return LmLibResultItemPathInvalid;
    }
    Path::Iterator below = part;
    for (++below; below != end; ++below) {
        if (below->isIndex && below->index != 0) {
            return LmLibResultItemPathInvalid;
        }
    }
    below = part;
    Node child = chain(++below, end, value);
    if (array != nullptr) {
        array->push_back(std::move(child));
    } else {
        std::get<NodeObject>(parent.value).emplace(part->name, std::move(child));
    }
    value.value = nullptr;
    return LmLibResultOperationSucceeded;
}

}  // namespace

LmLibResult findNode(const Node &root, const Path &path, const Node *&found) {
    const Node *node = &root;
    for (const PathPart &part : path) {
        const LmLibResult code = findChild(*node, part, node);
        if (code != LmLibResultOperationSucceeded) {
            return code;
        }
        if (node == nullptr) {
            return LmLibResultItemInexistent;
        }
    }
    found = node;
    return LmLibResultOperationSucceeded;
}

LmLibResult placeNode(Node &root, const Path &path, Node &value) {
    Node *node = &root;
    const Path::Iterator end = path.end();
    for (Path::Iterator part = path.begin(); part != end; ++part) {
        const Node *child = nullptr;
        const LmLibResult code = findChild(*node, *part, child);
        if (code != LmLibResultOperationSucceeded) {
            return code;
        }
        if (child == nullptr) {
            return graft(*node, part, end, value);
        }
        node = const_cast<Node *>(child);
    }
    std::swap(node->value, value.value);
    return LmLibResultOperationSucceeded;
}

LmLibResult removeNode(Node &root, const Path &path, Node &removed) {
    Node *parent = nullptr;
    Node *node = &root;
    PathPart last;
    for (const PathPart &part : path) {
        const Node *child = nullptr;
        const LmLibResult code = findChild(*node, part, child);
        if (code != LmLibResultOperationSucceeded) {
            return code;
        }
        if (child == nullptr) {
            return LmLibResultItemInexistent;
        }
        parent = node;
        node = const_cast<Node *>(child);
        last = part;
    }
    removed = std::move(*node);
    if (auto *array = std::get_if<NodeArray>(&parent->value)) {
        array->erase(array->begin() + static_cast<NodeArray::difference_type>(last.index));
    } else {
        auto &object = std::get<NodeObject>(parent->value);
        object.erase(object.find(last.name));
    }
    return LmLibResultOperationSucceeded;
}

}  // namespace lmlib64
