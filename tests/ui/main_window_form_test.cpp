// The form as the user finds it: what stands where, with which ranges, defaults, texts and tips.
#include <QAbstractButton>
#include <QApplication>
#include <QBoxLayout>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFile>
#include <QGraphicsView>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QSpinBox>
#include <QTabWidget>
#include <QTranslator>
#include <QtTest>

#include "tests/scripted_lmlib64/scripted_lmlib64.h"
#include "ui/main_window_form.h"

namespace {

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

}  // namespace

class MainWindowFormTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void windowHasSizeTitleAndIcon();
    void keepsObjectNameThatWindowHasAlready();
    void pagesStandInOrderWithHalconInFront();
    void gridCells_data();
    void gridCells();
    void gridsHaveTheirStretchesAndSpacers();
    void boxesHoldTheirItemsInOrder();
    void countBoxes_data();
    void countBoxes();
    void lengthBoxes_data();
    void lengthBoxes();
    void labels_data();
    void labels();
    void buttons_data();
    void buttons();
    void toolTips_data();
    void toolTips();
    void legalNoticeIsSmallAndGrey();
    void patternTypeKeepsItsWidth();
    void radioButtonsExcludeEachOther();
    void resourcesOfTheTextsExist();
    void retranslatingChangesEveryTextAndNothingElse();

private:
    template <class Widget>
    Widget *find(const QString &name) const {
        return window->findChild<Widget *>(name);
    }

    std::unique_ptr<QMainWindow> window;
    MainWindowForm form;
};

void MainWindowFormTest::init() {
    scripted_lmlib64::loadDefaultScript();
    window = std::make_unique<QMainWindow>();
    form = MainWindowForm();
    form.setUp(window.get());
}

void MainWindowFormTest::cleanup() {
    window.reset();
}

void MainWindowFormTest::windowHasSizeTitleAndIcon() {
    QCOMPARE(window->objectName(), QString("MainWindow"));
    QCOMPARE(window->size(), QSize(899, 553));
    QCOMPARE(window->windowTitle(), QString("Generate Calibration Pattern"));
    QVERIFY(!window->windowIcon().pixmap(16, 16).isNull());
    QCOMPARE(window->centralWidget()->objectName(), QString("centralwidget"));
    QCOMPARE(find<QGroupBox>("groupBox")->title(), QString("Preview"));
}

void MainWindowFormTest::keepsObjectNameThatWindowHasAlready() {
    QMainWindow other;
    other.setObjectName("other");
    MainWindowForm().setUp(&other);
    QCOMPARE(other.objectName(), QString("other"));
}

void MainWindowFormTest::pagesStandInOrderWithHalconInFront() {
    const auto *pages = find<QTabWidget>("patternType");
    QStringList titles;
    QStringList names;
    for (int i = 0; i < pages->count(); ++i) {
        titles << pages->tabText(i);
        names << pages->widget(i)->objectName();
    }
    QCOMPARE(titles, QStringList({"Official", "Custom", "Flexible", "Assembly", "Halcon"}));
    QCOMPARE(names, QStringList({"tab_3", "tabWidgetPage2", "tab", "tab_2", "tabWidgetPage1"}));
    QCOMPARE(pages->currentIndex(), 4);
}

