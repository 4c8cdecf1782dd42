#include "viewer/views/scene_view.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>

#include "viewer/views/drawing.h"
#include "viewer/views/print_drawing.h"

using calibration::RigidMotion;

namespace {

constexpr double eyeDistance = 4;      // in units of `reach`
constexpr double firstAzimuth = -0.5;  // radians
constexpr double firstElevation = 0.5;
constexpr double turnPerPixel = 0.008;
constexpr double turnPerKey = 0.1;
const QColor lightColour(244, 244, 240);
const QColor darkColour(38, 42, 50);
// A camera is drawn for each photograph. If there are at least this many photographs, a camera is drawn only for every
// second photograph; if there are at least twice as many, only for every third; and so on.
constexpr size_t mostCameras = 300;

Eigen::Vector3d midpointOf(const Outline &points) {
    Eigen::Vector3d sum = Eigen::Vector3d::Zero();
    for (const Eigen::Vector3d &point : points) {
        sum += point;
    }
    return sum / double(std::max<size_t>(1, points.size()));
}

}  // namespace

SceneView::SceneView(QWidget *parent) : ResultView(parent) {
    setFocusPolicy(Qt::StrongFocus);
    setAccessibleName(tr("Scene"));
    setAngles(firstAzimuth, firstElevation);
}

void SceneView::setSettings(const SessionSettings &newSettings) {
    settings = newSettings;
    if (calibrated() != nullptr) {
        worldFromAxes = commonAxes(*calibrated(), settings).fromWorld.inverse();
        update();
    }
}

void SceneView::refresh() {
    facets.clear();
    labels.clear();
    if (calibrated() != nullptr) {
        worldFromAxes = commonAxes(*calibrated(), settings).fromWorld.inverse();
        addPrints();
        addCameras();
        lookAtAll();
    }
    update();
}

void SceneView::addPrints() {
    const int group = calibrated()->firstGroup();
    printReach = 1;
    for (size_t print = 0; print < calibrated()->observations.prints.size(); ++print) {
        const calibration::Print &known = calibrated()->observations.prints[print];
        if (calibrated()->estimate.groups[print] != group) {
            continue;
        }
        const RigidMotion &pose = calibrated()->estimate.worldFromPrint[print];
        const Eigen::Matrix3d rotation = calibration::rotationMatrix(pose.rotation);
        const auto toWorld = [&](Outline &outline) {
            for (Eigen::Vector3d &corner : outline) {
                corner = rotation * corner + pose.translation;
            }
        };
        for (PrintBlock block : result->textureOf(int(print))) {
            toWorld(block.whole);
            std::for_each(block.largeShapes.begin(), block.largeShapes.end(), toWorld);
            for (PrintCell &cell : block.cells) {
                toWorld(cell.whole);
                std::for_each(cell.shapes.begin(), cell.shapes.end(), toWorld);
            }
            facets.push_back({block.whole, {}, {}, std::move(block)});
        }
        labels.push_back(
            {pose.translation, known.number >= 0 ? QString::number(known.number) : QString::fromStdString(known.name)});
        printReach = std::max(printReach, calibrated()->estimate.shapes[print].reach);
    }
}

void SceneView::addCamera(const RigidMotion &worldFromCamera, const calibration::Camera &camera,
                          const Eigen::VectorXd &intrinsics, const QColor &colour) {
    const double halfWidth = qMin(1.5, camera.width / (2 * intrinsics[0]));
    const double halfHeight = halfWidth * camera.height / camera.width;
    const Eigen::Vector3d eye = worldFromCamera.translation;
    Outline far;
    const double signs[4][2] = {{-1, -1}, {1, -1}, {1, 1}, {-1, 1}};
    for (const auto &sign : signs) {
        far.push_back(worldFromCamera *
                      Eigen::Vector3d(cameraSize * halfWidth * sign[0], cameraSize * halfHeight * sign[1], cameraSize));
    }
    QColor pale = colour;
    pale.setAlpha(45);
    facets.push_back({far, pale, colour, {}});
    for (size_t i = 0; i < 4; ++i) {
        facets.push_back({{eye, far[i], far[(i + 1) % 4]}, {}, colour, {}});
    }
}

