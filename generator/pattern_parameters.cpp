// Translates the form's values into the parameters of the library's pattern command. The order in which the nodes of a
// pattern are written is fixed, and pattern_parameters_test checks it. For parameters that are not written here, the
// command's defaults are used intentionally.
#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QRadioButton>
#include <QSpinBox>
#include <QTabWidget>

#include "generator/cal_tab_combo_box.h"
#include "generator/main_window.h"
#include "generator/pattern_choices.h"
#include "lmlib/tree_item.h"

namespace {

void appendChoice(QComboBox *comboBox, double millimetres) {
    comboBox->insertItem(comboBox->count(), QString::number(millimetres, 'g', 6) + QStringLiteral("mm"));
}

// The lists are never empty and always have a current item.
template <std::size_t Count>
double choice(const std::array<double, Count> &choices, const QComboBox *comboBox) {
    return choices[static_cast<std::size_t>(comboBox->currentIndex())];
}

}  // namespace

void MainWindow::fillChoiceLists() {
    for (const double gridSpacing : GridSpacingChoices) {
        appendChoice(form.singleGridSpacing, gridSpacing);
        appendChoice(form.assemblyGridSpacing, gridSpacing);
    }
    form.singleGridSpacing->setCurrentIndex(initialGridSpacingIndex);
    form.assemblyGridSpacing->setCurrentIndex(initialGridSpacingIndex);
    for (const double thickness : ThicknessChoices) {
        appendChoice(form.singleThickness, thickness);
    }
    form.singleThickness->setCurrentIndex(initialThicknessIndex);
}

void MainWindow::recomputeDerivedValues() {
    // Each box limits and rounds its value, so values derived from a box use the value that the box shows.
    form.halconGridSpacing->setValue(form.halconOuterSize->value() * 0.125);
    const double halconGridSpacing = form.halconGridSpacing->value();
    form.halconOffsetXMM->setValue(form.halconOffsetXSpacings->value() * halconGridSpacing);
    form.halconOffsetYMM->setValue(form.halconOffsetYSpacings->value() * halconGridSpacing);

    const double gridSpacing = form.flexibleGridSpacing->value();
    form.flexibleOuterWidth->setValue((form.flexibleWidth->value() + 1) * 0.5 * gridSpacing);
    form.flexibleOuterHeight->setValue((form.flexibleHeight->value() + 1) * 0.5 * gridSpacing);
    // A Flexible offset is counted in half grid spacings, a Halcon offset in whole grid spacings.
    const double halfGridSpacing = form.flexibleGridSpacing->value() * 0.5;
    form.flexibleOffsetXMM->setValue(form.flexibleOffsetXSpacings->value() * halfGridSpacing);
    form.flexibleOffsetYMM->setValue(form.flexibleOffsetYSpacings->value() * halfGridSpacing);
}

PatternType MainWindow::currentPatternType() const {
    const auto type = static_cast<PatternType>(form.patternType->currentIndex());
    switch (type) {
        case PatternType::Official:
        case PatternType::Single:
        case PatternType::Flexible:
        case PatternType::Assembly:
        case PatternType::Halcon:
            return type;
    }
    return PatternType::Official;
}

std::int32_t MainWindow::patternCount() const {
    return currentPatternType() == PatternType::Assembly ? form.assemblyNumberOfPatterns->value() : 1;
}

void MainWindow::writePatternParameters(const TreeItem &patternItem, std::int32_t patternIndex) const {
    switch (currentPatternType()) {
        case PatternType::Official:
            writeOfficialPattern(patternItem);
            break;
        case PatternType::Single:
            writeSinglePattern(patternItem);
            break;
        case PatternType::Flexible:
            writeFlexiblePattern(patternItem);
            break;
        case PatternType::Assembly:
            writeAssemblyPattern(patternItem, patternIndex);
            break;
        case PatternType::Halcon:
            writeHalconPattern(patternItem);
            break;
    }
}

void MainWindow::writeOfficialPattern(const TreeItem &patternItem) const {
    if (form.officialPattern->currentIndex() < 0) {
        // The catalogue is empty: nothing is written, so that the user sees the library's error message.
        return;
    }
    patternItem["Type"] = form.officialPattern->currentType();
    patternItem["GridSpacing"] = form.officialPattern->currentGridSpacing();
    patternItem["Thickness"] = form.officialPattern->currentThickness();
    patternItem["Polarity"] = true;
}

void MainWindow::writeSinglePattern(const TreeItem &patternItem) const {
    patternItem["Type"] = "SingleCustom";
    patternItem["GridSpacing"] = choice(GridSpacingChoices, form.singleGridSpacing);
    patternItem["Thickness"] = choice(ThicknessChoices, form.singleThickness);
    patternItem["Polarity"] = form.singlePolarity->isChecked();
}

void MainWindow::writeFlexiblePattern(const TreeItem &patternItem) const {
    patternItem["Type"] = "Flexible";
    patternItem["GridSize"][0] = form.flexibleWidth->value();
    patternItem["GridSize"][1] = form.flexibleHeight->value();
    patternItem["GridSpacing"] = form.flexibleGridSpacing->value();
    patternItem["Offset"][0] = form.flexibleOffsetXMM->value();
    patternItem["Offset"][1] = form.flexibleOffsetYMM->value();
    patternItem["Polarity"] = form.flexiblePolarity->isChecked();
}

void MainWindow::writeAssemblyPattern(const TreeItem &patternItem, std::int32_t patternIndex) const {
    patternItem["Type"] = "Assembly";
    patternItem["AssemblyPattern"] = patternIndex;
    patternItem["GridSpacing"] = choice(GridSpacingChoices, form.assemblyGridSpacing);
    patternItem["Polarity"] = form.assemblyPolarity->isChecked();
}

void MainWindow::writeHalconPattern(const TreeItem &patternItem) const {
    // "Type" is intentionally not written. Without it, the command makes a Halcon-style plate.
    patternItem["GridSpacing"] = form.halconGridSpacing->value();
    if (form.halconEncodeNothing->isChecked()) {
        patternItem["Encoding"] = false;
    } else if (form.halconEncodeSpacing->isChecked()) {
        patternItem["Thickness"] = form.halconThickness->value();
        patternItem["Encoding"] = true;
    } else if (form.halconEncodeOffset->isChecked()) {
        patternItem["Offset"][0] = form.halconOffsetXMM->value();
        patternItem["Offset"][1] = form.halconOffsetYMM->value();
        patternItem["Encoding"] = true;
    }
}