void MainWindowFormTest::gridCells_data() {
    QTest::addColumn<QString>("grid");
    QTest::addColumn<QString>("widget");
    QTest::addColumn<QRect>("cell");  // x, y: column, row; width, height: columns, rows

    const auto row = [](const char *grid, const char *widget, int r, int c, int rows = 1, int columns = 1) {
        QTest::newRow(widget) << grid << widget << QRect(c, r, columns, rows);
    };
    row("gridLayout_3", "label_2", 0, 0, 1, 2);
    row("gridLayout_3", "label_3", 1, 0);
    row("gridLayout_3", "singleGridSpacing", 1, 1);
    row("gridLayout_3", "label_4", 2, 0);
    row("gridLayout_3", "singleThickness", 2, 1);
    row("gridLayout_3", "singlePolarity", 3, 0, 1, 2);
    row("gridLayout", "label_5", 0, 0, 1, 4);
    row("gridLayout", "label_21", 1, 0, 1, 4);
    row("gridLayout", "label_7", 2, 0);
    row("gridLayout", "flexibleWidth", 2, 1);
    row("gridLayout", "label_10", 2, 2);
    row("gridLayout", "flexibleHeight", 2, 3);
    row("gridLayout", "label_15", 3, 0);
    row("gridLayout", "flexibleOuterWidth", 3, 1);
    row("gridLayout", "label_16", 3, 2);
    row("gridLayout", "flexibleOuterHeight", 3, 3);
    row("gridLayout", "label_14", 4, 0);
    row("gridLayout", "flexibleGridSpacing", 4, 1, 1, 3);
    row("gridLayout", "label_11", 5, 0, 1, 4);
    row("gridLayout", "label_12", 6, 0);
    row("gridLayout", "flexibleOffsetXSpacings", 6, 1);
    row("gridLayout", "flexibleOffsetXMM", 6, 3);
    row("gridLayout", "label_13", 7, 0);
    row("gridLayout", "flexibleOffsetYSpacings", 7, 1);
    row("gridLayout", "flexibleOffsetYMM", 7, 3);
    row("gridLayout", "flexiblePolarity", 8, 0, 1, 4);
    row("gridLayout_4", "label_17", 0, 0, 1, 2);
    row("gridLayout_4", "label_18", 1, 0);
    row("gridLayout_4", "assemblyGridSpacing", 1, 1);
    row("gridLayout_4", "label_19", 2, 0);
    row("gridLayout_4", "assemblyNumberOfPatterns", 2, 1);
    row("gridLayout_4", "assemblyPolarity", 3, 0);
    row("gridLayout_2", "label_22", 0, 0, 1, 3);
    row("gridLayout_2", "halconOuterSize", 0, 3, 1, 2);
    row("gridLayout_2", "label_6", 1, 0, 1, 3);
    row("gridLayout_2", "halconGridSpacing", 1, 3, 1, 2);
    row("gridLayout_2", "halconEncodeNothing", 3, 0, 1, 5);
    row("gridLayout_2", "halconEncodeSpacing", 4, 0, 1, 5);
    row("gridLayout_2", "thicknessLabel_2", 5, 2);
    row("gridLayout_2", "halconThickness", 5, 3, 1, 2);
    row("gridLayout_2", "halconEncodeOffset", 6, 0, 1, 5);
    row("gridLayout_2", "label_8", 7, 2);
    row("gridLayout_2", "halconOffsetXSpacings", 7, 3);
    row("gridLayout_2", "halconOffsetXMM", 7, 4);
    row("gridLayout_2", "label_9", 8, 2);
    row("gridLayout_2", "halconOffsetYSpacings", 8, 3);
    row("gridLayout_2", "halconOffsetYMM", 8, 4);
}

void MainWindowFormTest::gridCells() {
    QFETCH(QString, grid);
    QFETCH(QString, widget);
    QFETCH(QRect, cell);
    auto *layout = find<QGridLayout>(grid);
    auto *inCell = find<QWidget>(widget);
    const int index = layout->indexOf(inCell);
    QVERIFY(index >= 0);
    QCOMPARE(inCell->parentWidget(), layout->parentWidget());
    int row = 0;
    int column = 0;
    int rows = 0;
    int columns = 0;
    layout->getItemPosition(index, &row, &column, &rows, &columns);
    QCOMPARE(QRect(column, row, columns, rows), cell);
}

