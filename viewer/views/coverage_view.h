// The tab "Coverage". It shows where corners were seen in the picture of each camera.
#pragma once

#include "viewer/views/result_view.h"

class PicturePlot;
class QLabel;
class QwtPlotCurve;

class CoverageView : public CameraView {
    Q_OBJECT

public:
    explicit CoverageView(QWidget *parent = nullptr);

protected:
    void showCamera(int camera) override;

private:
    QLabel *summary;
    PicturePlot *plot;
    QwtPlotCurve *used;
    QwtPlotCurve *unused;
};
