#include "calibration/report/drawing.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

#include "calibration/report/page_text.h"

namespace calibration {

namespace {

// Coordinates are limited to this value, which is far outside every figure. Larger values could overflow in a browser.
constexpr double farAway = 1e5;

// Appends a value that is rounded to one decimal place. If this decimal is zero, it is left out.
void appendCoordinate(std::string &text, double value) {
    std::array<char, 32> buffer{};
    const double tenths = std::round(10 * std::clamp(value, -farAway, farAway));
    const bool isWhole = std::fmod(tenths, 10) == 0;
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), tenths / 10 + 0.0,
                                      std::chars_format::fixed, isWhole ? 0 : 1);
    text.append(buffer.data(), result.ptr);
}

std::string coordinate(double value) {
    std::string text;
    appendCoordinate(text, std::isfinite(value) ? value : 0);
    return text;
}

}  // namespace

void Path::add(char command, const Eigen::Vector2d &point) {
    if (!point.allFinite()) {
        isOpen = false;
        return;
    }
    data += isOpen ? command : 'M';
    appendCoordinate(data, point.x());
    data += ' ';
    appendCoordinate(data, point.y());
    isOpen = true;
}

void Path::line(const Eigen::Vector2d &from, const Eigen::Vector2d &to) {
    if (from.allFinite() && to.allFinite()) {
        moveTo(from);
        lineTo(to);
    }
}

void Path::arrow(const Eigen::Vector2d &from, const Eigen::Vector2d &to, double head) {
    const Eigen::Vector2d way = to - from;
    if (!way.allFinite()) {
        return;
    }
    line(from, to);
    const double length = way.norm();
    if (length > head) {
        const Eigen::Vector2d back = -way / length * head;
        const Eigen::Vector2d side(-back.y() / 2, back.x() / 2);
        moveTo(to + back + side);
        lineTo(to);
        lineTo(to + back - side);
    }
}

void Path::dot(const Eigen::Vector2d &point, double radius) {
    rectangle(point.x() - radius, point.y() - radius, 2 * radius, 2 * radius);
}

void Path::rectangle(double x, double y, double width, double height) {
    if (std::isfinite(x + y + width + height)) {
        moveTo({x, y});
        data += 'h' + coordinate(width) + 'v' + coordinate(height) + 'h' + coordinate(-width) + 'z';
    }
}

void Path::polyline(const std::vector<Eigen::Vector2d> &points, bool isClosed) {
    isOpen = false;
    for (const Eigen::Vector2d &point : points) {
        lineTo(point);
    }
    if (isClosed && isOpen) {
        data += 'z';
    }
    isOpen = false;
}

Drawing::Drawing(double width, double height, const std::string &label)
    : data("<svg viewBox=\"0 0 " + coordinate(width) + " " + coordinate(height) + "\" role=\"img\" aria-label=\"" +
           escaped(label) + "\" xmlns=\"http://www.w3.org/2000/svg\">\n") {}

void Drawing::add(const char *styleClass, const Path &path) {
    if (!path.text().empty()) {
        data += std::string("<path class=\"") + styleClass + "\" d=\"" + path.text() + "\"/>\n";
    }
}

void Drawing::add(const char *styleClass, const Path &path, const std::string &tip) {
    if (!path.text().empty()) {
        data += std::string("<path class=\"") + styleClass + "\" d=\"" + path.text() + "\"><title>" + escaped(tip) +
                "</title></path>\n";
    }
}

void Drawing::fill(const std::string &colour, const Path &path) {
    if (!path.text().empty()) {
        data += "<path fill=\"" + colour + "\" d=\"" + path.text() + "\"/>\n";
    }
}

void Drawing::text(const char *styleClass, const Eigen::Vector2d &at, Anchor anchor, const std::string &text) {
    if (at.allFinite()) {
        const char *place = anchor == Anchor::Start ? "start" : anchor == Anchor::Middle ? "middle" : "end";
        data += std::string("<text class=\"") + styleClass + "\" x=\"" + coordinate(at.x()) + "\" y=\"" +
                coordinate(at.y()) + "\" text-anchor=\"" + place + "\">" + escaped(text) + "</text>\n";
    }
}

double niceBelow(double value) {
    if (!std::isfinite(value) || value <= 0) {
        return 1;
    }
    const double power = std::pow(10, std::floor(std::log10(value)));
    return value >= 5 * power ? 5 * power : value >= 2 * power ? 2 * power : power;
}

}  // namespace calibration
