#include "viewer/views/photograph_view.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

#include "viewer/views/drawing.h"

using pattern_reader::PatternCorner;
using pattern_reader::PatternReading;

namespace {

constexpr double greatestScale = 40;
constexpr double smallestScale = 0.01;
constexpr int panStep = 60;             // pixels of the view
constexpr double arrowCell = 26;        // pixels of the view; in each square of this size, at most one arrow begins
constexpr double pickReach = 12;        // pixels of the view; a click picks the nearest corner within this distance
constexpr double namesFromLength = 60;  // pixels of the view; axes show their names if they are at least this long
constexpr int numbersFromScale = 3;     // corners show their column and row at this scale or a larger one

const PatternCorner *cornerAt(const PatternReading &reading, cv::Point lattice) {
    const auto found = std::find_if(reading.corners.begin(), reading.corners.end(),
                                    [lattice](const PatternCorner &corner) { return corner.lattice == lattice; });
    return found == reading.corners.end() ? nullptr : &*found;
}

QPointF pointOf(const PatternCorner &corner) {
    return {double(corner.image.x), double(corner.image.y)};
}

}  // namespace

PhotographView::PhotographView(QWidget *parent) : QWidget(parent) {
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    setAccessibleName(tr("Photograph"));
}

void PhotographView::showPhotograph(const SessionPhotograph *shown) {
    const bool isOther = shown == nullptr || shown->path != photograph.path;
    photograph = shown == nullptr ? SessionPhotograph() : *shown;
    if (isOther) {
        picture = {};
        straight = {};
        isFitted = true;
        loadPicture();
    }
    update();
}

void PhotographView::setResult(std::shared_ptr<const SessionResult> newResult) {
    result = std::move(newResult);
    straight = {};
    makeUndistorted();
    update();
}

void PhotographView::loadPicture() {
    work.cancel();
    isLoading = !photograph.path.isEmpty();
    if (!isLoading) {
        return;
    }
    work.add([this, path = photograph.path](const BackgroundWork::IsCancelled &isCancelled) {
        PhotographPicture loaded = isCancelled() ? PhotographPicture() : PhotographPicture::load(path);
        return [this, loaded] {
            picture = loaded;
            isLoading = false;
            if (isFitted) {
                fit();
            }
            makeUndistorted();
            update();
        };
    });
}

void PhotographView::makeUndistorted() {
    const int index = result && result->calibration ? result->indexOf(photograph.id) : -1;
    if (!wantsUndistorted || picture.levels.empty() || index < 0) {
        return;
    }
    const calibration::Calibration &known = *result->calibration;
    const int camera = known.observations.photographs[size_t(index)].camera;
    if (!known.estimate.hasCamera[size_t(camera)]) {
        return;
    }
    work.add([this, id = photograph.id, from = result, source = picture,
              lens = known.observations.cameras[size_t(camera)],
              intrinsics = known.estimate.intrinsics[size_t(camera)]](const BackgroundWork::IsCancelled &) {
        const PhotographPicture made = source.undistort(lens, intrinsics);
        return [this, made, id, from] {
            if (id == photograph.id && from == result) {  // otherwise this picture is out of date
                straight = made;
                update();
            }
        };
    });
}

void PhotographView::setUndistorted(bool isWanted) {
    wantsUndistorted = isWanted;
    makeUndistorted();
    update();
}

void PhotographView::setShowsResiduals(bool isWanted) {
    wantsResiduals = isWanted;
    update();
}

void PhotographView::setResidualFactor(int factor) {
    residualFactor = factor;
    update();
}

void PhotographView::setShowsCorners(bool isWanted) {
    wantsCorners = isWanted;
    update();
}

void PhotographView::setPicksCorners(bool isWanted) {
    picksCorners = isWanted;
    setCursor(isWanted ? Qt::CrossCursor : Qt::ArrowCursor);
}

void PhotographView::fit() {
    isFitted = true;
    if (picture.width > 0) {
        scale = qMin(double(width()) / picture.width, double(height()) / picture.height);
        origin = QPointF(width() - scale * picture.width, height() - scale * picture.height) / 2;
    }
    update();
}

void PhotographView::zoom(double factor, QPointF about) {
    const double newScale = qBound(smallestScale, scale * factor, greatestScale);
    origin = about + (origin - about) * (newScale / scale);
    scale = newScale;
    isFitted = false;
    update();
}

void PhotographView::centreOn(QPointF pixel) {
    scale = qMax(scale, 2.0);
    isFitted = false;
    if (const std::optional<QPointF> current = place(pixel)) {
        origin += QRectF(rect()).center() - *current;
    }
    update();
}

