// Some of the library's calls, and what must hold when one of them fails for want of memory: a session is played with
// an allocation that fails, and then asked for its complaint. Its steps allocate nothing themselves.
#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "camera_library/lmlib64.h"
#include "tests/camera_library/temporary_folder.h"
#include "tests/faults/failing_allocation.h"

namespace library_session {

using failing_allocation::Pause;

inline const char *const longText = "a text that is too long to be kept within a string object itself";
inline const char *const oldContents = "the file of an earlier save";

inline std::string jsonOf(const char *path) {
    std::int32_t result = 0;
    const char *json = lmLibGetJson(&result, path, 0, 0, 1);
    return json == nullptr ? "code " + std::to_string(result) : json;
}

class Session {
public:
    virtual ~Session() = default;

    // Plays all steps, also after some have failed.
    virtual void play() = 0;

    // With every allocation possible again: makes sure that nothing runs any more, and adds to the complaints
    // about what the session has left.
    virtual void check() {}

    std::string complaint;

protected:
    // A step that changes the tree or only reads it. Where it fails, the tree is as it was.
    template <typename Call>
    void step(const char *name, Call call) {
        std::string before;
        {
            const Pause pause;
            before = jsonOf("");
        }
        std::int32_t result = -1;
        call(&result);
        const Pause pause;
        if (result != LmLibResultOperationSucceeded && result != LmLibResultInternalError && !hasFailed) {
            complain(name, "code " + std::to_string(result));
        }
        // What follows a failed step may miss what that was to write.
        hasFailed = hasFailed || result != LmLibResultOperationSucceeded;
        if (result != LmLibResultOperationSucceeded && jsonOf("") != before) {
            complain(name, "changed the tree from " + before + " to " + jsonOf(""));
        }
    }

    bool hasFailed = false;

    void complain(const std::string &where, const std::string &what) { complaint += where + ": " + what + "\n"; }
};

class TreeSession : public Session {
public:
    void play() override {
        step("string", [](std::int32_t *result) { lmLibSetString(result, "/A/Some/Texts", longText); });
        step("int", [](std::int32_t *result) { lmLibSetInt(result, "/A/Array/\\0/Number", 1); });
        step("double", [](std::int32_t *result) { lmLibSetDouble(result, "/A/Array/\\1", 0.1); });
        step("bool", [](std::int32_t *result) { lmLibSetBool(result, "/A/Array/\\2/Flag", 1); });
        step("null", [](std::int32_t *result) { lmLibSetNull(result, "/A/An object with a long name/Null"); });
        step("JSON", [](std::int32_t *result) {
            lmLibSetJson(result, "/B", R"({"A name that is not short":[1,2.5,"a text that is not short",{"C":null}]})");
        });
        step("no JSON", [](std::int32_t *result) {
            lmLibSetJson(result, "/C", R"({"A name that is not short":["a text that is not short",)");
            // That it is none is what the library is to say of it.
            *result = *result == LmLibResultCouldNotInterpretJsonText ? 0 : *result;
        });
        step("replace", [](std::int32_t *result) { lmLibSetString(result, "/A/Array", longText); });
        step("unique item",
             [](std::int32_t *result) { lmLibMakeUniqueItem(result, "/Execute", "a longer base name"); });
        step("get string", [](std::int32_t *result) { lmLibGetString(result, "/A/Some/Texts"); });
        step("get name", [](std::int32_t *result) { lmLibGetName(result, "/A/An object with a long name"); });
        step("get JSON", [](std::int32_t *result) { lmLibGetJson(result, "", 1, 18, 0); });
        step("type", [](std::int32_t *result) { lmLibGetType(result, "/A"); });
        step("count", [](std::int32_t *result) { lmLibGetCount(result, "/A"); });
        step("wait", [](std::int32_t *result) { lmLibWaitForType(result, "/A", LmLibTypeObject, 1); });
        step("debug message", [](std::int32_t *result) { lmLibWriteDebugMessage(result, longText); });
        step("debug buffer", [](std::int32_t *result) { lmLibGetDebugBuffer(result); });
        step("erase", [](std::int32_t *result) { lmLibErase(result, "/A/Some"); });
        step("finalize", [](std::int32_t *result) { lmLibFinalize(result); });
    }
};

// One command in a slot of its own.
class CommandSession : public Session {
public:
    CommandSession(std::string commandName, std::string parametersJson)
        : command(std::move(commandName)), parameters(std::move(parametersJson)) {}

    void play() override {
        step("parameters",
             [this](std::int32_t *result) { lmLibSetJson(result, "/Execute/Slot/Parameters", parameters.c_str()); });
        lmLibSetString(&started, "/Execute/Slot/Command", command.c_str());
        lmLibWaitForType(&waited, "/Execute/Slot/Command", LmLibTypeNull, 1);
    }

    void check() override {
        if (started == LmLibResultOperationSucceeded) {
            lmLibWaitForType(nullptr, "/Execute/Slot/Command", LmLibTypeNull, 1);
            checkResult();
        } else if (started != LmLibResultInternalError) {
            complain("start", "code " + std::to_string(started));
        } else if (lmLibGetType(nullptr, "/Execute/Slot/Command") != LmLibTypeAbsent) {
            complain("start", "the slot has a command that was not started");
        }
        if (waited != LmLibResultOperationSucceeded && waited != LmLibResultInternalError &&
            started == LmLibResultOperationSucceeded) {
            complain("wait", "code " + std::to_string(waited));
        }
    }

    bool hasSucceeded() const {
        return started == LmLibResultOperationSucceeded &&
               lmLibGetType(nullptr, "/Execute/Slot/Result/ErrorSymbol") == LmLibTypeAbsent;
    }

private:
    void checkResult() {
        if (hasSucceeded()) {
            return;
        }
        const std::string result = jsonOf("/Execute/Slot/Result");
        // Without its parameters a command fails for want of them.
        const bool hasParameters = lmLibGetType(nullptr, "/Execute/Slot/Parameters") != LmLibTypeAbsent;
        const bool saysWhy = result.find("\"ErrorSymbol\":\"OutOfMemory\"") != std::string::npos &&
                             result.find("There is not enough memory") != std::string::npos &&
                             result.find("\"Command\":\"" + command + "\"") != std::string::npos;
        if (hasParameters && !saysWhy) {
            complain("result", result);
        }
    }

    std::string command;
    std::string parameters;
    std::int32_t started = -1;
    std::int32_t waited = -1;
};

// A command that writes a file over an older one.
class SaveSession : public CommandSession {
public:
    // The first save, with which nothing fails, sets `wholeContents`; every later one must write the same.
    SaveSession(const std::string &fileName, std::string &wholeContents)
        : CommandSession("GenerateCalibrationPattern",
                         R"({"Filename":")" + fileName +
                             R"(","Patterns":[{"Type":"Flexible","GridSize":[5,4],"GridSpacing":10.0}]})"),
          file(fileName),
          whole(wholeContents) {
        writeBytes(file, oldContents);
    }

    void check() override {
        CommandSession::check();
        const std::string contents = readBytes(file);
        if (whole.empty() && hasSucceeded() && contents != oldContents) {
            whole = contents;
        }
        if (contents != (hasSucceeded() ? whole : oldContents)) {
            complain("file", (hasSucceeded() ? "not written whole: " : "changed by a failed save: ") + contents);
        }
    }

private:
    std::string file;
    std::string &whole;
};

}  // namespace library_session
