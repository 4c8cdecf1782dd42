// One figure of the report as SVG. Colours come from the page's style through class names, so that figures follow the
// page from light to dark.
//
// Coordinates: x to the right, y down, in units of the figure. Values that are not finite are left out.
#pragma once

#include <Eigen/Core>
#include <string>
#include <vector>

namespace calibration {

class Path {
public:
    void moveTo(const Eigen::Vector2d &point) { add('M', point); }
    void lineTo(const Eigen::Vector2d &point) { add('L', point); }
    void line(const Eigen::Vector2d &from, const Eigen::Vector2d &to);
    void arrow(const Eigen::Vector2d &from, const Eigen::Vector2d &to, double head);
    void dot(const Eigen::Vector2d &point, double radius);
    void rectangle(double x, double y, double width, double height);
    void polyline(const std::vector<Eigen::Vector2d> &points, bool isClosed);
    const std::string &text() const { return data; }

private:
    void add(char command, const Eigen::Vector2d &point);

    std::string data;
    bool isOpen = false;
};

class Drawing {
public:
    enum class Anchor { Start, Middle, End };

    // label: what the figure shows, for those who cannot see it. Not yet escaped.
    Drawing(double width, double height, const std::string &label);

    void add(const char *styleClass, const Path &path);
    // Within this element, a browser shows the text when the pointer rests on the path.
    void add(const char *styleClass, const Path &path, const std::string &tip);
    // colour: "#rrggbb"
    void fill(const std::string &colour, const Path &path);
    void text(const char *styleClass, const Eigen::Vector2d &at, Anchor anchor, const std::string &text);
    std::string svg() const { return data + "</svg>\n"; }

private:
    std::string data;
};

// The greatest of 1, 2 and 5 times a power of ten that is not above the value.
double niceBelow(double value);

}  // namespace calibration
