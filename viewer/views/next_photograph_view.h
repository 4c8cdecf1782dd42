// Shows which photograph would help most. The target is drawn where the camera should see it.
#pragma once

#include <QWidget>
#include <memory>

#include "viewer/session/session_result.h"

class NextPhotographView : public QWidget {
    Q_OBJECT

public:
    explicit NextPhotographView(QWidget *parent = nullptr);
    // The view is empty if the result is null or does not propose a next photograph.
    void setResult(std::shared_ptr<const SessionResult> newResult);
    QSize minimumSizeHint() const override { return {200, 170}; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    std::shared_ptr<const SessionResult> result;
};
