// A path of the library's tree, parsed without allocating. Parsing checks only the syntax of a path (lmlib64.h) and
// does not look for nodes. A Path refers to the text that it was made from and must not outlive that text.
#pragma once

#include <cstddef>
#include <string_view>

#include "camera_library/lmlib64.h"

namespace lmlib64 {

// One part of a path: a child by name, or an element by index.
struct PathPart {
    std::string_view name;  // the name, or the digits of the index
    std::size_t index = 0;  // the greatest std::size_t if the number is larger
    bool isIndex = false;

    bool isNamed(std::string_view other) const { return !isIndex && name == other; }
};

// A well-formed path of at most LMLIB_MAXIMUM_DEPTH parts; the root by default.
class Path {
public:
    Path() = default;

    // Sets the path from the text. If the text is not a path, returns an error and leaves the path unchanged.
    static LmLibResult parse(std::string_view text, Path &path);

    // True if the text can be a child's name: not empty, and with neither "/" nor a backslash.
    static bool isName(std::string_view text);

    // Walks over the parts, from the root downwards.
    class Iterator {
    public:
        Iterator() = default;
        explicit Iterator(std::string_view text) : rest(text) { decode(); }
        const PathPart &operator*() const { return part; }
        const PathPart *operator->() const { return &part; }
        Iterator &operator++() {
            rest.remove_prefix(length);
            decode();
            return *this;
        }
        bool operator!=(const Iterator &other) const { return rest.size() != other.rest.size(); }
        bool operator==(const Iterator &other) const { return !(*this != other); }

    private:
        void decode();

        std::string_view rest;  // from the current part's "/" on; empty at the end
        std::size_t length = 0;
        PathPart part;
    };

    Iterator begin() const { return Iterator(text); }
    Iterator end() const { return {}; }
    std::size_t depth() const { return partCount; }
    bool isRoot() const { return partCount == 0; }

private:
    std::string_view text;
    std::size_t partCount = 0;
};

}  // namespace lmlib64
