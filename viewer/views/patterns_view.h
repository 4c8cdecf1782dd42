// The tab "Patterns". It shows the pose, print scale and bend of every print, and lets the user choose the common
// coordinate system.
#pragma once

#include "viewer/session/session_settings.h"
#include "viewer/views/result_view.h"

class QComboBox;
class QLabel;
class QPushButton;
class QTableWidget;

class PatternsView : public ResultView {
    Q_OBJECT

public:
    explicit PatternsView(QWidget *parent = nullptr);
    void setSettings(const SessionSettings &newSettings);
    // Tells the view how many of the three corners have been picked, so that it can ask for the next one.
    void setPickedCorners(int count);

signals:
    void settingsEdited(const SessionSettings &settings);
    // The user began or stopped picking three corners.
    void pickingToggled(bool isOn);

protected:
    void refresh() override;

private:
    void fillRow(int row, int print);
    void showFrame();
    void measureEdited(int row, int column);

    SessionSettings settings;
    QTableWidget *table;
    QComboBox *reference;
    QPushButton *pick;
    QPushButton *clear;
    QLabel *frame;
    int picked = 0;
};
