// The main window's form: every widget, layout and spacer, with their ranges, defaults and texts.
//
// The form has no behaviour of its own. Its only connections are those that QMetaObject::connectSlotsByName makes. It
// does not fill the choice lists; the list of official plates fills itself.
//
// The window owns all widgets, layouts and spacers through Qt's parent-child relation, so the pointers are valid as
// long as the window's widgets exist. Use the form only on the GUI thread. Lengths are in millimetres. The object name
// of a widget or layout is the name of its member. Every text is translated with the context "MainWindow".
#pragma once

class CalTabComboBox;
class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QGraphicsView;
class QGridLayout;
class QGroupBox;
class QHBoxLayout;
class QLabel;
class QMainWindow;
class QPushButton;
class QRadioButton;
class QSpacerItem;
class QSpinBox;
class QTabWidget;
class QVBoxLayout;
class QWidget;

class MainWindowForm {
public:
    // Builds the whole form in the window, sets its texts and makes the Halcon page the current one. The list of
    // official plates reads the catalogue from the library. If that fails, setUp throws the LmLibException.
    void setUp(QMainWindow *window);

    // Sets every text again, for use after a change of language. Values, ranges and enabled states stay.
    void retranslate(QMainWindow *window);

    QWidget *centralwidget = nullptr;
    QVBoxLayout *verticalLayout_3 = nullptr;
    QHBoxLayout *horizontalLayout = nullptr;
    QPushButton *saveBtn = nullptr;
    QPushButton *calibrateBtn = nullptr;
    QSpacerItem *buttonsSpacer = nullptr;
    QLabel *label = nullptr;
    QHBoxLayout *horizontalLayout_3 = nullptr;
    QTabWidget *patternType = nullptr;
    QGroupBox *groupBox = nullptr;
    QHBoxLayout *horizontalLayout_2 = nullptr;
    QGraphicsView *preview = nullptr;

    // Official page.
    QWidget *tab_3 = nullptr;
    QVBoxLayout *verticalLayout_2 = nullptr;
    QLabel *label_20 = nullptr;
    CalTabComboBox *officialPattern = nullptr;
    QSpacerItem *officialSpacer = nullptr;

    // Single page, titled "Custom".
    QWidget *tabWidgetPage2 = nullptr;
    QGridLayout *gridLayout_3 = nullptr;
    QLabel *label_2 = nullptr;
    QLabel *label_3 = nullptr;
    QComboBox *singleGridSpacing = nullptr;
    QLabel *label_4 = nullptr;
    QComboBox *singleThickness = nullptr;
    QCheckBox *singlePolarity = nullptr;
    QSpacerItem *singleSpacer = nullptr;

    // Flexible page.
    QWidget *tab = nullptr;
    QGridLayout *gridLayout = nullptr;
    QLabel *label_5 = nullptr;
    QLabel *label_21 = nullptr;
    QLabel *label_7 = nullptr;
    QSpinBox *flexibleWidth = nullptr;
    QLabel *label_10 = nullptr;
    QSpinBox *flexibleHeight = nullptr;
    QLabel *label_15 = nullptr;
    QDoubleSpinBox *flexibleOuterWidth = nullptr;
    QLabel *label_16 = nullptr;
    QDoubleSpinBox *flexibleOuterHeight = nullptr;
    QLabel *label_14 = nullptr;
    QDoubleSpinBox *flexibleGridSpacing = nullptr;
    QLabel *label_11 = nullptr;
    QLabel *label_12 = nullptr;
    QSpinBox *flexibleOffsetXSpacings = nullptr;
    QDoubleSpinBox *flexibleOffsetXMM = nullptr;
    QLabel *label_13 = nullptr;
    QSpinBox *flexibleOffsetYSpacings = nullptr;
    QDoubleSpinBox *flexibleOffsetYMM = nullptr;
    QCheckBox *flexiblePolarity = nullptr;
    QSpacerItem *flexibleSpacer = nullptr;

    // Assembly page.
    QWidget *tab_2 = nullptr;
    QGridLayout *gridLayout_4 = nullptr;
    QLabel *label_17 = nullptr;
    QLabel *label_18 = nullptr;
    QComboBox *assemblyGridSpacing = nullptr;
    QLabel *label_19 = nullptr;
    QSpinBox *assemblyNumberOfPatterns = nullptr;
    QCheckBox *assemblyPolarity = nullptr;
    QSpacerItem *assemblySpacer = nullptr;

    // Halcon page.
    QWidget *tabWidgetPage1 = nullptr;
    QGridLayout *gridLayout_2 = nullptr;
    QLabel *label_22 = nullptr;
    QDoubleSpinBox *halconOuterSize = nullptr;
    QLabel *label_6 = nullptr;
    QDoubleSpinBox *halconGridSpacing = nullptr;
    QSpacerItem *halconGapSpacer = nullptr;
    QRadioButton *halconEncodeNothing = nullptr;
    QRadioButton *halconEncodeSpacing = nullptr;
    QLabel *thicknessLabel_2 = nullptr;
    QDoubleSpinBox *halconThickness = nullptr;
    QRadioButton *halconEncodeOffset = nullptr;
    QLabel *label_8 = nullptr;
    QSpinBox *halconOffsetXSpacings = nullptr;
    QDoubleSpinBox *halconOffsetXMM = nullptr;
    QLabel *label_9 = nullptr;
    QSpinBox *halconOffsetYSpacings = nullptr;
    QDoubleSpinBox *halconOffsetYMM = nullptr;
    QSpacerItem *halconSpacer = nullptr;

private:
    void setUpWindow(QMainWindow *window);
    void setUpButtons();
    void setUpLegalNotice();
    void setUpPatternType();
    void setUpOfficialPage();
    void setUpSinglePage();
    void setUpFlexiblePage();
    void setUpFlexibleSize();
    void setUpFlexibleOffset();
    void setUpAssemblyPage();
    void setUpHalconPage();
    void setUpHalconEncoding();
    void setUpHalconOffset();
    void setUpPreview();

    void retranslateButtons();
    void retranslateOfficialPage();
    void retranslateSinglePage();
    void retranslateFlexiblePage();
    void retranslateAssemblyPage();
    void retranslateHalconPage();
};
