#include "camera_library/output/pattern_json.h"

#include <cstddef>
#include <initializer_list>
#include <string_view>
#include <utility>

#include "camera_library/output/pattern_text.h"
#include "camera_library/pattern/code_cells.h"
#include "camera_library/pattern/number_text.h"
#include "camera_library/tree/json_text.h"

namespace lmlib64 {

namespace {

constexpr int formatVersion = 1;

// Writes the text of the document from front to back. Every member of an object and every element of an array has its
// own line. Only the short arrays that row() writes stay on one line: a point takes one line, not four. The JSON
// library's tree is not used, because its destructor allocates memory. If memory has run out, such an allocation ends
// the process.
class JsonWriter {
public:
    JsonWriter &name(std::string_view name) {
        next();
        appendJson(text, Node(std::string(name)), {});
        text += ": ";
        isNamed = true;
        return *this;
    }
    void value(const Node &leaf) {
        next();
        appendJson(text, leaf, {false, 0, true});
    }
    void row(std::initializer_list<Node> leaves) {
        next();
        text += '[';
        const char *separator = "";
        for (const Node &leaf : leaves) {
            text += separator;
            appendJson(text, leaf, {false, 0, true});
            separator = ",";
        }
        text += ']';
    }
    void open(char bracket) {
        next();
        text += bracket;
        ++depth;
        isFirst = true;
    }
    void close(char bracket) {
        --depth;
        if (!isFirst) {
            breakLine();
        }
        isFirst = false;
        text += bracket;
    }
    std::string finish() {
        text += '\n';
        return std::move(text);
    }

private:
    // Starts a member, an element or the document, with a comma and a new line if needed. Does nothing after a name,
    // because the value follows it on the same line.
    void next() {
        if (isNamed) {
            isNamed = false;
            return;
        }
        if (depth > 0) {
            text += isFirst ? "" : ",";
            breakLine();
        }
        isFirst = false;
    }
    void breakLine() {
        text += '\n';
        text.append(2 * depth, ' ');
    }

