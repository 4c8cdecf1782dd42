// What the tests of the main window share: reaching its inputs, what an update is expected to call, and answering
// the dialogs it opens.
#pragma once

#include <QApplication>
#include <QMessageBox>
#include <QRegularExpression>
#include <QStringList>
#include <QTimer>
#include <QWidget>
#include <functional>
#include <memory>

#include "tests/scripted_lmlib64/scripted_lmlib64.h"

namespace driven_window {

template <class Widget = QWidget>
Widget *find(const QWidget &window, const char *name) {
    auto *widget = window.findChild<Widget *>(QString::fromLatin1(name));
    if (widget == nullptr) {
        qFatal("The window has no %s of this type", name);
    }
    return widget;
}

inline QStringList recordedCalls() {
    QStringList lines;
    for (const auto &line : scripted_lmlib64::callLines()) {
        lines << QString::fromStdString(line);
    }
    return lines;
}

inline int recordedCount(const QString &beginning) {
    return recordedCalls().filter(QRegularExpression("^" + QRegularExpression::escape(beginning))).size();
}

// Lines with the slot for "$" and the element of "Patterns" for "@".
inline QStringList inSlot(int slot, const QStringList &lines) {
    QStringList filled;
    for (QString line : lines) {
        line.replace(QLatin1Char('@'), QStringLiteral("$/Parameters/Patterns/\\0"));
        filled << line.replace(QLatin1Char('$'), QStringLiteral("/Execute/%1").arg(slot));
    }
    return filled;
}

// Every call of one update, given those that write the pattern; for the 4 x 4 picture of the default script.
inline QStringList updateCalls(int slot, const QStringList &patternWrites) {
    return inSlot(slot, QStringList{"lmLibMakeUniqueItem /Execute", "lmLibSetBool $/Parameters/Encoding true",
                                    "lmLibSetInt $/Parameters/ImageSize 2000"} +
                            patternWrites +
                            QStringList{"lmLibSetString $/Command GenerateCalibrationPattern", "lmLibGetType $/Command",
                                        "lmLibWaitForType $/Command 1 true", "lmLibGetType $/Result/ErrorSymbol",
                                        "lmLibGetBinaryInfo $/Result/Patterns/\\0 width height channelCount isFloat",
                                        "lmLibGetCount $/Result/Patterns/\\0",
                                        "lmLibGetBinary $/Result/Patterns/\\0 16 bytesCopied", "lmLibErase $"});
}

// Runs the action on the next modal dialog of this type once it is open; the action has to close it.
template <class Dialog>
void whenOpened(const std::function<void(Dialog *)> &action) {
    auto *poll = new QTimer(qApp);
    QObject::connect(poll, &QTimer::timeout, poll, [poll, action] {
        if (auto *dialog = qobject_cast<Dialog *>(QApplication::activeModalWidget())) {
            poll->deleteLater();
            poll->stop();
            action(dialog);
        }
    });
    poll->start(1);
}

// Closes the next message box and keeps its text; empty until there was one.
inline std::shared_ptr<QString> closeNextMessageBox() {
    auto text = std::make_shared<QString>();
    whenOpened<QMessageBox>([text](QMessageBox *box) {
        *text = box->text();
        box->accept();
    });
    return text;
}

}  // namespace driven_window
