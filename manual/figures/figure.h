// A figure of the manual: pictures with dimension lines and labels, written as one self-contained SVG file.
//
// Positions and sizes are units of the figure, about a pixel each where there is room; the origin is the top-left
// corner and y runs down. Texts are plain.
#pragma once

#include <QImage>
#include <QPointF>
#include <QRectF>
#include <QSizeF>
#include <QString>

class Figure {
public:
    enum class Anchor { Start, Middle, End };

    // The description is for readers who do not see the figure.
    Figure(QSizeF size, const QString &description);

    void picture(const QImage &image, const QRectF &place);
    void dashedFrame(const QRectF &place);
    void text(QPointF baseLine, const QString &text, Anchor anchor = Anchor::Middle);
    // As text, but in the figure's accent colour.
    void label(QPointF baseLine, const QString &text, Anchor anchor = Anchor::Middle);
    void ring(QPointF centre, double radius);
    void line(QPointF from, QPointF to);
    void arrow(QPointF from, QPointF to);

    // A dimension line at height y between two x, with extension lines from the height `from`, and its label above.
    void dimensionAlongX(double x1, double x2, double y, double from, const QString &text);
    // The same at x between two y, with its label on the side that faces away from `from`.
    void dimensionAlongY(double y1, double y2, double x, double from, const QString &text);

    // What is drawn until end() is turned clockwise around the centre.
    void beginTurned(double degrees, QPointF centre);
    void end();

    // Throws std::runtime_error when the file cannot be written as a whole.
    void write(const QString &fileName) const;

private:
    // Tips at both ends, from inside where there is room and from outside else.
    void arrowsBetween(QPointF from, QPointF to);
    void writeText(QPointF baseLine, const QString &text, Anchor anchor, const char *style);

    QSizeF size;
    QString description;
    QString body;
};
