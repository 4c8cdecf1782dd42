// The list of official plates, as the library's answer makes it.
#include <QtTest>

#include "generator/cal_tab_combo_box.h"
#include "lmlib/lm_lib_exception.h"
#include "tests/generator/recorded_calls.h"

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

}  // namespace

class CalTabComboBoxTest : public QObject {
    Q_OBJECT

private slots:
    void init() { scripted_lmlib64::loadDefaultScript(); }
    void asksTheLibraryPlateByPlateFromTheLast();
    void listsWhatTheCatalogueHolds_data();
    void listsWhatTheCatalogueHolds();
    void startsWithTheFirstListedPlate();
    void reloadingReplacesTheList();
    void plateWithoutNameEndsTheLoading();
    void failuresPassThroughAndLeaveNoSlot_data();
    void failuresPassThroughAndLeaveNoSlot();
};

void CalTabComboBoxTest::asksTheLibraryPlateByPlateFromTheLast() {
    setCatalogue(R"([{"Name": "A", "Type": "a", "GridSpacing": 1.5, "Thickness": 2}, {"Name": "B", "Type": 5}])");
    const CalTabComboBox box(nullptr);
    const QStringList expected{"lmLibMakeUniqueItem /Execute",
                               "lmLibSetBool $/Parameters/ListCalTabs true",
                               "lmLibSetString $/Command GetModelInfo",
                               "lmLibGetType $/Command",
                               "lmLibWaitForType $/Command 1 true",
                               "lmLibGetType $/Result/ErrorSymbol",
                               "lmLibGetCount $/Result/CalTabs",
                               "lmLibGetString $/Result/CalTabs/\\1/Name",
                               "lmLibGetType $/Result/CalTabs/\\1/Type",
                               "lmLibGetType $/Result/CalTabs/\\1/Type",
                               "lmLibGetType $/Result/CalTabs/\\1/GridSpacing",
                               "lmLibGetType $/Result/CalTabs/\\1/Thickness",
                               "lmLibGetString $/Result/CalTabs/\\0/Name",
                               "lmLibGetType $/Result/CalTabs/\\0/Type",
                               "lmLibGetType $/Result/CalTabs/\\0/Type",
                               "lmLibGetString $/Result/CalTabs/\\0/Type",
                               "lmLibGetType $/Result/CalTabs/\\0/GridSpacing",
                               "lmLibGetType $/Result/CalTabs/\\0/GridSpacing",
                               "lmLibGetDouble $/Result/CalTabs/\\0/GridSpacing",
                               "lmLibGetType $/Result/CalTabs/\\0/Thickness",
                               "lmLibGetType $/Result/CalTabs/\\0/Thickness",
                               "lmLibGetDouble $/Result/CalTabs/\\0/Thickness",
                               "lmLibErase $"};
    QCOMPARE(recorded_calls::all(), recorded_calls::inSlot(1, expected));
}

void CalTabComboBoxTest::listsWhatTheCatalogueHolds_data() {
    QTest::addColumn<QByteArray>("catalogue");
    QTest::addColumn<QStringList>("plates");
    QTest::newRow("last plate first") << QByteArray(R"([{"Name": "A", "Type": "a", "GridSpacing": 1.5, "Thickness": 2},
                          {"Name": "B", "Type": "b", "GridSpacing": 3, "Thickness": 4},
                          {"Name": "C", "Type": "c", "GridSpacing": 5, "Thickness": 6}])")
                                      << QStringList{"C: c 5 6", "B: b 3 4", "A: a 1.5 2"};
    QTest::newRow("values missing or of another type count as none")
        << QByteArray(R"([{"Name": "A"}, {"Name": "B", "Type": 7, "GridSpacing": "8", "Thickness": true}])")
        << QStringList{"B:  0 0", "A:  0 0"};
    QTest::newRow("equal names are not merged, others not sorted")
        << QByteArray(R"([{"Name": "Z", "Type": "z"}, {"Name": "A", "Type": "a"}, {"Name": "Z", "Type": "z2"}])")
        << QStringList{"Z: z2 0 0", "A: a 0 0", "Z: z 0 0"};
    QTest::newRow("names are UTF-8") << QByteArray(
                                            "[{\"Name\": \"Gr\xc3\xb6\xc3\x9f"
                                            "e \xe2\x8c\x80 3 mm\"}]")
                                     << QStringList{QStringLiteral("Gr\u00f6\u00dfe \u2300 3 mm:  0 0")};
    QTest::newRow("empty catalogue") << QByteArray("[]") << QStringList{};
}