std::optional<QPointF> PhotographView::place(QPointF pixel) const {
    if (showsUndistorted()) {
        const calibration::Calibration &known = *result->calibration;
        const int camera = known.observations.photographs[size_t(result->indexOf(photograph.id))].camera;
        const auto moved =
            undistorted(known.observations.cameras[size_t(camera)], known.estimate.intrinsics[size_t(camera)], pixel);
        if (!moved) {
            return std::nullopt;
        }
        pixel = *moved;
    }
    // Coordinates count from the centre of the first pixel, so the picture's corner is at -0.5, -0.5.
    return origin + scale * (pixel + QPointF(0.5, 0.5));
}

void PhotographView::drawPicture(QPainter &painter) const {
    const std::vector<QImage> &levels = showsUndistorted() ? straight.levels : picture.levels;
    // Takes the smallest level that has at least one pixel for each pixel of the view. If even the largest level has
    // fewer pixels than that, takes the largest level.
    size_t level = 0;
    while (level + 1 < levels.size() && scale * picture.width <= levels[level + 1].width()) {
        ++level;
    }
    const QImage &image = levels[level];
    const double levelScale = scale * picture.width / image.width();
    const QRectF whole(origin, QSizeF(picture.width, picture.height) * scale);
    const QRectF seen = whole & QRectF(rect());
    const QRectF source((seen.topLeft() - origin) / levelScale, seen.size() / levelScale);
    painter.setRenderHint(QPainter::SmoothPixmapTransform, levelScale < 3);
    painter.drawImage(seen, image, source);
}

void PhotographView::drawAxes(QPainter &painter, const PatternReading &reading) const {
    // The axes begin at a corner that has a next corner along both axes. Of these corners, the one nearest to the
    // middle is taken.
    const PatternCorner *best = nullptr;
    const int step = reading.kind == pattern_reader::PatternKind::Plate ? 2 : 1;
    cv::Point2f middle(0, 0);
    for (const PatternCorner &corner : reading.corners) {
        middle += corner.image / float(reading.corners.size());
    }
    for (const PatternCorner &corner : reading.corners) {
        // The search for the next corners takes long, so it comes last.
        if ((best == nullptr || cv::norm(corner.image - middle) < cv::norm(best->image - middle)) &&
            cornerAt(reading, corner.lattice + cv::Point(step, 0)) != nullptr &&
            cornerAt(reading, corner.lattice + cv::Point(0, step)) != nullptr) {
            best = &corner;
        }
    }
    const auto from = best == nullptr ? std::nullopt : place(pointOf(*best));
    if (!from) {
        return;
    }
    const struct {
        cv::Point step;
        QColor colour;
        QString name;
    } axes[] = {{{step, 0}, {230, 60, 50}, "x"}, {{0, step}, {50, 170, 70}, "y"}};
    for (const auto &axis : axes) {
        const auto next = place(pointOf(*cornerAt(reading, best->lattice + axis.step)));
        if (next) {
            const QPointF tip = *from + 3 * (*next - *from);
            painter.setPen(QPen(axis.colour, 2.5));
            drawArrow(painter, *from, tip);
            if (QLineF(*from, tip).length() > namesFromLength) {
                drawLabel(painter, tip + (*next - *from), axis.name);
            }
        }
    }
    drawLabel(painter, *from, nameOf(reading));
}

void PhotographView::drawReading(QPainter &painter, int index) const {
    const PatternReading &reading = photograph.readings->at(size_t(index));
    const QColor colour = patternColour(qMax(0, reading.tile));
    const bool hasNumbers = scale >= numbersFromScale;
    const double radius = qBound(1.5, 1.6 * scale, 7.0);
    QPolygonF places;
    QPolygonF disturbedPlaces;
    for (const PatternCorner &corner : reading.corners) {
        const auto at = place(pointOf(corner));
        if (!at || !rect().contains(at->toPoint())) {
            continue;
        }
        (corner.disturbed ? disturbedPlaces : places) << *at;
        if (hasNumbers) {
            painter.setPen(corner.disturbed ? residualColour() : colour);
            painter.drawText(*at + QPointF(radius + 2, -2),
                             QString("%1,%2").arg(corner.lattice.x).arg(corner.lattice.y));
        }
    }
    drawCircles(painter, places, radius, colour);
    drawCircles(painter, disturbedPlaces, radius, residualColour());
    drawAxes(painter, reading);
}

