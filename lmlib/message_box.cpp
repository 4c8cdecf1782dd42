#include "lmlib/message_box.h"

#include <QApplication>
#include <QClipboard>
#include <QPushButton>
#include <QString>

namespace {

void addStandardButtons(QMessageBox *box, const QList<QMessageBox::StandardButton> &standardButtons) {
    if (standardButtons.isEmpty()) {
        QPushButton *ok = box->addButton(QMessageBox::Ok);
        box->setDefaultButton(ok);
        box->setEscapeButton(ok);
        return;
    }
    for (const QMessageBox::StandardButton button : standardButtons) {
        box->addButton(button);
    }
}

}  // namespace

int showMessageBox(const std::string &text, QMessageBox::Icon icon, const std::string &detailText,
                   const QList<QMessageBox::StandardButton> &standardButtons) {
    const QString message = QString::fromLocal8Bit(text.c_str());
    const QString details = QString::fromLocal8Bit(detailText.c_str());

    QMessageBox box;
    // The library's texts are shown unchanged, even if they look like markup.
    box.setTextFormat(Qt::PlainText);
    box.setText(message);
    box.setDetailedText(details);
    addStandardButtons(&box, standardButtons);
    const QPushButton *copy = box.addButton(QStringLiteral(" Copy to Clipboard "), QMessageBox::ActionRole);
    box.setIcon(icon);

    int result = box.exec();
    while (box.clickedButton() == copy) {
        QApplication::clipboard()->setText(message + QLatin1Char('\n') + details);
        result = box.exec();
    }
    return result;
}
