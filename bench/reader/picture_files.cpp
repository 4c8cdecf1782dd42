#include "bench/reader/picture_files.h"

#include <fstream>
#include <iomanip>
#include <opencv2/imgcodecs.hpp>
#include <stdexcept>

namespace reader_bench {

namespace {

void write(std::ostream &out, const Scene &scene, const ScenePattern &pattern) {
    static const char *const kinds[] = {"plane", "tile", "plate"};
    const cv::Size2d size = pattern.coded.target->size();
    out << "{\"kind\": \"" << kinds[int(pattern.coded.kind)] << "\", \"tile\": " << pattern.coded.tile
        << ", \"squares\": [" << size.width << ", " << size.height
        << "], \"pixelsPerSquare\": " << pattern.pixelsPerSquare << ", \"tilt\": " << pattern.tiltDegrees
        << ",\n \"corners\": [";
    const char *separator = "\n  ";
    for (const cv::Point &lattice : seenPartOf(scene, pattern).points) {
        const cv::Point2d image = scene.imageOf(pattern, lattice);
        out << separator << "{\"lattice\": [" << lattice.x << ", " << lattice.y << "], \"image\": [" << image.x << ", "
            << image.y << "]}";
        separator = ",\n  ";
    }
    out << "]}";
}

}  // namespace

void savePicture(const std::string &folder, unsigned number, const Scene &scene) {
    const std::string name = folder + "/" + std::to_string(number);
    std::ofstream truth(name + ".json");
    truth << std::fixed << std::setprecision(4) << "{\"mirrored\": " << (scene.mirrored ? "true" : "false")
          << ", \"patterns\": [\n";
    for (size_t i = 0; i < scene.patterns.size(); i++) {
        truth << (i > 0 ? ",\n" : "");
        write(truth, scene, scene.patterns[i]);
    }
    truth << "]}\n";
    truth.close();
    if (!truth || !cv::imwrite(name + ".png", scene.colour.empty() ? scene.image : scene.colour)) {
        throw std::runtime_error("cannot write " + name);
    }
}

}  // namespace reader_bench
