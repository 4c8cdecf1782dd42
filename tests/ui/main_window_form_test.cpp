// Tests the form as the user sees it. main_window_form.txt describes where the widgets are, their ranges, defaults,
// texts and tips, and the order in which the tab key visits them.
#include "ui/main_window_form.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QDoubleSpinBox>
#include <QFile>
#include <QGraphicsView>
#include <QGroupBox>
#include <QLabel>
#include <QMainWindow>
#include <QPushButton>
#include <QSpinBox>
#include <QTabWidget>
#include <QTranslator>
#include <algorithm>

#include "tests/generator/driven_window.h"
#include "tests/scripted_lmlib64/scripted_lmlib64.h"
#include "tests/value_printing.h"

using driven_window::find;

namespace {

template <class Box>
QString describedBox(const Box &box) {
    const QString range = QString(" %1 of %2 to %3").arg(box.text()).arg(box.minimum()).arg(box.maximum());
    return box.objectName() + range + (box.singleStep() == 1 ? QString() : QString(" by %1").arg(box.singleStep()));
}

// Describes a widget in one line of text:
// - A label: its text in quotation marks, then "wrapped" if the text is wrapped, then "right" if it is right-aligned.
// - A button: its name, then "on" if it is checked or "-" if it is not, then its text in quotation marks.
// - A spin box: its name, value and range, then its step unless the step is 1.
// - Any other widget: its name.
// If the widget is disabled, "off" is added at the end.
QString described(const QWidget *widget) {
    QString text = widget->objectName();
    if (const auto *label = qobject_cast<const QLabel *>(widget)) {
        text = '"' + label->text().replace('\n', "\\n") + '"' + (label->wordWrap() ? " wrapped" : "");
        text += label->alignment() == (Qt::AlignRight | Qt::AlignVCenter) ? " right" : "";
    } else if (const auto *button = qobject_cast<const QAbstractButton *>(widget)) {
        text += QString(" %1 \"%2\"").arg(button->isChecked() ? "on" : "-", button->text());
    } else if (const auto *count = qobject_cast<const QSpinBox *>(widget)) {
        text = describedBox(*count);
    } else if (const auto *length = qobject_cast<const QDoubleSpinBox *>(widget)) {
        text = describedBox(*length);
    }
    return widget->isEnabled() ? text : text + " off";
}

// Returns one line for each row of widgets, from top to bottom. A line has its widgets from left to right.
QStringList readInOrder(const QWidget *page) {
    auto widgets = page->findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly);
    constexpr int lineHeight = 12;
    std::sort(widgets.begin(), widgets.end(), [](const QWidget *a, const QWidget *b) {
        const QPoint from = a->geometry().center();
        const QPoint to = b->geometry().center();
        return std::abs(from.y() - to.y()) < lineHeight ? from.x() < to.x() : from.y() < to.y();
    });
    QStringList lines;
    int lastMiddle = -lineHeight;
    for (const QWidget *widget : widgets) {
        const int middle = widget->geometry().center().y();
        if (middle - lastMiddle < lineHeight) {
            lines.last() += " | " + described(widget);
        } else {
            lines << described(widget);
        }
        lastMiddle = middle;
    }
    return lines;
}

class MainWindowFormTest : public testing::Test {
protected:
    MainWindowFormTest() {
        scripted_lmlib64::loadDefaultScript();
        form.setUp(&window);
        window.show();
        pages = find<QTabWidget>(window, "patternType");
    }

    QMainWindow window;
    MainWindowForm form;
    QTabWidget *pages = nullptr;
};

TEST_F(MainWindowFormTest, looksAsDescribed) {
    EXPECT_EQ(pages->currentIndex(), 4);
    QStringList seen{window.objectName() + ": " + window.windowTitle()};
    seen << readInOrder(window.centralWidget());
    for (int page = 0; page < pages->count(); ++page) {
        pages->setCurrentIndex(page);
        QCoreApplication::processEvents();
        seen << "" << pages->tabText(page) + ":" << readInOrder(pages->widget(page));
    }
    QStringList tips{"", "Tool tips of the widgets, and of the text fields inside the spin boxes:"};
    for (const auto *widget : window.findChildren<QWidget *>()) {
        const bool isText = widget->objectName() == "qt_spinbox_lineedit";
        const QString name = isText ? widget->parent()->objectName() + ", text" : widget->objectName();
        if (!widget->toolTip().isEmpty()) {
            tips << name + ": " + widget->toolTip();
        }
    }
    seen << tips << ""
         << "Tab key:";
    const QWidget *widget = find(window, "saveBtn");
    do {
        const QString name = widget->objectName();
        const bool isPartOfAWidget = name.isEmpty() || name.startsWith("qt_") || widget->inherits("QToolButton");
        if ((widget->focusPolicy() & Qt::TabFocus) != 0 && !isPartOfAWidget) {
            seen << name;
        }
        widget = widget->nextInFocusChain();
    } while (widget->objectName() != "saveBtn");

    QFile description(MAIN_WINDOW_FORM_TEXT);
    ASSERT_TRUE(description.open(QIODevice::ReadOnly));
    const QStringList expected = QString::fromUtf8(description.readAll()).trimmed().split('\n');
    ASSERT_EQ(seen.size(), expected.size()) << seen.join('\n').toStdString();
    for (int line = 0; line < seen.size(); ++line) {
        EXPECT_EQ(seen[line], expected[line]) << "line " << line + 1;
    }
}

