#include "viewer/views/patterns_view.h"

#include <QHeaderView>
#include <QLabel>
#include <QSignalBlocker>
#include <QTableWidget>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>

#include "viewer/session/photograph_calibration.h"
#include "viewer/views/drawing.h"

using calibration::PrintShape;

namespace {

enum Column { Name, Photographs, X, Y, Z, Turn, ScaleX, ScaleY, Bend, Measured, ColumnCount };

constexpr double barLength = 100;  // mm, of the check bars on a printed page
constexpr int exactDecimals = 4;   // of coordinates in mm that have no standard deviation

// Returns how far the print is from flat, in mm: the difference between the greatest and the least height of its
// corners above its plane. The plane's own height, 0, counts too.
double bendOf(const calibration::Print &print, const PrintShape &shape) {
    double low = 0;
    double high = 0;
    for (const Eigen::Vector2d &point : print.points) {
        const double z = calibration::printedPoint(shape.numbers.data(), shape.reach, point).place.z();
        low = std::min(low, z);
        high = std::max(high, z);
    }
    return high - low;
}

QString percent(double logarithm) {
    return QString::number(100 * std::exp(logarithm), 'f', 3) + " %";
}

}  // namespace

PatternsView::PatternsView(QWidget *parent)
    : ResultView(parent), description(new QLabel(this)), table(new QTableWidget(0, ColumnCount, this)) {
    description->setWordWrap(true);
    table->setAccessibleName(tr("Patterns"));
    table->setHorizontalHeaderLabels({tr("Pattern"), tr("Photos"), tr("X [mm]"), tr("Y [mm]"), tr("Z [mm]"),
                                      tr("Turn [°]"), tr("Scale x"), tr("Scale y"), tr("Bend [mm]"),
                                      tr("Bars of 100 mm")});
    table->horizontalHeaderItem(Measured)->setToolTip(
        tr("Measure the two check bars of a print with a caliper. Then double-click the cell of that print in this "
           "column, and enter the two lengths in mm, such as 99.7 x 100.1"));
    table->verticalHeader()->hide();
    table->setAlternatingRowColors(true);
    table->setSelectionBehavior(QAbstractItemView::SelectRows);
    auto *column = new QVBoxLayout(this);
    column->addWidget(description);
    column->addWidget(table, 1);
    connect(table, &QTableWidget::cellChanged, this, &PatternsView::measureEdited);
}

void PatternsView::setSettings(const SessionSettings &newSettings) {
    settings = newSettings;
    refresh();
}

QString PatternsView::axesText() const {
    const auto &prints = calibrated()->observations.prints;
    const auto &groups = calibrated()->estimate.groups;
    const auto first = size_t(std::find(groups.begin(), groups.end(), calibrated()->firstGroup()) - groups.begin());
    if (calibrated()->firstGroup() < 0) {
        return {};
    }
    const QString firstName = QString::fromStdString(prints[first].name);
    QString ownAxes = tr("The positions are in the axes of %1.").arg(firstName);
    if (!axes.problem.isEmpty()) {
        return axes.problem + " " + ownAxes;
    }
    const QString relation = tr("The standard deviations (±) are relative to %1.").arg(firstName);
    if (settings.frame) {
        return tr("The positions are in the axes of the three corners.") + " " + relation;
    }
    for (const calibration::Print &print : prints) {
        if (settings.reference && print.number == *settings.reference) {
            return tr("The positions are in the axes of %1.").arg(QString::fromStdString(print.name)) + " " + relation;
        }
    }
    return ownAxes;
}

void PatternsView::set(int row, int column, const QString &text) {
    auto *item = new QTableWidgetItem(text);
    item->setTextAlignment(int(Qt::AlignVCenter) | int(column == Name ? Qt::AlignLeft : Qt::AlignRight));
    if (column != Measured) {
        item->setFlags(item->flags() & ~Qt::ItemIsEditable);
    }
    table->setItem(row, column, item);
}

