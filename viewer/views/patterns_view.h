// The tab "Patterns". For every print, it shows the position in the chosen coordinate system, the angle of the
// rotation, the scale along x and y, and the bend. A print has no position and no angle if the photographs do not link
// it with the first print that has a pose. A print without a pose has no scale and no bend either. The user can enter
// the measured lengths of a print's check bars in the last column.
#pragma once

#include "viewer/session/common_axes.h"
#include "viewer/views/result_view.h"

class QLabel;
class QTableWidget;

class PatternsView : public ResultView {
    Q_OBJECT

public:
    explicit PatternsView(QWidget *parent = nullptr);
    void setSettings(const SessionSettings &newSettings);

signals:
    // The user has entered the lengths of check bars, or has deleted them.
    void settingsEdited(const SessionSettings &settings);

protected:
    void refresh() override;

private:
    void fillRow(int row, int print);
    void fillPlace(int row, int print);
    void set(int row, int column, const QString &text);
    QString axesText() const;
    void measureEdited(int row, int column);

    SessionSettings settings;
    CommonAxes axes;
    QLabel *description;
    QTableWidget *table;
};
