// The program's tool tip: one window with links that can be clicked; it stays open long enough for the mouse to move
// into it.
//
// It replaces the toolkit's own tool tip. VistrelToolTipHelper handles the events and calls it.
//
// All operations are static. GUI thread only. Positions are global, in pixels. Texts may contain placeholders
// (tooltips/manual_placeholder.h).
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

    // As below, without a rectangle.
    static void showText(const QPoint &position, const QString &text, QWidget *widget = nullptr);

    // Shows the text next to the position. If a tip already shows it for the widget, and the position is in the tip's
    // rectangle or there is no rectangle, nothing changes, not even the display time. An empty text closes a visible
    // tip after 200 ms. The rectangle is in the widget's coordinates.
    static void showText(const QPoint &position, const QString &text, QWidget *widget, const QRect &rect);

    // Closes a visible tip after 200 ms.
    static void hideText();

    static bool isVisible();

    // True if the object is the window of the tip.
    static bool isTipLabel(const QObject *object);

    // The tip's text with placeholders replaced; empty if there is no tip.
    static QString text();

    static QPalette palette();

    // Applies to the existing tip and to all later ones.
    static void setPalette(const QPalette &palette);

    static QFont font();
};
