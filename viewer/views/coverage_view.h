// The tab "Coverage": where in the picture of each camera corners were seen.
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
