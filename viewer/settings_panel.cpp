#include "viewer/settings_panel.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QLabel>
#include <QPushButton>
#include <QSignalBlocker>
#include <QSpinBox>
#include <utility>

using calibration::LensModel;

namespace {

// Returns the least width of an input in pixels, with room for two digits and the buttons. The toolkit's own minimum is
// too wide for small screens.
int leastInputWidth(const QWidget *box) {
    return box->fontMetrics().horizontalAdvance("00") + 30;
}

QString link(const char *anchor) {
    return QString(" <a href=\"%MANUAL%/guides/calibration/calibrating.html#%1\">").arg(anchor) +
           SettingsPanel::tr("More") + "</a>";
}

QSpinBox *makeCount(QWidget *parent, int value) {
    auto *box = new QSpinBox(parent);
    box->setRange(3, 200);
    box->setValue(value);
    box->setMinimumWidth(leastInputWidth(box));
    box->setKeyboardTracking(false);
    return box;
}

QDoubleSpinBox *makeLength(QWidget *parent) {
    auto *box = new QDoubleSpinBox(parent);
    box->setRange(0, 10000);
    box->setDecimals(3);
    box->setSuffix(" mm");
    box->setMinimumWidth(leastInputWidth(box));
    box->setKeyboardTracking(false);
    return box;
}

}  // namespace

SettingsPanel::SettingsPanel(QWidget *parent)
    : QWidget(parent),
      arrangement(new QComboBox(this)),
      lens(new QComboBox(this)),
      gridSpacing(makeLength(this)),
      patternFiles(new QPushButton(this)),
      hasBoard(new QCheckBox(tr("Plain b&oard:"), this)),
      boardColumns(makeCount(this, 9)),
      boardRows(makeCount(this, 6)),
      boardSquare(makeLength(this)),
      mayBend(new QCheckBox(tr("Prints may be bent"), this)) {
    // The texts are short, so that the closed box shows them whole. The tips of the open list explain them.
    const std::pair<QString, QString> arrangements[] = {{tr("Single cameras"), tr("Cameras, each by itself")},
                                                        {tr("Camera rig"), tr("Cameras that are fixed to each other")},
                                                        {tr("Assembly"), tr("Patterns that are fixed to each other")}};
    for (const auto &[text, tip] : arrangements) {
        arrangement->addItem(text);
        arrangement->setItemData(arrangement->count() - 1, tip, Qt::ToolTipRole);
    }
    lens->addItem(tr("Choose the best"));
    for (const LensModel model :
         {LensModel::Pinhole4, LensModel::Pinhole5, LensModel::Pinhole8, LensModel::Pinhole12, LensModel::Fisheye}) {
        lens->addItem(calibration::nameOf(model), int(model));
    }
    gridSpacing->setSpecialValueText(tr("as printed"));
    boardSquare->setSpecialValueText(tr("unknown"));
    arrangement->setToolTip(tr("How the photographs belong together.") + link("arrangement"));
    lens->setToolTip(tr("The lens model. LmView can choose the one that best predicts photographs that were not used "
                        "to compute it.") +
                     link("lens"));
    gridSpacing->setToolTip(tr("Twice the side of a square, or the distance from mark to mark. Enter it for Flexible "
                               "patterns, and for plates that do not encode it.") +
                            link("prints"));
    patternFiles->setToolTip(tr("The JSON or PDF files that LmCalTab saved.") + link("prints"));
    hasBoard->setToolTip(tr("A checkerboard without marks: inner corners in x and y, and the side of a square.") +
                         link("prints"));
    mayBend->setToolTip(tr("Treats a print as bent if that predicts photographs better.") + link("prints"));
    lay();
    for (QComboBox *box : {arrangement, lens}) {
        connect(box, qOverload<int>(&QComboBox::activated), this, &SettingsPanel::collect);
    }
    for (QDoubleSpinBox *box : {gridSpacing, boardSquare}) {
        connect(box, qOverload<double>(&QDoubleSpinBox::valueChanged), this, &SettingsPanel::collect);
    }
    for (QSpinBox *box : {boardColumns, boardRows}) {
        connect(box, qOverload<int>(&QSpinBox::valueChanged), this, &SettingsPanel::collect);
    }
    for (QCheckBox *box : {hasBoard, mayBend}) {
        connect(box, &QCheckBox::clicked, this, &SettingsPanel::collect);
    }
    connect(patternFiles, &QPushButton::clicked, this, &SettingsPanel::choosePatternFiles);
    setSettings({});
}

