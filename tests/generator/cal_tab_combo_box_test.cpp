// Tests the list of official plates, with various catalogues and failures of the library.
#include "generator/cal_tab_combo_box.h"

#include <gtest/gtest.h>

#include <QStringList>

#include "lmlib/lm_lib_exception.h"
#include "tests/scripted_lmlib64/scripted_lmlib64.h"
#include "tests/value_printing.h"

namespace {

void setCatalogue(const std::string &calTabsJson) {
    scripted_lmlib64::setCommandResult("GetModelInfo", R"({"CalTabs": )" + calTabsJson + "}");
}

// Returns "text: type gridSpacing thickness" for every item.
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

TEST_F(CalTabComboBoxTest, listsWhatTheCatalogueHolds) {
    const struct {
        const char *what, *catalogue;
        QStringList plates;
    } rows[] = {{"last plate first",
                 R"([{"Name": "A", "Type": "a", "GridSpacing": 1.5, "Thickness": 2},
             {"Name": "B", "Type": "b", "GridSpacing": 3, "Thickness": 4}])",
                 {"B: b 3 4", "A: a 1.5 2"}},
                {"missing values and values of another type are read as empty or 0",
                 R"([{"Name": "A"}, {"Name": "B", "Type": 7, "GridSpacing": "8", "Thickness": true}])",
                 {"B:  0 0", "A:  0 0"}},
                {"equal names are not merged, and names are not sorted",
                 R"([{"Name": "Z", "Type": "z"}, {"Name": "A", "Type": "a"}, {"Name": "Z", "Type": "z2"}])",
                 {"Z: z2 0 0", "A: a 0 0", "Z: z 0 0"}},
                {"names are UTF-8",
                 "[{\"Name\": \"\xc3\xb6 \xe2\x8c\x80 3 mm\"}]",
                 {QStringLiteral("\u00f6 \u2300 3 mm:  0 0")}},
                {"empty catalogue", "[]", {}}};
    // The same box loads each catalogue in turn, so that each must replace the one before.
    CalTabComboBox box(nullptr);
    EXPECT_EQ(box.currentType(), "PlateC");
    QStringList types;  // the type of the current plate whenever the box signals a change
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

TEST_F(CalTabComboBoxTest, failuresEndTheLoadingAndLeaveNoCommandSlot) {
    const struct {
        const char *function, *path;
        int code;
        const char *itemPath;
        QStringList plates;  // those that were read before the failure
    } rows[] = {
        {"lmLibSetBool", "*/ListCalTabs", 13, "/Execute/2/Parameters/ListCalTabs", {}},
        {"lmLibSetString", "*/Command", 19, "/Execute/2", {}},
        {"lmLibGetCount", "*/CalTabs", 13, "/Execute/2/Result/CalTabs", {}},
        {"lmLibGetString", "*/\\1/Name", 3, "/Execute/2/Result/CalTabs/\\1/Name", {"C: PlateC 24.75 3.5"}},
        {"lmLibGetType", "*/\\1/GridSpacing", 9, "/Execute/2/Result/CalTabs/\\1/GridSpacing", {"C: PlateC 24.75 3.5"}},
    };
    for (const auto &row : rows) {
        scripted_lmlib64::loadDefaultScript();
        CalTabComboBox box(nullptr);
        scripted_lmlib64::setResult(row.function, row.path, row.code);
        try {
            box.reload();
            ADD_FAILURE() << row.path;
        } catch (const LmLibException &exception) {
            EXPECT_EQ(exception.errorCode, row.code);
            EXPECT_EQ(exception.itemPath, row.itemPath);
        }
        EXPECT_EQ(listed(box), row.plates) << row.path;
        EXPECT_EQ(scripted_lmlib64::nodeJson("/Execute"), "{}") << row.path;
    }
}

}  // namespace
