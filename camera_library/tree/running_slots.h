// Records which command slots have a command that has not finished. A slot is identified by its name below "Execute".
// Every run has a number, so that a new slot is not mistaken for an erased slot of the same name. This record has no
// lock of its own: the tree's lock guards it.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>

namespace lmlib64 {

class RunningSlots {
public:
    using Runs = std::map<std::string, std::uint64_t, std::less<>>;
    // An entry outside the map. Moving it into the map or out of it neither allocates nor fails.
    using Entry = Runs::node_type;

    // Makes an entry for a new run in this slot.
    Entry prepare(std::string_view slot) {
        Runs runs;
        runs.emplace(slot, ++lastRun);
        return runs.extract(runs.begin());
    }

    void add(Entry entry) noexcept { running.insert(std::move(entry)); }
    bool isRunning(std::string_view slot) const { return !running.empty() && running.find(slot) != running.end(); }
    bool isRunning(std::string_view slot, std::uint64_t run) const {
        const auto found = running.find(slot);
        return found != running.end() && found->second == run;
    }

    // Call this when the slot's run has finished, or when the slot is erased or replaced.
    void remove(std::string_view slot) noexcept {
        const auto found = running.find(slot);
        if (found != running.end()) {
            running.erase(found);
        }
    }
    void removeAll() noexcept { running.clear(); }

private:
    Runs running;
    std::uint64_t lastRun = 0;
};

}  // namespace lmlib64
