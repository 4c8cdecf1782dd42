// Defines the conditions under which the reader is measured. A picture's number determines its condition and everything
// else in the picture.
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
    // Every draft begins as an easy picture (makeDraft), and `prepare` makes it harder. `finish` changes the exposure
    // after the scene has been composed, because only then is the place of the pattern in the picture known. Either may
    // be null. If both are null, makeScene (scenes.h) makes the picture instead.
    void (*prepare)(SceneDraft &draft, Dice &dice) = nullptr;
    void (*finish)(ComposedScene &composed, Dice &dice) = nullptr;
};

const std::vector<Condition> &conditions();

// The index of a picture's condition.
size_t conditionOf(unsigned number);
std::optional<size_t> conditionNamed(const std::string &id);

Scene makeConditionScene(unsigned number, Marks marks = Marks::Drawn);

}  // namespace reader_bench