void MainWindowFormTest::gridsHaveTheirStretchesAndSpacers() {
    QCOMPARE(find<QGridLayout>("gridLayout")->columnStretch(0), 1);
    QCOMPARE(find<QGridLayout>("gridLayout_2")->columnStretch(2), 1);
    QCOMPARE(find<QGridLayout>("gridLayout_2")->columnMinimumWidth(0), 10);

    const struct {
        const char *grid;
        int row;
        int column;
        QSize size;
        QSizePolicy::Policy vertical;
    } spacers[] = {
        {"gridLayout_3", 4, 0, {20, 40}, QSizePolicy::Expanding},
        {"gridLayout", 9, 0, {20, 40}, QSizePolicy::Expanding},
        {"gridLayout_4", 4, 0, {20, 262}, QSizePolicy::Expanding},
        {"gridLayout_2", 2, 2, {0, 10}, QSizePolicy::Minimum},
        {"gridLayout_2", 10, 2, {20, 40}, QSizePolicy::Expanding},
    };
    for (const auto &expected : spacers) {
        auto *item = find<QGridLayout>(expected.grid)->itemAtPosition(expected.row, expected.column);
        QVERIFY2(item != nullptr && item->spacerItem() != nullptr, expected.grid);
        QCOMPARE(item->sizeHint(), expected.size);
        QCOMPARE(item->spacerItem()->sizePolicy().horizontalPolicy(), QSizePolicy::Minimum);
        QCOMPARE(item->spacerItem()->sizePolicy().verticalPolicy(), expected.vertical);
    }
}

void MainWindowFormTest::boxesHoldTheirItemsInOrder() {
    const struct {
        const char *box;
        QBoxLayout::Direction direction;
        QStringList items;
    } boxes[] = {
        {"verticalLayout_3", QBoxLayout::TopToBottom, {"horizontalLayout", "label", "horizontalLayout_3"}},
        {"horizontalLayout", QBoxLayout::LeftToRight, {"saveBtn", "calibrateBtn", "spacer 40x20"}},
        {"horizontalLayout_3", QBoxLayout::LeftToRight, {"patternType", "groupBox"}},
        {"verticalLayout_2", QBoxLayout::TopToBottom, {"label_20", "officialPattern", "spacer 20x40"}},
        {"horizontalLayout_2", QBoxLayout::LeftToRight, {"preview"}},
    };
    for (const auto &expected : boxes) {
        auto *box = find<QBoxLayout>(expected.box);
        QVERIFY2(box != nullptr, expected.box);
        QCOMPARE(box->direction(), expected.direction);
        QStringList items;
        for (int i = 0; i < box->count(); ++i) {
            QLayoutItem *item = box->itemAt(i);
            if (item->widget() != nullptr) {
                items << item->widget()->objectName();
            } else if (item->layout() != nullptr) {
                items << item->layout()->objectName();
            } else {
                items << QString("spacer %1x%2").arg(item->sizeHint().width()).arg(item->sizeHint().height());
            }
        }
        QCOMPARE(items, expected.items);
    }
}

void MainWindowFormTest::countBoxes_data() {
    QTest::addColumn<QVector<int>>("numbers");  // minimum, maximum, step, value
    QTest::newRow("flexibleWidth") << QVector<int>{5, 91, 2, 15};
    QTest::newRow("flexibleHeight") << QVector<int>{5, 91, 2, 15};
    QTest::newRow("flexibleOffsetXSpacings") << QVector<int>{-90, 90, 1, 0};
    QTest::newRow("flexibleOffsetYSpacings") << QVector<int>{-90, 90, 1, 0};
    QTest::newRow("assemblyNumberOfPatterns") << QVector<int>{2, 18, 1, 5};
    QTest::newRow("halconOffsetXSpacings") << QVector<int>{-128, 127, 1, 0};
    QTest::newRow("halconOffsetYSpacings") << QVector<int>{-128, 127, 1, 0};
}

void MainWindowFormTest::countBoxes() {
    QFETCH(QVector<int>, numbers);
    const auto *box = find<QSpinBox>(QTest::currentDataTag());
    QCOMPARE((QVector<int>{box->minimum(), box->maximum(), box->singleStep(), box->value()}), numbers);
    QCOMPARE(box->suffix(), QString());
    QCOMPARE(box->alignment(), Qt::AlignRight | Qt::AlignVCenter);
    QVERIFY(box->isEnabled());
    QCOMPARE(window->findChildren<QSpinBox *>().size(), 7);
}

