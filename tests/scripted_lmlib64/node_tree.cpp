#include "tests/scripted_lmlib64/node_tree.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace scripted_lmlib64 {

namespace {

struct Part {
    bool isIndex = false;
    std::string name;  // without the backslash
    std::size_t index = 0;
};

Part parsePart(const std::string &text) {
    Part part;
    if (text.empty()) {
        throw Failure{LmLibResultItemPathInvalid};
    }
    part.isIndex = text.front() == '\\';
    part.name = part.isIndex ? text.substr(1) : text;
    if (part.isIndex) {
        const bool padded = part.name.size() > 1 && part.name.front() == '0';
        if (part.name.empty() || part.name.size() > 9 || padded ||
            part.name.find_first_not_of("0123456789") != std::string::npos) {
            throw Failure{LmLibResultItemPathInvalid};
        }
        part.index = std::stoul(part.name);
    } else if (part.name.find('\\') != std::string::npos) {
        throw Failure{LmLibResultItemPathInvalid};
    }
    return part;
}

std::vector<Part> parsePath(const std::string &path) {
    std::vector<Part> parts;
    std::size_t start = 0;
    while (start < path.size()) {
        if (path[start] != '/') {
            throw Failure{LmLibResultItemPathInvalid};
        }
        const std::size_t end = std::min(path.find('/', start + 1), path.size());
        parts.push_back(parsePart(path.substr(start + 1, end - start - 1)));
        start = end;
    }
    if (parts.size() > LMLIB_MAXIMUM_DEPTH) {
        throw Failure{LmLibResultNestingLimitReached};
    }
    return parts;
}

const Json &childOf(const Json &parent, const Part &part) {
    if (!(part.isIndex ? parent.is_array() : parent.is_object())) {
        throw Failure{LmLibResultItemTypeNotCompatible};
    }
    if (part.isIndex ? part.index >= parent.size() : !parent.contains(part.name)) {
        throw Failure{LmLibResultItemInexistent};
    }
    return part.isIndex ? parent[part.index] : parent[part.name];
}

// The child to write to, made where it is missing; an empty container for the part that follows it.
Json &childMade(Json &parent, const Part &part, const Part *next) {
    if (!(part.isIndex ? parent.is_array() : parent.is_object())) {
        throw Failure{LmLibResultItemTypeNotCompatible};
    }
    if (part.isIndex && part.index > parent.size()) {
        throw Failure{LmLibResultItemPathInvalid};
    }
    const bool isMissing = part.isIndex ? part.index == parent.size() : !parent.contains(part.name);
    Json &child = part.isIndex ? parent[part.index] : parent[part.name];
    if (isMissing && next != nullptr) {
        child = next->isIndex ? Json::array() : Json::object();
    }
    return child;
}

}  // namespace

const Json &NodeTree::at(const std::string &path) const {
    const Json *node = &root;
    for (const Part &part : parsePath(path)) {
        node = &childOf(*node, part);
    }
    return *node;
}

bool NodeTree::contains(const std::string &path) const {
    try {
        at(path);
        return true;
    } catch (const Failure &) {
        return false;
    }
}

const Binary &NodeTree::binaryAt(const std::string &path) const {
    const Json &node = at(path);
    if (!node.is_binary()) {
        throw Failure{LmLibResultItemTypeNotCompatible};
    }
    return binaries.at(node.get_binary().subtype());
}

std::int32_t NodeTree::typeAt(const std::string &path) const {
    switch (at(path).type()) {
        case Json::value_t::null:
            return LmLibTypeNull;
        case Json::value_t::string:
            return LmLibTypeString;
        case Json::value_t::boolean:
            return LmLibTypeBoolean;
        case Json::value_t::object:
            return LmLibTypeObject;
        case Json::value_t::array:
            return LmLibTypeArray;
        case Json::value_t::binary:
            return LmLibTypeBinary;
        default:
            return LmLibTypeNumber;
    }
}

std::string NodeTree::nameOf(const std::string &path) {
    const std::vector<Part> parts = parsePath(path);
    return parts.empty() ? std::string() : parts.back().name;
}

void NodeTree::set(const std::string &path, const Json &value) {
    const std::vector<Part> parts = parsePath(path);
    Json changed = root;
    Json *node = &changed;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        node = &childMade(*node, parts[i], i + 1 < parts.size() ? &parts[i + 1] : nullptr);
    }
    *node = value;
    root = std::move(changed);
}

void NodeTree::setBinary(const std::string &path, const Binary &binary) {
    set(path, Json::binary({}, binaries.size()));
    binaries.push_back(binary);
}

void NodeTree::erase(const std::string &path) {
    at(path);
    std::vector<Part> parts = parsePath(path);
    if (parts.empty()) {
        throw Failure{LmLibResultItemProtected};
    }
    const Part last = parts.back();
    parts.pop_back();
    Json *parent = &root;
    for (const Part &part : parts) {
        parent = part.isIndex ? &(*parent)[part.index] : &(*parent)[part.name];
    }
    if (last.isIndex) {
        parent->erase(last.index);
    } else {
        parent->erase(last.name);
    }
}

}  // namespace scripted_lmlib64
