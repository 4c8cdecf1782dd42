#include "ui/main_window_form.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QGraphicsView>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QMainWindow>
#include <QPushButton>
#include <QRadioButton>
#include <QSpacerItem>
#include <QSpinBox>
#include <QTabWidget>
#include <QVBoxLayout>

#include "generator/cal_tab_combo_box.h"

// The resources are in a static library; the linker would leave out their initialiser if nothing called it.
static void initialiseResources() {
    Q_INIT_RESOURCE(vistrel);
}

namespace {

constexpr Qt::Alignment rightCentred = Qt::AlignRight | Qt::AlignVCenter;

template <class Object, class... Arguments>
Object *create(const char *name, Arguments... arguments) {
    auto *object = new Object(arguments...);
    object->setObjectName(QString::fromLatin1(name));
    return object;
}

QLabel *createWrappedLabel(const char *name, QWidget *parent) {
    auto *label = create<QLabel>(name, parent);
    label->setWordWrap(true);
    return label;
}

QLabel *createAxisLabel(const char *name, QWidget *parent) {
    auto *label = create<QLabel>(name, parent);
    label->setAlignment(rightCentred);
    label->setIndent(5);
    return label;
}

QSpinBox *createCountBox(const char *name, QWidget *parent, int minimum, int maximum) {
    auto *box = create<QSpinBox>(name, parent);
    box->setAlignment(rightCentred);
    box->setRange(minimum, maximum);
    return box;
}

QDoubleSpinBox *createLengthBox(const char *name, QWidget *parent) {
    auto *box = create<QDoubleSpinBox>(name, parent);
    box->setAlignment(rightCentred);
    return box;
}

// Makes a box for a length that the program computes and the user cannot edit.
QDoubleSpinBox *createLengthDisplay(const char *name, QWidget *parent) {
    auto *box = createLengthBox(name, parent);
    box->setEnabled(false);
    return box;
}

QSpacerItem *createVerticalSpacer(int height = 40) {
    return new QSpacerItem(20, height, QSizePolicy::Minimum, QSizePolicy::Expanding);
}

void setFontSize(QWidget *widget, int pointSize) {
    QFont font;
    font.setPointSize(pointSize);
    widget->setFont(font);
}

}  // namespace

void MainWindowForm::setUp(QMainWindow *window) {
    initialiseResources();
    setUpWindow(window);
    setUpButtons();
    setUpLegalNotice();
    horizontalLayout_3 = create<QHBoxLayout>("horizontalLayout_3");
    verticalLayout_3->addLayout(horizontalLayout_3);
    setUpPatternType();
    setUpPreview();
    window->setCentralWidget(centralwidget);
    retranslate(window);
    patternType->setCurrentIndex(4);
    QMetaObject::connectSlotsByName(window);
}

void MainWindowForm::setUpWindow(QMainWindow *window) {
    if (window->objectName().isEmpty()) {
        window->setObjectName(QStringLiteral("MainWindow"));
    }
    window->resize(899, 553);
    QIcon icon;
    icon.addFile(QStringLiteral(":/vistrel/vistrel.png"), QSize(), QIcon::Normal, QIcon::Off);
    window->setWindowIcon(icon);
    centralwidget = create<QWidget>("centralwidget", window);
    verticalLayout_3 = create<QVBoxLayout>("verticalLayout_3", centralwidget);
}

void MainWindowForm::setUpButtons() {
    horizontalLayout = create<QHBoxLayout>("horizontalLayout");
    verticalLayout_3->addLayout(horizontalLayout);
    saveBtn = create<QPushButton>("saveBtn", centralwidget);
    horizontalLayout->addWidget(saveBtn);
    calibrateBtn = create<QPushButton>("calibrateBtn", centralwidget);
    horizontalLayout->addWidget(calibrateBtn);
    buttonsSpacer = new QSpacerItem(40, 20, QSizePolicy::Expanding, QSizePolicy::Minimum);
    horizontalLayout->addItem(buttonsSpacer);
}

void MainWindowForm::setUpLegalNotice() {
    label = createWrappedLabel("label", centralwidget);
    const QBrush noticeBrush(QColor(85, 87, 83, 255), Qt::SolidPattern);
    const QBrush disabledBrush(QColor(190, 190, 190, 255), Qt::SolidPattern);
    QPalette palette;
    palette.setBrush(QPalette::Active, QPalette::WindowText, noticeBrush);
    palette.setBrush(QPalette::Inactive, QPalette::WindowText, noticeBrush);
    palette.setBrush(QPalette::Disabled, QPalette::WindowText, disabledBrush);
    label->setPalette(palette);
    setFontSize(label, 9);
    verticalLayout_3->addWidget(label);
}

