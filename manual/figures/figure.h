// A figure of the manual: pictures with dimension lines and labels, written as one self-contained SVG file.
//
// Positions and sizes are in units of the figure, each about one pixel when the figure is shown at full size. The
// origin is the top-left corner and y runs down. Texts are plain text.
#pragma once

#include <QImage>
#include <QPointF>
#include <QRectF>
#include <QSizeF>
#include <QString>

class Figure {
public:
    enum class Anchor { Start, Middle, End };

    // The description is for readers who cannot see the figure.
    Figure(QSizeF size, const QString &description);

    void picture(const QImage &image, const QRectF &place);
    void dashedFrame(const QRectF &place);
    void text(QPointF baseLine, const QString &text, Anchor anchor = Anchor::Middle);
    // Adds a text in the figure's accent colour.
    void label(QPointF baseLine, const QString &text, Anchor anchor = Anchor::Middle);
    void ring(QPointF centre, double radius);
    void line(QPointF from, QPointF to);
    void arrow(QPointF from, QPointF to);

    // Adds a dimension line at height y from x1 to x2. Its extension lines begin at height `from`. The label and
    // the height `from` are on opposite sides of the dimension line.
    void dimensionAlongX(double x1, double x2, double y, double from, const QString &text);
    // Adds a dimension line at x from y1 to y2. Its extension lines begin at x = `from`. The label and the position
    // x = `from` are on opposite sides of the dimension line.
    void dimensionAlongY(double y1, double y2, double x, double from, const QString &text);

    // Everything drawn until end() is turned clockwise around the centre.
    void beginTurned(double degrees, QPointF centre);
    void end();

    // Throws std::runtime_error if the file cannot be written completely.
    void write(const QString &fileName) const;

private:
    // Draws two arrows, one pointing to each end. They lie between the ends if there is room, otherwise outside them.
    void arrowsBetween(QPointF from, QPointF to);
    void writeText(QPointF baseLine, const QString &text, Anchor anchor, const char *style);

    QSizeF size;
    QString description;
    QString body;
};
