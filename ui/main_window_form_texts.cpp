// The texts of the main window's form.
#include <QCheckBox>
#include <QCoreApplication>
#include <QDoubleSpinBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QPushButton>
#include <QRadioButton>
#include <QTabWidget>

#include "ui/main_window_form.h"

namespace {

QString translated(const char *text) {
    return QCoreApplication::translate("MainWindow", text);
}

struct LabelText {
    QLabel *label;
    const char *text;
};

template <std::size_t Count>
void setTexts(const LabelText (&texts)[Count]) {
    for (const auto &entry : texts) {
        entry.label->setText(translated(entry.text));
    }
}

template <std::size_t Count>
void setMillimetreSuffix(QDoubleSpinBox *const (&boxes)[Count]) {
    for (auto *box : boxes) {
        box->setSuffix(QCoreApplication::translate("MainWindow", " mm"));
    }
}

// A spin box contains its text field as a separate widget. The mouse is nearly always over the text field, so the field
// needs the tool tip too.
template <std::size_t Count>
void showToolTipOverText(QDoubleSpinBox *const (&boxes)[Count]) {
    for (const QDoubleSpinBox *box : boxes) {
        box->findChild<QLineEdit *>()->setToolTip(box->toolTip());
    }
}

}  // namespace

void MainWindowForm::retranslate(QMainWindow *window) {
    window->setWindowTitle(QCoreApplication::translate("MainWindow", "Generate Calibration Pattern"));
    retranslateButtons();
    label->setText(QCoreApplication::translate(
        "MainWindow",
        "The generated calibration pattern data is provided free of charge to print or otherwise manufacture your own "
        "calibration targets. The targets must only be used with the Vistrel SDK to calibrate cameras, robots or other "
        "movement systems. Under no circumstances does this transfer any rights other than the right of use described "
        "here. In particular you are not allowed to distribute your own calibration targets commercially."));
    retranslateOfficialPage();
    retranslateSinglePage();
    retranslateFlexiblePage();
    retranslateAssemblyPage();
    retranslateHalconPage();
    groupBox->setTitle(QCoreApplication::translate("MainWindow", "Preview"));
}

void MainWindowForm::retranslateButtons() {
    saveBtn->setToolTip(
        QCoreApplication::translate("MainWindow",
                                    "<html><head/><body><p>Saves the pattern into a file. Different formats can be "
                                    "selected in the save dialog.</p></body></html>"));
    saveBtn->setText(QCoreApplication::translate("MainWindow", "Save All Patterns..."));
    calibrateBtn->setToolTip(
        QCoreApplication::translate("MainWindow", "Launch LmView to calibrate a pattern assembly..."));
    calibrateBtn->setText(QCoreApplication::translate("MainWindow", "Calibrate an Assembly Pattern..."));
}

void MainWindowForm::retranslateOfficialPage() {
    label_20->setText(QCoreApplication::translate("MainWindow", "Officially available pattern sizes."));
    patternType->setTabText(patternType->indexOf(tab_3), QCoreApplication::translate("MainWindow", "Official"));
}

void MainWindowForm::retranslateSinglePage() {
    setTexts({
        {label_2,
         QT_TRANSLATE_NOOP("MainWindow",
                           "Patterns of size 15x15 with an encoded grid spacing and thickness. Small patches of the "
                           "pattern can be observed on their own, but the encoded information can only be read when "
                           "observing the whole pattern.")},
        {label_3, QT_TRANSLATE_NOOP("MainWindow", "Grid Spacing")},
        {label_4, QT_TRANSLATE_NOOP("MainWindow", "Thickness")},
    });
    singlePolarity->setText(QCoreApplication::translate("MainWindow", "Polarity"));
    patternType->setTabText(patternType->indexOf(tabWidgetPage2), QCoreApplication::translate("MainWindow", "Custom"));
}

