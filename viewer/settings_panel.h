// A form for the settings of a session. Settings that the form does not show stay as they are.
#pragma once

#include <QWidget>

#include "viewer/session/session_settings.h"

class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QSpinBox;
class QPushButton;

class SettingsPanel : public QWidget {
    Q_OBJECT

public:
    explicit SettingsPanel(QWidget *parent = nullptr);
    void setSettings(const SessionSettings &settings);

signals:
    void edited(const SessionSettings &settings);

private:
    void lay();
    void collect();
    void choosePatternFiles();
    void showPatternFiles();

    SessionSettings current;
    QComboBox *arrangement;
    QComboBox *lens;
    QDoubleSpinBox *gridSpacing;
    QPushButton *patternFiles;
    QCheckBox *hasBoard;
    QSpinBox *boardColumns;
    QSpinBox *boardRows;
    QDoubleSpinBox *boardSquare;
    QCheckBox *mayBend;
};
