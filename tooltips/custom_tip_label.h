// The window of a tool tip: shows one text, with live links, and closes itself in time.
//
// It decides neither which text is shown nor when; that is QCustomToolTip's, through which the rest of the
// program uses it.
//
// GUI thread only. At most one label exists: a new one deletes the one before, and a label deletes itself
// when it closes. Its parent is the widget it was made for, so it goes away with that widget at the latest.
// All intervals are milliseconds. Texts may hold placeholders; they are replaced before a text is shown,
// measured or compared.
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
    // The label that exists, or null.
    static QCustomTipLabel *instance;

    // The palette given to every new label; at first the application's palette at the first use.
    static QPalette &tipPalette();

    QCustomTipLabel(const QString &text, QWidget *owner);
    ~QCustomTipLabel() override;

    // Shows the text instead of the present one, fits the size, restarts the display time and drops a
    // close that is due.
    void reuseTip(const QString &text);

    // Makes this the tip of the widget and of a rectangle in the widget's coordinates (null for none).
    // Warns and changes nothing when the label has a rectangle and the widget is null.
    void setTipRect(QWidget *newWidget, const QRect &newRect);

    // Moves the window next to the global position, so that it is on the screen as a whole.
    void placeTip(const QPoint &position, QWidget *placeWidget);

    // Makes the label close after the interval. Without force a close that is due stands; with force it
    // stands when it is due no later.
    void restartHideTimer(int interval, bool force);

    // True when the label shows this text for this widget and a mouse at the position, in the widget's
    // coordinates, has not left the label's rectangle.
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

    // Valid exactly while hideTimer runs, as is an hideInterval other than 0.
    QElapsedTimer hideElapsed;
    int hideInterval = 0;
    QBasicTimer hideTimer;
    QBasicTimer expireTimer;
    // Guarded, since the label outlives it when it was made for another widget.
    QPointer<QWidget> widget;
    // Hides QWidget::rect(), which is meant. In the coordinates of widget.
    QRect rect;
};
