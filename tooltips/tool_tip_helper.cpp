#include "tooltips/tool_tip_helper.h"

#include <QCursor>
#include <QHelpEvent>
#include <QWidget>
#include <algorithm>

#include "tooltips/custom_tool_tip.h"
#include "tooltips/manual_placeholder.h"

namespace {

constexpr int HoverDelayMilliseconds = 1000;

}  // namespace

VistrelToolTipHelper::VistrelToolTipHelper() {
    setPlaceholderTable({makeManualPlaceholder()});
    connect(&showTimer, SIGNAL(timeout()), this, SLOT(showTimerElapsed()));
    enabled = true;
}

void VistrelToolTipHelper::registerObject(QObject *object, const QString &text) {
    entries.push_back({object, text, false});
    connect(object, &QObject::destroyed, this, [this](const QObject *destroyed) {
        const auto isDestroyed = [destroyed](const ToolTipEntry &entry) { return entry.object == destroyed; };
        entries.erase(std::remove_if(entries.begin(), entries.end(), isDestroyed), entries.end());
    });
}

void VistrelToolTipHelper::setEnabled(bool enable) {
    enabled = enable;
}

bool VistrelToolTipHelper::eventFilter(QObject *object, QEvent *event) {
    if (object == nullptr) {
        return false;
    }
    switch (event->type()) {
        case QEvent::ToolTip:
            showToolTip(object, static_cast<QHelpEvent *>(event)->globalPos());
            return true;
        case QEvent::MouseButtonPress:
        case QEvent::KeyPress:
            QCustomToolTip::hideText();
            return false;
        case QEvent::Enter:
        case QEvent::Leave:
        case QEvent::MouseMove:
            if (ToolTipEntry *entry = findEntry(object)) {
                trackHover(*entry, event->type());
            }
            return false;
        default:
            return false;
    }
}

void VistrelToolTipHelper::showTimerElapsed() {
    const auto isPending = [](const ToolTipEntry &entry) { return entry.pending; };
    const auto entry = std::find_if(entries.begin(), entries.end(), isPending);
    if (entry == entries.end()) {
        return;
    }
    entry->pending = false;
    if (enabled) {
        QCustomToolTip::showText(QCursor::pos(), entry->text, nullptr, QRect());
    }
}

ToolTipEntry *VistrelToolTipHelper::findEntry(const QObject *object) {
    const auto isObject = [object](const ToolTipEntry &entry) { return entry.object == object; };
    const auto entry = std::find_if(entries.begin(), entries.end(), isObject);
    return entry != entries.end() ? &*entry : nullptr;
}

void VistrelToolTipHelper::showToolTip(QObject *object, const QPoint &globalPosition) {
    // Objects that are not widgets can also receive tool-tip events. They have a text only if it is registered.
    auto *widget = qobject_cast<QWidget *>(object);
    QString text = widget != nullptr ? widget->toolTip() : QString();
    if (const ToolTipEntry *entry = findEntry(object)) {
        text = entry->text;
    }
    // An event for a window without a tip, or for the tip itself, leaves a visible tip open.
    if (text.isEmpty() && (object->parent() == nullptr || QCustomToolTip::isTipLabel(object))) {
        return;
    }
    // For any other object without a tip, such as a widget inside a window, showText() gets an empty text and closes a
    // visible tip.
    if (enabled) {
        QCustomToolTip::showText(globalPosition, text, widget, QRect());
    }
}

void VistrelToolTipHelper::trackHover(ToolTipEntry &entry, QEvent::Type type) {
    if (type == QEvent::Leave) {
        showTimer.stop();
        entry.pending = false;
        return;
    }
    if (type == QEvent::Enter) {
        entry.pending = true;
    }
    showTimer.setSingleShot(true);
    showTimer.start(HoverDelayMilliseconds);
}
