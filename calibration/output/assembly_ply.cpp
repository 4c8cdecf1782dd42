#include "calibration/output/assembly_ply.h"

#include <map>
#include <utility>

#include "calibration/output/number_text.h"

namespace calibration {

namespace {

constexpr int nanometres = 6;  // decimal places of a length in mm that is rounded to nanometres

// Returns the lines that describe the pattern's faces in the file, and adds the number of these faces to `count`.
// `first` is the vertex number of the pattern's first point. The vertices of a face are counter-clockwise as seen from
// the printed side.
std::string facesOf(const AssemblyPattern &pattern, size_t first, int &count) {
    std::map<std::pair<int, int>, size_t> vertices;
    for (size_t i = 0; i < pattern.points.size(); i++) {
        vertices[{pattern.points[i].cell.x(), pattern.points[i].cell.y()}] = first + i;
    }
    std::string text;
    for (const AssemblyPoint &point : pattern.points) {
        const int x = point.cell.x();
        const int y = point.cell.y();
        const auto b = vertices.find({x + 1, y});
        const auto c = vertices.find({x + 1, y + 1});
        const auto d = vertices.find({x, y + 1});
        if (b != vertices.end() && c != vertices.end() && d != vertices.end()) {
            text += "4 " + std::to_string(vertices[{x, y}]) + " " + std::to_string(d->second) + " " +
                    std::to_string(c->second) + " " + std::to_string(b->second) + "\n";
            count++;
        }
    }
    return text;
}

}  // namespace

std::string assemblyPly(const std::vector<AssemblyPattern> &patterns) {
    std::string vertices;
    std::string faces;
    size_t vertexCount = 0;
    int faceCount = 0;
    for (const AssemblyPattern &pattern : patterns) {
        faces += facesOf(pattern, vertexCount, faceCount);
        for (const AssemblyPoint &point : pattern.points) {
            for (const double number : {point.place.x(), point.place.y(), point.place.z(), point.sigma}) {
                vertices += numberText(rounded(number, nanometres)) + " ";
            }
            vertices += std::to_string(pattern.print) + "\n";
        }
        vertexCount += pattern.points.size();
    }
    return "ply\nformat ascii 1.0\ncomment millimetres\nelement vertex " + std::to_string(vertexCount) +
           "\nproperty double x\nproperty double y\nproperty double z\nproperty double sigma\nproperty int print\n"
           "element face " +
           std::to_string(faceCount) + "\nproperty list uchar int vertex_indices\nend_header\n" + vertices + faces;
}

}  // namespace calibration
