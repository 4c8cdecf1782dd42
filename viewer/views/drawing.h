// Colours, texts of numbers, and small shapes that the views share.
#pragma once

#include <QColor>
#include <QPainter>
#include <QPalette>
#include <QPointF>
#include <QString>

#include "calibration/calibrate.h"
#include "pattern_reader/pattern_reader.h"

// Distinct for everybody, on light and dark ground; repeats after seven.
QColor patternColour(int index);
QColor gradeColour(calibration::Grade grade);
QColor residualColour();

bool isDark(const QPalette &palette);

// "2241.37 ± 0.12 px": the value to the second digit of its standard deviation.
QString withSigma(double value, double sigma, const QString &unit = {});
// Three significant digits, without an exponent.
QString rounded(double value);

// "0.027 px"
QString pixels(double value);

void drawArrow(QPainter &painter, QPointF from, QPointF to);

// White text on a dark ground, centred at a place, readable on every picture.
void drawLabel(QPainter &painter, QPointF middle, const QString &text);

// "4" for pattern 4 of an assembly, otherwise the kind of the pattern in a word.
QString nameOf(const pattern_reader::PatternReading &reading);
