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

// The program's own exception for one of the library, with the library's text if it left one.
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

// The file's JSON, as the node.
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
    // A zero byte would end the text for the library, whatever follows it.
    if (text.find('\0') == std::string::npos) {
        lmLibSetJson(&result, node.path().c_str(), text.c_str());
    } else {
        result = LmLibResultCouldNotInterpretJsonText;
    }
    if (result != LmLibResultOperationSucceeded) {
        throw WrongCall(failed + "it is not JSON, or not of a kind that the library reads.");
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

void runFor(const TreeCommand &command, const std::vector<std::string> &outputs) {
    for (const std::string &output : outputs) {
        command.parameters()["Filename"] = output;
        command.execute(true);
    }
}

void requireOutputs(const std::vector<std::string> &outputs) {
    if (outputs.empty()) {
        throw WrongCall("no file to write: name one with -o, such as -o target.pdf");
    }
}

void writePattern(const PatternChoice &choice, int index, const TreeItem &pattern) {
    switch (choice.kind) {
        case PatternKind::Official:
            pattern["Type"] = choice.plate;
            break;
        case PatternKind::Custom:
            pattern["Type"] = "SingleCustom";
            break;
        case PatternKind::Flexible:
            pattern["Type"] = "Flexible";
            break;
        case PatternKind::Assembly:
            pattern["Type"] = "Assembly";
            pattern["AssemblyPattern"] = index;
            break;
        case PatternKind::Halcon:
            // Without a "Type", the library draws this plate.
            break;
    }
    if (choice.gridSize) {
        pattern["GridSize"][0] = (*choice.gridSize)[0];
        pattern["GridSize"][1] = (*choice.gridSize)[1];
    }
    if (choice.gridSpacing) {
        pattern["GridSpacing"] = *choice.gridSpacing;
    }
    if (choice.thickness) {
        pattern["Thickness"] = *choice.thickness;
    }
    if (choice.offset) {
        pattern["Offset"][0] = (*choice.offset)[0];
        pattern["Offset"][1] = (*choice.offset)[1];
    }
    pattern["Polarity"] = !choice.isInverted;
}

}  // namespace

void drawChoice(const PatternChoice &choice, const std::vector<std::string> &outputs) {
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

void drawParameters(const std::string &file, const std::vector<std::string> &outputs) {
    translated([&] {
        const TreeCommand command("GenerateCalibrationPattern");
        loadJson(file, command.parameters());
        if (!command.parameters().isObject()) {
            throw WrongCall("The file " + quoted(file) + " does not hold a JSON object with parameters.");
        }
        if (!outputs.empty()) {
            runFor(command, outputs);
            return;
        }
        if (!command.parameters()["Filename"].exists()) {
            requireOutputs(outputs);
        }
        command.execute(true);
    });
}

void drawAgain(const std::string &file, const std::vector<std::string> &outputs) {
    requireOutputs(outputs);
    translated([&] {
        const TreeItem description("/PatternFile");
        loadJson(file, description);
        if (!description.isObject() || asStringOr(description["Format"], "") != "LmLib64Pattern" ||
            asDoubleOr(description["Version"], 0) != 1) {
            throw WrongCall("The file " + quoted(file) + " is not a pattern file of version 1.");
        }
        const TreeCommand command("GenerateCalibrationPattern");
        copyJson(description["Encoding"], command.parameters()["Encoding"]);
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