void MainWindowFormTest::lengthBoxes_data() {
    QTest::addColumn<QVector<double>>("numbers");  // minimum, maximum, value
    QTest::addColumn<bool>("enabled");
    QTest::newRow("flexibleOuterWidth") << QVector<double>{5, 1000, 100} << false;
    QTest::newRow("flexibleOuterHeight") << QVector<double>{5, 1000, 100} << false;
    QTest::newRow("flexibleGridSpacing") << QVector<double>{0, 99.99, 12.5} << true;
    QTest::newRow("flexibleOffsetXMM") << QVector<double>{-9999, 9999, 0} << false;
    QTest::newRow("flexibleOffsetYMM") << QVector<double>{-9999, 9999, 0} << false;
    QTest::newRow("halconOuterSize") << QVector<double>{5, 1000, 100} << true;
    QTest::newRow("halconGridSpacing") << QVector<double>{0, 10000, 0} << false;
    QTest::newRow("halconThickness") << QVector<double>{0, 100, 0} << true;
    QTest::newRow("halconOffsetXMM") << QVector<double>{0, 1000, 0} << false;
    QTest::newRow("halconOffsetYMM") << QVector<double>{0, 1000, 0} << false;
}

void MainWindowFormTest::lengthBoxes() {
    QFETCH(QVector<double>, numbers);
    QFETCH(bool, enabled);
    const auto *box = find<QDoubleSpinBox>(QTest::currentDataTag());
    QCOMPARE((QVector<double>{box->minimum(), box->maximum(), box->value()}), numbers);
    QCOMPARE(box->decimals(), 2);
    QCOMPARE(box->singleStep(), 1.0);
    QCOMPARE(box->suffix(), QString(" mm"));
    QCOMPARE(box->alignment(), Qt::AlignRight | Qt::AlignVCenter);
    QCOMPARE(box->isEnabled(), enabled);
    QCOMPARE(window->findChildren<QDoubleSpinBox *>().size(), 10);
}

void MainWindowFormTest::labels_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("wraps");
    QTest::addColumn<bool>("isAxis");
    const auto row = [](const char *name, const char *text, bool wraps = false, bool isAxis = false) {
        QTest::newRow(name) << QString(text) << wraps << isAxis;
    };
    row("label",
        "The generated calibration pattern data is provided free of charge to print or otherwise manufacture your own "
        "calibration targets. The targets must only be used with the Vistrel SDK to calibrate cameras, robots or other "
        "movement systems. Under no circumstances does this transfer any rights other than the right of use described "
        "here. In particular you are not allowed to distribute your own calibration targets commercially.",
        true);
    row("label_20", "Officially available pattern sizes.");
    row("label_2",
        "Patterns of size 15x15 with an encoded grid spacing and thickness. Small patches of the pattern can be "
        "observed on their own, but the encoded information can only be read when observing the whole pattern.",
        true);
    row("label_3", "Grid Spacing");
    row("label_4", "Thickness");
    row("label_5", "Patterns of arbitrary size with an optional offset to the origin.", true);
    row("label_21",
        "<html><head/><body>\n<table>\n<tr><td><img "
        "src=\":/vistrel/warning-icon-small.png\"/>&nbsp;&nbsp;&nbsp;</td><td><p> You can select an arbitrary grid "
        "spacing for Flexible patterns. This spacing is, however, not encoded in the pattern. You need to save it and "
        "specify it manually whenever the pattern gets used.</p><p>For common usages, where the flexibility of the "
        "pattern size and the offset is not needed, we therefore recommend using an official pattern or a pattern of "
        "type Single.</p></td></tr>\n</table>\n</body></html>",
        true);
    row("label_7", "Size");
    row("label_10", "x");
    row("label_15", "Outer Size");
    row("label_16", "x");
    row("label_14", "Grid Spacing");
    row("label_11", "Encoded Offset");
    row("label_12", "X", false, true);
    row("label_13", "Y", false, true);
    row("label_17", "Patterns of size 15x15 that can be calibrated to a common coordinate system.", true);
    row("label_18", "Grid Spacing");
    row("label_19", "Number of Patterns");
    row("label_22", "Outer Size");
    row("label_6", "Grid Spacing");
    row("thicknessLabel_2", "Thickness");
    row("label_8", "X", false, true);
    row("label_9", "Y", false, true);
}

