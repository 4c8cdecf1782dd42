// The message box for failures: a text, details that the user can unfold, and a button that copies both to the
// clipboard. Use it only on the GUI thread.
#pragma once

#include <QList>
#include <QMessageBox>
#include <string>

// Shows a modal box without a parent until the user closes it. Returns the value of the standard button that closed the
// box. The texts are in the local 8-bit encoding. If `standardButtons` is empty, the box has an Ok button, which Escape
// also presses. The button " Copy to Clipboard " copies the text, a line feed and the details, and shows the box again.
int showMessageBox(const std::string &text, QMessageBox::Icon icon, const std::string &detailText,
                   const QList<QMessageBox::StandardButton> &standardButtons = {});
