#include <Eigen/Core>
#include <algorithm>
#include <cmath>

#include "calibration/dense_solve.h"
#include "calibration/report/page_text.h"
#include "calibration/report/sections.h"

namespace calibration {

namespace {

using Eigen::Vector3d;

constexpr double radian = 57.29577951308232;  // degrees
constexpr size_t mostRows = 1000;

bool isFixed(const Calibration &calibration, int print, int number) {
    const std::vector<std::vector<int>> &shapes = calibration.freedom.shapes;
    return size_t(print) >= shapes.size() ||
           std::count(shapes[size_t(print)].begin(), shapes[size_t(print)].end(), number) == 0;
}

// Returns the standard deviation of one number of a print's shape. Returns 0 if the calibration kept the number fixed,
// or if its covariance is not known.
double shapeSigma(const Calibration &calibration, int print, int number) {
    if (isFixed(calibration, print, number) || calibration.covariance.usedCorners() == 0) {
        return 0;
    }
    const std::vector<int> &free = calibration.freedom.shapes[size_t(print)];
    const auto row = std::find(free.begin(), free.end(), number) - free.begin();
    const Eigen::MatrixXd covariance = calibration.covariance.shape(print);
    return row < covariance.rows() ? std::sqrt(std::max(0.0, covariance(row, row))) : 0;
}

// Fits a plane to the points of the print. Returns the difference in height above this plane between the highest and
// the lowest point, in mm.
double bendHeight(const Print &print, const PrintShape &shape) {
    const auto points = Eigen::Index(print.points.size());
    if (points < 4) {
        return 0;
    }
    Eigen::MatrixXd plane(points, 3);
    Eigen::VectorXd height(points);
    for (Eigen::Index i = 0; i < points; i++) {
        const Vector3d place = printedPoint(shape.numbers.data(), shape.reach, print.points[size_t(i)]).place;
        plane.row(i) << 1, place.x() / shape.reach, place.y() / shape.reach;
        height[i] = place.z();
    }
    const Eigen::VectorXd rest = leastSquaresResiduals(plane, height);
    return rest.maxCoeff() - rest.minCoeff();
}

bool mayBend(const Calibration &calibration, int print) {
    const std::vector<std::vector<int>> &shapes = calibration.freedom.shapes;
    return size_t(print) < shapes.size() && std::any_of(shapes[size_t(print)].begin(), shapes[size_t(print)].end(),
                                                        [](int number) { return number >= PrintShape::bend; });
}

// Returns a number of the shape in percent, with its standard deviation or the note that it is fixed. The number stands
// alone if it was free and its standard deviation is not known. If the number is stored as a logarithm, `nominal` must
// be 1: the function then shows the factor itself, which is 1 for an exact print. Otherwise, `nominal` must be 0.
std::string percent(const Calibration &calibration, int print, int number, double nominal) {
    const double value = calibration.estimate.shapes[size_t(print)].numbers[size_t(number)];
    const double sigma = shapeSigma(calibration, print, number);
    const double shown = 100 * (nominal > 0 ? std::exp(value) : value);
    return sigma > 0
               ? withSigma(shown, 100 * sigma)
               : calibration::number(shown, 3) + (isFixed(calibration, print, number) ? " <small>(fixed)</small>" : "");
}

bool hasPlace(const Calibration &calibration, size_t print) {
    return print < calibration.prints.size() && print < calibration.estimate.groups.size() &&
           calibration.estimate.groups[print] >= 0;
}

std::string nameCells(const Print &print) {
    return cell(escaped(print.name)) + cell(print.number >= 0 ? std::to_string(print.number) : "");
}

std::string poseRow(const Calibration &calibration, int index) {
    const Estimate &estimate = calibration.estimate;
    std::string html = "<tr>" + nameCells(calibration.observations.prints[size_t(index)]);
    if (!hasPlace(calibration, size_t(index))) {
        return html + "<td colspan=\"8\">Not in the result: no usable photograph links it to the others.</td></tr>\n";
    }
    const PrintTrust &trust = calibration.prints[size_t(index)];
    html += cell(std::to_string(estimate.groups[size_t(index)] + 1));
    if (estimate.isOrigin(index)) {
        html += "<td colspan=\"6\">Origin of its group's coordinate system</td>";
    } else {
        const RigidMotion &pose = estimate.worldFromPrint[size_t(index)];
        for (int i = 0; i < 3; i++) {
            html += numberCell(withSigma(pose.translation[i], trust.translationSigma[i]));
        }
        for (int i = 0; i < 3; i++) {
            html += numberCell(withSigma(pose.rotation[i] * radian, trust.rotationSigma[i]));
        }
    }
    const bool isKnown = !trust.pointSigmas.empty();
    return html +
           numberCell(isKnown ? rounded(*std::max_element(trust.pointSigmas.begin(), trust.pointSigmas.end()), 2)
                              : "") +
           "</tr>\n";
}

std::string shapeRow(const Calibration &calibration, int index) {
    const Print &print = calibration.observations.prints[size_t(index)];
    const PrintTrust &trust = calibration.prints[size_t(index)];
    const PrintShape &shape = calibration.estimate.shapes[size_t(index)];
    return "<tr>" + nameCells(print) + numberCell(percent(calibration, index, PrintShape::scale, 1)) +
           numberCell(percent(calibration, index, PrintShape::ratio, 1)) +
           numberCell(percent(calibration, index, PrintShape::shear, 0)) +
           numberCell(mayBend(calibration, index) ? number(bendHeight(print, shape), 3) : "0 <small>(flat)</small>") +
           cell(trust.isMeasured     ? "measured"
                : trust.isDetermined ? ""
                                     : "The photographs do not determine its scale or x:y.") +
           "</tr>\n";
}

}  // namespace

std::string printSection(const Calibration &calibration) {
    const size_t prints = calibration.observations.prints.size();
    if (prints == 0) {
        return {};
    }
    std::string poses;
    std::string shapes;
    for (size_t i = 0; i < std::min(prints, mostRows); i++) {
        poses += poseRow(calibration, int(i));
        shapes += hasPlace(calibration, i) ? shapeRow(calibration, int(i)) : "";
    }
    if (prints > mostRows) {
        poses +=
            "<tr><td colspan=\"10\">" + count(long(prints - mostRows)) + " more patterns are not shown.</td></tr>\n";
    }
    return "<section><h2>Patterns</h2>\n<h3>Where they are</h3><p>Each row has the position and the rotation "
           "vector of a pattern in the coordinate system of its group. The last column has the greatest standard "
           "deviation of a corner's position.</p>\n"
           "<div class=\"scroll\"><table>" +
           headings({"Pattern", "No.", "Group", ">X, mm", ">Y, mm", ">Z, mm", ">About x, \xC2\xB0",
                     ">About y, \xC2\xB0", ">About z, \xC2\xB0", ">\xC2\xB1 corner, mm"}) +
           "<tbody>" + poses +
           "</tbody></table></div>\n<h3>How the prints differ from their drawings</h3><p>A plane is fitted to the "
           "corners. Bend is the difference in height above this plane between the highest and the lowest "
           "corner.</p>\n<div class=\"scroll\"><table>" +
           headings({"Pattern", "No.", ">Scale, %", ">x:y, %", ">Shear, %", ">Bend, mm", "Note"}) + "<tbody>" + shapes +
           "</tbody></table></div></section>\n";
}

}  // namespace calibration
