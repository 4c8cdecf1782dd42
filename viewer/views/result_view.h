// The base of the tabs: each shows the session's result, and is drawn anew only while it is visible.
#pragma once

#include <QWidget>
#include <memory>

#include "viewer/session/session_result.h"

class QComboBox;
class QVBoxLayout;

class ResultView : public QWidget {
    Q_OBJECT

public:
    explicit ResultView(QWidget *parent = nullptr) : QWidget(parent) {}

    // Null, or a result without a calibration, empties the view.
    void setResult(std::shared_ptr<const SessionResult> newResult);

protected:
    void showEvent(QShowEvent *event) override;

    // Shows `result` anew.
    virtual void refresh() = 0;
    // The calibration of the result; null if there is none.
    const calibration::Calibration *calibrated() const { return result ? result->calibration.get() : nullptr; }

    std::shared_ptr<const SessionResult> result;

private:
    bool isOutOfDate = true;
};

// A view of one camera at a time, with a choice of the camera if there are several.
class CameraView : public ResultView {
    Q_OBJECT

public:
    explicit CameraView(QWidget *parent = nullptr);

protected:
    void refresh() final;
    // camera is -1 if there is no calibrated camera.
    virtual void showCamera(int camera) = 0;
    // Further choices stand beside that of the camera.
    QVBoxLayout *content() const { return column; }

private:
    void showChosen();

    QVBoxLayout *column;
    QComboBox *choice;
};
