// The base classes of the tabs that show the session's result. Such a tab updates itself only while it is visible.
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

    // Shows this result. The view is empty if the result is null or has no calibration.
    void setResult(std::shared_ptr<const SessionResult> newResult);

protected:
    void showEvent(QShowEvent *event) override;

    // Updates the view from `result`.
    virtual void refresh() = 0;
    // Returns the calibration of the result; null if there is none.
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
    // Shows the camera with this index; `camera` is -1 if the chosen camera is not calibrated.
    virtual void showCamera(int camera) = 0;
    // Says why showCamera() was called with -1.
    QString whyNoCamera() const;
    // Returns the layout to which the view adds its own widgets. It already contains the combo box for the camera.
    QVBoxLayout *content() const { return column; }

private:
    void showChosen();

    QVBoxLayout *column;
    QComboBox *choice;
};
