#include "camera_library/tree/tree.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>

#include "camera_library/tree/node_access.h"

namespace lmlib64 {

namespace {

constexpr std::string_view pathName = "Path";
constexpr std::string_view executeName = "Execute";
constexpr std::string_view commandName = "Command";
constexpr std::string_view parametersName = "Parameters";
constexpr std::string_view resultName = "Result";

Node newRoot(const NodeObject &pathNode) {
    NodeObject root;
    root.emplace(pathName, pathNode);
    return root;
}

// Returns the base name, an underscore if the base name ends in a digit, and the number. Without the underscore, "A1"
// with the number 2 and "A" with the number 12 would have the same name.
std::string uniqueName(std::string_view baseName, std::uint64_t number) {
    std::string name(baseName);
    if (!name.empty() && name.back() >= '0' && name.back() <= '9') {
        name += '_';
    }
    std::array<char, std::numeric_limits<std::uint64_t>::digits10 + 1> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number);
    return name.append(digits.data(), end.ptr);
}

}  // namespace

Tree::Tree(NodeObject path, std::uint64_t greatestNumber)
    : pathNode(std::move(path)), greatestUniqueNumber(greatestNumber), root(newRoot(pathNode)) {}

LmLibResult Tree::find(std::string_view path, const Node *&node) const {
    Path parsed;
    const LmLibResult code = Path::parse(path, parsed);
    return code == LmLibResultOperationSucceeded ? findNode(root, parsed, node) : code;
}

LmLibResult Tree::mayChange(const Path &path) const {
    Path::Iterator part = path.begin();
    if (path.isRoot() || part->isNamed(pathName)) {
        return LmLibResultItemProtected;
    }
    if (path.depth() >= 3 && part->isNamed(executeName)) {
        const PathPart slot = *++part;
        if (!slot.isIndex && runningSlots.isRunning(slot.name) && (++part)->isNamed(commandName)) {
            return LmLibResultCommandRunning;
        }
    }
    return LmLibResultOperationSucceeded;
}

// Call this after every change of the node at the path. Drops the runs of slots that were erased or replaced, and wakes
// the waits that the change ends.
void Tree::changed(const Path &path) noexcept {
    Path::Iterator part = path.begin();
    if (path.depth() <= 2 && part->isNamed(executeName)) {
        if (path.depth() == 1) {
            runningSlots.removeAll();
        } else {
            runningSlots.remove((++part)->name);
        }
    }
    wakeWaits();
}

LmLibResult Tree::write(std::string_view path, Node value) {
    Path parsed;
    LmLibResult code = Path::parse(path, parsed);
    if (code != LmLibResultOperationSucceeded) {
        return code;
    }
    const std::lock_guard<std::mutex> lock(mutex);
    code = mayChange(parsed);
    if (code == LmLibResultOperationSucceeded) {
        code = placeNode(root, parsed, value);
    }
    if (code == LmLibResultOperationSucceeded) {
        changed(parsed);
    }
    return code;
}

LmLibResult Tree::erase(std::string_view path) {
    Path parsed;
    LmLibResult code = Path::parse(path, parsed);
    if (code != LmLibResultOperationSucceeded) {
        return code;
    }
    Node removed;
    const std::lock_guard<std::mutex> lock(mutex);
    code = mayChange(parsed);
    if (code == LmLibResultOperationSucceeded) {
        code = removeNode(root, parsed, removed);
    }
    if (code == LmLibResultOperationSucceeded) {
        changed(parsed);
    }
    return code;
}

LmLibResult Tree::makeUniqueItem(std::string_view parentPath, std::string_view baseName, std::string &path) {
    if (!baseName.empty() && !Path::isName(baseName)) {
        return LmLibResultItemPathInvalid;
    }
    const std::lock_guard<std::mutex> lock(mutex);
    std::uint64_t number = uniqueNumber;
    while (number < greatestUniqueNumber) {
        std::string candidate = std::string(parentPath).append("/").append(uniqueName(baseName, ++number));
        Path parsed;
        LmLibResult code = Path::parse(candidate, parsed);
        if (code == LmLibResultOperationSucceeded) {
            code = mayChange(parsed);
        }
        if (code != LmLibResultOperationSucceeded) {
            return code;
        }
        const Node *taken = nullptr;
        if (findNode(root, parsed, taken) == LmLibResultOperationSucceeded) {
            continue;
        }
        Node item{NodeObject()};
        code = placeNode(root, parsed, item);
        if (code == LmLibResultOperationSucceeded) {
            uniqueNumber = number;
            changed(parsed);
            path = std::move(candidate);
        }
        return code;
    }
    return LmLibResultItemMaximumUniqueCountReached;
}

// Ends the wait if its node has the awaited type or is absent: sets the wait's `code` and `over`, and returns true.
bool Tree::settle(Wait &wait) const {
    const Node *node = nullptr;
    const LmLibResult code = findNode(root, wait.path, node);
    const bool absent = code != LmLibResultOperationSucceeded;
    const LmLibType type = absent ? LmLibTypeAbsent : node->type();
    if (type == wait.type) {
        wait.code = LmLibResultOperationSucceeded;
        wait.over = true;
    } else if (absent) {
        wait.code = LmLibResultItemInexistent;
        wait.over = true;
    }
    return wait.over;
}

