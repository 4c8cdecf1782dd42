#include "tooltips/custom_tool_tip.h"

#include <QApplication>

#include "tooltips/custom_tip_label.h"

namespace {

constexpr int HideInterval = 200;

}  // namespace

void QCustomToolTip::showText(const QPoint &position, const QString &text, QWidget *widget) {
    showText(position, text, widget, QRect());
}

void QCustomToolTip::showText(const QPoint &position, const QString &text, QWidget *widget, const QRect &rect) {
    if (isVisible()) {
        QCustomTipLabel *label = QCustomTipLabel::instance;
        if (text.isEmpty()) {
            label->restartHideTimer(HideInterval, true);
            return;
        }
        const QPoint local = widget != nullptr ? widget->mapFromGlobal(position) : position;
        if (label->isTipFor(text, widget, local)) {
            return;
        }
        label->reuseTip(text);
        label->setTipRect(widget, rect);
        label->placeTip(position, widget);
        return;
    }
    if (text.isEmpty()) {
        return;
    }
    // The label makes itself the instance and deletes itself when it closes.
    auto *label = new QCustomTipLabel(text, widget);
    label->setTipRect(widget, rect);
    label->placeTip(position, widget);
    label->setObjectName(QStringLiteral("qtooltip_label"));
    label->show();
}

void QCustomToolTip::hideText() {
    showText(QPoint(), QString(), nullptr, QRect());
}

bool QCustomToolTip::isVisible() {
    return QCustomTipLabel::instance != nullptr && QCustomTipLabel::instance->isVisible();
}

bool QCustomToolTip::isTipLabel(const QObject *object) {
    return object != nullptr && object == QCustomTipLabel::instance;
}

QString QCustomToolTip::text() {
    return QCustomTipLabel::instance != nullptr ? QCustomTipLabel::instance->text() : QString();
}

QPalette QCustomToolTip::palette() {
    return QCustomTipLabel::tipPalette();
}

void QCustomToolTip::setPalette(const QPalette &palette) {
    QCustomTipLabel::tipPalette() = palette;
    if (QCustomTipLabel::instance != nullptr) {
        QCustomTipLabel::instance->setPalette(palette);
    }
}

QFont QCustomToolTip::font() {
    return QApplication::font("QCustomTipLabel");
}
