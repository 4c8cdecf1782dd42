// Colours, number formats and small shapes that several views use.
#pragma once

#include <QColor>
#include <QPainter>
#include <QPalette>
#include <QPointF>
#include <QPolygonF>
#include <QString>

#include "calibration/calibrate.h"
#include "pattern_reader/pattern_reader.h"

// Returns one of seven colours. Colour-blind people can tell them apart, too, on light and on dark backgrounds. Indices
// from 7 on use the same colours again.
QColor patternColour(int index);
QColor gradeColour(calibration::Grade grade);
QColor residualColour();

bool isDark(const QPalette &palette);

// Returns the value and its standard deviation, as in "2241.37 ± 0.12 px". The standard deviation has two significant
// digits, and the value has the same number of decimals. If the standard deviation is 10 or more, both are rounded to
// whole numbers. If the standard deviation is not positive and finite, returns only the value.
QString withSigma(double value, double sigma, const QString &unit = {});
// Returns the value with three significant digits and without an exponent. All digits before the decimal point are
// kept. Returns a dash if the value is not finite.
QString rounded(double value);

// Returns a text such as "0.027 px".
QString pixels(double value);

// Draws circles around these places, with a line 1.6 units wide. If there are more than 100 circles, their
// middles are rounded to whole pixels, because that is much faster.
void drawCircles(QPainter &painter, const QPolygonF &middles, double radius, const QColor &colour);

void drawArrow(QPainter &painter, QPointF from, QPointF to);

// Draws white text on a dark background, so that it can be read on every picture. The text's centre is at `middle`.
void drawLabel(QPainter &painter, QPointF middle, const QString &text);

// Returns "4" for pattern 4 of an assembly. For any other pattern, returns its kind in one word.
QString nameOf(const pattern_reader::PatternReading &reading);
