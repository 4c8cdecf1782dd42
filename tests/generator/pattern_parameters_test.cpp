// Tests how the inputs of the form determine two things: the values that the form computes and displays, and the
// library calls of one update.
#include <gtest/gtest.h>

#include "generator/main_window.h"
#include "tests/generator/driven_window.h"
#include "tests/generator/recorded_calls.h"
#include "tests/value_printing.h"

using driven_window::find;

namespace {

// The names of inputs, and the values to which they are set. They are set in this order.
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
    const struct {
        const char *what;
        Inputs inputs;
        QStringList writes;
    } rows[] = {
        {"official plate B, whatever the polarities of other pages",
         {{"officialPattern", 1}, {"singlePolarity", 0}, {"flexiblePolarity", 0}, {"assemblyPolarity", 0}},
         {"String Type PlateB", "Double GridSpacing 12.25", "Double Thickness 2.5", "Bool Polarity true"}},
        {"single, every input changed",
         {{"patternType", 1}, {"singleGridSpacing", 1}, {"singleThickness", 3}, {"singlePolarity", 0}},
         {"String Type SingleCustom", "Double GridSpacing 1.5", "Double Thickness 3", "Bool Polarity false"}},
        // -7 and 7 half spacings of 1.665 mm are -11.655 and 11.655 mm. The form sends the values that it shows, which
        // are rounded to two decimals.
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
        {"assembly, the first of its patterns",
         {{"patternType", 3}, {"assemblyGridSpacing", 13}, {"assemblyNumberOfPatterns", 18}, {"assemblyPolarity", 0}},
         {"String Type Assembly", "Int AssemblyPattern 0", "Double GridSpacing 96", "Bool Polarity false"}},
        {"halcon, nothing encoded",
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
        // Slots are numbered in sequence. Reading the plate catalogue took one slot, and so did every update so far.
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

TEST_F(PatternParametersTest, leavesOutParametersForWhichNothingIsChosen) {
    MainWindow window;
    set(window, {{"patternType", 4}});
    // Switches off the only one of the three radio buttons that is on. Users cannot do this, because they can only
    // switch another one on.
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

TEST_F(PatternParametersTest, displaysFollowTheInputsOfEveryPage) {
    const MainWindow window;
    set(window, {{"halconOuterSize", 33.33},
                 {"halconOffsetXSpacings", 3},
                 {"halconOffsetYSpacings", -3},
                 {"flexibleWidth", 21},
                 {"flexibleHeight", 8},
                 {"flexibleGridSpacing", 10},
                 {"flexibleOffsetXSpacings", 3},
                 {"flexibleOffsetYSpacings", -3}});
    // 33.33 / 8 = 4.16625 is shown as 4.17, and three times 4.17 is 12.51. The offset of a Flexible pattern is counted
    // in half grid spacings.
    const std::pair<const char *, const char *> displays[] = {
        {"halconGridSpacing", "4.17 mm"},    {"halconOffsetXMM", "12.51 mm"},     {"halconOffsetYMM", "0.00 mm"},
        {"flexibleOuterWidth", "110.00 mm"}, {"flexibleOuterHeight", "45.00 mm"}, {"flexibleOffsetXMM", "15.00 mm"},
        {"flexibleOffsetYMM", "-15.00 mm"}};
    for (const auto &[name, text] : displays) {
        EXPECT_EQ(find<QDoubleSpinBox>(window, name)->text(), text) << name;
    }
}

}  // namespace
