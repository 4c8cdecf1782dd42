// Benchmarks of the camera library without the program: previews, files, and typed access to its tree.
#include <array>
#include <filesystem>
#include <fstream>
#include <opencv2/aruco/charuco.hpp>
#include <opencv2/core.hpp>

#include "bench/measurement.h"
#include "camera_library/lmlib64.h"
#include "lmlib/tree_command.h"
#include "lmlib/tree_item.h"

namespace {

constexpr int previewPixels = 2000;

void describeFlexible(const TreeItem &pattern, int size) {
    pattern["Type"] = "Flexible";
    pattern["GridSize"][0] = size;
    pattern["GridSize"][1] = size;
    pattern["GridSpacing"] = 12.5;
}

// Returns the time of the fastest of several previews. A single preview is so short that its time depends on what other
// processes have left in the caches.
Time previewTime(int size) {
    constexpr int previews = 80;
    Time fastest;
    for (int i = 0; i < previews; ++i) {
        const Time time = timeOf([size] {
            const TreeCommand command("GenerateCalibrationPattern");
            command.parameters()["ImageSize"] = previewPixels;
            describeFlexible(command.parameters()["Patterns"][0], size);
            command.execute(true);
        });
        fastest = i == 0 || time.processor < fastest.processor ? time : fastest;
    }
    return fastest;
}

Time charucoTime(cv::aruco::CharucoBoard &board) {
    return timeOf([&board] {
        cv::Mat picture;
        board.draw({previewPixels, previewPixels}, picture);
    });
}

void benchPreview(Table &table) {
    constexpr int rounds = 41;
    const auto dictionary = cv::aruco::getPredefinedDictionary(cv::aruco::DICT_4X4_250);
    const auto board = cv::aruco::CharucoBoard::create(16, 16, 1.0F, 0.7F, dictionary);
    const auto usual =
        measureAlternately(rounds, {[] { return previewTime(15); }, [&board] { return charucoTime(*board); }});
    table.row("preview of 15 x 15 corners, 2000 px", usual[0], "ms", "OpenCV's ChArUco board of 16 x 16 squares",
              usual[1], 1.0 / 3.0);
    for (const auto &[size, bound] : {std::pair(45, 0.0), std::pair(91, 4.0)}) {
        const auto times =
            measureAlternately(rounds, {[size = size] { return previewTime(size); }, [] { return previewTime(5); }});
        table.row("preview of " + std::to_string(size) + " x " + std::to_string(size) + " corners", times[0], "ms",
                  "5 x 5 corners", times[1], bound);
    }
}

struct Save {
    const char *what;
    const char *ending;
    int size;  // corners on a side of a Flexible pattern; 0 for an assembly of 18 patterns
    double limitMs;
    double limitBytes;  // 0 if there is no limit
};

void writePatterns(const Save &save, const std::string &fileName) {
    const TreeCommand command("GenerateCalibrationPattern");
    command.parameters()["Filename"] = fileName;
    const TreeItem patterns = command.parameters()["Patterns"];
    constexpr int assemblyPatterns = 18;
    if (save.size > 0) {
        describeFlexible(patterns[0], save.size);
    } else {
        for (int i = 0; i < assemblyPatterns; ++i) {
            patterns[i]["Type"] = "Assembly";
            patterns[i]["AssemblyPattern"] = i;
            patterns[i]["GridSpacing"] = 12.0;
        }
    }
    command.execute(true);
}

void benchSaving(Table &table) {
    constexpr std::array<Save, 7> saves{{
        {"a PDF of 91 x 91 corners", ".pdf", 91, 60.0, 150e3},
        {"a PDF of an assembly of 18 patterns", ".pdf", 0, 150.0, 500e3},
        {"an SVG of 91 x 91 corners", ".svg", 91, 60.0, 1e6},
        {"a DXF of 91 x 91 corners", ".dxf", 91, 60.0, 4e6},
        {"a PNG of 15 x 15 corners at 600 dpi", ".png", 15, 1000.0, 1e6},
        {"a JSON of 91 x 91 corners", ".json", 91, 60.0, 0.0},
        {"a JSON of an assembly of 18 patterns", ".json", 0, 150.0, 0.0},
    }};
    for (const Save &save : saves) {
        const auto file = std::filesystem::temp_directory_path() / (std::string("lmcaltab_bench") + save.ending);
        const auto times =
            measureAlternately(21, {[&] { return timeOf([&] { writePatterns(save, file.string()); }); }});
        table.row(std::string("saving ") + save.what, times[0], "ms", save.limitMs);
        if (save.limitBytes > 0.0) {
            const double size = static_cast<double>(std::filesystem::file_size(file)) / 1e3;
            table.figure(std::string("size of ") + save.what, size, "kB", "limit", save.limitBytes / 1e3, 1.0);
        }
        std::filesystem::remove(file);
    }
}

// Returns the mean time of one access in nanoseconds.
template <class Access>
Time accessNanoseconds(Access access) {
    constexpr int accesses = 2000;
    const Time time = timeOf([&access] {
        for (int i = 0; i < accesses; ++i) {
            access();
        }
    });
    return time / (accesses * 1e-6);
}

// Gives the root an array and an object, each with `nodes` children.
void fillTree(const TreeItem &root, int nodes) {
    std::string json = "[";
    for (int i = 0; i < nodes; ++i) {
        json += i == 0 ? "1" : ",1";
    }
    json += "]";
    lmLibSetJson(nullptr, root["Array"].path().c_str(), json.c_str());
    json = "{";
    for (int i = 0; i < nodes; ++i) {
        json += (i == 0 ? "\"" : ",\"") + std::to_string(i * 7919L % 1000003L) + "\":1";
    }
    json += "}";
    lmLibSetJson(nullptr, root["Object"].path().c_str(), json.c_str());
}

void benchAccess(Table &table) {
    constexpr int rounds = 201;
    constexpr int manyNodes = 50000;  // children of the array, and children of the object
    const TreeItem root = TreeItem()["Bench"];
    fillTree(root["Small"], 10);
    fillTree(root["Large"], manyNodes);
    const TreeItem small = root["Small"]["Object"]["Number"];
    const TreeItem large = root["Large"]["Object"]["Number"];
    small = 1.5;
    large = 1.5;
    // Successive reads access different nodes, so the node that is read is hardly ever in the processor's caches.
    std::vector<TreeItem> scattered;
    for (long i = 0; i < manyNodes; i += 5) {
        scattered.push_back(root["Large"]["Object"][std::to_string(i * 7919L % 1000003L)]);
    }
    double sum = 0.0;
    std::size_t next = 0;
    const auto times = measureAlternately(
        rounds, {[&] { return accessNanoseconds([&] { sum += small.asDouble(); }); },
                 [&] { return accessNanoseconds([&] { sum += large.asDouble(); }); },
                 [&] { return accessNanoseconds([&] { small = 2.5; }); },
                 [&] { return accessNanoseconds([&] { large = 2.5; }); },
                 [&] { return accessNanoseconds([&] { sum += scattered[next++ % scattered.size()].asDouble(); }); }});
    table.row("typed read", times[0], "ns", 1000.0);
    table.row("typed write", times[2], "ns", 1000.0);
    table.row("typed read among 100,000 nodes", times[1], "ns", "among 20 nodes", times[0], 2.0);
    table.row("typed write among 100,000 nodes", times[3], "ns", "among 20 nodes", times[2], 2.0);
    table.row("typed reads of different nodes among 100,000", times[4], "ns", 1000.0);
    root.erase();
}

}  // namespace

int main() {
    cv::setNumThreads(1);
    Table table("The library alone");
    benchPreview(table);
    benchSaving(table);
    benchAccess(table);
    lmLibFinalize(nullptr);
    return table.exitCode();
}
