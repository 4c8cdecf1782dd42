// Draws those figures of the report whose frame has the proportions of a camera's picture.
#pragma once

#include <string>

#include "calibration/calibrate.h"

namespace calibration {

struct Figure {
    std::string title;
    std::string svg;      // empty if there is nothing to show
    std::string caption;  // plain text

    std::string html() const;
};

// Draws a sample of the residuals, enlarged.
Figure residualFigure(const Calibration &calibration, int camera);
// Draws the mean residual of each part of the picture, enlarged. If neighbouring arrows point the same way, the lens
// model does not fit.
Figure meanResidualFigure(const Calibration &calibration, int camera);
// Draws how many used corners each part of the picture has.
Figure coverageFigure(const Calibration &calibration, int camera);
// Draws the values of a map as colours. The unit of the values is the pixel. A value has the same colour in every
// report.
Figure mapFigure(const Camera &camera, const PictureMap &map, const std::string &title, const std::string &caption);
// Draws straight vertical and horizontal lines as the lens shows them.
Figure lensFigure(const Camera &camera, const Eigen::VectorXd &intrinsics);
// Draws where to hold the target for the next photograph. Empty if there is no advice.
Figure nextPhotographFigure(const Calibration &calibration);

}  // namespace calibration
