#include "shell/pattern_command.h"

#include <algorithm>
#include <fstream>
#include <iostream>
#include <stdexcept>

#include "camera_library/lmlib64.h"
#include "lmlib/lm_lib_exception.h"
#include "lmlib/tree_command.h"
#include "shell/program_run.h"

namespace shell {

namespace {

std::string quoted(const std::string &fileName) {
    return '"' + fileName + '"';
}

// Translates an exception of the library into an exception of this program. The text is the library's own if there is
// one.
[[noreturn]] void rethrow(const LmLibException &error) {
    std::string symbol;
    std::string text;
    try {
        symbol = error.errorSymbol();
        text = error.errorText();
    } catch (const LmLibException &) {
        text = "The camera library failed at \"" + error.itemPath + "\" (" + error.errorName + ").";
    }
    if (symbol == "InvalidParameter" || symbol == "PatternHasNoExtent") {
        throw WrongCall(text);
    }
    throw std::runtime_error(text);
}

template <typename Operation>
auto translated(Operation operation) {
    try {
        return operation();
    } catch (const LmLibException &error) {
        rethrow(error);
    }
}

std::string readAll(std::istream &stream) {
    std::string text;
    std::array<char, 65536> part{};
    while (stream.read(part.data(), part.size()) || stream.gcount() > 0) {
        text.append(part.data(), static_cast<std::size_t>(stream.gcount()));
        if (text.size() > LMLIB_MAXIMUM_JSON_SIZE) {
            throw std::runtime_error("it is longer than " + std::to_string(LMLIB_MAXIMUM_JSON_SIZE) + " bytes");
        }
    }
    if (stream.bad()) {
        throw std::runtime_error("it cannot be read");
    }
    return text;
}

// Sets the node to the file's JSON.
void loadJson(const std::string &file, const TreeItem &node) {
    const std::string failed = "The file " + quoted(file) + " cannot be used: ";
    std::string text;
    try {
        std::ifstream stream;
        if (file != "-") {
            stream.open(file, std::ios::binary);
            if (!stream) {
                throw std::runtime_error("it cannot be opened");
            }
        }
        text = readAll(file == "-" ? std::cin : stream);
    } catch (const std::exception &error) {
        throw WrongCall(failed + error.what() + ".");
    }
    std::int32_t result = 0;
    // For the library, the text would end at a zero byte, and everything after it would be ignored.
    if (text.find('\0') == std::string::npos) {
        lmLibSetJson(&result, node.path().c_str(), text.c_str());
    } else {
        result = LmLibResultCouldNotInterpretJsonText;
    }
    if (result != LmLibResultOperationSucceeded) {
        throw WrongCall(failed + "it is not JSON that the library can read.");
    }
}

void copyJson(const TreeItem &from, const TreeItem &to) {
    const std::string json = from.asJson(false, 0, true);
    std::int32_t result = 0;
    lmLibSetJson(&result, to.path().c_str(), json.c_str());
    if (result != LmLibResultOperationSucceeded) {
        throw LmLibException(to.path(), result, nullptr);
    }
}

// Writes both numbers. The node is replaced, because a file of parameters may have given it a value of another type.
template <typename Number>
void writePair(const TreeItem &node, const std::array<Number, 2> &pair) {
    node.setNull();
    node.erase();
    node[0] = pair[0];
    node[1] = pair[1];
}

void runFor(const TreeCommand &command, const Outputs &outputs) {
    if (outputs.resolution) {
        command.parameters()["Resolution"] = *outputs.resolution;
    }
    if (outputs.printScale) {
        writePair(command.parameters()["PrintScale"], *outputs.printScale);
    }
    if (const auto *name = std::get_if<std::string>(&outputs.paper)) {
        command.parameters()["Paper"] = *name;
    } else if (const auto *size = std::get_if<std::array<double, 2>>(&outputs.paper)) {
        writePair(command.parameters()["Paper"], *size);
    }
    if (outputs.splitsOverSheets) {
        command.parameters()["Sheets"] = true;
    }
    for (const std::string &file : outputs.files) {
        command.parameters()["Filename"] = file;
        command.execute(true);
    }
}

void requireOutputs(const Outputs &outputs) {
    if (outputs.files.empty()) {
        throw WrongCall("no file to write: name one with -o, such as -o target.pdf");
    }
}

void writePattern(const PatternChoice &choice, int index, const TreeItem &pattern) {
    switch (choice.kind) {
        case TargetKind::Official:
            pattern["Type"] = choice.plate;
            break;
        case TargetKind::Custom:
            pattern["Type"] = "SingleCustom";
            break;
        case TargetKind::Flexible:
            pattern["Type"] = "Flexible";
            break;
        case TargetKind::Assembly:
            pattern["Type"] = "Assembly";
            pattern["AssemblyPattern"] = index;
            break;
        case TargetKind::Halcon:
            // Without a "Type", the library draws this plate.
            break;
    }
    if (choice.gridSize) {
        writePair(pattern["GridSize"], *choice.gridSize);
    }
    if (choice.gridSpacing) {
        pattern["GridSpacing"] = *choice.gridSpacing;
    }
    if (choice.thickness) {
        pattern["Thickness"] = *choice.thickness;
    }
    if (choice.offset) {
        writePair(pattern["Offset"], *choice.offset);
    }
    pattern["Polarity"] = !choice.isInverted;
}

}  // namespace

void drawChoice(const PatternChoice &choice, const Outputs &outputs) {
    requireOutputs(outputs);
    translated([&] {
        const TreeCommand command("GenerateCalibrationPattern");
        command.parameters()["Encoding"] = !choice.isPlain;
        for (int index = 0; index < choice.patterns; ++index) {
            writePattern(choice, index, command.parameters()["Patterns"][index]);
        }
        runFor(command, outputs);
    });
}

void drawParameters(const std::string &file, const Outputs &outputs) {
    translated([&] {
        const TreeCommand command("GenerateCalibrationPattern");
        loadJson(file, command.parameters());
        if (!command.parameters().isObject()) {
            throw WrongCall("The file " + quoted(file) + " does not hold a JSON object with parameters.");
        }
        Outputs chosen = outputs;
        if (chosen.files.empty() && command.parameters()["Filename"].exists()) {
            chosen.files.push_back(command.parameters()["Filename"].asString());
        }
        requireOutputs(chosen);
        runFor(command, chosen);
    });
}

void drawAgain(const std::string &file, const Outputs &outputs) {
    requireOutputs(outputs);
    translated([&] {
        const TreeItem description("/PatternFile");
        loadJson(file, description);
        if (!description.isObject() || asStringOr(description["Format"], "") != "LmLib64Pattern" ||
            asDoubleOr(description["Version"], 0) != 1) {
            throw WrongCall("The file " + quoted(file) + " is not a pattern file of version 1.");
        }
        const TreeCommand command("GenerateCalibrationPattern");
        for (const char *name : {"Encoding", "Resolution", "PrintScale", "Paper", "Sheets"}) {
            if (description[name].exists()) {
                copyJson(description[name], command.parameters()[name]);
            }
        }
        for (int index = 0; index < description["Patterns"].count(); ++index) {
            copyJson(description["Patterns"][index]["Parameters"], command.parameters()["Patterns"][index]);
        }
        runFor(command, outputs);
    });
}

std::string plateTable() {
    const auto padded = [](std::string text, std::size_t width) {
        text.resize(std::max(text.size() + 2, width), ' ');
        return text;
    };
    const auto line = [&](const std::string &type, const std::string &spacing, const std::string &thickness,
                          const std::string &name) {
        return padded(type, 10) + padded(spacing, 14) + padded(thickness, 11) + name + "\n";
    };
    return translated([&] {
        const TreeCommand command("GetModelInfo");
        command.parameters()["ListCalTabs"] = true;
        command.execute(true);
        std::string table = line("PLATE", "GRID SPACING", "THICKNESS", "NAME");
        const TreeItem plates = command.result()["CalTabs"];
        for (int index = 0; index < plates.count(); ++index) {
            const TreeItem plate = plates[index];
            table += line(plate["Type"].asString(), plate["GridSpacing"].asJson(false, 0, false) + " mm",
                          plate["Thickness"].asJson(false, 0, false) + " mm", plate["Name"].asString());
        }
        return table;
    });
}

}  // namespace shell
