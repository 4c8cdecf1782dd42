// The tab "Patterns". It shows the pose, print scale and bend of every print.
#pragma once

#include "viewer/session/session_settings.h"
#include "viewer/views/result_view.h"

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
    void measureEdited(int row, int column);

    SessionSettings settings;
    QTableWidget *table;
};
