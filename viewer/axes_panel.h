// Lets the user choose the coordinate system of an assembly's results. It is either that of a reference pattern, or it
// is defined by three corners.
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
    // Offers the patterns of the result, which may be null.
    void setResult(const SessionResult *result);
    // Tells the panel how many of the three corners have been picked, so that it can ask for the next one.
    void setPickedCorners(int count);

signals:
    void settingsEdited(const SessionSettings &settings);
    // The user began or stopped picking three corners.
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
