// The program's tool tip: one window with live links that waits for the mouse to travel into it.
//
// It stands in for the toolkit's own tool tip, but takes no event itself; VistrelToolTipHelper does.
//
// All operations are static and for the GUI thread. Positions are global, in pixels. Texts may hold
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

    // As below, with no rectangle.
    static void showText(const QPoint &position, const QString &text, QWidget *widget = nullptr);

    // Shows the text next to the position. A tip that shows it already for the widget is left alone, its
    // display time included, while the position is in the tip's rectangle or there is none. An empty text
    // makes a visible tip close after 200 ms. The rectangle is in the widget's coordinates.
    static void showText(const QPoint &position, const QString &text, QWidget *widget, const QRect &rect);

    // Makes a visible tip close after 200 ms.
    static void hideText();

    static bool isVisible();

    // True when the object is the window of the tip.
    static bool isTipLabel(const QObject *object);

    // The text that the tip holds, placeholders replaced; empty when there is no tip.
    static QString text();

    static QPalette palette();

    // Holds for the tip that exists and for all later ones.
    static void setPalette(const QPalette &palette);

    static QFont font();
};