void MainWindowFormTest::labels() {
    QFETCH(QString, text);
    QFETCH(bool, wraps);
    QFETCH(bool, isAxis);
    const auto *label = find<QLabel>(QTest::currentDataTag());
    QCOMPARE(label->text(), text);
    QCOMPARE(label->wordWrap(), wraps);
    QCOMPARE(label->alignment() == (Qt::AlignRight | Qt::AlignVCenter), isAxis);
    QCOMPARE(label->indent(), isAxis ? 5 : -1);
}

void MainWindowFormTest::buttons_data() {
    QTest::addColumn<QByteArray>("type");
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("checked");
    QTest::newRow("saveBtn") << QByteArray("QPushButton") << "Save All Patterns..." << false;
    QTest::newRow("calibrateBtn") << QByteArray("QPushButton") << "Calibrate an Assembly Pattern..." << false;
    QTest::newRow("singlePolarity") << QByteArray("QCheckBox") << "Polarity" << true;
    QTest::newRow("flexiblePolarity") << QByteArray("QCheckBox") << "Polarity" << true;
    QTest::newRow("assemblyPolarity") << QByteArray("QCheckBox") << "Polarity" << true;
    QTest::newRow("halconEncodeNothing") << QByteArray("QRadioButton") << "Encode no data" << false;
    QTest::newRow("halconEncodeSpacing") << QByteArray("QRadioButton") << "Encode spacing and thickness" << true;
    QTest::newRow("halconEncodeOffset") << QByteArray("QRadioButton") << "Encode an offset" << false;
}

void MainWindowFormTest::buttons() {
    QFETCH(QByteArray, type);
    QFETCH(QString, text);
    QFETCH(bool, checked);
    const auto *button = find<QAbstractButton>(QTest::currentDataTag());
    QCOMPARE(QByteArray(button->metaObject()->className()), type);
    QCOMPARE(button->text(), text);
    QCOMPARE(button->isChecked(), checked);
    QVERIFY(button->isEnabled());
}

void MainWindowFormTest::toolTips_data() {
    QTest::addColumn<QString>("tip");
    QTest::newRow("saveBtn") << "<html><head/><body><p>Saves the pattern into a file. Different formats can be "
                                "selected in the save dialog.</p></body></html>";
    QTest::newRow("calibrateBtn") << "Launch LmView to calibrate a pattern assembly...";
    QTest::newRow("halconOuterSize") << "<html><head/><body><p>Specifies the outer dimension of the border around the "
                                        "pattern.</p></body></html>";
    QTest::newRow("halconGridSpacing")
        << "<html><head/><body><p>Shows the resulting <a "
           "href=\"%MANUAL%/guides/calibration/patterns.html\"><span style=\" text-decoration: underline; "
           "color:#0000ff;\">grid spacing</span></a> for the given outer pattern dimension.</p></body></html>";
    QTest::newRow("halconThickness")
        << "<html><head/><body><p>Specifies the pattern thickness to encode.</p></body></html>";
}

void MainWindowFormTest::toolTips() {
    QFETCH(QString, tip);
    auto *owner = find<QWidget>(QTest::currentDataTag());
    QCOMPARE(owner->toolTip(), tip);
    // The text of a spin box is a widget of its own, over which the tip has to show, too.
    if (const auto *text = owner->findChild<QLineEdit *>()) {
        QCOMPARE(text->toolTip(), tip);
    }
    int tipCount = 0;
    for (const auto *widget : window->findChildren<QWidget *>()) {
        tipCount += widget->toolTip().isEmpty() ? 0 : 1;
    }
    QCOMPARE(tipCount, 5 + 3);
}