    std::string text;
    std::size_t depth = 0;
    bool isFirst = true;
    bool isNamed = false;
};

void writeParameter(JsonWriter &json, PatternParameter parameter, const PatternDescription &description) {
    const auto named = [&]() -> JsonWriter & { return json.name(nameOf(parameter)); };
    switch (parameter) {
        case PatternParameter::Type:
            if (!description.typeName.empty()) {
                named().value(description.typeName);
            }
            break;
        case PatternParameter::GridSize:
            named().row({description.gridSize[0], description.gridSize[1]});
            break;
        case PatternParameter::AssemblyPattern:
            named().value(description.assemblyNumber.value_or(0));
            break;
        case PatternParameter::GridSpacing:
            named().value(description.gridSpacing);
            break;
        case PatternParameter::Thickness:
            named().value(description.thickness);
            break;
        case PatternParameter::Offset:
            if (description.offset) {
                named().row({(*description.offset)[0], (*description.offset)[1]});
            }
            break;
        case PatternParameter::Polarity:
            named().value(description.polarity);
            break;
        case PatternParameter::Encoding:
            named().value(description.encodingParameter);
            break;
    }
}

// Writes the parameters from which the command "GenerateCalibrationPattern" makes the same pattern again.
void writeParameters(JsonWriter &json, const PatternDescription &description) {
    json.open('{');
    for (const PatternParameter parameter : description.type->parameters) {
        writeParameter(json, parameter, description);
    }
    json.close('}');
}

// Returns the reference point in drawing coordinates.
Point referencePoint(const Lattice &lattice) {
    return lattice.at(lattice.referenceColumn(), lattice.referenceRow());
}

void writePoints(JsonWriter &json, const PatternDescription &description, const Lattice &lattice) {
    const Point reference = referencePoint(lattice);
    const auto [offsetX, offsetY] = description.referencePosition();
    json.open('[');
    for (int row = 0; row < lattice.rows; ++row) {
        for (int column = 0; column < lattice.columns; ++column) {
            const Point point = lattice.at(column, row);
            json.row({column, row, wholeNanometres(point.x - reference.x + offsetX),
                      wholeNanometres(point.y - reference.y + offsetY)});
        }
    }
    json.close(']');
}

std::string hexadecimal(std::uint64_t bits) {
    std::string digits;
    for (int shift = 60; shift >= 0; shift -= 4) {
        digits += "0123456789ABCDEF"[bits >> shift & 0xFU];
    }
    return digits;
}

void writeBlock(JsonWriter &json, const CodeCells &code) {
    json.open('{');
    json.name("Bits").value(hexadecimal(code.block));
    const double gridSpacing = code.content->gridSpacing / 100.0;
    switch (code.content->kind) {
        case pattern_code::BlockKind::SpacingAndThickness:
            json.name("Kind").value("SpacingAndThickness");
            json.name("GridSpacing").value(gridSpacing);
            json.name("Thickness").value(code.content->thickness / 100.0);
            break;
        case pattern_code::BlockKind::Offset:
            json.name("Kind").value("Offset");
            json.name("Spacings").row({code.content->offsetX, code.content->offsetY});
            break;
        case pattern_code::BlockKind::Assembly:
            json.name("Kind").value("Assembly");
            json.name("GridSpacing").value(gridSpacing);
            json.name("AssemblyPattern").value(code.content->assemblyPattern);
            break;
    }
    json.close('}');
}

void writeCells(JsonWriter &json, const CodeCells &code) {
    json.open('[');
    for (int row = 0; row < code.rows; ++row) {
        std::string cells;
        for (int column = 0; column < code.columns; ++column) {
            cells += code.at(column, row) ? '1' : '0';
        }
        json.value(cells);
    }
    json.close(']');
}

// Writes the content that the marks or dots of the pattern encode.
void writeCode(JsonWriter &json, const CodeCells &code, const PatternGeometry &geometry) {
    json.open('{');
    json.name("Version").value(pattern_code::patternVersion);
    switch (code.carrier) {
        case CodeCarrier::Plane:
            json.name("Carrier").value("Plane");
            json.name("PlaneSquare").row({code.planeSquare.column, code.planeSquare.row});
            json.name("HalfSpacings").row({code.offset[0], code.offset[1]});
            json.name("MarkSide").value(wholeNanometres(geometry.squareSide / 3.0));
            break;
        case CodeCarrier::Tile:
            json.name("Carrier").value("Tile");
            json.name("Tile").value(code.tile);
            json.name("MarkSide").value(wholeNanometres(geometry.squareSide / 3.0));
            break;
        case CodeCarrier::Plate:
            json.name("Carrier").value("Plate");
            json.name("DotRadius").value(wholeNanometres(pattern_code::dotRadius * geometry.lattice.pitch));
            json.name("DotHoleRadius").value(wholeNanometres(pattern_code::dotHoleRadius * geometry.lattice.pitch));
            break;
    }
    if (code.content) {
        json.name("Block");
        writeBlock(json, code);
    }
    json.name("Cells");
    writeCells(json, code);
    json.close('}');
}

void writePattern(JsonWriter &json, const PatternDescription &description, const PatternGeometry &geometry) {
    const Lattice &lattice = geometry.lattice;
    const Point reference = referencePoint(lattice);
    const auto [offsetX, offsetY] = description.referencePosition();
    json.open('{');
    json.name("Kind").value(std::string(description.type->fileKind));
    json.name("Parameters");
    writeParameters(json, description);
    json.name("Polarity").value(description.polarity);
    json.name("OuterSize").row({wholeNanometres(geometry.width), wholeNanometres(geometry.height)});
    json.name("QuietZone").value(wholeNanometres(geometry.quietZone));
    json.name("SquareSide").value(wholeNanometres(geometry.squareSide));
    json.name("TopLeft").row({wholeNanometres(offsetX - reference.x), wholeNanometres(offsetY - reference.y)});
    json.name("LatticeSize").row({lattice.columns, lattice.rows});
    json.name("LatticePitch").value(wholeNanometres(lattice.pitch));
    json.name("ReferenceIndex").row({lattice.referenceColumn(), lattice.referenceRow()});
    json.name("Code");
    if (const std::optional<CodeCells> code = codeCellsOf(description)) {
        writeCode(json, *code, geometry);
    } else {
        json.value(Node());
    }
    json.name("Points");
    writePoints(json, description, lattice);
    json.close('}');
}

void writeOptions(JsonWriter &json, const DrawingOptions &options) {
    if (options.resolution) {
        json.name("Resolution").value(*options.resolution);
    }
    if (options.printScale) {
        json.name("PrintScale").row({(*options.printScale)[0], (*options.printScale)[1]});
    }
    if (options.paper && options.paper->name.empty()) {
        json.name("Paper").row({options.paper->size.width, options.paper->size.height});
    } else if (options.paper) {
        json.name("Paper").value(options.paper->name);
    }
    if (options.sheets) {
        json.name("Sheets").value(*options.sheets);
    }
}

std::string documentText(const PatternDocument &document, const DrawnPattern *begin, const DrawnPattern *end) {
    JsonWriter json;
    json.open('{');
    json.name("Format").value("LmLib64Pattern");
    json.name("Version").value(formatVersion);
    json.name("Library").value(libraryName());
    json.name("Unit").value("mm");
    json.name("Axes").value(
        "x to the right, y down, as seen on the printed side; the reference point lies at the offset, 0 where a "
        "pattern has none");
    json.name("PointColumns").row({"Column", "Row", "X", "Y"});
    json.name("Encoding").value(document.encodingParameter);
    writeOptions(json, document.options);
    json.name("Patterns").open('[');
    for (const DrawnPattern *pattern = begin; pattern != end; ++pattern) {
        writePattern(json, pattern->description, pattern->geometry);
    }
    json.close(']');
    json.close('}');
    return json.finish();
}

}  // namespace

std::string patternJson(const PatternDocument &document) {
    return documentText(document, document.patterns.data(), document.patterns.data() + document.patterns.size());
}

std::string patternJson(const PatternDocument &document, const DrawnPattern &pattern) {
    return documentText(document, &pattern, &pattern + 1);
}

}  // namespace lmlib64
