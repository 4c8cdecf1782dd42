#include "generator/cal_tab_combo_box.h"

#include <QSignalBlocker>
#include <cstdint>
#include <utility>

#include "lmlib/tree_command.h"
#include "lmlib/tree_item.h"

CalTabComboBox::CalTabComboBox(QWidget *parent) : QComboBox(parent) {
    reload();
}

void CalTabComboBox::reload() {
    // Signals are blocked while the list changes. Their receivers use the current entry, which does not exist yet when
    // the first item is added.
    QSignalBlocker blocker(this);
    clear();
    entries.clear();
    const TreeCommand command("GetModelInfo");
    command.parameters()["ListCalTabs"] = true;
    std::int32_t code = 0;
    command.execute(&code, "", true);
    command.checkResult(code);

    const TreeItem calTabs = command.result()["CalTabs"];
    for (std::int32_t i = calTabs.count() - 1; i >= 0; --i) {
        const TreeItem calTab = calTabs[i];
        const std::string name = calTab["Name"].asString();
        CalTabEntry entry{asStringOr(calTab["Type"], ""), asDoubleOr(calTab["GridSpacing"], 0.0),
                          asDoubleOr(calTab["Thickness"], 0.0)};
        if (entry.type.empty() && skipUntyped) {
            continue;
        }
        addItem(QString::fromUtf8(name.c_str()));
        entries.push_back(std::move(entry));
    }
    blocker.unblock();
    emit currentIndexChanged(currentIndex());
}

std::string CalTabComboBox::currentType() const {
    return currentEntry().type;
}

double CalTabComboBox::currentGridSpacing() const {
    return currentEntry().gridSpacing;
}

double CalTabComboBox::currentThickness() const {
    return currentEntry().thickness;
}

const CalTabEntry &CalTabComboBox::currentEntry() const {
    return entries[static_cast<std::size_t>(currentIndex())];
}