void SceneView::addCameras() {
    const auto &observations = calibrated()->observations;
    const calibration::Estimate &estimate = calibrated()->estimate;
    cameraSize = 0.6 * printReach;
    std::vector<bool> isShown(observations.photographs.size());
    for (const calibration::Sighting &sighting : observations.sightings) {
        if (sighting.isUsed && estimate.groups[size_t(sighting.print)] == calibrated()->firstGroup()) {
            isShown[size_t(sighting.photograph)] = true;
        }
    }
    const size_t step = observations.photographs.size() / mostCameras + 1;
    for (size_t i = 0; i < observations.photographs.size(); i += step) {
        const calibration::Photograph &photograph = observations.photographs[i];
        const size_t camera = size_t(photograph.camera);
        if (isShown[i] && estimate.hasCamera[camera] && estimate.hasMoment[size_t(photograph.moment)]) {
            const RigidMotion cameraFromWorld =
                estimate.cameraFromRig[camera] * estimate.rigFromWorld[size_t(photograph.moment)];
            addCamera(cameraFromWorld.inverse(), observations.cameras[camera], estimate.intrinsics[camera],
                      patternColour(5 + photograph.camera));
        }
    }
}

void SceneView::lookAtAll() {
    if (facets.empty()) {
        return;
    }
    Eigen::Vector3d low = facets[0].corners[0];
    Eigen::Vector3d high = low;
    for (const Facet &facet : facets) {
        for (const Eigen::Vector3d &corner : facet.corners) {
            low = low.cwiseMin(corner);
            high = high.cwiseMax(corner);
        }
    }
    middle = (low + high) / 2;
    reach = qMax(1.0, (high - low).norm() / 2);
}

Eigen::Vector3d SceneView::fromEye(const Eigen::Vector3d &place) const {
    return eyeRotation * (place - middle) / reach + Eigen::Vector3d(0, 0, eyeDistance);
}

QPointF SceneView::onScreen(const Eigen::Vector3d &inEye) const {
    const double scale = zoom * 0.8 * qMin(width(), height()) * eyeDistance / qMax(0.1, inEye.z());
    return QPointF(width(), height()) / 2 + shift + scale * QPointF(inEye.x(), inEye.y());
}

void SceneView::drawAxes(QPainter &painter) const {
    const struct {
        Eigen::Vector3d direction;
        QColor colour;
        const char *name;
    } axes[] = {{{1, 0, 0}, {214, 48, 49}, "x"}, {{0, 1, 0}, {40, 150, 60}, "y"}, {{0, 0, 1}, {30, 100, 220}, "z"}};
    const QPointF origin = onScreen(fromEye(worldFromAxes.translation));
    for (const auto &axis : axes) {
        const QPointF tip = onScreen(fromEye(worldFromAxes * Eigen::Vector3d(printReach * axis.direction)));
        painter.setPen(QPen(axis.colour, 2.5));
        drawArrow(painter, origin, tip);
        drawLabel(painter, tip + (tip - origin) * 0.12, axis.name);
    }
}

