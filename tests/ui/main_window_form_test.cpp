// The form as the user sees it: where the widgets are, and their ranges, defaults, texts and tips.
#include "ui/main_window_form.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QGraphicsView>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
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

constexpr Qt::Alignment rightCentred = Qt::AlignRight | Qt::AlignVCenter;

// Describes a label by its text in quotation marks, and an input by its name, value and range; adds "off" if the widget
// is disabled.
QString described(const QWidget *widget) {
    QString text = widget->objectName();
    if (const auto *label = qobject_cast<const QLabel *>(widget)) {
        text = '"' + label->text() + '"';
    } else if (const auto *button = qobject_cast<const QAbstractButton *>(widget)) {
        text += QString(" %1 \"%2\"").arg(button->isChecked() ? "on" : "-", button->text());
    } else if (const auto *count = qobject_cast<const QSpinBox *>(widget)) {
        text += QString(" %1 of %2 to %3").arg(count->text()).arg(count->minimum()).arg(count->maximum());
        text += count->singleStep() == 1 ? QString() : QString(" by %1").arg(count->singleStep());
    } else if (const auto *length = qobject_cast<const QDoubleSpinBox *>(widget)) {
        text += QString(" %1 of %2 to %3").arg(length->text()).arg(length->minimum()).arg(length->maximum());
        text += length->singleStep() == 1 ? QString() : QString(" by %1").arg(length->singleStep());
    }
    return widget->isEnabled() ? text : text + " off";
}

// One line for each row of widgets, from top to bottom; within a line, the widgets from left to right.
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

    QStringList page(int index) {
        pages->setCurrentIndex(index);
        QCoreApplication::processEvents();
        return readInOrder(pages->widget(index));
    }

    QMainWindow window;
    MainWindowForm form;
    QTabWidget *pages = nullptr;
};

TEST_F(MainWindowFormTest, windowHasSizeTitleIconAndHalconInFront) {
    EXPECT_EQ(window.objectName(), "MainWindow");
    EXPECT_EQ(window.size(), QSize(899, 553));
    EXPECT_EQ(window.windowTitle(), "Generate Calibration Pattern");
    EXPECT_FALSE(window.windowIcon().pixmap(16, 16).isNull());
    EXPECT_EQ(pages->currentIndex(), 4);
    QMainWindow other;
    other.setObjectName("other");
    MainWindowForm().setUp(&other);
    EXPECT_EQ(other.objectName(), "other");
}

TEST_F(MainWindowFormTest, buttonsStandAboveTheNoticeAndThePagesBesideThePreview) {
    const QStringList lines = readInOrder(window.centralWidget());
    ASSERT_EQ(lines.size(), 3);
    EXPECT_EQ(lines[0], "saveBtn - \"Save All Patterns...\" | calibrateBtn - \"Calibrate an Assembly Pattern...\"");
    EXPECT_EQ(lines[1],
              "\"The generated calibration pattern data is provided free of charge to print or otherwise manufacture "
              "your own calibration targets. The targets must only be used with the Vistrel SDK to calibrate cameras, "
              "robots or other movement systems. Under no circumstances does this transfer any rights other than the "
              "right of use described here. In particular you are not allowed to distribute your own calibration "
              "targets commercially.\"");
    EXPECT_EQ(lines[2], "patternType | groupBox");
    EXPECT_EQ(find<QGroupBox>(window, "groupBox")->title(), "Preview");
    EXPECT_EQ(find<QGraphicsView>(window, "preview")->parentWidget(), find<QGroupBox>(window, "groupBox"));
}

TEST_F(MainWindowFormTest, legalNoticeIsSmallAndGrey) {
    const auto *notice = find<QLabel>(window, "label");
    EXPECT_EQ(notice->font().pointSize(), 9);
    EXPECT_EQ(notice->palette().color(QPalette::Active, QPalette::WindowText), QColor(85, 87, 83));
    EXPECT_EQ(notice->palette().color(QPalette::Inactive, QPalette::WindowText), QColor(85, 87, 83));
}

