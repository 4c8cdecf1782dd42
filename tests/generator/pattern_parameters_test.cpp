// From the form's values to the displays and to the calls of one update.
#include <QAbstractButton>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QSpinBox>
#include <QTabWidget>
#include <QtTest>

#include "generator/main_window.h"
#include "tests/generator/driven_window.h"
#include "tests/generator/recorded_calls.h"

using driven_window::find;
using Setting = std::function<void(MainWindow &)>;
Q_DECLARE_METATYPE(Setting)

namespace {

void setPage(MainWindow &window, int page) {
    find<QTabWidget>(window, "patternType")->setCurrentIndex(page);
}

void setChoice(MainWindow &window, const char *name, int index) {
    find<QComboBox>(window, name)->setCurrentIndex(index);
}

void setCount(MainWindow &window, const char *name, int value) {
    find<QSpinBox>(window, name)->setValue(value);
}

void setLength(MainWindow &window, const char *name, double value) {
    find<QDoubleSpinBox>(window, name)->setValue(value);
}

void setChecked(MainWindow &window, const char *name, bool checked) {
    find<QAbstractButton>(window, name)->setChecked(checked);
}

QString shown(const MainWindow &window, const char *name) {
    return find<QDoubleSpinBox>(window, name)->text();
}

}  // namespace

class PatternParametersTest : public QObject {
    Q_OBJECT

private slots:
    void init() { scripted_lmlib64::loadDefaultScript(); }
    void choiceListsOfferTheirValues();
    void writesThePattern_data();
    void writesThePattern();
    void everyChoiceIsWrittenByItsIndex();
    void displaysFollowTheInputs_data();
    void displaysFollowTheInputs();
    void stopsWritingAtTheFirstRefusal();
};

void PatternParametersTest::choiceListsOfferTheirValues() {
    const MainWindow window;
    const QStringList spacings{"1mm",  "1.5mm", "2mm",  "3mm",  "4mm",  "6mm",  "8mm",
                               "12mm", "16mm",  "24mm", "32mm", "48mm", "64mm", "96mm"};
    const QStringList thicknesses{"0mm", "1mm", "2mm", "3mm", "4mm", "5mm"};
    const struct {
        const char *name;
        QStringList texts;
        QString current;
    } lists[] = {{"singleGridSpacing", spacings, "12mm"},
                 {"assemblyGridSpacing", spacings, "12mm"},
                 {"singleThickness", thicknesses, "0mm"}};
    for (const auto &list : lists) {
        const auto *box = find<QComboBox>(window, list.name);
        QStringList texts;
        for (int i = 0; i < box->count(); ++i) {
            texts << box->itemText(i);
            QVERIFY(!box->itemData(i).isValid());
            QVERIFY(box->itemIcon(i).isNull());
        }
        QCOMPARE(texts, list.texts);
        QCOMPARE(box->currentText(), list.current);
    }
}