void MainWindowForm::setUpPatternType() {
    patternType = create<QTabWidget>("patternType", centralwidget);
    QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Expanding);
    policy.setHorizontalStretch(0);
    policy.setVerticalStretch(0);
    policy.setHeightForWidth(patternType->sizePolicy().hasHeightForWidth());
    patternType->setSizePolicy(policy);
    patternType->setMinimumSize(400, 0);
    horizontalLayout_3->addWidget(patternType);
    // The order matters: the index of a page is the number of its PatternType (generator/pattern_choices.h).
    setUpOfficialPage();
    setUpSinglePage();
    setUpFlexiblePage();
    setUpAssemblyPage();
    setUpHalconPage();
}

void MainWindowForm::setUpOfficialPage() {
    tab_3 = create<QWidget>("tab_3", patternType);
    verticalLayout_2 = create<QVBoxLayout>("verticalLayout_2", tab_3);
    label_20 = create<QLabel>("label_20", tab_3);
    verticalLayout_2->addWidget(label_20);
    officialPattern = create<CalTabComboBox>("officialPattern", tab_3);
    verticalLayout_2->addWidget(officialPattern);
    officialSpacer = createVerticalSpacer();
    verticalLayout_2->addItem(officialSpacer);
    patternType->addTab(tab_3, QString());
}

void MainWindowForm::setUpSinglePage() {
    tabWidgetPage2 = create<QWidget>("tabWidgetPage2", patternType);
    gridLayout_3 = create<QGridLayout>("gridLayout_3", tabWidgetPage2);
    label_2 = createWrappedLabel("label_2", tabWidgetPage2);
    gridLayout_3->addWidget(label_2, 0, 0, 1, 2);
    label_3 = create<QLabel>("label_3", tabWidgetPage2);
    gridLayout_3->addWidget(label_3, 1, 0);
    singleGridSpacing = create<QComboBox>("singleGridSpacing", tabWidgetPage2);
    gridLayout_3->addWidget(singleGridSpacing, 1, 1);
    label_4 = create<QLabel>("label_4", tabWidgetPage2);
    gridLayout_3->addWidget(label_4, 2, 0);
    singleThickness = create<QComboBox>("singleThickness", tabWidgetPage2);
    gridLayout_3->addWidget(singleThickness, 2, 1);
    singlePolarity = create<QCheckBox>("singlePolarity", tabWidgetPage2);
    singlePolarity->setChecked(true);
    gridLayout_3->addWidget(singlePolarity, 3, 0, 1, 2);
    singleSpacer = createVerticalSpacer();
    gridLayout_3->addItem(singleSpacer, 4, 0);
    patternType->addTab(tabWidgetPage2, QString());
}

void MainWindowForm::setUpFlexiblePage() {
    tab = create<QWidget>("tab", patternType);
    gridLayout = create<QGridLayout>("gridLayout", tab);
    gridLayout->setColumnStretch(0, 1);
    label_5 = createWrappedLabel("label_5", tab);
    gridLayout->addWidget(label_5, 0, 0, 1, 4);
    label_21 = createWrappedLabel("label_21", tab);
    setFontSize(label_21, 8);
    gridLayout->addWidget(label_21, 1, 0, 1, 4);
    setUpFlexibleSize();
    setUpFlexibleOffset();
    flexiblePolarity = create<QCheckBox>("flexiblePolarity", tab);
    flexiblePolarity->setChecked(true);
    gridLayout->addWidget(flexiblePolarity, 8, 0, 1, 4);
    flexibleSpacer = createVerticalSpacer();
    gridLayout->addItem(flexibleSpacer, 9, 0);
    patternType->addTab(tab, QString());
}