void CalTabComboBoxTest::listsWhatTheCatalogueHolds() {
    QFETCH(QByteArray, catalogue);
    QFETCH(QStringList, plates);
    setCatalogue(catalogue.toStdString());
    CalTabComboBox box(nullptr);
    QCOMPARE(box.currentIndex(), plates.isEmpty() ? -1 : 0);
    QCOMPARE(listed(box), plates);
    QCOMPARE(scripted_lmlib64::nodeJson("/Execute"), std::string("{}"));
}

void CalTabComboBoxTest::startsWithTheFirstListedPlate() {
    const CalTabComboBox box(nullptr);
    QCOMPARE(box.currentText(), QString("C"));
    QCOMPARE(box.currentType(), std::string("PlateC"));
}

void CalTabComboBoxTest::reloadingReplacesTheList() {
    CalTabComboBox box(nullptr);
    box.setCurrentIndex(2);
    setCatalogue(R"([{"Name": "New", "Type": "n", "GridSpacing": 9, "Thickness": 1}])");
    box.reload();
    QCOMPARE(listed(box), QStringList{"New: n 9 1"});
}

void CalTabComboBoxTest::plateWithoutNameEndsTheLoading() {
    CalTabComboBox box(nullptr);
    setCatalogue(R"([{"Name": "A"}, {"Type": "b"}, {"Name": "C", "Type": "c"}])");
    try {
        box.reload();
        QFAIL("no exception");
    } catch (const LmLibException &exception) {
        QCOMPARE(exception.errorCode, 3);
        QCOMPARE(exception.itemPath, std::string("/Execute/2/Result/CalTabs/\\1/Name"));
    }
    QCOMPARE(listed(box), QStringList{"C: c 0 0"});
}

void CalTabComboBoxTest::failuresPassThroughAndLeaveNoSlot_data() {
    QTest::addColumn<QByteArray>("function");
    QTest::addColumn<QByteArray>("path");
    QTest::addColumn<int>("code");
    QTest::addColumn<QByteArray>("itemPath");
    const auto row = [](const char *function, const char *path, int code, const char *itemPath) {
        QTest::newRow(path) << QByteArray(function) << QByteArray(path) << code << QByteArray(itemPath);
    };
    row("lmLibMakeUniqueItem", "/Execute", 12, "/Execute");
    row("lmLibSetBool", "*/ListCalTabs", 13, "/Execute/1/Parameters/ListCalTabs");
    row("lmLibSetString", "*/Command", 19, "/Execute/1");
    row("lmLibWaitForType", "/Execute/1/Command", 27, "/Execute/1");
    row("lmLibGetCount", "*/CalTabs", 13, "/Execute/1/Result/CalTabs");
    row("lmLibGetType", "*/CalTabs/*/GridSpacing", 9, "/Execute/1/Result/CalTabs/\\2/GridSpacing");
}

void CalTabComboBoxTest::failuresPassThroughAndLeaveNoSlot() {
    QFETCH(QByteArray, function);
    QFETCH(QByteArray, path);
    QFETCH(int, code);
    QFETCH(QByteArray, itemPath);
    scripted_lmlib64::setResult(function.toStdString(), path.toStdString(), code);
    try {
        const CalTabComboBox box(nullptr);
        QFAIL("no exception");
    } catch (const LmLibException &exception) {
        QCOMPARE(exception.errorCode, code);
        QCOMPARE(exception.itemPath, itemPath.toStdString());
    }
    QCOMPARE(scripted_lmlib64::nodeJson("/Execute"), std::string("{}"));
}

QTEST_MAIN(CalTabComboBoxTest)
#include "cal_tab_combo_box_test.moc"
