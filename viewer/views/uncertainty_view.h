// The tab "Uncertainty". For each part of a camera's picture, it shows how uncertain the projection of a point is,
// either for points at the patterns' distance or for points far away. It can also show how much the projection differs
// between two calibrations, each made from one half of the photographs.
#pragma once

#include "viewer/views/result_view.h"

class PicturePlot;
class QComboBox;
class QLabel;
class QwtPlotSpectrogram;

class UncertaintyView : public CameraView {
    Q_OBJECT

public:
    explicit UncertaintyView(QWidget *parent = nullptr);

protected:
    void showCamera(int camera) override;

private:
    enum Quantity { AtDistance, AtInfinity, BetweenHalves };

    const calibration::PictureMap *chosenMap(int camera) const;
    // Says what the map shows. `greatest` is its greatest value, with the unit.
    QString meaningOf(int camera, const QString &greatest) const;
    void showMap(const calibration::PictureMap &map);

    QComboBox *quantity;
    QLabel *summary;
    PicturePlot *plot;
    QwtPlotSpectrogram *picture;
    int shownCamera = -1;
};
