// The tab "Coverage". For the chosen camera, it shows the places where corners were seen in the picture, which of these
// corners the calibration does not use, and what share of the picture the used corners cover.
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