void SceneView::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    painter.fillRect(rect(), isDark(palette()) ? palette().color(QPalette::Base) : QColor(232, 236, 241));
    painter.setPen(palette().color(QPalette::Text));
    if (facets.empty()) {
        painter.drawText(rect(), Qt::AlignCenter, tr("Nothing is calibrated yet."));
        return;
    }
    struct Drawn {
        const Facet *facet;
        QPolygonF polygon;
        double depth;
    };
    std::vector<Drawn> drawn;
    drawn.reserve(facets.size());
    size_t cellsInView = 0;
    for (const Facet &facet : facets) {
        QPolygonF polygon;
        bool isInFront = true;
        for (const Eigen::Vector3d &corner : facet.corners) {
            const Eigen::Vector3d inEye = fromEye(corner);
            isInFront = isInFront && inEye.z() > 0.1;
            polygon << onScreen(inEye);
        }
        if (isInFront && polygon.boundingRect().adjusted(-1, -1, 1, 1).intersects(rect())) {
            drawn.push_back({&facet, polygon, fromEye(midpointOf(facet.corners)).z()});
            cellsInView += facet.block.cells.size();
        }
    }
    std::sort(drawn.begin(), drawn.end(), [](const Drawn &a, const Drawn &b) { return a.depth > b.depth; });
    painter.setRenderHint(QPainter::Antialiasing);
    const auto inView = [this](const Eigen::Vector3d &place) { return std::optional(onScreen(fromEye(place))); };
    for (const Drawn &one : drawn) {
        if (!one.facet->block.cells.empty()) {
            drawBlock(painter, one.facet->block, cellsInView <= mostCellsInDetail, inView, lightColour, darkColour);
            continue;
        }
        painter.setBrush(one.facet->fill.isValid() ? QBrush(one.facet->fill) : QBrush(Qt::NoBrush));
        painter.setPen(one.facet->outline.isValid() ? QPen(one.facet->outline, 1) : QPen(Qt::NoPen));
        painter.drawPolygon(one.polygon);
    }
    drawAxes(painter);
    for (const Label &label : labels) {
        drawLabel(painter, onScreen(fromEye(label.place)), label.text);
    }
    if (hasFocus()) {
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(palette().color(QPalette::Highlight), 2));
        painter.drawRect(rect().adjusted(1, 1, -1, -1));
    }
}

void SceneView::turn(double x, double y) {
    setAngles(std::remainder(azimuth + x, 2 * M_PI), qBound(-M_PI / 2, elevation + y, M_PI / 2));
    update();
}

void SceneView::setAngles(double newAzimuth, double newElevation) {
    azimuth = newAzimuth;
    elevation = newElevation;
    eyeRotation = calibration::rotationMatrix({elevation, 0, 0}) * calibration::rotationMatrix({0, azimuth, 0});
}

void SceneView::mousePressEvent(QMouseEvent *event) {
    lastMouse = event->localPos();
}

void SceneView::mouseMoveEvent(QMouseEvent *event) {
    const QPointF moved = event->localPos() - lastMouse;
    lastMouse = event->localPos();
    if ((event->modifiers() & Qt::ShiftModifier) != 0 || (event->buttons() & Qt::LeftButton) == 0) {
        shift += moved;
        update();
    } else {
        turn(-moved.x() * turnPerPixel, moved.y() * turnPerPixel);
    }
}

void SceneView::mouseDoubleClickEvent(QMouseEvent *) {
    setAngles(firstAzimuth, firstElevation);
    zoom = 1;
    shift = {};
    update();
}

void SceneView::wheelEvent(QWheelEvent *event) {
    zoom = qBound(0.1, zoom * std::pow(1.0015, event->angleDelta().y()), 50.0);
    update();
}

void SceneView::keyPressEvent(QKeyEvent *event) {
    switch (event->key()) {
        case Qt::Key_Left:
            return turn(-turnPerKey, 0);
        case Qt::Key_Right:
            return turn(turnPerKey, 0);
        case Qt::Key_Up:
            return turn(0, -turnPerKey);
        case Qt::Key_Down:
            return turn(0, turnPerKey);
        case Qt::Key_Plus:
        case Qt::Key_Equal:
            zoom = qMin(50.0, zoom * 1.25);
            return update();
        case Qt::Key_Minus:
            zoom = qMax(0.1, zoom / 1.25);
            return update();
        default:
            return QWidget::keyPressEvent(event);
    }
}
