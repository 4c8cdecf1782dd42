#include "camera_library/output/svg_page.h"

#include <string_view>
#include <utility>

#include "camera_library/output/length_text.h"
#include "camera_library/output/pattern_json.h"
#include "camera_library/output/pattern_text.h"

namespace lmlib64 {

namespace {

void appendMm(std::string &svg, double mm) {
    appendLength(svg, lengthGrains(mm));
}

void appendEscaped(std::string &svg, std::string_view text) {
    for (const char character : text) {
        switch (character) {
            case '&':
                svg += "&amp;";
                break;
            case '<':
                svg += "&lt;";
                break;
            case '>':
                svg += "&gt;";
                break;
            default:
                svg += character;
        }
    }
}

void appendElement(std::string &svg, const char *name, std::string_view text) {
    svg.append("<").append(name).append(">");
    appendEscaped(svg, text);
    svg.append("</").append(name).append(">\n");
}

// Writes the commands of a path.
class PathData {
public:
    PathData(std::string &svgText, const Placement &shapePlacement) : svg(svgText), placement(shapePlacement) {}

    void add(const Rectangle &rectangle) {
        command('M', {rectangle.left, rectangle.top});
        svg += 'H';
        appendMm(svg, placement.x(rectangle.right));
        svg += 'V';
        appendMm(svg, placement.y(rectangle.bottom));
        svg += 'H';
        appendMm(svg, placement.x(rectangle.left));
        svg += "Z\n";
    }

    void add(const Polygon &polygon) {
        char letter = 'M';
        for (const Point &corner : polygon) {
            command(letter, corner);
            letter = 'L';
        }
        svg += "Z\n";
    }

    void add(const Circle &circle) {
        const Point left{circle.centre.x - circle.radius, circle.centre.y};
        const Point right{circle.centre.x + circle.radius, circle.centre.y};
        command('M', left);
        addHalfCircle(circle.radius, right);
        addHalfCircle(circle.radius, left);
        svg += "Z\n";
    }

private:
    void command(char letter, const Point &to) {
        svg += letter;
        appendMm(svg, placement.x(to.x));
        svg += ' ';
        appendMm(svg, placement.y(to.y));
    }

    void addHalfCircle(double radius, const Point &to) {
        svg += 'A';
        appendMm(svg, radius * placement.scale.x);
        svg += ' ';
        appendMm(svg, radius * placement.scale.y);
        svg += " 0 0 1";
        command(' ', to);
    }

    std::string &svg;
    Placement placement;
};

void addPattern(std::string &svg, const PrintedPage &page) {
    svg += "<path id=\"pattern\" fill-rule=\"evenodd\" d=\"\n";
    PathData path(svg, page.patternPlacement());
    PatternGeometry part;
    const PatternGeometry &geometry = visibleGeometry(page, part);
    for (const Rectangle &rectangle : geometry.rectangles) {
        path.add(rectangle);
    }
    for (const Polygon &polygon : geometry.polygons) {
        path.add(polygon);
    }
    for (const Circle &circle : geometry.circles) {
        path.add(circle);
    }
    svg += "\"/>\n";
}

void addBars(std::string &svg, const PrintedPage &page) {
    svg += "<path id=\"check-bars\" d=\"\n";
    PathData path(svg, page.placement);
    for (const CheckBar &bar : page.bars) {
        path.add(checkBarOutline(bar));
    }
    svg += "\"/>\n";
}

void addLines(std::string &svg, const PrintedPage &page) {
    svg += "<path id=\"cut-lines\" d=\"\n";
    PathData path(svg, page.placement);
    for (const Rectangle &line : page.lines) {
        path.add(line);
    }
    svg += "\"/>\n";
}

// Adds a text. The element states the text's width, so that the text is equally wide in every font.
void addText(std::string &svg, const PageText &text, const Placement &placement) {
    const Point &scale = placement.scale;
    svg += text.isUpwards ? "<text transform=\"translate(" : "<text x=\"";
    appendMm(svg, placement.x(text.start.x));
    svg += text.isUpwards ? " " : "\" y=\"";
    appendMm(svg, placement.y(text.start.y));
    svg += text.isUpwards ? ") rotate(-90)\" font-size=\"" : "\" font-size=\"";
    appendMm(svg, text.size * (text.isUpwards ? scale.x : scale.y));
    svg += "\" textLength=\"";
    appendMm(svg, widthOf(text) * (text.isUpwards ? scale.y : scale.x));
    svg += "\" lengthAdjust=\"spacingAndGlyphs\">";
    appendEscaped(svg, text.text);
    svg += "</text>\n";
}

void addTexts(std::string &svg, const PrintedPage &page) {
    svg += "<g id=\"captions\" font-family=\"DejaVu Sans, Verdana, sans-serif\">\n";
    for (const CheckBar &bar : page.bars) {
        addText(svg, labelOf(bar), page.placement);
    }
    for (const PageText &text : page.texts) {
        addText(svg, text, page.placement);
    }
    svg += "</g>\n";
}

std::string sizeText(const PrintedPage &page, const char *before, const char *between, const char *after) {
    std::string text = before;
    appendMm(text, page.paper.width);
    text += between;
    appendMm(text, page.paper.height);
    return text + after;
}

}  // namespace

std::string svgPage(const PrintedPage &page, const PatternDocument &document) {
    std::string svg = R"(<?xml version="1.0" encoding="UTF-8"?>)"
                      "\n"
                      R"(<svg xmlns="http://www.w3.org/2000/svg" version="1.1")";
    svg += sizeText(page, " width=\"", "mm\" height=\"", "mm\"");
    svg += sizeText(page, " viewBox=\"0 0 ", " ", "\">\n");
    appendElement(svg, "title", patternTitle(page.pattern->description));
    appendElement(svg, "desc", "Drawn by " + libraryName() + "; print or cut it at 100 %.");
    svg += "<metadata id=\"pattern.json\">\n";
    appendEscaped(svg, patternJson(document, *page.pattern));
    svg += "</metadata>\n";
    addPattern(svg, page);
    addBars(svg, page);
    if (!page.lines.empty()) {
        addLines(svg, page);
    }
    addTexts(svg, page);
    svg += "</svg>\n";
    return svg;
}

}  // namespace lmlib64
