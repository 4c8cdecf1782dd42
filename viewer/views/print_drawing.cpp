#include "viewer/views/print_drawing.h"

#include <QPainter>
#include <QPainterPath>
#include <QPolygonF>
#include <numeric>

namespace {

// Returns a path with these outlines; an empty path if `place` returns nothing for one of their corners.
QPainterPath pathOf(const std::vector<Outline> &outlines, const PlaceOnPicture &place) {
    QPainterPath path;
    path.setFillRule(Qt::OddEvenFill);
    for (const Outline &outline : outlines) {
        QPolygonF polygon;
        polygon.reserve(int(outline.size()));
        for (const Eigen::Vector3d &corner : outline) {
            const std::optional<QPointF> at = place(corner);
            if (!at) {
                return {};
            }
            polygon << *at;
        }
        path.addPolygon(polygon);
        path.closeSubpath();
    }
    return path;
}

}  // namespace

size_t cellCount(const std::vector<PrintBlock> &blocks) {
    return std::accumulate(blocks.begin(), blocks.end(), size_t(0),
                           [](size_t sum, const PrintBlock &block) { return sum + block.cells.size(); });
}

void drawBlock(QPainter &painter, const PrintBlock &block, bool inDetail, const PlaceOnPicture &place,
               const QColor &light, const QColor &dark) {
    const auto fill = [&](const std::vector<Outline> &outlines, const QColor &colour) {
        if (colour.isValid() && !outlines.empty()) {
            painter.fillPath(pathOf(outlines, place), colour);
        }
    };
    if (!inDetail) {
        fill({block.whole}, light);
        fill(block.largeShapes, dark);
        return;
    }
    for (const PrintCell &cell : block.cells) {
        fill({cell.whole}, light);
        fill(cell.shapes, dark);
    }
}

PlaceOnPicture seenBy(const calibration::Camera &camera, const Eigen::VectorXd &intrinsics,
                      const calibration::RigidMotion &cameraFromPrint) {
    return [&camera, &intrinsics, rotation = calibration::rotationMatrix(cameraFromPrint.rotation),
            translation = cameraFromPrint.translation](const Eigen::Vector3d &corner) -> std::optional<QPointF> {
        Eigen::Vector2d image;
        if (!calibration::project(camera.lens, intrinsics.data(), rotation * corner + translation, image)) {
            return std::nullopt;
        }
        return QPointF(image.x(), image.y());
    };
}
