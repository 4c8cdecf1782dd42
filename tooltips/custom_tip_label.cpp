#include "tooltips/custom_tip_label.h"

#include <QApplication>
#include <QFontMetrics>
#include <QMouseEvent>
#include <QPainter>
#include <QScreen>
#include <QStyle>
#include <QStyleHintReturnMask>
#include <QStyleOptionFrame>
#include <QTextDocument>
#include <QTimerEvent>
#include <QWindow>
#include <algorithm>

#include "tooltips/manual_placeholder.h"

namespace {

// Milliseconds until a tip is hidden after a mouse button was used or a window lost the focus.
constexpr int PressHideInterval = 500;
// Milliseconds until a tip is hidden after the mouse left the place that the tip is about, or moved out of a widget.
constexpr int LeaveHideInterval = 10000;

// Returns how long a text is shown, in milliseconds: 10 s, and 40 ms more for each character beyond 100.
int displayTime(int textLength) {
    return 40 * (std::max(0, textLength - 100) + 250);
}

QRect screenGeometry(const QPoint &position, const QWidget *widget) {
    const QWindow *window = widget != nullptr ? widget->windowHandle() : nullptr;
    const QScreen *screen = window != nullptr ? window->screen() : nullptr;
    if (screen == nullptr) {
        screen = QGuiApplication::screenAt(position);
    }
    if (screen == nullptr) {
        screen = QGuiApplication::primaryScreen();
    }
    return screen != nullptr ? screen->geometry() : QRect(position, QSize(0, 0));
}

}  // namespace

QCustomTipLabel *QCustomTipLabel::instance = nullptr;

QPalette &QCustomTipLabel::tipPalette() {
    static QPalette palette;
    return palette;
}

QCustomTipLabel::QCustomTipLabel(const QString &text, QWidget *owner) : QLabel(owner, Qt::ToolTip) {
    const QString substituted = replacePlaceholders(text);
    delete instance;
    instance = this;
    setForegroundRole(QPalette::ToolTipText);
    setBackgroundRole(QPalette::ToolTipBase);
    setPalette(tipPalette());
    // The style must be fully applied before its metrics are used.
    ensurePolished();
    setMargin(1 + style()->pixelMetric(QStyle::PM_ToolTipLabelFrameWidth, nullptr, this));
    setFrameStyle(QFrame::NoFrame);
    setAlignment(Qt::AlignLeft);
    setIndent(1);
    qApp->installEventFilter(this);
    setMouseTracking(true);
    reuseTip(substituted);
    setTextInteractionFlags(Qt::LinksAccessibleByMouse | Qt::LinksAccessibleByKeyboard);
    setOpenExternalLinks(true);
}

QCustomTipLabel::~QCustomTipLabel() {
    instance = nullptr;
}

void QCustomTipLabel::reuseTip(const QString &text) {
    const QString substituted = replacePlaceholders(text);
    setWordWrap(Qt::mightBeRichText(substituted));
    setText(substituted);
    QSize extra(1, 0);
    const QFontMetrics metrics(font());
    // Fonts with these metrics draw one row of pixels below the area of the size hint.
    if (metrics.descent() == 2 && metrics.ascent() >= 11) {
        extra.setHeight(1);
    }
    resize(sizeHint() + extra);
    expireTimer.start(displayTime(substituted.length()), this);
    stopHideTimer();
}

void QCustomTipLabel::setTipRect(QWidget *newWidget, const QRect &newRect) {
    // This intentionally tests the stored rectangle, not the new one.
    if (!rect.isNull() && newWidget == nullptr) {
        qWarning("QCustomToolTip::setTipRect: Cannot pass null widget if rect is set");
        return;
    }
    widget = newWidget;
    rect = newRect;
}

void QCustomTipLabel::placeTip(const QPoint &position, QWidget *placeWidget) {
    const QRect screen = screenGeometry(position, placeWidget);
    const int right = screen.x() + screen.width();
    const int bottom = screen.y() + screen.height();
    QPoint p = position + QPoint(2, 16);
    // If there is no room, the tip goes to the left of the mouse or above it, so that it does not cover the mouse.
    if (p.x() + width() > right) {
        p.rx() -= 4 + width();
    }
    if (p.y() + height() > bottom) {
        p.ry() -= 24 + height();
    }
    // The limits are applied in this order, so that the left and bottom edges of a tip that is larger than the screen
    // are visible.
    p.setY(std::max(p.y(), screen.y()));
    p.setX(std::min(p.x(), right - width()));
    p.setX(std::max(p.x(), screen.x()));
    p.setY(std::min(p.y(), bottom - height()));
    move(p);
}

void QCustomTipLabel::restartHideTimer(int interval, bool force) {
    if (hideTimer.isActive()) {
        if (!force || interval >= hideInterval - hideElapsed.elapsed()) {
            return;
        }
        hideTimer.stop();
    }
    startHideTimer(interval);
}

bool QCustomTipLabel::isTipFor(const QString &text, const QWidget *tipWidget, const QPoint &position) const {
    return this->text() == replacePlaceholders(text) && tipWidget == widget &&
           (rect.isNull() || rect.contains(position));
}

bool QCustomTipLabel::eventFilter(QObject *object, QEvent *event) {
    switch (event->type()) {
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonRelease:
        case QEvent::MouseButtonDblClick:
        case QEvent::WindowDeactivate:
            restartHideTimer(PressHideInterval, true);
            break;
        case QEvent::MouseMove:
            if (object == widget && !rect.isNull() && !rect.contains(static_cast<QMouseEvent *>(event)->pos())) {
                restartHideTimer(LeaveHideInterval, false);
            }
            break;
        case QEvent::Leave:
            restartHideTimer(LeaveHideInterval, false);
            break;
        default:
            break;
    }
    return false;
}

void QCustomTipLabel::timerEvent(QTimerEvent *event) {
    if (event->timerId() != hideTimer.timerId() && event->timerId() != expireTimer.timerId()) {
        return;
    }
    stopHideTimer();
    expireTimer.stop();
    close();
    deleteLater();
}

void QCustomTipLabel::mouseMoveEvent(QMouseEvent *event) {
    // If there is no rectangle, the event is ignored. Intentionally, even the base class does not get it.
    if (rect.isNull()) {
        return;
    }
    const QPoint position = widget != nullptr ? widget->mapFromGlobal(event->globalPos()) : event->globalPos();
    if (!rect.contains(position) && !hideTimer.isActive()) {
        startHideTimer(LeaveHideInterval);
    }
    QLabel::mouseMoveEvent(event);
}

void QCustomTipLabel::paintEvent(QPaintEvent *event) {
    QPainter painter(this);
    QStyleOptionFrame option;
    option.initFrom(this);
    style()->drawPrimitive(QStyle::PE_PanelTipLabel, &option, &painter, this);
    painter.end();
    QLabel::paintEvent(event);
}

void QCustomTipLabel::resizeEvent(QResizeEvent *event) {
    QStyleHintReturnMask mask;
    QStyleOption option;
    option.initFrom(this);
    if (style()->styleHint(QStyle::SH_ToolTip_Mask, &option, this, &mask) != 0) {
        setMask(mask.region);
    }
    QLabel::resizeEvent(event);
}

void QCustomTipLabel::startHideTimer(int interval) {
    hideTimer.start(interval, this);
    hideElapsed.start();
    hideInterval = interval;
}

void QCustomTipLabel::stopHideTimer() {
    hideTimer.stop();
    hideElapsed.invalidate();
    hideInterval = 0;
}
