// How the form's values determine the displays and the library calls of one update.
#include <gtest/gtest.h>

#include "generator/main_window.h"
#include "tests/generator/driven_window.h"
#include "tests/generator/recorded_calls.h"
#include "tests/value_printing.h"

using driven_window::find;

namespace {

// Inputs by name and what they are set to, in this order.
using Inputs = std::vector<std::pair<const char *, double>>;

void set(const MainWindow &window, const Inputs &inputs) {
    for (const auto &[name, value] : inputs) {
        driven_window::setInput(window, name, value);
    }
}

class PatternParametersTest : public testing::Test {
protected:
    PatternParametersTest() { scripted_lmlib64::loadDefaultScript(); }
};

TEST_F(PatternParametersTest, choiceListsOfferTheirValuesAndWriteWhatTheyShow) {
    const QStringList spacings{"1mm",  "1.5mm", "2mm",  "3mm",  "4mm",  "6mm",  "8mm",
                               "12mm", "16mm",  "24mm", "32mm", "48mm", "64mm", "96mm"};
    const QStringList thicknesses{"0mm", "1mm", "2mm", "3mm", "4mm", "5mm"};
    const struct {
        int page;
        const char *name, *node;
        QStringList texts;
        QString current;
    } lists[] = {{1, "singleGridSpacing", "GridSpacing", spacings, "12mm"},
                 {1, "singleThickness", "Thickness", thicknesses, "0mm"},
                 {3, "assemblyGridSpacing", "GridSpacing", spacings, "12mm"}};
    MainWindow window;
    for (const auto &list : lists) {
        set(window, {{"patternType", list.page}});
        EXPECT_EQ(find<QComboBox>(window, list.name)->currentText(), list.current);
        ASSERT_EQ(find<QComboBox>(window, list.name)->count(), list.texts.size());
        for (int i = 0; i < list.texts.size(); ++i) {
            set(window, {{list.name, i}});
            EXPECT_EQ(find<QComboBox>(window, list.name)->currentText(), list.texts[i]);
            scripted_lmlib64::clearCalls();
            window.update();
            const QStringList written = recorded_calls::all().filter(QString("/\\0/%1 ").arg(list.node));
            EXPECT_EQ(written.join('\n').section(' ', -1) + "mm", list.texts[i]);
        }
    }
}

TEST_F(PatternParametersTest, writesThePattern) {
    const QStringList plateC{"String Type PlateC", "Double GridSpacing 24.75", "Double Thickness 3.5",
                             "Bool Polarity true"};
    const struct {
        const char *what;
        Inputs inputs;
        QStringList writes;
    } rows[] = {
        {"official, as opened", {}, plateC},
        {"official plate B, whatever the polarities of other pages",
         {{"officialPattern", 1}, {"singlePolarity", 0}, {"flexiblePolarity", 0}, {"assemblyPolarity", 0}},
         {"String Type PlateB", "Double GridSpacing 12.25", "Double Thickness 2.5", "Bool Polarity true"}},
        {"single, as opened",
         {{"patternType", 1}},
         {"String Type SingleCustom", "Double GridSpacing 12", "Double Thickness 0", "Bool Polarity true"}},
        {"single, every input changed",
         {{"patternType", 1}, {"singleGridSpacing", 1}, {"singleThickness", 3}, {"singlePolarity", 0}},
         {"String Type SingleCustom", "Double GridSpacing 1.5", "Double Thickness 3", "Bool Polarity false"}},
        {"flexible, as opened",
         {{"patternType", 2}},
         {"String Type Flexible", "Int GridSize/\\0 15", "Int GridSize/\\1 15", "Double GridSpacing 12.5",
          "Double Offset/\\0 0", "Double Offset/\\1 0", "Bool Polarity true"}},
        // -7 and 7 half spacings of 1.665 mm are 11.655 mm; the values shown are sent, rounded to two decimals.
        {"flexible, every input changed",
         {{"patternType", 2},
          {"flexibleWidth", 21},
          {"flexibleHeight", 8},
          {"flexibleGridSpacing", 3.33},
          {"flexibleOffsetXSpacings", 7},
          {"flexibleOffsetYSpacings", -7},
          {"flexiblePolarity", 0}},
         {"String Type Flexible", "Int GridSize/\\0 21", "Int GridSize/\\1 8", "Double GridSpacing 3.33",
          "Double Offset/\\0 11.66", "Double Offset/\\1 -11.66", "Bool Polarity false"}},
        {"assembly shows the first of its patterns",
         {{"patternType", 3}},
         {"String Type Assembly", "Int AssemblyPattern 0", "Double GridSpacing 12", "Bool Polarity true"}},
        {"assembly, every input changed",
         {{"patternType", 3}, {"assemblyGridSpacing", 13}, {"assemblyNumberOfPatterns", 18}, {"assemblyPolarity", 0}},
         {"String Type Assembly", "Int AssemblyPattern 0", "Double GridSpacing 96", "Bool Polarity false"}},
        {"halcon, as opened",
         {{"patternType", 4}},
         {"Double GridSpacing 12.5", "Double Thickness 0", "Bool Encoding true"}},
        {"halcon without data",
         {{"patternType", 4}, {"halconOffsetXSpacings", 3}, {"halconEncodeNothing", 1}},
         {"Double GridSpacing 12.5", "Bool Encoding false"}},
        {"halcon with thickness, spacing rounded as shown",
         {{"patternType", 4}, {"halconOuterSize", 33.33}, {"halconThickness", 2.25}},
         {"Double GridSpacing 4.17", "Double Thickness 2.25", "Bool Encoding true"}},
        {"halcon with offset, a negative one clamped as shown",
         {{"patternType", 4}, {"halconEncodeOffset", 1}, {"halconOffsetXSpacings", 3}, {"halconOffsetYSpacings", -3}},
         {"Double GridSpacing 12.5", "Double Offset/\\0 37.5", "Double Offset/\\1 0", "Bool Encoding true"}},
    };
    for (const auto &row : rows) {
        scripted_lmlib64::loadDefaultScript();
        MainWindow window;
        set(window, row.inputs);
        // Slots are numbered in sequence: the catalogue took one, and every update so far took one.
        const int slot = recorded_calls::count("lmLibMakeUniqueItem") + 1;
        scripted_lmlib64::clearCalls();
        window.update();
        QStringList writes = row.writes;
        for (QString &write : writes) {
            write = "lmLibSet" + write.replace(write.indexOf(' '), 1, " @/");
        }
        EXPECT_EQ(recorded_calls::all(), recorded_calls::updateCalls(slot, writes)) << row.what;
    }
}

TEST_F(PatternParametersTest, writesWhatItCanWhereNothingIsChosen) {
    MainWindow window;
    set(window, {{"patternType", 4}});
    find<QAbstractButton>(window, "halconEncodeSpacing")->setAutoExclusive(false);
    set(window, {{"halconEncodeSpacing", 0}});
    scripted_lmlib64::clearCalls();
    window.update();
    EXPECT_EQ(recorded_calls::all().filter("/Patterns/\\0/").filter("Set"),
              QStringList{"lmLibSetDouble /Execute/5/Parameters/Patterns/\\0/GridSpacing 12.5"});
    // If no page is current, the official pattern is written.
    find<QTabWidget>(window, "patternType")->clear();
    scripted_lmlib64::clearCalls();
    window.update();
    EXPECT_EQ(recorded_calls::all().filter("Type PlateC").size(), 1);
}

TEST_F(PatternParametersTest, displaysFollowTheInputs) {
    const struct {
        const char *what;
        Inputs inputs;
        QMap<QString, QString> displays;
    } rows[] = {
        {"as opened",
         {},
         {{"halconGridSpacing", "12.50 mm"},
          {"halconOffsetXMM", "0.00 mm"},
          {"flexibleOuterWidth", "100.00 mm"},
          {"flexibleOuterHeight", "100.00 mm"},
          {"flexibleOffsetXMM", "0.00 mm"},
          {"flexibleOffsetYMM", "0.00 mm"}}},
        {"offsets are whole spacings for halcon, halves for flexible",
         {{"halconOffsetXSpacings", 3},
          {"flexibleOffsetXSpacings", 3},
          {"halconOffsetYSpacings", 2},
          {"flexibleOffsetYSpacings", 2}},
         {{"halconOffsetXMM", "37.50 mm"},
          {"flexibleOffsetXMM", "18.75 mm"},
          {"halconOffsetYMM", "25.00 mm"},
          {"flexibleOffsetYMM", "12.50 mm"}}},
        // 33.33 / 8 = 4.16625, shown as 4.17; three of those are 12.51, not 12.50.
        {"halcon offsets build on the rounded spacing",
         {{"halconOuterSize", 33.33}, {"halconOffsetXSpacings", 3}},
         {{"halconGridSpacing", "4.17 mm"}, {"halconOffsetXMM", "12.51 mm"}}},
        {"halcon offsets stay between 0 and 1000",
         {{"halconOuterSize", 1000}, {"halconOffsetXSpacings", -128}, {"halconOffsetYSpacings", 127}},
         {{"halconGridSpacing", "125.00 mm"}, {"halconOffsetXMM", "0.00 mm"}, {"halconOffsetYMM", "1000.00 mm"}}},
        {"flexible outer sizes stay between 5 and 1000, offsets may be negative",
         {{"flexibleGridSpacing", 99.99},
          {"flexibleWidth", 91},
          {"flexibleHeight", 7},
          {"flexibleOffsetXSpacings", -90}},
         {{"flexibleOuterWidth", "1000.00 mm"},
          {"flexibleOuterHeight", "399.96 mm"},
          {"flexibleOffsetXMM", "-4499.55 mm"}}},
        {"flexible spacing of nothing",
         {{"flexibleOffsetXSpacings", -90}, {"flexibleGridSpacing", 0}},
         {{"flexibleOuterWidth", "5.00 mm"}, {"flexibleOffsetXMM", "0.00 mm"}}},
    };
    for (const auto &row : rows) {
        const MainWindow window;
        set(window, row.inputs);
        for (auto display = row.displays.begin(); display != row.displays.end(); ++display) {
            EXPECT_EQ(find<QDoubleSpinBox>(window, qPrintable(display.key()))->text(), display.value())
                << row.what << ": " << display.key().toStdString();
        }
    }
}

TEST_F(PatternParametersTest, stopsWritingAtTheFirstRefusal) {
    MainWindow window;
    set(window, {{"patternType", 2}});
    scripted_lmlib64::clearCalls();
    scripted_lmlib64::setResult("lmLibSetInt", "*/GridSize/\\1", 13);
    const auto message = driven_window::closeNextMessageBox();
    window.update();
    EXPECT_TRUE(message->contains("ItemTypeNotCompatible")) << message->toStdString();
    EXPECT_EQ(recorded_calls::count("lmLibSetInt /Execute/4/Parameters/Patterns/\\0/GridSize/\\1"), 1);
    EXPECT_EQ(recorded_calls::count("lmLibSetDouble"), 0);
    EXPECT_EQ(recorded_calls::count("lmLibSetString"), 1);
}

}  // namespace