void MainWindowForm::setUpFlexibleSize() {
    label_7 = create<QLabel>("label_7", tab);
    gridLayout->addWidget(label_7, 2, 0);
    flexibleWidth = createCountBox("flexibleWidth", tab, 5, 91);
    gridLayout->addWidget(flexibleWidth, 2, 1);
    label_10 = create<QLabel>("label_10", tab);
    gridLayout->addWidget(label_10, 2, 2);
    flexibleHeight = createCountBox("flexibleHeight", tab, 5, 91);
    gridLayout->addWidget(flexibleHeight, 2, 3);
    for (auto *box : {flexibleWidth, flexibleHeight}) {
        box->setSingleStep(2);
        box->setValue(15);
    }
    label_15 = create<QLabel>("label_15", tab);
    gridLayout->addWidget(label_15, 3, 0);
    flexibleOuterWidth = createLengthDisplay("flexibleOuterWidth", tab);
    gridLayout->addWidget(flexibleOuterWidth, 3, 1);
    label_16 = create<QLabel>("label_16", tab);
    gridLayout->addWidget(label_16, 3, 2);
    flexibleOuterHeight = createLengthDisplay("flexibleOuterHeight", tab);
    gridLayout->addWidget(flexibleOuterHeight, 3, 3);
    for (auto *box : {flexibleOuterWidth, flexibleOuterHeight}) {
        box->setRange(5.0, 1000.0);
        box->setValue(100.0);
    }
    label_14 = create<QLabel>("label_14", tab);
    gridLayout->addWidget(label_14, 4, 0);
    // This box intentionally keeps the toolkit's default maximum of 99.99 mm.
    flexibleGridSpacing = createLengthBox("flexibleGridSpacing", tab);
    flexibleGridSpacing->setValue(12.5);
    gridLayout->addWidget(flexibleGridSpacing, 4, 1, 1, 3);
}

void MainWindowForm::setUpFlexibleOffset() {
    label_11 = create<QLabel>("label_11", tab);
    gridLayout->addWidget(label_11, 5, 0, 1, 4);
    label_12 = createAxisLabel("label_12", tab);
    gridLayout->addWidget(label_12, 6, 0);
    flexibleOffsetXSpacings = createCountBox("flexibleOffsetXSpacings", tab, -90, 90);
    gridLayout->addWidget(flexibleOffsetXSpacings, 6, 1);
    flexibleOffsetXMM = createLengthDisplay("flexibleOffsetXMM", tab);
    flexibleOffsetXMM->setRange(-9999.0, 9999.0);
    gridLayout->addWidget(flexibleOffsetXMM, 6, 3);
    label_13 = createAxisLabel("label_13", tab);
    gridLayout->addWidget(label_13, 7, 0);
    flexibleOffsetYSpacings = createCountBox("flexibleOffsetYSpacings", tab, -90, 90);
    gridLayout->addWidget(flexibleOffsetYSpacings, 7, 1);
    flexibleOffsetYMM = createLengthDisplay("flexibleOffsetYMM", tab);
    flexibleOffsetYMM->setRange(-9999.0, 9999.0);
    gridLayout->addWidget(flexibleOffsetYMM, 7, 3);
}

void MainWindowForm::setUpAssemblyPage() {
    tab_2 = create<QWidget>("tab_2", patternType);
    gridLayout_4 = create<QGridLayout>("gridLayout_4", tab_2);
    label_17 = createWrappedLabel("label_17", tab_2);
    gridLayout_4->addWidget(label_17, 0, 0, 1, 2);
    label_18 = create<QLabel>("label_18", tab_2);
    gridLayout_4->addWidget(label_18, 1, 0);
    assemblyGridSpacing = create<QComboBox>("assemblyGridSpacing", tab_2);
    gridLayout_4->addWidget(assemblyGridSpacing, 1, 1);
    label_19 = create<QLabel>("label_19", tab_2);
    gridLayout_4->addWidget(label_19, 2, 0);
    assemblyNumberOfPatterns = createCountBox("assemblyNumberOfPatterns", tab_2, 2, 18);
    assemblyNumberOfPatterns->setValue(5);
    gridLayout_4->addWidget(assemblyNumberOfPatterns, 2, 1);
    assemblyPolarity = create<QCheckBox>("assemblyPolarity", tab_2);
    assemblyPolarity->setChecked(true);
    gridLayout_4->addWidget(assemblyPolarity, 3, 0);
    assemblySpacer = createVerticalSpacer(262);
    gridLayout_4->addItem(assemblySpacer, 4, 0);
    patternType->addTab(tab_2, QString());
}

