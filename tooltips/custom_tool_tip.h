// The program's tool tip. It is one window with links that can be clicked. It is shown for 10 s and another 40 ms for
// each character beyond 100, so there is time to reach a link with the mouse. A click anywhere in the program closes it
// after 500 ms.
//
// It replaces the toolkit's own tool tip. VistrelToolTipHelper handles the events and calls this class.
//
// All functions are static. Use them only on the GUI thread. Positions are global, in pixels. Texts may contain
// placeholders (tooltips/manual_placeholder.h).
#pragma once

#include <QFont>
#include <QObject>
#include <QPalette>
#include <QPoint>
#include <QRect>
#include <QString>

class QWidget;

class QCustomToolTip : public QObject {
    Q_OBJECT

public:
    QCustomToolTip() = delete;

    // Does the same as the next function with a null rectangle.
    static void showText(const QPoint &position, const QString &text, QWidget *widget = nullptr);

    // Shows the text next to the position. The rectangle, in the widget's coordinates, is the area that the tip is
    // about. After the mouse has left this area, the tip closes within 10 s. A null rectangle sets no such area. An
    // empty text closes a visible tip after 200 ms. If a tip already shows this text for this widget, and the rectangle
    // of that tip is null or contains the position, the tip stays unchanged: even its display time does not start
    // again.
    static void showText(const QPoint &position, const QString &text, QWidget *widget, const QRect &rect);

    // Closes a visible tip after 200 ms.
    static void hideText();

    static bool isVisible();

    // True if the object is the window of the tip.
    static bool isTipLabel(const QObject *object);

    // Returns the tip's text with placeholders replaced; empty if there is no tip.
    static QString text();

    static QPalette palette();

    // Sets the palette of the existing tip and of all later tips.
    static void setPalette(const QPalette &palette);

    static QFont font();
};