LmLibResult Tree::waitForType(std::string_view path, LmLibType type, bool waitForChange) {
    Wait wait{};
    wait.type = type;
    LmLibResult code = Path::parse(path, wait.path);
    if (code != LmLibResultOperationSucceeded) {
        return code;
    }
    std::unique_lock<std::mutex> lock(mutex);
    const Node *node = nullptr;
    code = findNode(root, wait.path, node);
    if (code == LmLibResultItemTypeNotCompatible) {
        return code;
    }
    if (settle(wait)) {
        return wait.code;
    }
    if (!waitForChange) {
        return LmLibResultTimeout;
    }
    waits.push_back(&wait);
    wait.changed.wait(lock, [&wait] { return wait.over; });
    return wait.code;
}

std::size_t Tree::waitCount() const {
    const std::lock_guard<std::mutex> lock(mutex);
    return waits.size();
}

// Every wait is checked after every change of the tree, under the lock. So no wait misses a type that the node had only
// for a moment, or a node that was erased and made again.
void Tree::wakeWaits() noexcept {
    const auto over = std::remove_if(waits.begin(), waits.end(), [this](Wait *wait) {
        const bool settled = settle(*wait);
        if (settled) {
            wait->changed.notify_one();
        }
        return settled;
    });
    waits.erase(over, waits.end());
}

void Tree::endWaits(LmLibResult code) noexcept {
    for (Wait *wait : waits) {
        wait->code = code;
        wait->over = true;
        wait->changed.notify_one();
    }
    waits.clear();
}

void Tree::cancelWaits() noexcept {
    const std::lock_guard<std::mutex> lock(mutex);
    endWaits(LmLibResultOperationCanceled);
}

std::string_view Tree::slotOfCommand(std::string_view path) {
    Path parsed;
    if (Path::parse(path, parsed) != LmLibResultOperationSucceeded || parsed.depth() != 3) {
        return {};
    }
    Path::Iterator part = parsed.begin();
    if (!part->isNamed(executeName)) {
        return {};
    }
    const PathPart slot = *++part;
    return !slot.isIndex && (++part)->isNamed(commandName) ? slot.name : std::string_view();
}

Node *Tree::findSlot(std::string_view slot) {
    auto &top = std::get<NodeObject>(root.value);
    const auto execute = top.find(executeName);
    if (execute == top.end()) {
        return nullptr;
    }
    auto *slots = std::get_if<NodeObject>(&execute->second.value);
    if (slots == nullptr) {
        return nullptr;
    }
    const auto found = slots->find(slot);
    return found == slots->end() ? nullptr : &found->second;
}

LmLibResult Tree::beginRun(Run &run) {
    const std::string path = std::string("/").append(executeName).append("/").append(run.slot).append("/Command");
    Path parsed;
    LmLibResult code = Path::parse(path, parsed);
    if (code != LmLibResultOperationSucceeded) {
        return code;
    }
    Node command(run.command);
    Node oldResult;
    const std::lock_guard<std::mutex> lock(mutex);
    code = mayChange(parsed);
    if (code != LmLibResultOperationSucceeded) {
        return code;
    }
    Node *slot = findSlot(run.slot);
    const Node *parameters = slot == nullptr ? nullptr : slot->find(parametersName);
    run.parameters = parameters == nullptr ? Node() : *parameters;
    RunningSlots::Entry entry = runningSlots.prepare(run.slot);
    run.number = entry.mapped();
    code = placeNode(root, parsed, command);
    if (code != LmLibResultOperationSucceeded) {
        return code;
    }
    // From here on nothing can fail.
    runningSlots.add(std::move(entry));
    auto &children = std::get<NodeObject>(findSlot(run.slot)->value);
    const auto result = children.find(resultName);
    if (result != children.end()) {
        std::swap(oldResult, result->second);
        children.erase(result);
    }
    changed(parsed);
    return code;
}

void Tree::finishRun(Run &run) noexcept {
    Node oldResult;
    const std::lock_guard<std::mutex> lock(mutex);
    if (!runningSlots.isRunning(run.slot, run.number)) {
        return;
    }
    runningSlots.remove(run.slot);
    // A slot whose command still runs is an object with a "Command", because "Command" cannot be removed during the
    // run.
    auto &children = std::get<NodeObject>(findSlot(run.slot)->value);
    const auto result = children.find(resultName);
    if (result != children.end()) {
        std::swap(oldResult, result->second);
        children.erase(result);
    }
    children.insert(std::move(run.result));
    children.find(commandName)->second.value = nullptr;
    wakeWaits();
}

void Tree::reset() {
    Node fresh = newRoot(pathNode);
    const std::lock_guard<std::mutex> lock(mutex);
    endWaits(LmLibResultOperationCanceled);
    std::vector<Wait *>().swap(waits);
    runningSlots.removeAll();
    uniqueNumber = 0;
    std::swap(root.value, fresh.value);
}

}  // namespace lmlib64
