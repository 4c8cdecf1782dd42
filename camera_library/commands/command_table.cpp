#include <array>

#include "camera_library/commands/command.h"

namespace lmlib64 {

// The commands, each defined in its own file.
Node generateCalibrationPattern(const Node &parameters);
Node getModelInfo(const Node &parameters);

namespace {

struct CommandEntry {
    std::string_view name;
    CommandFunction run;
};

constexpr std::array commands{
    CommandEntry{"GenerateCalibrationPattern", generateCalibrationPattern},
    CommandEntry{"GetModelInfo", getModelInfo},
};

}  // namespace

CommandFunction findCommand(std::string_view name) {
    for (const CommandEntry &command : commands) {
        if (command.name == name) {
            return command.run;
        }
    }
    return nullptr;
}

}  // namespace lmlib64
