// The list of official plates, for various catalogues and failures of the library.
#include "generator/cal_tab_combo_box.h"

#include <gtest/gtest.h>

#include "lmlib/lm_lib_exception.h"
#include "tests/generator/recorded_calls.h"
#include "tests/value_printing.h"

namespace {

void setCatalogue(const std::string &calTabsJson) {
    scripted_lmlib64::CommandScript script;
    script.resultJson = R"({"CalTabs": )" + calTabsJson + "}";
    scripted_lmlib64::setCommand("GetModelInfo", {script});
}

// "text: type gridSpacing thickness" of every item.
QStringList listed(CalTabComboBox &box) {
    QStringList plates;
    for (int i = 0; i < box.count(); ++i) {
        box.setCurrentIndex(i);
        plates << QString("%1: %2 %3 %4")
                      .arg(box.itemText(i), QString::fromStdString(box.currentType()))
                      .arg(box.currentGridSpacing())
                      .arg(box.currentThickness());
    }
    return plates;
}

class CalTabComboBoxTest : public testing::Test {
protected:
    CalTabComboBoxTest() { scripted_lmlib64::loadDefaultScript(); }
};

TEST_F(CalTabComboBoxTest, asksTheLibraryPlateByPlateFromTheLast) {
    setCatalogue(R"([{"Name": "A", "Type": "a", "GridSpacing": 1.5, "Thickness": 2}, {"Name": "B", "Type": 5}])");
    const CalTabComboBox box(nullptr);
    QStringList expected{"lmLibMakeUniqueItem /Execute", "lmLibSetBool $/Parameters/ListCalTabs true"};
    expected << recorded_calls::runCalls("GetModelInfo") << "lmLibGetCount $/Result/CalTabs";
    for (const char *call :
         {"String %1/Name", "Type %1/Type", "Type %1/Type", "Type %1/GridSpacing", "Type %1/Thickness"}) {
        expected << "lmLibGet" + QString(call).arg("$/Result/CalTabs/\\1");
    }
    for (const char *call : {"String %1/Name", "Type %1/Type", "Type %1/Type", "String %1/Type", "Type %1/GridSpacing",
                             "Type %1/GridSpacing", "Double %1/GridSpacing", "Type %1/Thickness", "Type %1/Thickness",
                             "Double %1/Thickness"}) {
        expected << "lmLibGet" + QString(call).arg("$/Result/CalTabs/\\0");
    }
    EXPECT_EQ(recorded_calls::all(), recorded_calls::inSlot(1, expected << "lmLibErase $"));
}

TEST_F(CalTabComboBoxTest, listsWhatTheCatalogueHolds) {
    const struct {
        const char *what, *catalogue;
        QStringList plates;
    } rows[] = {{"last plate first",
                 R"([{"Name": "A", "Type": "a", "GridSpacing": 1.5, "Thickness": 2},
             {"Name": "B", "Type": "b", "GridSpacing": 3, "Thickness": 4}])",
                 {"B: b 3 4", "A: a 1.5 2"}},
                {"values missing or of another type count as none",
                 R"([{"Name": "A"}, {"Name": "B", "Type": 7, "GridSpacing": "8", "Thickness": true}])",
                 {"B:  0 0", "A:  0 0"}},
                {"equal names are not merged, others not sorted",
                 R"([{"Name": "Z", "Type": "z"}, {"Name": "A", "Type": "a"}, {"Name": "Z", "Type": "z2"}])",
                 {"Z: z2 0 0", "A: a 0 0", "Z: z 0 0"}},
                {"names are UTF-8",
                 "[{\"Name\": \"\xc3\xb6 \xe2\x8c\x80 3 mm\"}]",
                 {QStringLiteral("\u00f6 \u2300 3 mm:  0 0")}},
                {"empty catalogue", "[]", {}}};
    // The same box loads each catalogue in turn, so that each must replace the one before.
    CalTabComboBox box(nullptr);
    EXPECT_EQ(box.currentType(), "PlateC");
    QStringList types;  // of the current plate, one for each signal that it has changed
    QObject::connect(&box, QOverload<int>::of(&QComboBox::currentIndexChanged),
                     [&](int i) { types << (i < 0 ? QString() : QString::fromStdString(box.currentType())); });
    for (const auto &row : rows) {
        setCatalogue(row.catalogue);
        types.clear();
        box.reload();
        EXPECT_EQ(types, QStringList(row.plates.value(0).section(": ", 1).section(' ', 0, 0))) << row.what;
        EXPECT_EQ(box.currentIndex(), row.plates.isEmpty() ? -1 : 0) << row.what;
        EXPECT_EQ(listed(box), row.plates) << row.what;
        EXPECT_EQ(scripted_lmlib64::nodeJson("/Execute"), "{}");
    }
}

TEST_F(CalTabComboBoxTest, plateWithoutNameEndsTheLoading) {
    CalTabComboBox box(nullptr);
    setCatalogue(R"([{"Name": "A"}, {"Type": "b"}, {"Name": "C", "Type": "c"}])");
    try {
        box.reload();
        ADD_FAILURE() << "no exception";
    } catch (const LmLibException &exception) {
        EXPECT_EQ(exception.errorCode, 3);
        EXPECT_EQ(exception.itemPath, "/Execute/2/Result/CalTabs/\\1/Name");
    }
    EXPECT_EQ(listed(box), QStringList{"C: c 0 0"});
}

TEST_F(CalTabComboBoxTest, failuresPassThroughAndLeaveNoSlot) {
    const struct {
        const char *function, *path;
        int code;
        const char *itemPath;
    } rows[] = {
        {"lmLibMakeUniqueItem", "/Execute", 12, "/Execute"},
        {"lmLibSetBool", "*/ListCalTabs", 13, "/Execute/1/Parameters/ListCalTabs"},
        {"lmLibSetString", "*/Command", 19, "/Execute/1"},
        {"lmLibWaitForType", "/Execute/1/Command", 27, "/Execute/1"},
        {"lmLibGetCount", "*/CalTabs", 13, "/Execute/1/Result/CalTabs"},
        {"lmLibGetType", "*/CalTabs/*/GridSpacing", 9, "/Execute/1/Result/CalTabs/\\2/GridSpacing"},
    };
    for (const auto &row : rows) {
        scripted_lmlib64::loadDefaultScript();
        scripted_lmlib64::setResult(row.function, row.path, row.code);
        try {
            const CalTabComboBox box(nullptr);
            ADD_FAILURE() << row.path;
        } catch (const LmLibException &exception) {
            EXPECT_EQ(exception.errorCode, row.code);
            EXPECT_EQ(exception.itemPath, row.itemPath);
        }
        EXPECT_EQ(scripted_lmlib64::nodeJson("/Execute"), "{}") << row.path;
    }
}

}  // namespace
