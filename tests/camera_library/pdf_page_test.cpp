// What stands on a PDF's page, in its own operators.
#include "camera_library/output/pdf_page.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <sstream>
#include <string>

namespace lmlib64 {
namespace {

// The greatest distance of the contents' curves from the circle, all around; the contents have one path of curves.
double farthestOff(const std::string &contents, const Circle &circle) {
    std::istringstream lines(contents);
    Point from;
    double farthest = 0.0;
    double turned = 0.0;
    for (std::string line; std::getline(lines, line);) {
        std::istringstream operands(line);
        std::array<double, 6> c{};
        operands >> c[0] >> c[1];
        if (line.back() == 'm') {
            from = {c[0], c[1]};
        } else if (line.back() == 'c') {
            operands >> c[2] >> c[3] >> c[4] >> c[5];
            constexpr int steps = 100;
            for (int step = 0; step <= steps; ++step) {
                const double t = static_cast<double>(step) / steps;
                const double s = 1.0 - t;
                const auto mixed = [&](double start, double first, double second, double end) {
                    return s * s * s * start + 3 * s * s * t * first + 3 * s * t * t * second + t * t * t * end;
                };
                const double x = mixed(from.x, c[0], c[2], c[4]) - circle.centre.x;
                const double y = mixed(from.y, c[1], c[3], c[5]) - circle.centre.y;
                farthest = std::max(farthest, std::abs(std::hypot(x, y) - circle.radius));
            }
            turned += std::atan2((from.x - circle.centre.x) * (c[5] - circle.centre.y) -
                                     (from.y - circle.centre.y) * (c[4] - circle.centre.x),
                                 (from.x - circle.centre.x) * (c[4] - circle.centre.x) +
                                     (from.y - circle.centre.y) * (c[5] - circle.centre.y));
            from = {c[4], c[5]};
        }
    }
    EXPECT_NEAR(turned, 2.0 * std::acos(-1.0), 1e-6);
    return farthest;
}

TEST(PdfPage, drawsCirclesAsExactlyAsItSays) {
    for (const Circle &circle : {Circle{{1500.0, 1200.0}, 1000.0}, Circle{{7.77, 0.5}, 0.4321}}) {
        PrintedPage page;
        page.geometry.circles = {circle};
        EXPECT_LT(farthestOff(pdfPageContents(page), circle), 5e-6 * circle.radius + 1e-5) << circle.radius;
    }
}

}  // namespace
}  // namespace lmlib64
