// Shows every tool tip of the application with QCustomToolTip, and closes the tip when a key or a mouse button is
// pressed.
//
// Install it as an event filter on the application object. It consumes the toolkit's tool-tip events and lets all other
// events pass. Objects to which the toolkit sends no tool-tip events can be registered; the helper then shows their
// tips after its own hover delay.
//
// Use it only on the GUI thread. The constructor reads the camera library's tree to make the placeholder table, so the
// library must be ready before.
#pragma once

#include <QEvent>
#include <QObject>
#include <QString>
#include <QTimer>
#include <vector>

// An object whose tip the helper shows itself.
struct ToolTipEntry {
    // The entry does not own the object.
    QObject *object = nullptr;
    QString text;
    // True if the mouse is in the object and the object's tip has not been shown yet.
    bool pending = false;
};

class VistrelToolTipHelper : public QObject {
    Q_OBJECT

public:
    VistrelToolTipHelper();

    // Gives the object a tip with this text until the object is destroyed. Registering an object again has no effect.
    void registerObject(QObject *object, const QString &text);

    // While disabled, tool-tip events are still consumed but no tip is shown. The helper is enabled at first.
    void setEnabled(bool enable);

    bool eventFilter(QObject *object, QEvent *event) override;

private slots:
    void showTimerElapsed();

private:
    friend class ToolTipHelperTest;

    ToolTipEntry *findEntry(const QObject *object);
    void showToolTip(QObject *object, const QPoint &globalPosition);
    void trackHover(ToolTipEntry &entry, QEvent::Type type);

    QTimer showTimer;
    // The entries are in the order of registration.
    std::vector<ToolTipEntry> entries;
    bool enabled = false;
};
