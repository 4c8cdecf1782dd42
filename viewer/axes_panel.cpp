#include "viewer/axes_panel.h"

#include <QComboBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>

namespace {

// The data of the item "three corners", which is in the list only while three corners define the axes. The item "the
// first pattern" has no data. Each other item has the number of its pattern as data.
constexpr int threeCorners = -1;

}  // namespace

AxesPanel::AxesPanel(QWidget *parent)
    : QWidget(parent),
      reference(new QComboBox(this)),
      pick(new QPushButton(tr("Pick Three Corners"), this)),
      clear(new QPushButton(tr("Clear"), this)),
      choice(new QLabel(this)) {
    pick->setObjectName("pickCorners");
    pick->setCheckable(true);
    pick->setToolTip(
        tr("Click three corners in photographs: the origin, one on the x axis, one in the plane of x and y."));
    choice->setWordWrap(true);
    auto *choices = new QHBoxLayout;
    choices->addWidget(reference, 1);
    choices->addWidget(pick);
    choices->addWidget(clear);
    auto *form = new QFormLayout(this);
    form->setContentsMargins(0, 0, 0, 0);
    form->setVerticalSpacing(4);
    form->setRowWrapPolicy(QFormLayout::WrapLongRows);
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    form->addRow(tr("Common a&xes of:"), choices);
    static_cast<QLabel *>(form->labelForField(choices))->setBuddy(reference);
    form->addRow(choice);
    connect(pick, &QPushButton::toggled, this, [this](bool isOn) {
        picked = 0;
        showChoice();
        emit pickingToggled(isOn);
    });
    connect(clear, &QPushButton::clicked, this, [this] {
        settings.frame.reset();
        emit settingsEdited(settings);
    });
    connect(reference, qOverload<int>(&QComboBox::activated), this, [this](int index) {
        if (index == reference->findData(threeCorners)) {
            return;
        }
        settings.reference.reset();
        if (index > 0) {
            settings.reference = reference->itemData(index).toInt();
        }
        settings.frame.reset();
        emit settingsEdited(settings);
    });
    setResult(nullptr);
}

void AxesPanel::setSettings(const SessionSettings &newSettings) {
    settings = newSettings;
    const int extra = reference->findData(threeCorners);
    if (extra >= 0) {
        reference->removeItem(extra);
    }
    int shown = 0;
    if (settings.frame) {
        shown = reference->count();
        reference->addItem(tr("three corners"), threeCorners);
    } else if (settings.reference) {
        shown = qMax(0, reference->findData(*settings.reference));
    }
    reference->setCurrentIndex(shown);
    showChoice();
}

void AxesPanel::setResult(const SessionResult *result) {
    reference->clear();
    reference->addItem(tr("the first pattern"));
    const auto calibration = result == nullptr ? nullptr : result->calibration;
    for (const calibration::Print &print :
         calibration ? calibration->observations.prints : std::vector<calibration::Print>()) {
        if (print.number >= 0) {
            reference->addItem(tr("pattern %1").arg(print.number), print.number);
        }
    }
    pick->setEnabled(calibration != nullptr);
    setSettings(settings);
}

void AxesPanel::setPickedCorners(int count) {
    picked = count;
    if (count == 3) {
        pick->setChecked(false);
    }
    showChoice();
}

void AxesPanel::showChoice() {
    clear->setEnabled(settings.frame.has_value());
    if (pick->isChecked()) {
        const QString wanted[] = {tr("the origin"), tr("a point on the x axis"), tr("a point in the plane of x and y")};
        choice->setText(tr("Click %1 in a photograph.").arg(wanted[qBound(0, picked, 2)]));
    } else if (settings.frame) {
        QStringList corners;
        for (const NamedCorner &corner : *settings.frame) {
            corners << tr("pattern %1, column %2, row %3").arg(corner.pattern).arg(corner.column).arg(corner.row);
        }
        choice->setText(tr("Origin: %1. On the x axis: %2. In the plane: %3.").arg(corners[0], corners[1], corners[2]));
    } else {
        choice->setText(tr("Results have the axes of this pattern: x to the right, y down, z into the print."));
    }
}
