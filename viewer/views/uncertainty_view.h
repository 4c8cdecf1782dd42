// The tab "Uncertainty". It shows how uncertain the projection is in each part of a camera's picture.
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
    void showMap(const calibration::PictureMap &map);

    QComboBox *quantity;
    QLabel *summary;
    PicturePlot *plot;
    QwtPlotSpectrogram *picture;
    int shownCamera = -1;
};
