// The choice of the coordinate system that all patterns of an assembly get in the results: that of a reference pattern,
// or one through three corners.
#pragma once

#include <QWidget>

#include "viewer/session/session_result.h"

class QComboBox;
class QLabel;
class QPushButton;

class AxesPanel : public QWidget {
    Q_OBJECT

public:
    explicit AxesPanel(QWidget *parent = nullptr);
    void setSettings(const SessionSettings &newSettings);
    // Offers the patterns of the result; null if there is none.
    void setResult(const SessionResult *result);
    // Shows how many of the three corners are picked while that goes on.
    void setPickedCorners(int count);

signals:
    void settingsEdited(const SessionSettings &settings);
    // The user wants to pick three corners, or no longer wants to.
    void pickingToggled(bool isOn);

private:
    void showChoice();

    SessionSettings settings;
    QComboBox *reference;
    QPushButton *pick;
    QPushButton *clear;
    QLabel *choice;
    int picked = 0;
};
