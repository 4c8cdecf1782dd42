// Fuzzes the parameters of the commands. Each input is the JSON text of the parameters. Every command must either
// succeed, or fail with an error symbol and an error text. No file is written, and previews are small.
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "camera_library/commands/command.h"
#include "camera_library/tree/json_text.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

namespace {

using lmlib64::Node;
using lmlib64::NodeObject;

// Makes previews small, and puts files below /dev/null, where no file can be written. The library still makes the
// contents of the files.
void tame(Node &parameters) {
    auto *object = std::get_if<NodeObject>(&parameters.value);
    if (object == nullptr) {
        return;
    }
    const auto imageSize = object->find("ImageSize");
    if (imageSize != object->end()) {
        if (auto *number = std::get_if<double>(&imageSize->second.value)) {
            *number = *number > 200.0 && *number <= 8000.0 ? 16.0 + std::floor(std::fmod(*number, 100.0)) : *number;
        }
    }
    const auto fileName = object->find("Filename");
    if (fileName != object->end()) {
        if (auto *text = std::get_if<std::string>(&fileName->second.value)) {
            text->insert(0, "/dev/null/");
        }
    }
}

void run(std::string_view command, const Node &parameters) {
    try {
        lmlib64::findCommand(command)(parameters);
    } catch (const lmlib64::CommandFailure &failure) {
        if (failure.symbol.empty() || failure.text.empty() || failure.text.back() != '.') {
            std::abort();
        }
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char *>(data), size);
    Node parameters;
    if (lmlib64::parseJson(text, LMLIB_MAXIMUM_DEPTH, parameters) != LmLibResultOperationSucceeded) {
        return 0;
    }
    tame(parameters);
    run("GetModelInfo", parameters);
    run("GenerateCalibrationPattern", parameters);
    return 0;
}
