// The tab "Residuals", for one camera. Points show where corners were seen, relative to the positions that the
// calibration predicts. If there are more than 20,000 corners, only some of them are shown. Bars show the residual of
// every photograph of the camera. A click on a point or a bar opens the photograph.
#pragma once

#include <QPointF>
#include <vector>

#include "viewer/views/result_view.h"

class QLabel;
class QwtPlot;
class QwtPlotBarChart;
class QwtPlotCurve;
class QwtPlotPicker;
class QwtPlotRescaler;

class ResidualView : public CameraView {
    Q_OBJECT

public:
    explicit ResidualView(QWidget *parent = nullptr);

signals:
    // A corner was clicked. `photographId` is the id that the corner's photograph has in the session. `pixel` is where
    // the corner was seen.
    void cornerChosen(int photographId, QPointF pixel);
    void photographChosen(int photographId);

protected:
    void showCamera(int camera) override;

private:
    struct Dot {
        QPointF residual;
        QPointF pixel;
        int photographId;
    };

    void collect(int camera);
    void chooseDot(QPointF place);
    void chooseBar(QPointF place);

    QLabel *summary;
    QwtPlot *scatter;
    QwtPlotRescaler *rescaler;  // of the scatter plot
    QwtPlot *bars;
    QwtPlotCurve *used;
    QwtPlotCurve *unused;
    QwtPlotBarChart *chart;
    std::vector<Dot> dots;    // the dots that are drawn
    std::vector<int> barIds;  // the photographs' ids, from left to right
};
