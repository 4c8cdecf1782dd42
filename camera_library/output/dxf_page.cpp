#include "camera_library/output/dxf_page.h"

#include <array>
#include <cstddef>
#include <string_view>
#include <utility>

#include "camera_library/output/caption_font.h"
#include "camera_library/output/length_text.h"
#include "camera_library/output/pattern_text.h"
#include "camera_library/output/pixel_outlines.h"

namespace lmlib64 {

namespace {

constexpr const char *darkLayer = "DARK";
constexpr const char *outlineLayer = "OUTLINE";
constexpr const char *barLayer = "BARS";
constexpr const char *cutLayer = "CUTS";
constexpr const char *captionLayer = "CAPTIONS";

struct Layer {
    const char *name;
    int colour;  // index in AutoCAD's table of colours
};

constexpr std::array layers{Layer{darkLayer, 7}, Layer{outlineLayer, 1}, Layer{barLayer, 3}, Layer{cutLayer, 6},
                            Layer{captionLayer, 5}};

// Returns the text in ASCII. Of the font's characters beyond ASCII, the multiplication sign becomes an "x" and the
// middle dot a "-". A character that the font does not have becomes a "?".
std::string asciiText(std::string_view utf8) {
    std::string text = captionText(utf8);
    for (char &character : text) {
        const auto code = static_cast<unsigned char>(character);
        character = code < 0x80 ? character : code == lastCaptionCharacter ? 'x' : '-';
    }
    return text;
}

// Writes the groups of a drawing. A group is a code on one line and a value on the next.
class Drawing {
public:
    explicit Drawing(double pageHeightMm) : pageHeight(pageHeightMm) {}

    void add(int code, std::string_view value) { dxf.append(std::to_string(code)).append("\n").append(value) += '\n'; }
    void add(int code, int value) { add(code, std::to_string(value)); }
    void addLength(int code, double mm) {
        dxf.append(std::to_string(code)) += '\n';
        appendLength(dxf, lengthGrains(mm));
        dxf += '\n';
    }
    void addEntity(const char *name, const char *layer) {
        add(0, name);
        add(8, layer);
    }
    // Adds a point of the page. In `point`, y runs down; in the drawing, it runs up.
    void addPoint(const Point &point) {
        addLength(10, point.x);
        addLength(20, pageHeight - point.y);
        add(30, "0");
    }

    void addOutline(const char *layer, const Polygon &corners, const Placement &placement) {
        addEntity("POLYLINE", layer);
        add(66, 1);  // vertices follow
        addZero();
        add(70, 1);  // closed
        for (const Point &corner : corners) {
            addEntity("VERTEX", layer);
            addPoint(placement.at(corner));
        }
        addEntity("SEQEND", layer);
    }

    // A scale that differs in x and y makes the circle an ellipse, which DXF release 12 does not have. A polygon is
    // drawn instead.
    void addCircle(const Circle &circle, const Placement &placement) {
        if (placement.scale.x == placement.scale.y) {
            addEntity("CIRCLE", darkLayer);
            addPoint(placement.at(circle.centre));
            addLength(40, circle.radius * placement.scale.x);
            return;
        }
        constexpr double tolerance = 0.0002;  // mm
        Polygon corners = polygonOfCircle(circle.radius, tolerance);
        for (Point &corner : corners) {
            corner = {circle.centre.x + corner.x, circle.centre.y + corner.y};
        }
        addOutline(darkLayer, corners, placement);
    }

    void addText(const PageText &text, const Placement &placement) {
        addEntity("TEXT", captionLayer);
        addPoint(placement.at(text.start));
        constexpr double capitalsPerSize = 0.729;  // in DXF, the height of a text is that of its capitals
        addLength(40, text.size * capitalsPerSize);
        add(1, asciiText(text.text));
        add(50, text.isUpwards ? 90 : 0);
    }

    std::string take() { return std::move(dxf); }

private:
    void addZero() {
        add(10, "0");
        add(20, "0");
        add(30, "0");
    }

    double pageHeight;
    std::string dxf;
};

void addHeader(Drawing &drawing, const PrintedPage &page) {
    drawing.add(999, asciiText(patternTitle(page.pattern->description)));
    drawing.add(999, libraryName() + "; unit: mm");
    drawing.add(0, "SECTION");
    drawing.add(2, "HEADER");
    drawing.add(9, "$ACADVER");
    drawing.add(1, "AC1009");
    for (const auto &[name, corner] :
         {std::pair{"$EXTMIN", Point{0.0, page.paper.height}}, {"$EXTMAX", {page.paper.width, 0.0}}}) {
        drawing.add(9, name);
        drawing.addPoint(corner);
    }
    drawing.add(0, "ENDSEC");
}

void addTables(Drawing &drawing) {
    drawing.add(0, "SECTION");
    drawing.add(2, "TABLES");
    drawing.add(0, "TABLE");
    drawing.add(2, "LAYER");
    drawing.add(70, static_cast<int>(layers.size()));
    for (const Layer &layer : layers) {
        drawing.add(0, "LAYER");
        drawing.add(2, layer.name);
        drawing.add(70, 0);
        drawing.add(62, layer.colour);
        drawing.add(6, "CONTINUOUS");
    }
    drawing.add(0, "ENDTAB");
    drawing.add(0, "ENDSEC");
}

Polygon cornersOf(const Rectangle &r) {
    return {{r.left, r.top}, {r.right, r.top}, {r.right, r.bottom}, {r.left, r.bottom}};
}

void addPattern(Drawing &drawing, const PrintedPage &page) {
    PatternGeometry part;
    const PatternGeometry &geometry = visibleGeometry(page, part);
    for (const Rectangle &rectangle : geometry.rectangles) {
        drawing.addOutline(darkLayer, cornersOf(rectangle), page.patternPlacement());
    }
    for (const Polygon &polygon : geometry.polygons) {
        drawing.addOutline(darkLayer, polygon, page.patternPlacement());
    }
    for (const Circle &circle : geometry.circles) {
        drawing.addCircle(circle, page.patternPlacement());
    }
    const double zone = geometry.quietZone;
    const Rectangle whole{-zone, -zone, geometry.width + zone, geometry.height + zone};
    const Rectangle outline = page.window.value_or(whole);
    if (outline.left < outline.right) {
        drawing.addOutline(outlineLayer, cornersOf(outline), page.patternPlacement());
    }
}

}  // namespace

std::string dxfPage(const PrintedPage &page, const PatternDocument & /*document*/) {
    Drawing drawing(page.paper.height);
    addHeader(drawing, page);
    addTables(drawing);
    drawing.add(0, "SECTION");
    drawing.add(2, "ENTITIES");
    addPattern(drawing, page);
    for (const CheckBar &bar : page.bars) {
        drawing.addOutline(barLayer, checkBarOutline(bar), page.placement);
        drawing.addText(labelOf(bar), page.placement);
    }
    for (const Rectangle &line : page.lines) {
        drawing.addOutline(cutLayer, cornersOf(line), page.placement);
    }
    for (const PageText &text : page.texts) {
        drawing.addText(text, page.placement);
    }
    drawing.add(0, "ENDSEC");
    drawing.add(0, "EOF");
    return drawing.take();
}

}  // namespace lmlib64
