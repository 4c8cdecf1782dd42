#include "viewer/views/print_squares.h"

#include <map>
#include <utility>

namespace {

using Grid = std::map<std::pair<int, int>, size_t>;

}  // namespace

std::vector<PrintSquare> squaresOf(const calibration::Print &print, const calibration::PrintShape &shape) {
    Grid grid;
    int step = 0;  // cells from one point to the next: 2 in plates, where only every second cell has a mark
    for (size_t i = 0; i < print.cells.size(); ++i) {
        grid[{print.cells[i].x(), print.cells[i].y()}] = i;
        const int distance = print.cells[i].x() - print.cells[0].x();
        step = distance > 0 && (step == 0 || distance < step) ? distance : step;
    }
    const auto place = [&](size_t point) {
        return calibration::printedPoint(shape.numbers.data(), shape.reach, print.points[point]).place;
    };
    std::vector<PrintSquare> squares;
    for (const auto &[cell, topLeft] : grid) {
        const auto topRight = grid.find({cell.first + step, cell.second});
        const auto bottomRight = grid.find({cell.first + step, cell.second + step});
        const auto bottomLeft = grid.find({cell.first, cell.second + step});
        if (step == 0 || topRight == grid.end() || bottomRight == grid.end() || bottomLeft == grid.end()) {
            continue;
        }
        squares.push_back(
            {{place(topLeft), place(topRight->second), place(bottomRight->second), place(bottomLeft->second)},
             (cell.first / step + cell.second / step) % 2 == 0});
    }
    return squares;
}

QPolygonF seenBy(const calibration::Camera &camera, const Eigen::VectorXd &intrinsics,
                 const calibration::RigidMotion &cameraFromPrint, const PrintSquare &square) {
    QPolygonF polygon;
    for (const Eigen::Vector3d &corner : square.corners) {
        Eigen::Vector2d image;
        if (!calibration::project(camera.lens, intrinsics.data(), cameraFromPrint * corner, image)) {
            return {};
        }
        polygon << QPointF(image.x(), image.y());
    }
    return polygon;
}