TEST_F(MainWindowFormTest, pagesShowTheirInputsWithRangesAndDefaults) {
    QStringList titles;
    for (int i = 0; i < pages->count(); ++i) {
        titles << pages->tabText(i);
    }
    EXPECT_EQ(titles, (QStringList{"Official", "Custom", "Flexible", "Assembly", "Halcon"}));
    EXPECT_EQ(page(0), (QStringList{"\"Officially available pattern sizes.\"", "officialPattern"}));
    EXPECT_EQ(page(1), (QStringList{"\"Patterns of size 15x15 with an encoded grid spacing and thickness. Small "
                                    "patches of the pattern can be observed on their own, but the encoded information "
                                    "can only be read when observing the whole pattern.\"",
                                    "\"Grid Spacing\" | singleGridSpacing", "\"Thickness\" | singleThickness",
                                    "singlePolarity on \"Polarity\""}));
    EXPECT_EQ(
        page(2),
        (QStringList{"\"Patterns of arbitrary size with an optional offset to the origin.\"",
                     "\"<html><head/><body>\n<table>\n<tr><td><img "
                     "src=\":/vistrel/warning-icon-small.png\"/>&nbsp;&nbsp;&nbsp;</td><td><p> You can select an "
                     "arbitrary grid spacing for Flexible patterns. This spacing is, however, not encoded in the "
                     "pattern. You need to save it and specify it manually whenever the pattern gets used.</p><p>For "
                     "common usages, where the flexibility of the pattern size and the offset is not needed, we "
                     "therefore recommend using an official pattern or a pattern of type "
                     "Single.</p></td></tr>\n</table>\n</body></html>\"",
                     "\"Size\" | flexibleWidth 15 of 5 to 91 by 2 | \"x\" | flexibleHeight 15 of 5 to 91 by 2",
                     "\"Outer Size\" | flexibleOuterWidth 100.00 mm of 5 to 1000 off | \"x\" | flexibleOuterHeight "
                     "100.00 mm of 5 to 1000 off",
                     "\"Grid Spacing\" | flexibleGridSpacing 12.50 mm of 0 to 99.99", "\"Encoded Offset\"",
                     "\"X\" | flexibleOffsetXSpacings 0 of -90 to 90 | flexibleOffsetXMM 0.00 mm of -9999 to 9999 off",
                     "\"Y\" | flexibleOffsetYSpacings 0 of -90 to 90 | flexibleOffsetYMM 0.00 mm of -9999 to 9999 off",
                     "flexiblePolarity on \"Polarity\""}));
    EXPECT_EQ(page(3), (QStringList{"\"Patterns of size 15x15 that can be calibrated to a common coordinate system.\"",
                                    "\"Grid Spacing\" | assemblyGridSpacing",
                                    "\"Number of Patterns\" | assemblyNumberOfPatterns 5 of 2 to 18",
                                    "assemblyPolarity on \"Polarity\""}));
    EXPECT_EQ(page(4),
              (QStringList{
                  "\"Outer Size\" | halconOuterSize 100.00 mm of 5 to 1000",
                  "\"Grid Spacing\" | halconGridSpacing 0.00 mm of 0 to 10000 off",
                  "halconEncodeNothing - \"Encode no data\"", "halconEncodeSpacing on \"Encode spacing and thickness\"",
                  "\"Thickness\" | halconThickness 0.00 mm of 0 to 100", "halconEncodeOffset - \"Encode an offset\"",
                  "\"X\" | halconOffsetXSpacings 0 of -128 to 127 | halconOffsetXMM 0.00 mm of 0 to 1000 off",
                  "\"Y\" | halconOffsetYSpacings 0 of -128 to 127 | halconOffsetYMM 0.00 mm of 0 to 1000 off"}));
}

TEST_F(MainWindowFormTest, longTextsWrapAndNumbersStandAtTheRight) {
    EXPECT_EQ(QImage(":/vistrel/warning-icon-small.png").size(), QSize(32, 32));
    EXPECT_EQ(find<QLabel>(window, "label_21")->font().pointSize(), 8);
    for (const QLabel *label : window.findChildren<QLabel *>()) {
        EXPECT_EQ(label->wordWrap(), label->text().size() > 40) << qPrintable(label->text());
        EXPECT_EQ(label->alignment() == rightCentred, label->text() == "X" || label->text() == "Y");
    }
    for (const auto *box : window.findChildren<QAbstractSpinBox *>()) {
        EXPECT_EQ(box->alignment(), rightCentred) << qPrintable(box->objectName());
    }
}

TEST_F(MainWindowFormTest, widerWindowGivesItsRoomToThePreview) {
    const int width = pages->width();
    EXPECT_EQ(pages->minimumWidth(), 400);
    const int preview = find(window, "preview")->width();
    window.resize(window.width() + 300, window.height());
    QCoreApplication::processEvents();
    EXPECT_GT(find(window, "preview")->width() - preview, pages->width() - width);
}

TEST_F(MainWindowFormTest, toolTipsShowOverTheTextOfASpinBoxToo) {
    const auto paragraph = [](const QString &text) { return "<html><head/><body><p>" + text + "</p></body></html>"; };
    const QMap<QString, QString> tips{
        {"saveBtn", paragraph("Saves the pattern into a file. Different formats can be selected in the save dialog.")},
        {"calibrateBtn", "Launch LmView to calibrate a pattern assembly..."},
        {"halconOuterSize", paragraph("Specifies the outer dimension of the border around the pattern.")},
        {"halconGridSpacing",
         paragraph("Shows the resulting <a href=\"%MANUAL%/guides/calibration/patterns.html\"><span style=\" "
                   "text-decoration: underline; color:#0000ff;\">grid spacing</span></a> for the given outer pattern "
                   "dimension.")},
        {"halconThickness", paragraph("Specifies the pattern thickness to encode.")}};
    int tipCount = 0;
    for (const auto *widget : window.findChildren<QWidget *>()) {
        const bool isText = widget->objectName() == "qt_spinbox_lineedit";
        EXPECT_EQ(widget->toolTip(), tips.value((isText ? widget->parent() : widget)->objectName()));
        tipCount += widget->toolTip().isEmpty() ? 0 : 1;
    }
    EXPECT_EQ(tipCount, 5 + 3);
}

// Returns every text in brackets, so that a text that is not translated stands out.
class BracketTranslator : public QTranslator {
public:
    QString translate(const char *context, const char *sourceText, const char *disambiguation, int n) const override {
        if (qstrcmp(context, "MainWindow") != 0 || disambiguation != nullptr || n != -1) {
            return {};
        }
        return QLatin1Char('[') + QString::fromUtf8(sourceText) + QLatin1Char(']');
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

    QStringList texts{window.windowTitle(), find<QGroupBox>(window, "groupBox")->title()};
    for (int i = 0; i < pages->count(); ++i) {
        texts << pages->tabText(i);
    }
    for (const auto *label : window.findChildren<QLabel *>()) {
        texts << label->text();
    }
    for (const auto *button : window.findChildren<QAbstractButton *>()) {
        texts << button->text();  // the arrows beside the tabs have none
    }
    for (const auto *box : window.findChildren<QDoubleSpinBox *>()) {
        texts << box->suffix();
    }
    for (const auto *widget : window.findChildren<QWidget *>()) {
        texts << widget->toolTip();
    }
    texts.removeAll(QString());
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
