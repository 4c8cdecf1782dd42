// Drives a main window as a user does: sets its inputs and answers the dialogs that it opens.
#pragma once

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFileDialog>
#include <QGraphicsPixmapItem>
#include <QGraphicsView>
#include <QLineEdit>
#include <QMessageBox>
#include <QSpinBox>
#include <QTabWidget>
#include <QTimer>
#include <QWidget>
#include <functional>
#include <memory>

namespace driven_window {

template <class Widget = QWidget>
Widget *find(const QWidget &window, const char *name) {
    auto *widget = window.findChild<Widget *>(QString::fromLatin1(name));
    if (widget == nullptr) {
        qFatal("The window has no %s of this type", name);
    }
    return widget;
}

// The picture in the preview; null if there is none.
inline QGraphicsPixmapItem *picture(const QWidget &window) {
    const auto items = find<QGraphicsView>(window, "preview")->scene()->items();
    return items.size() == 1 ? qgraphicsitem_cast<QGraphicsPixmapItem *>(items.first()) : nullptr;
}

// Sets an input. For pages and lists, the value is an index. For a button, it is 1 (on) or 0 (off).
inline void setInput(const QWidget &window, const char *name, double value) {
    auto *input = find(window, name);
    if (auto *pages = qobject_cast<QTabWidget *>(input)) {
        pages->setCurrentIndex(static_cast<int>(value));
    } else if (auto *list = qobject_cast<QComboBox *>(input)) {
        list->setCurrentIndex(static_cast<int>(value));
    } else if (auto *count = qobject_cast<QSpinBox *>(input)) {
        count->setValue(static_cast<int>(value));
    } else if (auto *length = qobject_cast<QDoubleSpinBox *>(input)) {
        length->setValue(value);
    } else {
        find<QAbstractButton>(window, name)->setChecked(value != 0.0);
    }
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

// Closes the next message box as soon as it is open. Does not wait for the box. The returned text is empty at first,
// and becomes the text of the box when the box is closed.
inline std::shared_ptr<QString> closeNextMessageBox() {
    auto text = std::make_shared<QString>();
    whenOpened<QMessageBox>([text](QMessageBox *box) {
        *text = box->text();
        box->accept();
    });
    return text;
}

// Calls `look` with the next file dialog. Then types the name into the dialog and accepts it; an empty name cancels the
// dialog.
inline void answerFileDialog(
    const QString &name, const std::function<void(const QFileDialog &)> &look = [](const QFileDialog &) {}) {
    whenOpened<QFileDialog>([name, look](QFileDialog *dialog) {
        look(*dialog);
        if (name.isEmpty()) {
            dialog->reject();
            return;
        }
        dialog->findChild<QLineEdit *>(QStringLiteral("fileNameEdit"))->setText(name);
        QMetaObject::invokeMethod(dialog, "accept");
    });
}

}  // namespace driven_window
