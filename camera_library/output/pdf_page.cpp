#include "camera_library/output/pdf_page.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <initializer_list>
#include <utility>

#include "camera_library/output/caption_font.h"
#include "camera_library/output/pdf_file.h"
#include "camera_library/pattern/number_text.h"

namespace lmlib64 {

namespace {

constexpr double captionSize = 2.5;
constexpr double labelSize = 2.3;
constexpr double pointsPerMm = 72.0 / 25.4;

// Lengths are written with this many decimals. Each coordinate is rounded once, to a whole number of grains, so that
// shapes that touch still touch on the page.
constexpr int decimals = 5;
constexpr std::int64_t grainsPerUnit = 100000;

std::int64_t grains(double length) {
    return std::llround(length * grainsPerUnit);
}

void appendLength(std::string &text, std::int64_t lengthInGrains) {
    if (lengthInGrains < 0) {
        text += '-';
    }
    const std::int64_t length = std::abs(lengthInGrains);
    std::array<char, 24> digits{};
    const auto [end, error] = std::to_chars(digits.data(), digits.data() + digits.size(), length / grainsPerUnit);
    text.append(digits.data(), end);
    if (std::int64_t rest = length % grainsPerUnit; rest != 0) {
        std::array<char, decimals + 1> fraction{'.'};
        for (std::size_t place = decimals; place > 0; --place, rest /= 10) {
            fraction.at(place) = static_cast<char>('0' + rest % 10);
        }
        text.append(fraction.data(), fraction.size());
        text.resize(text.find_last_not_of('0') + 1);
    }
}

// The drawing operators of a page, in millimetres, x to the right and y down.
class Contents {
public:
    explicit Contents(double pageHeightMm) {
        const std::string scale = numberText(pointsPerMm);
        text = scale + " 0 0 -" + scale + " 0 " + pdfPoints(pageHeightMm) + " cm\n";
    }

    void addRectangle(const Rectangle &rectangle) {
        const std::int64_t left = grains(rectangle.left);
        const std::int64_t top = grains(rectangle.top);
        addNumbers({left, top, grains(rectangle.right) - left, grains(rectangle.bottom) - top});
        text += "re\n";
    }

    void addPolygon(const Polygon &polygon) {
        const char *operation = "m\n";
        for (const Point &corner : polygon) {
            addNumbers({grains(corner.x), grains(corner.y)});
            text += operation;
            operation = "l\n";
        }
        text += "h\n";
    }

    void addCircle(const Circle &circle);

    // The baseline starts at `start` and runs to the right or up.
    void addText(const std::string &captionBytes, double size, Point start, bool isUpwards) {
        text.append("BT ").append(captionFontName).append(" ");
        addNumbers({grains(size)});
        text += isUpwards ? "Tf 0 -1 -1 0 " : "Tf 1 0 0 -1 ";
        addNumbers({grains(start.x), grains(start.y)});
        text.append("Tm ").append(pdfText(captionBytes)).append(" Tj ET\n");
    }

    void addOperators(const char *operators) { text.append(operators).append("\n"); }
    void moveOrigin(Point to) {
        text += "1 0 0 1 ";
        addNumbers({grains(to.x), grains(to.y)});
        text += "cm\n";
    }

    std::string text;

private:
    void addNumbers(std::initializer_list<std::int64_t> numbers) {
        for (const std::int64_t number : numbers) {
            appendLength(text, number);
            text += ' ';
        }
    }
};

// Draws eight Bézier curves. Their control points are 4/3 tan(angle / 4) of the radius away from the ends of the curve.
void Contents::addCircle(const Circle &circle) {
    constexpr int curves = 8;
    constexpr double angle = 6.283185307179586 / curves;
    const double reach = 4.0 / 3.0 * std::tan(angle / 4.0);
    const auto add = [&](int corner, double along) {
        const double x = std::cos(corner * angle);
        const double y = std::sin(corner * angle);
        addNumbers({grains(circle.centre.x + circle.radius * (x - along * y)),
                    grains(circle.centre.y + circle.radius * (y + along * x))});
    };
    add(0, 0.0);
    text += "m\n";
    for (int corner = 0; corner < curves; ++corner) {
        add(corner, reach);
        add(corner + 1, -reach);
        add(corner + 1, 0.0);
        text += "c\n";
    }
    text += "h\n";
}

void addPattern(Contents &contents, const PatternGeometry &geometry, Point place) {
    contents.addOperators("q");
    contents.moveOrigin(place);
    for (const Rectangle &rectangle : geometry.rectangles) {
        contents.addRectangle(rectangle);
    }
    for (const Polygon &polygon : geometry.polygons) {
        contents.addPolygon(polygon);
    }
    for (const Circle &circle : geometry.circles) {
        contents.addCircle(circle);
    }
    contents.addOperators("f* Q");  // by the even-odd rule
}

void addCheckBar(Contents &contents, const CheckBar &bar) {
    for (const Rectangle &shape : checkBarShapes(bar)) {
        contents.addRectangle(shape);
    }
    contents.addOperators("f");
    contents.addText(captionText(numberText(bar.length) + " mm"), labelSize, bar.label, bar.isAlongY);
}

void addCaption(Contents &contents, const PrintedPage &page) {
    const std::string caption = captionText(page.caption);
    const double fullWidth = captionWidth(caption, captionSize);
    const double size = captionSize * std::min(1.0, page.layout.captionWidth / fullWidth);
    const Point &middle = page.layout.caption;
    contents.addText(caption, size, {middle.x - captionWidth(caption, size) / 2.0, middle.y}, false);
}

}  // namespace

std::string pdfPageContents(const PrintedPage &page) {
    Contents contents(page.layout.height);
    contents.addOperators("0 g");
    addPattern(contents, page.geometry, page.layout.pattern);
    addCheckBar(contents, page.layout.barAlongX);
    addCheckBar(contents, page.layout.barAlongY);
    addCaption(contents, page);
    return std::move(contents.text);
}

std::string pdfPoints(double mm) {
    std::string text;
    appendLength(text, grains(mm * pointsPerMm));
    return text;
}

}  // namespace lmlib64
