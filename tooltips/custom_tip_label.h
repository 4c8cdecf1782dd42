// The window of a tool tip. It shows one text with links that can be clicked, and closes itself after some time.
//
// QCustomToolTip decides which text is shown, and when. The rest of the program uses only QCustomToolTip.
//
// Use a label only on the GUI thread. At most one label exists: a new label deletes the previous one, and a label
// deletes itself when it closes. A label's parent is the widget that the label was made for, so the label is deleted
// with that widget at the latest. All intervals are in milliseconds. Placeholders in a text are replaced before the
// text is shown, measured or compared.
#pragma once

#include <QBasicTimer>
#include <QElapsedTimer>
#include <QLabel>
#include <QPalette>
#include <QPointer>
#include <QRect>

class QCustomTipLabel : public QLabel {
    Q_OBJECT

public:
    // The existing label, or null.
    static QCustomTipLabel *instance;

    // Returns the palette of all new labels. Until it is changed, this is the application's palette at the time of the
    // first call.
    static QPalette &tipPalette();

    QCustomTipLabel(const QString &text, QWidget *owner);
    ~QCustomTipLabel() override;

    // Replaces the text, adapts the size, restarts the display time and cancels a pending close.
    void reuseTip(const QString &text);

    // Sets the widget that the tip belongs to, and the part of the widget to which the tip is limited: a rectangle in
    // the widget's coordinates. A null rectangle sets no such limit. If the label already has a rectangle and the new
    // widget is null, this function warns and changes nothing.
    void setTipRect(QWidget *newWidget, const QRect &newRect);

    // Moves the window next to the global position so that all of it is on the screen. If it is larger than the screen,
    // its left and bottom edges are on the screen. The screen is that of `placeWidget` if that widget is a window of
    // its own; otherwise it is the screen at the position.
    void placeTip(const QPoint &position, QWidget *placeWidget);

    // Closes the label after the interval, unless its display time ends earlier. If the interval of an earlier call
    // still runs, the new one replaces it only if `force` is true and the new one ends earlier.
    void restartHideTimer(int interval, bool force);

    // True if the label shows this text for this widget, and if it either has no rectangle or its rectangle contains
    // the position. The position is in the widget's coordinates.
    bool isTipFor(const QString &text, const QWidget *tipWidget, const QPoint &position) const;

    bool eventFilter(QObject *object, QEvent *event) override;

protected:
    void timerEvent(QTimerEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    friend class CustomToolTipTest;
    friend class ToolTipHelperTest;

    void startHideTimer(int interval);
    void stopHideTimer();

    // `hideElapsed` is valid only while `hideTimer` runs. At other times, `hideInterval` is 0.
    QElapsedTimer hideElapsed;
    int hideInterval = 0;
    QBasicTimer hideTimer;
    QBasicTimer expireTimer;
    // A guarded pointer, because setTipRect can set a widget that is not the label's parent. That widget may be deleted
    // before the label.
    QPointer<QWidget> widget;
    // The rectangle is in the coordinates of `widget`. Its name intentionally hides QWidget::rect().
    QRect rect;
};