void PatternsView::fillPlace(int row, int print) {
    if (calibrated()->estimate.groups[size_t(print)] != calibrated()->firstGroup()) {
        set(row, X, tr("not linked"));
        return;
    }
    const calibration::RigidMotion pose = axes.fromWorld * calibrated()->estimate.worldFromPrint[size_t(print)];
    const Eigen::Matrix3d rotation = calibration::rotationMatrix(axes.fromWorld.rotation);
    const Eigen::MatrixXd covariance = calibrated()->covariance.worldFromPrint(print);
    Eigen::Vector3d sigma = Eigen::Vector3d::Zero();
    if (covariance.size() > 0) {
        const Eigen::Matrix3d turned = rotation * covariance.bottomRightCorner<3, 3>() * rotation.transpose();
        sigma = turned.diagonal().cwiseSqrt();
    }
    for (const int axis : {0, 1, 2}) {
        const double value = pose.translation[axis];
        // The pose of the first print counts as exact, so its coordinates have no standard deviation. They are shown
        // with `exactDecimals` decimals, except for a coordinate that is exactly 0, which is shown as "0".
        const bool isExact = sigma[axis] == 0 && value != 0;
        set(row, X + axis, isExact ? QString::number(value, 'f', exactDecimals) : withSigma(value, sigma[axis]));
    }
    set(row, Turn,
        withSigma(pose.rotation.norm() * 180 / M_PI, calibrated()->prints[size_t(print)].rotationSigma.norm()));
}

void PatternsView::fillRow(int row, int print) {
    const auto &known = calibrated()->observations.prints[size_t(print)];
    const auto &trust = calibrated()->prints[size_t(print)];
    const PrintShape &shape = calibrated()->estimate.shapes[size_t(print)];
    int photographs = 0;
    for (const calibration::Sighting &sighting : calibrated()->observations.sightings) {
        photographs += sighting.print == print && sighting.isUsed ? 1 : 0;
    }
    set(row, Name, QString::fromStdString(known.name));
    table->item(row, Name)->setData(Qt::UserRole, known.number);
    set(row, Photographs, QString::number(photographs));
    if (calibrated()->estimate.groups[size_t(print)] < 0) {
        set(row, X, tr("not known"));
        return;
    }
    fillPlace(row, print);
    set(row, ScaleX, percent(shape.numbers[PrintShape::scale] + shape.numbers[PrintShape::ratio] / 2));
    set(row, ScaleY, percent(shape.numbers[PrintShape::scale] - shape.numbers[PrintShape::ratio] / 2));
    set(row, Bend, QString::number(bendOf(known, shape), 'f', 2));
    const auto measured = settings.measured.find(known.number);
    set(row, Measured,
        measured == settings.measured.end()
            ? QString("–")
            : QString("%1 x %2").arg(barLength * measured->x()).arg(barLength * measured->y()));
    if (!canBeMeasured(calibrated()->observations, size_t(print))) {
        QTableWidgetItem *item = table->item(row, Measured);
        item->setText("–");
        item->setFlags(item->flags() & ~Qt::ItemIsEditable);
        item->setToolTip(
            tr("Several prints here have no number, so entered lengths could belong to any of them. "
               "Calibrate this print alone to enter its lengths."));
    }
    if (!trust.isDetermined && !trust.isMeasured) {
        table->item(row, ScaleX)->setToolTip(tr("The photographs tell little about the scale of this print."));
        table->item(row, ScaleX)->setText("≈ " + table->item(row, ScaleX)->text());
    }
}

void PatternsView::refresh() {
    const QSignalBlocker tableBlocker(table);
    table->setRowCount(0);
    description->setVisible(calibrated() != nullptr);
    if (calibrated() != nullptr) {
        axes = commonAxes(*calibrated(), settings);
        description->setText(axesText());
        const auto &prints = calibrated()->observations.prints;
        table->setRowCount(int(prints.size()));
        for (size_t print = 0; print < prints.size(); ++print) {
            fillRow(int(print), int(print));
        }
        table->resizeColumnsToContents();
    }
}

void PatternsView::measureEdited(int row, int column) {
    if (column != Measured) {
        return;
    }
    const QStringList lengths = table->item(row, Measured)->text().toLower().remove("mm").split('x');
    const int number = table->item(row, Name)->data(Qt::UserRole).toInt();
    const double x = lengths.value(0).trimmed().toDouble();
    const double y = lengths.size() > 1 ? lengths[1].trimmed().toDouble() : x;
    settings.measured.remove(number);
    if (x > 0.9 * barLength && x < 1.1 * barLength && y > 0.9 * barLength && y < 1.1 * barLength) {
        settings.measured[number] = {x / barLength, y / barLength};
    }
    emit settingsEdited(settings);
    refresh();
}
