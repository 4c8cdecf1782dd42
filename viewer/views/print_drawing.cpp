#include "viewer/views/print_drawing.h"

#include <QPolygonF>

QPainterPath darkPartsOf(const PrintCell &cell,
                         const std::function<std::optional<QPointF>(const Eigen::Vector3d &)> &place) {
    QPainterPath path;
    path.setFillRule(Qt::OddEvenFill);
    for (const Outline &outline : cell.shapes) {
        QPolygonF polygon;
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

std::function<std::optional<QPointF>(const Eigen::Vector3d &)> seenBy(const calibration::Camera &camera,
                                                                      const Eigen::VectorXd &intrinsics,
                                                                      const calibration::RigidMotion &cameraFromPrint) {
    return [&](const Eigen::Vector3d &corner) -> std::optional<QPointF> {
        Eigen::Vector2d image;
        if (!calibration::project(camera.lens, intrinsics.data(), cameraFromPrint * corner, image)) {
            return std::nullopt;
        }
        return QPointF(image.x(), image.y());
    };
}
