#include "manual/figures/figure.h"

#include <QBuffer>
#include <QSaveFile>
#include <cmath>
#include <stdexcept>

namespace {

constexpr double LabelGap = 8.0;
constexpr double ExtensionOvershoot = 6.0;
constexpr double RoomForArrows = 30.0;

QString number(double value) {
    return QString::number(value, 'f', 2);
}

const char *nameOf(Figure::Anchor anchor) {
    switch (anchor) {
        case Figure::Anchor::Start:
            return "start";
        case Figure::Anchor::End:
            return "end";
        default:
            return "middle";
    }
}

QString base64Png(const QImage &image) {
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return QString::fromLatin1(buffer.data().toBase64());
}

constexpr const char *Head =
    R"(<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 %1 %2" width="%1" height="%2" role="img">
<title>%3</title>
<defs>
<marker id="a" viewBox="0 0 10 10" refX="10" refY="5" markerWidth="9" markerHeight="9" orient="auto"><path d="M0 1.5 10 5 0 8.5z" fill="#0b5cad"/></marker>
</defs>
<style>
text { font: 17px sans-serif; fill: #1d2733; }
text.a { fill: #0b5cad; font-weight: 600; }
path { fill: none; stroke: #0b5cad; stroke-width: 1.5; }
path.e { stroke-width: 1; stroke-opacity: .55; }
circle { fill: none; stroke: #d1570b; stroke-width: 3; }
rect.d { fill: none; stroke: #8a97a6; stroke-dasharray: 5 4; }
</style>
<rect width="%1" height="%2" fill="#fff"/>
)";

}  // namespace

Figure::Figure(QSizeF figureSize, const QString &figureDescription)
    : size(figureSize), description(figureDescription) {}

void Figure::picture(const QImage &image, const QRectF &place) {
    body +=
        QString(
            "<image x=\"%1\" y=\"%2\" width=\"%3\" height=\"%4\" preserveAspectRatio=\"none\" "
            "href=\"data:image/png;base64,%5\"/>\n")
            .arg(number(place.x()), number(place.y()), number(place.width()), number(place.height()), base64Png(image));
}

void Figure::dashedFrame(const QRectF &place) {
    body += QString("<rect class=\"d\" x=\"%1\" y=\"%2\" width=\"%3\" height=\"%4\"/>\n")
                .arg(number(place.x()), number(place.y()), number(place.width()), number(place.height()));
}

void Figure::text(QPointF baseLine, const QString &text, Anchor anchor) {
    writeText(baseLine, text, anchor, "");
}

void Figure::label(QPointF baseLine, const QString &text, Anchor anchor) {
    writeText(baseLine, text, anchor, " class=\"a\"");
}

void Figure::writeText(QPointF baseLine, const QString &text, Anchor anchor, const char *style) {
    body += QString("<text%1 x=\"%2\" y=\"%3\" text-anchor=\"%4\">%5</text>\n")
                .arg(style, number(baseLine.x()), number(baseLine.y()), nameOf(anchor), text.toHtmlEscaped());
}

void Figure::ring(QPointF centre, double radius) {
    body +=
        QString("<circle cx=\"%1\" cy=\"%2\" r=\"%3\"/>\n").arg(number(centre.x()), number(centre.y()), number(radius));
}

void Figure::line(QPointF from, QPointF to) {
    body += QString("<path class=\"e\" d=\"M%1 %2 %3 %4\"/>\n")
                .arg(number(from.x()), number(from.y()), number(to.x()), number(to.y()));
}

void Figure::arrow(QPointF from, QPointF to) {
    body += QString("<path marker-end=\"url(#a)\" d=\"M%1 %2 %3 %4\"/>\n")
                .arg(number(from.x()), number(from.y()), number(to.x()), number(to.y()));
}

void Figure::dimensionAlongX(double x1, double x2, double y, double from, const QString &text) {
    const double beyond = y + (y < from ? -ExtensionOvershoot : ExtensionOvershoot);
    line({x1, from}, {x1, beyond});
    line({x2, from}, {x2, beyond});
    arrowsBetween({x1, y}, {x2, y});
    label({(x1 + x2) / 2.0, y < from ? y - LabelGap : y + LabelGap + 14.0}, text);
}

void Figure::dimensionAlongY(double y1, double y2, double x, double from, const QString &text) {
    const bool isLeft = x < from;
    const double beyond = x + (isLeft ? -ExtensionOvershoot : ExtensionOvershoot);
    line({from, y1}, {beyond, y1});
    line({from, y2}, {beyond, y2});
    arrowsBetween({x, y1}, {x, y2});
    const QPointF place(isLeft ? x - LabelGap : x + LabelGap, (y1 + y2) / 2.0 + 6.0);
    label(place, text, isLeft ? Anchor::End : Anchor::Start);
}

void Figure::arrowsBetween(QPointF from, QPointF to) {
    const QPointF way = to - from;
    const double length = std::hypot(way.x(), way.y());
    if (length >= RoomForArrows) {
        const QPointF middle = (from + to) / 2.0;
        arrow(middle, from);
        arrow(middle, to);
        return;
    }
    const QPointF outside = way / length * RoomForArrows / 2.0;
    arrow(from - outside, from);
    arrow(to + outside, to);
}

void Figure::beginTurned(double degrees, QPointF centre) {
    body +=
        QString("<g transform=\"rotate(%1 %2 %3)\">\n").arg(number(degrees), number(centre.x()), number(centre.y()));
}

void Figure::end() {
    body += "</g>\n";
}

void Figure::write(const QString &fileName) const {
    QSaveFile file(fileName);
    const QString head = QString(Head).arg(size.width()).arg(size.height()).arg(description.toHtmlEscaped());
    const QByteArray bytes = (head + body + "</svg>\n").toUtf8();
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit()) {
        throw std::runtime_error("Cannot write " + fileName.toStdString() + ": " + file.errorString().toStdString());
    }
}
