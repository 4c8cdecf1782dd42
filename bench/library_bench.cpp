// The camera library without the program: drawing previews, writing files, and typed access to its tree.
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

double previewTime(int size) {
    return medianTime(60, [size] {
        const TreeCommand command("GenerateCalibrationPattern");
        command.parameters()["ImageSize"] = previewPixels;
        describeFlexible(command.parameters()["Patterns"][0], size);
        command.execute(true);
    });
}

double charucoTime() {
    const auto dictionary = cv::aruco::getPredefinedDictionary(cv::aruco::DICT_4X4_250);
    const auto board = cv::aruco::CharucoBoard::create(16, 16, 1.0F, 0.7F, dictionary);
    return medianTime(60, [&board] {
        cv::Mat picture;
        board->draw({previewPixels, previewPixels}, picture);
    });
}

void benchPreview(Table &table) {
    const double smallest = previewTime(5);
    const double usual = previewTime(15);
    table.row("preview of 15 x 15, 2000 px", usual, "ms", "OpenCV's ChArUco board of 16 x 16 squares", charucoTime(),
              1.0 / 3.0);
    table.row("preview of 45 x 45", previewTime(45), "ms", "of 5 x 5", smallest, 0);
    table.row("preview of 91 x 91", previewTime(91), "ms", "of 5 x 5", smallest, 4.0);
}

struct Save {
    const char *what;
    const char *ending;
    int size;  // of a Flexible pattern; 0 for an assembly of all its patterns
    double limitMs;
    double limitBytes;  // 0 is none
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
    constexpr std::array<Save, 4> saves{{
        {"PDF of 91 x 91", ".pdf", 91, 60.0, 150e3},
        {"PDF of an assembly of 18", ".pdf", 0, 150.0, 500e3},
        {"JSON of 91 x 91", ".json", 91, 60.0, 0.0},
        {"JSON of an assembly of 18", ".json", 0, 150.0, 0.0},
    }};
    for (const Save &save : saves) {
        const auto file = std::filesystem::temp_directory_path() / (std::string("lmcaltab_bench") + save.ending);
        const double time = medianTime(7, [&] { writePatterns(save, file.string()); });
        table.row(std::string("saving a ") + save.what, time, "ms", "limit", save.limitMs, 1.0);
        if (save.limitBytes > 0.0) {
            table.row(std::string("size of a ") + save.what,
                      static_cast<double>(std::filesystem::file_size(file)) / 1e3, "kB", "limit", save.limitBytes / 1e3,
                      1.0);
        }
        std::filesystem::remove(file);
    }
}

// Nanoseconds for one access, from the time of many.
template <class Access>
double accessNanoseconds(Access access) {
    constexpr int accesses = 10000;
    const double time = medianTime(21, [&access] {
        for (int i = 0; i < accesses; ++i) {
            access();
        }
    });
    return time * 1e6 / accesses;
}

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
    const TreeItem root = TreeItem()["Bench"];
    const TreeItem number = root["Object"]["Number"];
    double sum = 0.0;
    const auto read = [&] { sum += number.asDouble(); };
    const auto write = [&] { number = 2.5; };
    fillTree(root, 10);
    number = 1.5;
    const double smallRead = accessNanoseconds(read);
    const double smallWrite = accessNanoseconds(write);
    table.row("typed read", smallRead, "ns", "limit", 1000.0, 1.0);
    table.row("typed write", smallWrite, "ns", "limit", 1000.0, 1.0);
    constexpr int manyNodes = 50000;  // in each of an array and an object
    fillTree(root, manyNodes);
    number = 1.5;
    table.row("typed read among 100,000 nodes", accessNanoseconds(read), "ns", "in a small tree", smallRead, 2.0);
    table.row("typed write among 100,000 nodes", accessNanoseconds(write), "ns", "in a small tree", smallWrite, 2.0);
    // Another node each time, so that hardly any is in the processor's caches.
    std::vector<TreeItem> scattered;
    for (long i = 0; i < manyNodes; i += 5) {
        scattered.push_back(root["Object"][std::to_string(i * 7919L % 1000003L)]);
    }
    std::size_t next = 0;
    const auto readScattered = [&] { sum += scattered[next++ % scattered.size()].asDouble(); };
    table.row("typed read of ever another of 100,000 nodes", accessNanoseconds(readScattered), "ns", "limit", 1000.0,
              1.0);
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
