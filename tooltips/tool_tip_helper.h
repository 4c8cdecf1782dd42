// Sends every tool tip of the application to QCustomToolTip and closes the tip on a press of key or button.
//
// Installed as an event filter on the application object, it takes the toolkit's tool-tip events away and
// lets every other event pass. Objects may also be registered to get a tip after a hover delay of its own,
// for objects to which the toolkit sends no tool-tip event.
//
// GUI thread only. Makes the placeholder table from the camera library's tree, so the library must answer
// when it is made.
#pragma once

#include <QEvent>
#include <QObject>
#include <QString>
#include <QTimer>
#include <vector>

// An object whose tip the helper shows itself.
struct ToolTipEntry {
    // Not owned.
    QObject *object = nullptr;
    QString text;
    // The mouse is in the object and its tip has not been shown yet.
    bool pending = false;
};

class VistrelToolTipHelper : public QObject {
    Q_OBJECT

public:
    VistrelToolTipHelper();

    // Gives the object a tip of this text; it is forgotten when the object is destroyed. The first
    // registration of an object counts.
    void registerObject(QObject *object, const QString &text);

    // While not enabled, tool-tip events are still taken away but no tip is shown. Enabled at first.
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
    // In order of registration.
    std::vector<ToolTipEntry> entries;
    bool enabled = false;
};
