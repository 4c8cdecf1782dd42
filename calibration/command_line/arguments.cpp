#include "calibration/command_line/arguments.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <stdexcept>
#include <utility>

#include "calibration/input/photograph_list.h"
#include "calibration/output/result_files.h"

namespace calibration {

namespace {

constexpr int mostCorners = 1000;      // inner corners along one side of a plain board
constexpr double barStep = 10;         // mm; the drawn length of a check bar is a multiple of this
constexpr double mostWrongBar = 0.02;  // the greatest credible relative error of a check bar

[[noreturn]] void fail(const std::string &text) {
    throw std::runtime_error(text);
}

// Converts the text to a number. Returns false unless the whole text is a number.
template <typename T>
bool parse(const std::string &text, T &value) {
    const char *end = text.data() + text.size();
    const auto [last, error] = std::from_chars(text.data(), end, value);
    return error == std::errc() && last == end;
}

std::vector<std::string> split(const std::string &text, char separator) {
    std::vector<std::string> parts{""};
    for (const char c : text) {
        if (c == separator) {
            parts.emplace_back();
        } else {
            parts.back() += c;
        }
    }
    return parts;
}

// Parses two numbers with an x between them, such as 9x6. Returns false for any other text.
template <typename T>
bool parsePair(const std::string &text, T &x, T &y) {
    const std::vector<std::string> parts = split(text, 'x');
    return parts.size() == 2 && parse(parts[0], x) && parse(parts[1], y);
}

cv::Size parseBoard(const std::string &text) {
    cv::Size board;
    if (!parsePair(text, board.width, board.height) || std::min(board.width, board.height) < 3 ||
        std::max(board.width, board.height) > mostCorners) {
        fail("--board: \"" + text + "\" is not a size such as 9x6, with 3 to 1000 inner corners along each side.");
    }
    return board;
}

std::optional<LensModel> parseModel(const std::string &text) {
    for (const LensModel lens :
         {LensModel::Pinhole4, LensModel::Pinhole5, LensModel::Pinhole8, LensModel::Pinhole12, LensModel::Fisheye}) {
        if (text == nameOf(lens)) {
            return lens;
        }
    }
    return std::nullopt;
}

// Returns the ratio of a check bar's measured length to its length in the drawing. Drawn bars are whole centimetres
// long, so the drawn length is the measured length rounded to a centimetre.
double ratioOfBar(double measured) {
    const double drawn = barStep * std::round(measured / barStep);
    return drawn > 0 ? measured / drawn : 0;
}

MeasuredSheet parseMeasured(const std::string &text) {
    MeasuredSheet sheet;
    const size_t equals = text.find('=');
    Eigen::Vector2d bars(0, 0);
    int number = 0;
    const bool hasNumber = equals != std::string::npos;
    if ((hasNumber && !parse(text.substr(0, equals), number)) || number < 0 ||
        !parsePair(hasNumber ? text.substr(equals + 1) : text, bars.x(), bars.y())) {
        fail("--measured: \"" + text + "\" is not of the form 99.7x100.1 or 3=99.7x100.1.");
    }
    sheet.ratio = {ratioOfBar(bars.x()), ratioOfBar(bars.y())};
    if (!((sheet.ratio.array() - 1).abs().maxCoeff() <= mostWrongBar)) {
        fail("--measured: \"" + text +
             "\" cannot be the lengths of the two check bars in millimetres: in the drawing, each bar is 100 mm or "
             "another multiple of 10 mm long.");
    }
    if (hasNumber) {
        sheet.number = number;
    }
    return sheet;
}

AssemblyAxes parseAxes(const std::vector<std::string> &texts) {
    AssemblyAxes axes;
    for (size_t i = 0; i < axes.corners.size(); i++) {
        const std::vector<std::string> parts = split(texts.at(i), ':');
        AssemblyAxes::Corner &corner = axes.corners[i];
        if (parts.size() != 3 || !parse(parts[0], corner.pattern) || !parse(parts[1], corner.column) ||
            !parse(parts[2], corner.row)) {
            fail("--axes: \"" + texts[i] + "\" is not of the form PATTERN:COLUMN:ROW.");
        }
    }
    return axes;
}

// Splits NAME=REST into its two parts.
std::pair<std::string, std::string> parseCamera(const std::string &text) {
    const size_t equals = text.find('=');
    std::pair<std::string, std::string> camera{text.substr(0, equals),
                                               equals == std::string::npos ? "" : text.substr(equals + 1)};
    if (camera.second.empty()) {
        fail("--camera: \"" + text + "\" is not of the form NAME=FOLDER or NAME=\"left*.jpg\".");
    }
    const std::string fault = cameraNameFault(camera.first);
    if (!fault.empty()) {
        fail("--camera: " + fault);
    }
    return camera;
}

void findPhotographsOf(Arguments &arguments) {
    std::vector<std::pair<std::string, std::string>> sources;
    for (const std::string &text : arguments.texts.cameras) {
        sources.push_back(parseCamera(text));
    }
    for (const std::string &text : arguments.texts.photographs) {
        sources.emplace_back("", text);
    }
    for (const auto &[camera, source] : sources) {
        const std::vector<std::string> found = findPhotographs(source);
        if (found.empty()) {
            fail("There are no photographs in \"" + source + "\".");
        }
        for (const std::string &path : found) {
            arguments.photographs.push_back({path, camera});
        }
    }
    if (arguments.photographs.empty()) {
        fail("No photographs were given. Run with --help for more information.");
    }
}

// Completes an entry of a corner list. If the photograph has no camera yet, it gets the camera of the first --camera
// option whose name pattern matches the photograph's path or file name. The photograph's size comes from --image-size
// or, without this option, from its picture file.
void complete(ListedPhotograph &photograph, const std::string &list, const Arguments &arguments) {
    for (const std::string &text : arguments.texts.cameras) {
        const auto [name, glob] = parseCamera(text);
        const std::string file = std::filesystem::u8path(photograph.name).filename().u8string();
        if (photograph.camera.empty() && (matchesGlob(glob, photograph.name) || matchesGlob(glob, file))) {
            photograph.camera = name;
        }
    }
    if (arguments.texts.imageSize.empty()) {
        findPictureSize(photograph, list);
    } else if (!parsePair(arguments.texts.imageSize, photograph.width, photograph.height) || photograph.width <= 0 ||
               photograph.height <= 0) {
        fail("--image-size: \"" + arguments.texts.imageSize + "\" is not a size such as 640x480.");
    }
    if (photograph.width <= 0) {
        fail("The size of the picture \"" + photograph.name +
             "\" is not known, because its file cannot be found or read: give --image-size.");
    }
}

void loadCornerLists(Arguments &arguments) {
    if (!arguments.board || arguments.target.square <= 0) {
        fail("--corners needs --board and --square.");
    }
    if (!arguments.texts.photographs.empty() || !arguments.texts.patternFiles.empty()) {
        fail("--corners cannot be combined with photographs or --pattern.");
    }
    for (const std::string &text : arguments.texts.cornerLists) {
        const size_t equals = text.find('=');
        const bool hasName = equals != std::string::npos && !std::filesystem::exists(std::filesystem::u8path(text));
        const std::string path = hasName ? text.substr(equals + 1) : text;
        for (ListedPhotograph &photograph : loadCornerList(path)) {
            photograph.camera = hasName ? parseCamera(text).first : "";
            complete(photograph, path, arguments);
            arguments.listed.push_back(std::move(photograph));
        }
    }
}

void addInputOptions(shell::CommandLine &line, Arguments &arguments) {
    ArgumentTexts &texts = arguments.texts;
    line.add("PHOTO", texts.photographs, "Photographs: PNG, JPEG, TIFF or PGM; also folders and name patterns");
    line.add("--camera", texts.cameras,
             "The photographs of one camera, as a folder or a name pattern such as \"left*.jpg\"; may be "
             "repeated. Other photographs are grouped by size and by the camera's name in EXIF")
        .typeName("NAME=FOLDER|GLOB")
        .oneValueEachTime();
    line.addFlag("--rig", arguments.isRig,
                 "The cameras are fixed to each other: photographs with the same name or number were taken at the same "
                 "moment");
    line.add("--pattern", texts.patternFiles,
             "The printed patterns, as a JSON or PDF file of the camera library; may be repeated")
        .typeName("FILE")
        .oneValueEachTime();
    line.add("--grid-spacing", arguments.target.gridSpacing, "Grid spacing of patterns that do not encode theirs")
        .typeName("MM")
        .positive();
    shell::Option board =
        line.add("--board", texts.board, "Reads plain checkerboards of this many inner corners").typeName("CxR");
    shell::Option square = line.add("--square", arguments.target.square, "Side of a plain checkerboard's square")
                               .typeName("MM")
                               .positive();
    board.needs(square);
    square.needs(board);
    line.add("--corners", texts.cornerLists,
             "Corners from another detector in place of photographs: a text file with the columns filename, x, y "
             "and, optionally, level; may be repeated")
        .typeName("[NAME=]FILE")
        .oneValueEachTime();
    line.add("--image-size", texts.imageSize,
             "Size of the pictures named in the files of --corners; by default, it is read from the picture files")
        .typeName("WxH")
        .needs("--corners");
    line.add("--jobs", arguments.jobs,
             "Number of photographs to read at the same time; 0 means one photograph per processor")
        .typeName("N");
}

}  // namespace

void addOptions(shell::CommandLine &line, Arguments &arguments) {
    ArgumentTexts &texts = arguments.texts;
    addInputOptions(line, arguments);
    line.add("--model", texts.model,
             "Lens model: auto, pinhole4, pinhole5, pinhole8, pinhole12 or fisheye; auto takes the "
             "simplest one that predicts held-out photographs nearly as well as the best")
        .typeName("MODEL")
        .oneOf({"auto", "pinhole4", "pinhole5", "pinhole8", "pinhole12", "fisheye"});
    line.add("--measured", texts.measured,
             "Lengths of a sheet's two check bars, measured across and along the sheet; N is the pattern's "
             "number, which may be left out only if there is a single pattern. May be repeated")
        .typeName("[N=]99.7x100.1")
        .oneValueEachTime();
    line.add("--axes", texts.axes,
             "Three corners that define the coordinate system of assembly.json: the origin, one on the x axis, "
             "and one on the side of positive y")
        .typeName("N:COLUMN:ROW")
        .expected(3);
    line.add("--report", arguments.report, "Writes a report as one HTML page").typeName("FILE");
    line.add("--out", arguments.outputFolder, "Folder for the results; it is made if it is absent")
        .typeName("FOLDER")
        .required();
    line.addFlag("--quiet", arguments.isQuiet, "Prints nothing but errors");
    line.addVersion("calibrate_cameras " LMCALTAB_VERSION);
    line.setFooter(
        "Examples:\n"
        "  calibrate_cameras --out result --report report.html photos/*.jpg\n"
        "  calibrate_cameras --rig --camera left=left/ --camera right=right/ --out result\n"
        "  calibrate_cameras --board 9x6 --square 25 --out result photos/");
}

void interpret(Arguments &arguments) {
    const ArgumentTexts &texts = arguments.texts;
    const auto outputFolder = std::filesystem::u8path(arguments.outputFolder);
    if (std::filesystem::exists(outputFolder) && !std::filesystem::is_directory(outputFolder)) {
        fail("--out: \"" + arguments.outputFolder + "\" is not a folder.");
    }
    if (!texts.board.empty()) {
        arguments.board = parseBoard(texts.board);
    }
    arguments.lens = parseModel(texts.model);
    for (const std::string &text : texts.measured) {
        arguments.measured.push_back(parseMeasured(text));
    }
    if (!texts.axes.empty()) {
        arguments.axes = parseAxes(texts.axes);
    }
    for (const std::string &file : texts.patternFiles) {
        for (pattern_reader::PrintedPattern &pattern : pattern_reader::loadPrintedPatterns(file)) {
            arguments.target.patterns.push_back(std::move(pattern));
        }
    }
    if (arguments.board && !arguments.target.patterns.empty()) {
        fail("--board and --pattern cannot be combined.");
    }
    for (const pattern_reader::PrintedPattern &pattern : arguments.target.patterns) {
        if (pattern.kind == pattern_reader::PatternKind::Board) {
            arguments.board = pattern.size;  // the reader finds plain boards only if it is told their size
        }
    }
    if (texts.cornerLists.empty()) {
        findPhotographsOf(arguments);
    } else {
        loadCornerLists(arguments);
    }
}

}  // namespace calibration
