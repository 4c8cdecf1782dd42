#include "lmlib/tree_command.h"

#include <utility>

#include "camera_library/lmlib64.h"
#include "lmlib/lm_lib_exception.h"
#include "lmlib/temporary_slot.h"

namespace {

// Turns the code for an absent node into success, because absence is not a failure here: a command that was never
// started has no "Command", and one that succeeded has no "ErrorSymbol".
std::int32_t toleratingAbsence(std::int32_t code) {
    return code == LmLibResultItemInexistent ? static_cast<std::int32_t>(LmLibResultOperationSucceeded) : code;
}

void report(std::int32_t *resultOut, std::int32_t code) {
    if (resultOut != nullptr) {
        *resultOut = code;
    }
}

}  // namespace

TreeCommand::TreeCommand(std::string name, const std::string &nodeName) : commandName(std::move(name)) {
    const TreeItem commands = TreeItem()["Execute"];
    if (nodeName.empty()) {
        slotItem = commands.makeUniqueItem("");
        temporarySlot = std::make_shared<TemporarySlot>(slotItem.path());
    } else {
        slotItem = commands[nodeName];
    }
}

TreeItem TreeCommand::commandNode() const {
    return slotItem["Command"];
}

TreeItem TreeCommand::parameters() const {
    return slotItem["Parameters"];
}

TreeItem TreeCommand::result() const {
    return slotItem["Result"];
}

void TreeCommand::execute(std::int32_t *resultOut, const std::string &commandNameOverride, bool wait) const {
    const std::string &name = commandNameOverride.empty() ? commandName : commandNameOverride;
    std::int32_t code = LmLibResultOperationSucceeded;
    lmLibSetString(&code, commandNode().path().c_str(), name.c_str());
    if (code == LmLibResultOperationSucceeded && wait) {
        code = waitForCompletion();
    }
    report(resultOut, code);
}

void TreeCommand::execute(bool wait) const {
    std::int32_t code = LmLibResultOperationSucceeded;
    execute(&code, "", wait);
    checkResult(code);
}

void TreeCommand::checkResult(std::int32_t code) const {
    if (code != LmLibResultOperationSucceeded) {
        throw LmLibException(slotItem.path(), code, temporarySlot);
    }
}

std::int32_t TreeCommand::waitForCompletion() const {
    const TreeItem command = commandNode();
    std::int32_t code = LmLibResultOperationSucceeded;
    const std::int32_t type = lmLibGetType(&code, command.path().c_str());
    if (code != LmLibResultOperationSucceeded) {
        return toleratingAbsence(code);
    }
    if (type == LmLibTypeAbsent) {
        return LmLibResultOperationSucceeded;
    }
    lmLibWaitForType(&code, command.path().c_str(), LmLibTypeNull, 1);
    if (code != LmLibResultOperationSucceeded) {
        return code;
    }
    return successful() ? LmLibResultOperationSucceeded : LmLibResultExecutionFailed;
}

bool TreeCommand::finished(std::int32_t *resultOut) const {
    const TreeItem command = commandNode();
    std::int32_t code = LmLibResultOperationSucceeded;
    std::int32_t type = lmLibGetType(&code, command.path().c_str());
    if (code != LmLibResultOperationSucceeded || type == LmLibTypeAbsent) {
        report(resultOut, toleratingAbsence(code));
        return true;
    }
    // The type is intentionally queried again. If the first query fails, the command counts as finished. If this one
    // fails, for example because the slot has been erased in the meantime, the command counts as not finished.
    type = lmLibGetType(&code, command.path().c_str());
    report(resultOut, toleratingAbsence(code));
    return type == LmLibTypeNull;
}

bool TreeCommand::successful(std::int32_t *resultOut) const {
    std::int32_t code = LmLibResultOperationSucceeded;
    const std::int32_t type = lmLibGetType(&code, result()["ErrorSymbol"].path().c_str());
    report(resultOut, toleratingAbsence(code));
    return code != LmLibResultOperationSucceeded || type == LmLibTypeAbsent;
}

void TreeCommand::assertSuccessful() const {
    std::int32_t code = LmLibResultOperationSucceeded;
    const bool hasFinished = finished(&code);
    checkResult(code);
    checkResult(hasFinished ? LmLibResultOperationSucceeded : LmLibResultExecutionFailed);
    const bool hasSucceeded = successful(&code);
    checkResult(code);
    checkResult(hasSucceeded ? LmLibResultOperationSucceeded : LmLibResultExecutionFailed);
}
