#include "camera_library/output/pdf_page.h"

#include <cmath>
#include <cstdint>
#include <initializer_list>
#include <utility>

#include "camera_library/output/caption_font.h"
#include "camera_library/output/length_text.h"
#include "camera_library/output/pdf_file.h"
#include "camera_library/pattern/number_text.h"

namespace lmlib64 {

namespace {

constexpr double pointsPerMm = 72.0 / 25.4;

// Collects the drawing operators of a page. Lengths are in millimetres; x runs to the right and y down.
class Contents {
public:
    explicit Contents(double pageHeightMm) {
        const std::string scale = numberText(pointsPerMm);
        text = scale + " 0 0 -" + scale + " 0 " + pdfPoints(pageHeightMm) + " cm\n";
    }

    void addRectangle(const Rectangle &rectangle) {
        const std::int64_t left = lengthGrains(rectangle.left);
        const std::int64_t top = lengthGrains(rectangle.top);
        addNumbers({left, top, lengthGrains(rectangle.right) - left, lengthGrains(rectangle.bottom) - top});
        text += "re\n";
    }

    void addPolygon(const Polygon &polygon) {
        const char *operation = "m\n";
        for (const Point &corner : polygon) {
            addNumbers({lengthGrains(corner.x), lengthGrains(corner.y)});
            text += operation;
            operation = "l\n";
        }
        text += "h\n";
    }

    void addCircle(const Circle &circle);

    // The baseline starts at `start` and runs to the right or up.
    void addText(const std::string &captionBytes, double size, Point start, bool isUpwards) {
        text.append("BT ").append(captionFontName).append(" ");
        addNumbers({lengthGrains(size)});
        text += isUpwards ? "Tf 0 -1 -1 0 " : "Tf 1 0 0 -1 ";
        addNumbers({lengthGrains(start.x), lengthGrains(start.y)});
        text.append("Tm ").append(pdfText(captionBytes)).append(" Tj ET\n");
    }

    void addOperators(const char *operators) { text.append(operators).append("\n"); }
    // Applies the placement to the coordinates of all further operators.
    void place(const Placement &placement) {
        text += numberText(placement.scale.x) + " 0 0 " + numberText(placement.scale.y) + " ";
        addNumbers({lengthGrains(placement.origin.x), lengthGrains(placement.origin.y)});
        text += "cm\n";
    }
    void moveOrigin(Point to) {
        text += "1 0 0 1 ";
        addNumbers({lengthGrains(to.x), lengthGrains(to.y)});
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

// Draws eight Bézier curves, each over the same angle of the circle. Each of the two inner control points of a curve
// lies on the tangent at one end of the curve, 4/3 tan(angle / 4) times the radius from that end.
void Contents::addCircle(const Circle &circle) {
    constexpr int curves = 8;
    constexpr double angle = 6.283185307179586 / curves;
    const double reach = 4.0 / 3.0 * std::tan(angle / 4.0);
    const auto add = [&](int corner, double along) {
        const double x = std::cos(corner * angle);
        const double y = std::sin(corner * angle);
        addNumbers({lengthGrains(circle.centre.x + circle.radius * (x - along * y)),
                    lengthGrains(circle.centre.y + circle.radius * (y + along * x))});
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
    contents.addOperators("f* Q");  // f* fills by the even-odd rule
}

void addText(Contents &contents, const PageText &text) {
    contents.addText(captionText(text.text), text.size, text.start, text.isUpwards);
}

void addCheckBar(Contents &contents, const CheckBar &bar) {
    for (const Rectangle &shape : checkBarShapes(bar)) {
        contents.addRectangle(shape);
    }
    contents.addOperators("f");
    addText(contents, labelOf(bar));
}

}  // namespace

std::string pdfPageContents(const PrintedPage &page) {
    Contents contents(page.paper.height);
    if (page.placement.scale.x != 1.0 || page.placement.scale.y != 1.0) {
        contents.place(page.placement);
    }
    contents.addOperators("0 g");
    PatternGeometry part;
    addPattern(contents, visibleGeometry(page, part), page.patternPlace);
    for (const CheckBar &bar : page.bars) {
        addCheckBar(contents, bar);
    }
    if (!page.lines.empty()) {
        for (const Rectangle &line : page.lines) {
            contents.addRectangle(line);
        }
        contents.addOperators("f");
    }
    for (const PageText &text : page.texts) {
        addText(contents, text);
    }
    return std::move(contents.text);
}

std::string pdfPoints(double mm) {
    std::string text;
    appendLength(text, lengthGrains(mm * pointsPerMm));
    return text;
}

}  // namespace lmlib64