TEST_F(MainWindowFormTest, hasItsSizesFontsAndColours) {
    EXPECT_EQ(window.size(), QSize(899, 553));
    EXPECT_FALSE(window.windowIcon().pixmap(16, 16).isNull());
    EXPECT_EQ(QImage(":/vistrel/warning-icon-small.png").size(), QSize(32, 32));
    EXPECT_EQ(pages->minimumSize(), QSize(400, 0));
    EXPECT_EQ(pages->sizePolicy().horizontalPolicy(), QSizePolicy::Preferred);
    EXPECT_EQ(pages->sizePolicy().verticalPolicy(), QSizePolicy::Expanding);
    EXPECT_EQ(find<QGroupBox>(window, "groupBox")->title(), "Preview");
    EXPECT_EQ(find<QGraphicsView>(window, "preview")->parentWidget(), find<QGroupBox>(window, "groupBox"));
    EXPECT_EQ(find<QLabel>(window, "label_21")->font().pointSize(), 8);
    const auto *notice = find<QLabel>(window, "label");
    EXPECT_EQ(notice->font().pointSize(), 9);
    EXPECT_EQ(notice->palette().color(QPalette::Active, QPalette::WindowText), QColor(85, 87, 83));
    EXPECT_EQ(notice->palette().color(QPalette::Inactive, QPalette::WindowText), QColor(85, 87, 83));
    for (const auto *box : window.findChildren<QAbstractSpinBox *>()) {
        EXPECT_EQ(box->alignment(), Qt::AlignRight | Qt::AlignVCenter) << qPrintable(box->objectName());
    }
    window.setObjectName("other");
    MainWindowForm().setUp(&window);
    EXPECT_EQ(window.objectName(), "other");
}

// Translates every text of the main window's form by putting it in brackets, so that a text that is not translated
// stands out.
class BracketTranslator : public QTranslator {
public:
    QString translate(const char *context, const char *sourceText, const char *disambiguation, int n) const override {
        const bool isOfTheForm = qstrcmp(context, "MainWindow") == 0 && disambiguation == nullptr && n == -1;
        return isOfTheForm ? '[' + QString::fromUtf8(sourceText) + ']' : QString();
    }
    bool isEmpty() const override { return false; }
};

TEST_F(MainWindowFormTest, retranslatingChangesEveryTextAndNothingElse) {
    find<QSpinBox>(window, "flexibleWidth")->setValue(21);
    find(window, "halconThickness")->setEnabled(false);
    find<QAbstractButton>(window, "singlePolarity")->setChecked(false);
    BracketTranslator translator;
    QCoreApplication::installTranslator(&translator);
    form.retranslate(&window);
    QCoreApplication::removeTranslator(&translator);

    QStringList texts{window.windowTitle()};
    for (int i = 0; i < pages->count(); ++i) {
        texts << pages->tabText(i);
    }
    for (const auto *widget : window.findChildren<QWidget *>()) {
        texts << widget->toolTip() << widget->property("title").toString() << widget->property("suffix").toString();
        if (!widget->inherits("QAbstractSpinBox") && !widget->inherits("QLineEdit")) {
            texts << widget->property("text").toString();
        }
    }
    texts.removeAll(QString());
    // The numbers in the sum below count, in this order: titles, tabs, labels, tool tips, suffixes, push buttons and
    // check boxes together, radio buttons.
    EXPECT_EQ(texts.size(), 2 + 5 + 23 + 8 + 10 + 5 + 3);
    for (const auto &text : texts) {
        EXPECT_TRUE(text.startsWith('[') && text.endsWith(']')) << text.toStdString();
    }
    EXPECT_EQ(find<QSpinBox>(window, "flexibleWidth")->value(), 21);
    EXPECT_FALSE(find(window, "halconThickness")->isEnabled());
    EXPECT_FALSE(find<QAbstractButton>(window, "singlePolarity")->isChecked());
    EXPECT_EQ(pages->currentIndex(), 4);
}

}  // namespace