std::vector<PhotographView::ResidualArrow> PhotographView::residualArrows() const {
    const int index = result && result->calibration ? result->indexOf(photograph.id) : -1;
    if (index < 0) {
        return {};
    }
    std::map<std::pair<int, int>, ResidualArrow> largest;  // by column and row of the cell
    const auto &sightings = result->calibration->observations.sightings;
    for (size_t s = 0; s < sightings.size(); ++s) {
        for (size_t c = 0; sightings[s].photograph == index && c < sightings[s].corners.size(); ++c) {
            const calibration::SeenCorner &corner = sightings[s].corners[c];
            const auto &estimated = result->estimated[s][c];
            const auto from = place({corner.image.x(), corner.image.y()});
            if (!estimated || !from) {
                continue;
            }
            const Eigen::Vector2d residual = corner.image - *estimated;
            const ResidualArrow arrow{*from, {residual.x(), residual.y()}, corner.isUsed && sightings[s].isUsed};
            // Cells are counted from the photograph's corner, so that they stay the same if the photograph is moved in
            // the view.
            const QPointF cell = (*from - origin) / arrowCell;
            const auto [found, isFirst] =
                largest.try_emplace({int(std::floor(cell.x())), int(std::floor(cell.y()))}, arrow);
            if (!isFirst && residual.norm() > std::hypot(found->second.residual.x(), found->second.residual.y())) {
                found->second = arrow;
            }
        }
    }
    std::vector<ResidualArrow> arrows;
    arrows.reserve(largest.size());
    for (const auto &[cell, arrow] : largest) {
        arrows.push_back(arrow);
    }
    return arrows;
}

void PhotographView::drawResiduals(QPainter &painter) const {
    for (const ResidualArrow &arrow : residualArrows()) {
        const QPointF tip = arrow.from + scale * residualFactor * arrow.residual;
        // The dark border makes the arrow visible on white paper.
        painter.setPen(QPen(QColor(20, 20, 24, 170), 3.5));
        drawArrow(painter, arrow.from, tip);
        painter.setPen(QPen(arrow.counts ? QColor(255, 210, 0) : residualColour(), 1.5));
        drawArrow(painter, arrow.from, tip);
    }
}

QString PhotographView::hint() const {
    if (photograph.path.isEmpty()) {
        return tr("Drop photographs here, or press \"Add...\"");
    }
    if (isLoading) {
        return tr("Loading...");
    }
    return picture.levels.empty() ? photograph.problem : QString();
}

void PhotographView::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    painter.fillRect(rect(), isDark(palette()) ? palette().color(QPalette::Base) : QColor(226, 230, 236));
    painter.setRenderHint(QPainter::Antialiasing);
    const QString text = hint();
    if (!text.isEmpty()) {
        painter.setPen(isDark(palette()) ? palette().color(QPalette::Text) : QColor(70, 80, 92));
        painter.drawText(rect().adjusted(20, 20, -20, -20), Qt::AlignCenter | Qt::TextWordWrap, text);
        return;
    }
    drawPicture(painter);
    if (wantsCorners && photograph.readings) {
        for (size_t i = 0; i < photograph.readings->size(); ++i) {
            drawReading(painter, int(i));
        }
    }
    if (wantsResiduals) {
        drawResiduals(painter);
    }
    if (hasFocus()) {
        painter.setPen(QPen(palette().color(QPalette::Highlight), 2));
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(rect().adjusted(1, 1, -1, -1));
    }
}

void PhotographView::wheelEvent(QWheelEvent *event) {
    zoom(std::pow(1.0015, event->angleDelta().y()), event->position());
}

void PhotographView::mousePressEvent(QMouseEvent *event) {
    pressedAt = lastMouse = event->localPos();
}

void PhotographView::mouseMoveEvent(QMouseEvent *event) {
    if (event->buttons() != Qt::NoButton) {
        origin += event->localPos() - lastMouse;
        lastMouse = event->localPos();
        isFitted = false;
        update();
    }
}

void PhotographView::mouseReleaseEvent(QMouseEvent *event) {
    if (picksCorners && QLineF(pressedAt, event->localPos()).length() < 4) {
        pick(event->localPos());
    }
}

void PhotographView::mouseDoubleClickEvent(QMouseEvent *) {
    fit();
}

void PhotographView::pick(QPointF at) {
    double nearest = pickReach;
    std::optional<QPointF> picked;
    for (const PatternReading &reading : photograph.readings ? *photograph.readings : PatternReadings()) {
        for (const PatternCorner &corner : reading.corners) {
            const auto cornerPlace = place(pointOf(corner));
            const double distance = cornerPlace ? QLineF(*cornerPlace, at).length() : nearest;
            if (distance < nearest) {
                nearest = distance;
                picked = pointOf(corner);
            }
        }
    }
    if (picked) {
        emit cornerPicked(*picked);
    }
}

void PhotographView::keyPressEvent(QKeyEvent *event) {
    switch (event->key()) {
        case Qt::Key_Plus:
        case Qt::Key_Equal:
            return zoomIn();
        case Qt::Key_Minus:
            return zoomOut();
        case Qt::Key_0:
            return fit();
        case Qt::Key_Left:
            origin.rx() += panStep;
            break;
        case Qt::Key_Right:
            origin.rx() -= panStep;
            break;
        case Qt::Key_Up:
            origin.ry() += panStep;
            break;
        case Qt::Key_Down:
            origin.ry() -= panStep;
            break;
        default:
            return QWidget::keyPressEvent(event);
    }
    isFitted = false;
    update();
}

void PhotographView::resizeEvent(QResizeEvent *) {
    if (isFitted) {
        fit();
    }
}