void MainWindowFormTest::legalNoticeIsSmallAndGrey() {
    const auto *notice = find<QLabel>("label");
    QCOMPARE(notice->font().pointSize(), 9);
    QCOMPARE(notice->palette().brush(QPalette::Active, QPalette::WindowText), QBrush(QColor(85, 87, 83)));
    QCOMPARE(notice->palette().brush(QPalette::Inactive, QPalette::WindowText), QBrush(QColor(85, 87, 83)));
    QCOMPARE(notice->palette().brush(QPalette::Disabled, QPalette::WindowText), QBrush(QColor(190, 190, 190)));
    QCOMPARE(find<QLabel>("label_21")->font().pointSize(), 8);
}

void MainWindowFormTest::patternTypeKeepsItsWidth() {
    const auto *pages = find<QTabWidget>("patternType");
    QCOMPARE(pages->minimumSize(), QSize(400, 0));
    QCOMPARE(pages->sizePolicy().horizontalPolicy(), QSizePolicy::Preferred);
    QCOMPARE(pages->sizePolicy().verticalPolicy(), QSizePolicy::Expanding);
    QCOMPARE(pages->sizePolicy().horizontalStretch(), 0);
    QCOMPARE(pages->sizePolicy().verticalStretch(), 0);
    QCOMPARE(pages->sizePolicy().hasHeightForWidth(), QTabWidget().sizePolicy().hasHeightForWidth());
}

void MainWindowFormTest::radioButtonsExcludeEachOther() {
    const QStringList names{"halconEncodeNothing", "halconEncodeSpacing", "halconEncodeOffset"};
    for (const auto &chosen : names) {
        find<QAbstractButton>(chosen)->click();
        for (const auto &name : names) {
            QCOMPARE(find<QAbstractButton>(name)->isChecked(), name == chosen);
        }
    }
}

void MainWindowFormTest::resourcesOfTheTextsExist() {
    QVERIFY(QFile::exists(":/vistrel/vistrel.png"));
    QVERIFY(QFile::exists(":/vistrel/warning-icon-small.png"));
    QCOMPARE(QImage(":/vistrel/warning-icon-small.png").size(), QSize(32, 32));
}

void MainWindowFormTest::retranslatingChangesEveryTextAndNothingElse() {
    find<QSpinBox>("flexibleWidth")->setValue(21);
    find<QWidget>("halconThickness")->setEnabled(false);
    find<QAbstractButton>("singlePolarity")->setChecked(false);
    BracketTranslator translator;
    QCoreApplication::installTranslator(&translator);
    form.retranslate(window.get());
    QCoreApplication::removeTranslator(&translator);

    QStringList texts{window->windowTitle(), find<QGroupBox>("groupBox")->title()};
    const auto *pages = find<QTabWidget>("patternType");
    for (int i = 0; i < pages->count(); ++i) {
        texts << pages->tabText(i);
    }
    for (const auto *widget : window->findChildren<QLabel *>()) {
        texts << widget->text();
    }
    for (const char *name : {"saveBtn", "calibrateBtn", "singlePolarity", "flexiblePolarity", "assemblyPolarity",
                             "halconEncodeNothing", "halconEncodeSpacing", "halconEncodeOffset"}) {
        texts << find<QAbstractButton>(name)->text();
    }
    for (const auto *widget : window->findChildren<QDoubleSpinBox *>()) {
        texts << widget->suffix();
    }
    for (const auto *widget : window->findChildren<QWidget *>()) {
        if (!widget->toolTip().isEmpty()) {
            texts << widget->toolTip();
        }
    }
    QCOMPARE(texts.size(), 2 + 5 + 23 + 8 + 10 + 5 + 3);
    for (const auto &text : texts) {
        QVERIFY2(text.startsWith('[') && text.endsWith(']'), qPrintable(text));
    }
    QCOMPARE(find<QSpinBox>("flexibleWidth")->value(), 21);
    QVERIFY(!find<QWidget>("halconThickness")->isEnabled());
    QVERIFY(!find<QAbstractButton>("singlePolarity")->isChecked());
    QCOMPARE(pages->currentIndex(), 4);
}

QTEST_MAIN(MainWindowFormTest)
#include "main_window_form_test.moc"