void PatternParametersTest::writesThePattern_data() {
    QTest::addColumn<Setting>("set");
    QTest::addColumn<QStringList>("writes");
    const auto row = [](const char *name, const Setting &set, const QStringList &writes) {
        QTest::newRow(name) << set << writes;
    };

    row("official, as opened", [](MainWindow &) {},
        {"lmLibSetString @/Type PlateC", "lmLibSetDouble @/GridSpacing 24.75", "lmLibSetDouble @/Thickness 3.5",
         "lmLibSetBool @/Polarity true"});
    row("official plate B, every polarity unchecked",
        [](MainWindow &window) {
            setChoice(window, "officialPattern", 1);
            for (const char *name : {"singlePolarity", "flexiblePolarity", "assemblyPolarity"}) {
                setChecked(window, name, false);
            }
        },
        {"lmLibSetString @/Type PlateB", "lmLibSetDouble @/GridSpacing 12.25", "lmLibSetDouble @/Thickness 2.5",
         "lmLibSetBool @/Polarity true"});
    row("no page in front counts as official",
        [](MainWindow &window) { find<QTabWidget>(window, "patternType")->clear(); },
        {"lmLibSetString @/Type PlateC", "lmLibSetDouble @/GridSpacing 24.75", "lmLibSetDouble @/Thickness 3.5",
         "lmLibSetBool @/Polarity true"});
    row("single, as opened", [](MainWindow &window) { setPage(window, 1); },
        {"lmLibSetString @/Type SingleCustom", "lmLibSetDouble @/GridSpacing 12", "lmLibSetDouble @/Thickness 0",
         "lmLibSetBool @/Polarity true"});
    row("single, every input changed",
        [](MainWindow &window) {
            setPage(window, 1);
            setChoice(window, "singleGridSpacing", 1);
            setChoice(window, "singleThickness", 3);
            setChecked(window, "singlePolarity", false);
        },
        {"lmLibSetString @/Type SingleCustom", "lmLibSetDouble @/GridSpacing 1.5", "lmLibSetDouble @/Thickness 3",
         "lmLibSetBool @/Polarity false"});
    row("flexible, as opened", [](MainWindow &window) { setPage(window, 2); },
        {"lmLibSetString @/Type Flexible", "lmLibSetInt @/GridSize/\\0 15", "lmLibSetInt @/GridSize/\\1 15",
         "lmLibSetDouble @/GridSpacing 12.5", "lmLibSetDouble @/Offset/\\0 0", "lmLibSetDouble @/Offset/\\1 0",
         "lmLibSetBool @/Polarity true"});
    // -7 and 7 half spacings of 1.665 mm are 11.655 mm; the values shown are sent, rounded to two decimals.
    row("flexible, every input changed",
        [](MainWindow &window) {
            setPage(window, 2);
            setCount(window, "flexibleWidth", 21);
            setCount(window, "flexibleHeight", 8);
            setLength(window, "flexibleGridSpacing", 3.33);
            setCount(window, "flexibleOffsetXSpacings", 7);
            setCount(window, "flexibleOffsetYSpacings", -7);
            setChecked(window, "flexiblePolarity", false);
        },
        {"lmLibSetString @/Type Flexible", "lmLibSetInt @/GridSize/\\0 21", "lmLibSetInt @/GridSize/\\1 8",
         "lmLibSetDouble @/GridSpacing 3.33", "lmLibSetDouble @/Offset/\\0 11.66", "lmLibSetDouble @/Offset/\\1 -11.66",
         "lmLibSetBool @/Polarity false"});
    row("assembly shows the first of its patterns", [](MainWindow &window) { setPage(window, 3); },
        {"lmLibSetString @/Type Assembly", "lmLibSetInt @/AssemblyPattern 0", "lmLibSetDouble @/GridSpacing 12",
         "lmLibSetBool @/Polarity true"});
    row("assembly, every input changed",
        [](MainWindow &window) {
            setPage(window, 3);
            setChoice(window, "assemblyGridSpacing", 13);
            setCount(window, "assemblyNumberOfPatterns", 18);
            setChecked(window, "assemblyPolarity", false);
        },
        {"lmLibSetString @/Type Assembly", "lmLibSetInt @/AssemblyPattern 0", "lmLibSetDouble @/GridSpacing 96",
         "lmLibSetBool @/Polarity false"});
    row("halcon, as opened", [](MainWindow &window) { setPage(window, 4); },
        {"lmLibSetDouble @/GridSpacing 12.5", "lmLibSetDouble @/Thickness 0", "lmLibSetBool @/Encoding true"});
    row("halcon without data",
        [](MainWindow &window) {
            setPage(window, 4);
            setCount(window, "halconOffsetXSpacings", 3);
            setChecked(window, "halconEncodeNothing", true);
        },
        {"lmLibSetDouble @/GridSpacing 12.5", "lmLibSetBool @/Encoding false"});
    row("halcon with thickness, spacing rounded as shown",
        [](MainWindow &window) {
            setPage(window, 4);
            setLength(window, "halconOuterSize", 33.33);
            setLength(window, "halconThickness", 2.25);
        },
        {"lmLibSetDouble @/GridSpacing 4.17", "lmLibSetDouble @/Thickness 2.25", "lmLibSetBool @/Encoding true"});
    row("halcon with offset, a negative one clamped as shown",
        [](MainWindow &window) {
            setPage(window, 4);
            setChecked(window, "halconEncodeOffset", true);
            setCount(window, "halconOffsetXSpacings", 3);
            setCount(window, "halconOffsetYSpacings", -3);
        },
        {"lmLibSetDouble @/GridSpacing 12.5", "lmLibSetDouble @/Offset/\\0 37.5", "lmLibSetDouble @/Offset/\\1 0",
         "lmLibSetBool @/Encoding true"});
    row("halcon with no choice made",
        [](MainWindow &window) {
            setPage(window, 4);
            auto *button = find<QAbstractButton>(window, "halconEncodeSpacing");
            button->setAutoExclusive(false);
            button->setChecked(false);
        },
        {"lmLibSetDouble @/GridSpacing 12.5"});
}

void PatternParametersTest::writesThePattern() {
    QFETCH(Setting, set);
    QFETCH(QStringList, writes);
    MainWindow window;
    set(window);
    // The slots are numbered on: the catalogue's, and one for every update until now.
    const int slot = recorded_calls::count("lmLibMakeUniqueItem") + 1;
    scripted_lmlib64::clearCalls();
    window.update();
    QCOMPARE(recorded_calls::all(), recorded_calls::updateCalls(slot, writes));
}