void SettingsPanel::lay() {
    auto *form = new QFormLayout(this);
    form->setContentsMargins(0, 0, 0, 0);
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    form->setVerticalSpacing(4);
    for (QComboBox *box : {arrangement, lens}) {
        box->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
        box->setMinimumContentsLength(8);
    }
    form->addRow(tr("Cali&brate:"), arrangement);
    form->addRow(tr("&Lens:"), lens);
    form->addRow(tr("&Grid spacing:"), gridSpacing);
    form->addRow(tr("Pattern file&s:"), patternFiles);
    auto *board = new QHBoxLayout;
    board->addWidget(boardColumns, 1);
    board->addWidget(new QLabel("×", this));
    board->addWidget(boardRows, 1);
    form->addRow(hasBoard, board);
    form->addRow(tr("Its squares:"), boardSquare);
    form->addRow(QString(), mayBend);
    boardColumns->setAccessibleName(tr("Inner corners in x"));
    boardRows->setAccessibleName(tr("Inner corners in y"));
    boardSquare->setAccessibleName(tr("Side of a square"));
}

void SettingsPanel::setSettings(const SessionSettings &settings) {
    current = settings;
    const QSignalBlocker blockers[] = {QSignalBlocker(gridSpacing), QSignalBlocker(boardSquare),
                                       QSignalBlocker(boardColumns), QSignalBlocker(boardRows)};
    arrangement->setCurrentIndex(int(settings.arrangement));
    lens->setCurrentIndex(settings.lens ? lens->findData(int(*settings.lens)) : 0);
    gridSpacing->setValue(settings.gridSpacing);
    hasBoard->setChecked(settings.board.has_value());
    if (settings.board) {
        boardColumns->setValue(settings.board->width());
        boardRows->setValue(settings.board->height());
    }
    boardSquare->setValue(settings.boardSquare);
    mayBend->setChecked(settings.mayBend);
    showPatternFiles();
}

void SettingsPanel::showPatternFiles() {
    const QStringList &files = current.patternFiles;
    patternFiles->setText(files.isEmpty()     ? tr("None")
                          : files.size() == 1 ? QFileInfo(files.first()).fileName()
                                              : tr("%1 files").arg(files.size()));
    for (QWidget *widget : {static_cast<QWidget *>(boardColumns), static_cast<QWidget *>(boardRows),
                            static_cast<QWidget *>(boardSquare)}) {
        widget->setEnabled(hasBoard->isChecked());
    }
}

void SettingsPanel::choosePatternFiles() {
    QFileDialog dialog(this, tr("Pattern Files"), {}, tr("Patterns of LmCalTab (*.json *.pdf)"));
    dialog.setFileMode(QFileDialog::ExistingFiles);
    // If the dialog is cancelled, no pattern files remain chosen. This is intentional: cancelling the dialog is the
    // way to remove the chosen files. Without files, the sizes come from what the patterns encode, or from the
    // settings.
    current.patternFiles = dialog.exec() == QDialog::Accepted ? dialog.selectedFiles() : QStringList();
    showPatternFiles();
    emit edited(current);
}

void SettingsPanel::collect() {
    current.arrangement = Arrangement(arrangement->currentIndex());
    current.lens.reset();
    if (lens->currentIndex() > 0) {
        current.lens = LensModel(lens->currentData().toInt());
    }
    current.gridSpacing = gridSpacing->value();
    current.board.reset();
    if (hasBoard->isChecked()) {
        current.board = QSize(boardColumns->value(), boardRows->value());
    }
    current.boardSquare = boardSquare->value();
    current.mayBend = mayBend->isChecked();
    showPatternFiles();
    emit edited(current);
}
