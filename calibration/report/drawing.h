// Draws one figure of the report as SVG. Most colours come from the style sheet of the page through class names, so
// that figures change with the page between light and dark.
//
// x is to the right and y down, in units of the figure. Points that are not finite are left out.
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

    // `label` describes the figure for people who cannot see it. The class escapes all texts that it is given.
    Drawing(double width, double height, const std::string &label);

    void add(const char *styleClass, const Path &path);
    // Also adds a text that a browser shows while the pointer is on the path.
    void add(const char *styleClass, const Path &path, const std::string &tip);
    // Fills a path with a colour of the form "#rrggbb".
    void fill(const std::string &colour, const Path &path);
    void text(const char *styleClass, const Eigen::Vector2d &at, Anchor anchor, const std::string &text);
    std::string svg() const { return data + "</svg>\n"; }

private:
    std::string data;
};

// Rounds a positive value down to 1, 2 or 5 times a power of ten.
double niceBelow(double value);

}  // namespace calibration