void MainWindowForm::setUpHalconPage() {
    tabWidgetPage1 = create<QWidget>("tabWidgetPage1", patternType);
    gridLayout_2 = create<QGridLayout>("gridLayout_2", tabWidgetPage1);
    gridLayout_2->setColumnStretch(2, 1);
    gridLayout_2->setColumnMinimumWidth(0, 10);
    label_22 = create<QLabel>("label_22", tabWidgetPage1);
    gridLayout_2->addWidget(label_22, 0, 0, 1, 3);
    halconOuterSize = createLengthBox("halconOuterSize", tabWidgetPage1);
    halconOuterSize->setRange(5.0, 1000.0);
    halconOuterSize->setValue(100.0);
    gridLayout_2->addWidget(halconOuterSize, 0, 3, 1, 2);
    label_6 = create<QLabel>("label_6", tabWidgetPage1);
    gridLayout_2->addWidget(label_6, 1, 0, 1, 3);
    halconGridSpacing = createLengthDisplay("halconGridSpacing", tabWidgetPage1);
    halconGridSpacing->setMaximum(10000.0);
    gridLayout_2->addWidget(halconGridSpacing, 1, 3, 1, 2);
    halconGapSpacer = new QSpacerItem(0, 10, QSizePolicy::Minimum, QSizePolicy::Minimum);
    gridLayout_2->addItem(halconGapSpacer, 2, 2);
    setUpHalconEncoding();
    setUpHalconOffset();
    halconSpacer = createVerticalSpacer();
    gridLayout_2->addItem(halconSpacer, 10, 2);
    patternType->addTab(tabWidgetPage1, QString());
}

void MainWindowForm::setUpHalconEncoding() {
    halconEncodeNothing = create<QRadioButton>("halconEncodeNothing", tabWidgetPage1);
    gridLayout_2->addWidget(halconEncodeNothing, 3, 0, 1, 5);
    halconEncodeSpacing = create<QRadioButton>("halconEncodeSpacing", tabWidgetPage1);
    halconEncodeSpacing->setChecked(true);
    gridLayout_2->addWidget(halconEncodeSpacing, 4, 0, 1, 5);
    thicknessLabel_2 = create<QLabel>("thicknessLabel_2", tabWidgetPage1);
    gridLayout_2->addWidget(thicknessLabel_2, 5, 2);
    halconThickness = createLengthBox("halconThickness", tabWidgetPage1);
    halconThickness->setMaximum(100.0);
    gridLayout_2->addWidget(halconThickness, 5, 3, 1, 2);
    halconEncodeOffset = create<QRadioButton>("halconEncodeOffset", tabWidgetPage1);
    gridLayout_2->addWidget(halconEncodeOffset, 6, 0, 1, 5);
}

void MainWindowForm::setUpHalconOffset() {
    // The displays intentionally keep the toolkit's default minimum of 0: a negative offset shows as 0.00 mm.
    label_8 = createAxisLabel("label_8", tabWidgetPage1);
    gridLayout_2->addWidget(label_8, 7, 2);
    halconOffsetXSpacings = createCountBox("halconOffsetXSpacings", tabWidgetPage1, -128, 127);
    gridLayout_2->addWidget(halconOffsetXSpacings, 7, 3);
    halconOffsetXMM = createLengthDisplay("halconOffsetXMM", tabWidgetPage1);
    halconOffsetXMM->setMaximum(1000.0);
    gridLayout_2->addWidget(halconOffsetXMM, 7, 4);
    label_9 = createAxisLabel("label_9", tabWidgetPage1);
    gridLayout_2->addWidget(label_9, 8, 2);
    halconOffsetYSpacings = createCountBox("halconOffsetYSpacings", tabWidgetPage1, -128, 127);
    gridLayout_2->addWidget(halconOffsetYSpacings, 8, 3);
    halconOffsetYMM = createLengthDisplay("halconOffsetYMM", tabWidgetPage1);
    halconOffsetYMM->setMaximum(1000.0);
    gridLayout_2->addWidget(halconOffsetYMM, 8, 4);
}

void MainWindowForm::setUpPreview() {
    groupBox = create<QGroupBox>("groupBox", centralwidget);
    horizontalLayout_2 = create<QHBoxLayout>("horizontalLayout_2", groupBox);
    preview = create<QGraphicsView>("preview", groupBox);
    horizontalLayout_2->addWidget(preview);
    horizontalLayout_3->addWidget(groupBox);
}
