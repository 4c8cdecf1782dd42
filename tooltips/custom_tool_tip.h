// The program's tool tip. It is one window with links that can be clicked, and it stays open long enough for the mouse
// to reach it.
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

    // Shows the text next to the position. The rectangle, in the widget's coordinates, limits the tip: when the mouse
    // has left the rectangle, the tip closes after 10 s at the latest. A null rectangle sets no limit. An empty text
    // closes a visible tip after 200 ms. A tip that already shows the text for this widget stays unchanged if it has no
    // rectangle, or if its rectangle contains the position. Even its display time does not start again.
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
