// The conditions under which the reader is measured. Each picture has one: its number says which, and fixes everything
// else of the picture, too.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "bench/reader/scene.h"
#include "bench/reader/scene_draft.h"

namespace reader_bench {

struct Condition {
    const char *id = "";
    const char *text = "";
    bool boardsOnly = false;
    // Changes a mild draft; changes the exposure once it is known where the pattern is. Both may be empty.
    void (*prepare)(SceneDraft &draft, Dice &dice) = nullptr;
    void (*finish)(ComposedScene &composed, Dice &dice) = nullptr;
};

const std::vector<Condition> &conditions();

// The index of a picture's condition, and of the condition with the given id.
size_t conditionOf(unsigned number);
std::optional<size_t> conditionNamed(const std::string &id);

Scene makeConditionScene(unsigned number, Marks marks = Marks::Drawn);

}  // namespace reader_bench