void PatternParametersTest::everyChoiceIsWrittenByItsIndex() {
    const struct {
        int page;
        const char *list;
        const char *node;
    } choices[] = {
        {1, "singleGridSpacing", "GridSpacing"},
        {1, "singleThickness", "Thickness"},
        {3, "assemblyGridSpacing", "GridSpacing"},
    };
    MainWindow window;
    for (const auto &choice : choices) {
        setPage(window, choice.page);
        const auto *list = find<QComboBox>(window, choice.list);
        for (int i = 0; i < list->count(); ++i) {
            setChoice(window, choice.list, i);
            scripted_lmlib64::clearCalls();
            window.update();
            const QString value = list->itemText(i).remove("mm");
            const QStringList written = recorded_calls::all().filter(QString("/\\0/%1 ").arg(choice.node));
            QCOMPARE(written.size(), 1);
            QCOMPARE(written.first().section(' ', -1), value);
        }
    }
}

void PatternParametersTest::displaysFollowTheInputs_data() {
    QTest::addColumn<Setting>("set");
    QTest::addColumn<QStringList>("displays");  // name and text by turns
    QTest::newRow("as opened") << Setting([](MainWindow &) {})
                               << QStringList{"halconGridSpacing",  "12.50 mm",  "halconOffsetXMM",     "0.00 mm",
                                              "flexibleOuterWidth", "100.00 mm", "flexibleOuterHeight", "100.00 mm",
                                              "flexibleOffsetXMM",  "0.00 mm",   "flexibleOffsetYMM",   "0.00 mm"};
    QTest::newRow("offsets of 3: whole spacings for halcon, halves for flexible") << Setting([](MainWindow &window) {
        setCount(window, "halconOffsetXSpacings", 3);
        setCount(window, "flexibleOffsetXSpacings", 3);
        setCount(window, "halconOffsetYSpacings", 2);
        setCount(window, "flexibleOffsetYSpacings", 2);
    }) << QStringList{"halconOffsetXMM", "37.50 mm", "flexibleOffsetXMM", "18.75 mm",
                      "halconOffsetYMM", "25.00 mm", "flexibleOffsetYMM", "12.50 mm"};
    // 33.33 / 8 = 4.16625, shown as 4.17; three of those are 12.51, not 12.50.
    QTest::newRow("halcon offsets build on the rounded spacing") << Setting([](MainWindow &window) {
        setLength(window, "halconOuterSize", 33.33);
        setCount(window, "halconOffsetXSpacings", 3);
    }) << QStringList{"halconGridSpacing", "4.17 mm", "halconOffsetXMM", "12.51 mm"};
    QTest::newRow("halcon offsets stay between 0 and 1000") << Setting([](MainWindow &window) {
        setLength(window, "halconOuterSize", 1000);
        setCount(window, "halconOffsetXSpacings", -128);
        setCount(window, "halconOffsetYSpacings", 127);
    }) << QStringList{"halconGridSpacing", "125.00 mm", "halconOffsetXMM", "0.00 mm", "halconOffsetYMM", "1000.00 mm"};
    QTest::newRow("flexible outer sizes stay between 5 and 1000") << Setting([](MainWindow &window) {
        setLength(window, "flexibleGridSpacing", 99.99);
        setCount(window, "flexibleWidth", 91);
        setCount(window, "flexibleHeight", 7);
    }) << QStringList{"flexibleOuterWidth", "1000.00 mm", "flexibleOuterHeight", "399.96 mm"};
    QTest::newRow("flexible spacing of nothing") << Setting([](MainWindow &window) {
        setCount(window, "flexibleOffsetXSpacings", -90);
        setLength(window, "flexibleGridSpacing", 0);
    }) << QStringList{"flexibleOuterWidth", "5.00 mm", "flexibleOffsetXMM", "0.00 mm"};
    QTest::newRow("flexible offsets may be negative") << Setting([](MainWindow &window) {
        setCount(window, "flexibleOffsetXSpacings", -90);
        setLength(window, "flexibleGridSpacing", 99.99);
    }) << QStringList{"flexibleOffsetXMM", "-4499.55 mm"};
}

void PatternParametersTest::displaysFollowTheInputs() {
    QFETCH(Setting, set);
    QFETCH(QStringList, displays);
    MainWindow window;
    set(window);
    for (int i = 0; i < displays.size(); i += 2) {
        QCOMPARE(shown(window, qPrintable(displays[i])), displays[i + 1]);
    }
}

void PatternParametersTest::stopsWritingAtTheFirstRefusal() {
    MainWindow window;
    setPage(window, 2);
    scripted_lmlib64::clearCalls();
    scripted_lmlib64::setResult("lmLibSetInt", "*/GridSize/\\1", 13);
    const auto message = driven_window::closeNextMessageBox();
    window.update();
    QVERIFY2(message->contains("ItemTypeNotCompatible"), qPrintable(*message));
    QCOMPARE(recorded_calls::count("lmLibSetInt /Execute/4/Parameters/Patterns/\\0/GridSize/\\1"), 1);
    QCOMPARE(recorded_calls::count("lmLibSetDouble"), 0);
    QCOMPARE(recorded_calls::count("lmLibSetString"), 1);
}

QTEST_MAIN(PatternParametersTest)
#include "pattern_parameters_test.moc"
