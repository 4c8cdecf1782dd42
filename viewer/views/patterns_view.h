// The tab "Patterns". It shows the pose of every print in the chosen coordinate system, and its scale and bend.
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
