// Prints Qt's values when a comparison fails. GoogleTest finds these functions by the types of the values.
#pragma once

#include <QPoint>
#include <QRect>
#include <QSize>
#include <QString>
#include <ostream>

inline void PrintTo(const QString &text, std::ostream *stream) {
    *stream << '"' << text.toStdString() << '"';
}

inline void PrintTo(const QPoint &point, std::ostream *stream) {
    *stream << '(' << point.x() << ", " << point.y() << ')';
}

inline void PrintTo(const QSize &size, std::ostream *stream) {
    *stream << size.width() << " x " << size.height();
}

inline void PrintTo(const QRect &rect, std::ostream *stream) {
    PrintTo(rect.size(), stream);
    *stream << " at ";
    PrintTo(rect.topLeft(), stream);
}
