#include "tests/scripted_lmlib64/node_tree.h"

namespace scripted_lmlib64 {

// An index such as "\3" becomes "3" in the JSON pointer.
Json::json_pointer NodeTree::pointerTo(const std::string &path) {
    std::string pointer = path;
    for (std::size_t i = pointer.find("/\\"); i != std::string::npos; i = pointer.find("/\\", i)) {
        pointer.erase(i + 1, 1);
    }
    return Json::json_pointer(pointer);
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

void NodeTree::setBinary(const std::string &path, const Binary &binary) {
    set(path, Json::binary({}, binaries.size()));
    binaries.push_back(binary);
}

void NodeTree::erase(const std::string &path) {
    at(path);
    const Json::json_pointer pointer = pointerTo(path);
    Json &parent = root[pointer.parent_pointer()];
    if (parent.is_array()) {
        parent.erase(std::stoul(pointer.back()));
    } else {
        parent.erase(pointer.back());
    }
}

std::string NodeTree::nameOf(const std::string &path) {
    return path.empty() ? path : pointerTo(path).back();
}

}  // namespace scripted_lmlib64