void MainWindowForm::retranslateFlexiblePage() {
    setTexts({
        {label_5, QT_TRANSLATE_NOOP("MainWindow", "Patterns of arbitrary size with an optional offset to the origin.")},
        {label_7, QT_TRANSLATE_NOOP("MainWindow", "Size")},
        {label_10, QT_TRANSLATE_NOOP("MainWindow", "x")},
        {label_15, QT_TRANSLATE_NOOP("MainWindow", "Outer Size")},
        {label_16, QT_TRANSLATE_NOOP("MainWindow", "x")},
        {label_14, QT_TRANSLATE_NOOP("MainWindow", "Grid Spacing")},
        {label_11, QT_TRANSLATE_NOOP("MainWindow", "Encoded Offset")},
        {label_12, QT_TRANSLATE_NOOP("MainWindow", "X")},
        {label_13, QT_TRANSLATE_NOOP("MainWindow", "Y")},
    });
    setMillimetreSuffix(
        {flexibleOuterWidth, flexibleOuterHeight, flexibleGridSpacing, flexibleOffsetXMM, flexibleOffsetYMM});
    flexiblePolarity->setText(QCoreApplication::translate("MainWindow", "Polarity"));
    label_21->setText(QCoreApplication::translate(
        "MainWindow",
        "<html><head/><body>\n<table>\n<tr><td><img src=\":/vistrel/warning-icon-small.png\"/>&nbsp;&nbsp;&nbsp;</td>"
        "<td><p> You can select an arbitrary grid spacing for Flexible patterns. This spacing is, however, not encoded "
        "in the pattern. You need to save it and specify it manually whenever the pattern gets used.</p><p>For common "
        "usages, where the flexibility of the pattern size and the offset is not needed, we therefore recommend using "
        "an official pattern or a pattern of type Single.</p></td></tr>\n</table>\n</body></html>"));
    patternType->setTabText(patternType->indexOf(tab), QCoreApplication::translate("MainWindow", "Flexible"));
}

void MainWindowForm::retranslateAssemblyPage() {
    setTexts({
        {label_17, QT_TRANSLATE_NOOP("MainWindow",
                                     "Patterns of size 15x15 that can be calibrated to a common coordinate system.")},
        {label_18, QT_TRANSLATE_NOOP("MainWindow", "Grid Spacing")},
        {label_19, QT_TRANSLATE_NOOP("MainWindow", "Number of Patterns")},
    });
    assemblyPolarity->setText(QCoreApplication::translate("MainWindow", "Polarity"));
    patternType->setTabText(patternType->indexOf(tab_2), QCoreApplication::translate("MainWindow", "Assembly"));
}

void MainWindowForm::retranslateHalconPage() {
    setTexts({
        {label_22, QT_TRANSLATE_NOOP("MainWindow", "Outer Size")},
        {label_6, QT_TRANSLATE_NOOP("MainWindow", "Grid Spacing")},
        {thicknessLabel_2, QT_TRANSLATE_NOOP("MainWindow", "Thickness")},
        {label_8, QT_TRANSLATE_NOOP("MainWindow", "X")},
        {label_9, QT_TRANSLATE_NOOP("MainWindow", "Y")},
    });
    halconEncodeNothing->setText(QCoreApplication::translate("MainWindow", "Encode no data"));
    halconEncodeSpacing->setText(QCoreApplication::translate("MainWindow", "Encode spacing and thickness"));
    halconEncodeOffset->setText(QCoreApplication::translate("MainWindow", "Encode an offset"));
    halconOuterSize->setToolTip(
        QCoreApplication::translate("MainWindow",
                                    "<html><head/><body><p>Specifies the outer dimension of the border around the "
                                    "pattern.</p></body></html>"));
    // %MANUAL% is replaced only when the tool tip is shown.
    halconGridSpacing->setToolTip(QCoreApplication::translate(
        "MainWindow",
        "<html><head/><body><p>Shows the resulting <a href=\"%MANUAL%/guides/calibration/patterns.html\"><span "
        "style=\" text-decoration: underline; color:#0000ff;\">grid spacing</span></a> for the given outer pattern "
        "dimension.</p></body></html>"));
    halconThickness->setToolTip(
        QCoreApplication::translate("MainWindow",
                                    "<html><head/><body><p>Specifies the pattern thickness to encode.</p></body>"
                                    "</html>"));
    showToolTipOverText({halconOuterSize, halconGridSpacing, halconThickness});
    setMillimetreSuffix({halconOuterSize, halconGridSpacing, halconThickness, halconOffsetXMM, halconOffsetYMM});
    patternType->setTabText(patternType->indexOf(tabWidgetPage1), QCoreApplication::translate("MainWindow", "Halcon"));
}
