// The window of a tool tip: shows one text with links that can be clicked, and closes itself after some time.
//
// QCustomToolTip decides which text is shown and when; the rest of the program uses that class.
//
// GUI thread only. At most one label exists: a new one deletes the previous one, and a label deletes itself when it
// closes. Its parent is the widget that it was made for, so it is deleted with that widget at the latest. All intervals
// are in milliseconds. Placeholders in a text are replaced before the text is shown, measured or compared.
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

    // The palette of every new label; initially the palette that the application has at the first use.
    static QPalette &tipPalette();

    QCustomTipLabel(const QString &text, QWidget *owner);
    ~QCustomTipLabel() override;

    // Replaces the text, adapts the size, restarts the display time and cancels a pending close.
    void reuseTip(const QString &text);

    // Makes this the tip of the widget and of a rectangle in the widget's coordinates (null for none). If the label has
    // a rectangle and the widget is null, this warns and changes nothing.
    void setTipRect(QWidget *newWidget, const QRect &newRect);

    // Moves the window next to the global position so that all of it is on the screen.
    void placeTip(const QPoint &position, QWidget *placeWidget);

    // Closes the label after the interval. Without force, keeps a pending close; with force, keeps it only if it comes
    // no later than the new one would.
    void restartHideTimer(int interval, bool force);

    // True if the label shows this text for this widget, and either has no rectangle or the position, in the widget's
    // coordinates, is in it.
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

    // Valid only while hideTimer runs; hideInterval is 0 otherwise.
    QElapsedTimer hideElapsed;
    int hideInterval = 0;
    QBasicTimer hideTimer;
    QBasicTimer expireTimer;
    // A guarded pointer: a label that was made for another widget may outlive this one.
    QPointer<QWidget> widget;
    // In the coordinates of widget. Intentionally hides QWidget::rect().
    QRect rect;
};
