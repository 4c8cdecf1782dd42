#include "generator/main_window.h"

#include <QCheckBox>
#include <QDoubleSpinBox>
#include <QGraphicsView>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QTabWidget>

#include "generator/cal_tab_combo_box.h"
#include "lmlib/error_report.h"
#include "lmlib/lm_lib_exception.h"
#include "ui/library_image.h"

MainWindow::MainWindow() {
    form.setUp(this);
    form.preview->setScene(&scene);
    form.patternType->setCurrentIndex(static_cast<int>(PatternType::Official));
    fillChoiceLists();
    connectInputs();
    update();
}

void MainWindow::connectInputs() {
    const struct {
        QObject *sender;
        const char *signal;
        const char *slot;
    } connections[] = {
        {form.patternType, SIGNAL(currentChanged(int)), SLOT(update())},
        {form.officialPattern, SIGNAL(currentIndexChanged(int)), SLOT(update())},
        {form.singleGridSpacing, SIGNAL(currentIndexChanged(int)), SLOT(update())},
        {form.singleThickness, SIGNAL(currentIndexChanged(int)), SLOT(update())},
        {form.singlePolarity, SIGNAL(toggled(bool)), SLOT(update())},
        {form.flexibleWidth, SIGNAL(valueChanged(int)), SLOT(update())},
        {form.flexibleHeight, SIGNAL(valueChanged(int)), SLOT(update())},
        {form.flexibleGridSpacing, SIGNAL(valueChanged(double)), SLOT(update())},
        {form.flexibleOffsetXSpacings, SIGNAL(valueChanged(int)), SLOT(update())},
        {form.flexibleOffsetYSpacings, SIGNAL(valueChanged(int)), SLOT(update())},
        {form.flexiblePolarity, SIGNAL(toggled(bool)), SLOT(update())},
        {form.assemblyGridSpacing, SIGNAL(currentIndexChanged(int)), SLOT(update())},
        {form.assemblyNumberOfPatterns, SIGNAL(valueChanged(int)), SLOT(update())},
        {form.assemblyPolarity, SIGNAL(toggled(bool)), SLOT(update())},
        {form.halconEncodeNothing, SIGNAL(toggled(bool)), SLOT(update())},
        {form.halconEncodeSpacing, SIGNAL(toggled(bool)), SLOT(update())},
        {form.halconEncodeOffset, SIGNAL(toggled(bool)), SLOT(update())},
        {form.halconThickness, SIGNAL(valueChanged(double)), SLOT(update())},
        {form.halconOffsetXSpacings, SIGNAL(valueChanged(int)), SLOT(update())},
        {form.halconOffsetYSpacings, SIGNAL(valueChanged(int)), SLOT(update())},
        {form.halconOuterSize, SIGNAL(valueChanged(double)), SLOT(update())},
        {form.saveBtn, SIGNAL(clicked()), SLOT(savePatterns())},
        {form.calibrateBtn, SIGNAL(clicked()), SLOT(openCalTabCalibration())},
    };
    // The base class QWidget has a slot update(), too. When connect() is given a slot as a string, as here, it searches
    // MainWindow before its base classes. So it finds MainWindow::update().
    for (const auto &connection : connections) {
        connect(connection.sender, connection.signal, this, connection.slot);
    }
}

void MainWindow::update() {
    try {
        enableHalconInputs();
        recomputeDerivedValues();
        generatePreview();
    } catch (const LmLibException &exception) {
        showErrorReport(exception);
    }
}

void MainWindow::enableHalconInputs() {
    // If no data is encoded, the offsets are not passed to the library, but their fields intentionally stay enabled.
    const bool encodesSpacing = form.halconEncodeSpacing->isChecked();
    form.halconThickness->setEnabled(encodesSpacing);
    form.halconOffsetXSpacings->setEnabled(!encodesSpacing);
    form.halconOffsetYSpacings->setEnabled(!encodesSpacing);
}

void MainWindow::resizeEvent(QResizeEvent *event) {
    QMainWindow::resizeEvent(event);
    fitViewToScene(form.preview);
}

void MainWindow::showEvent(QShowEvent * /*event*/) {
    // This only fits the picture into the view again. The base class's showEvent is intentionally not called. The base
    // class's resizeEvent accepts null, because it does not use the event.
    resizeEvent(nullptr);
}
