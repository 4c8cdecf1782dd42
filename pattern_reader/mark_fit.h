// Measures a round dark mark by fitting a blurred ellipse to the grey levels in and around it:
//
//   grey = (1 + slope · d) * (dark + (light - dark) * P(s / blur)) + reflection
//
// Here d is the vector from the centre, s is the distance from the border (positive outside it), and P is the standard
// normal distribution. The slope describes a linear change of the light. A reflection adds the same light to mark and
// paper. The reflection is a quadratic function of d. It is 0 in the centre, because `dark` and `light` include the
// light that is added there. All parameters are fitted at once, by Gauss-Newton with analytic derivatives.
#pragma once

#include <array>
#include <opencv2/core.hpp>

namespace pattern_reader {

struct MarkFit {
    cv::Point2d centre;
    cv::Matx22d toUnit;  // symmetric; maps the border, seen from the centre, onto the unit circle
    double light = 0;
    double dark = 0;
    cv::Vec2d slope{0, 0};               // relative change of light per pixel
    std::array<double, 5> reflection{};  // coefficients of x, y, x², xy, y²
    double blur = 0.7;                   // standard deviation in pixels, including the averaging over a pixel's area
    double residual = 0;                 // root mean square, grey levels
    double sigma = 0;                    // standard deviation of the centre along one axis, pixels
    size_t pixels = 0;                   // number of pixels compared with the model

    // Half the ellipse's shorter and longer axis, pixels.
    double shortRadius() const;
    double longRadius() const;
};

// Fits a mark, without a reflection, to a picture of 8 bits. All lengths are in pixels of this picture. The fit starts
// from the centre, shape and blur in `fit`. If `light` and `dark` differ, it also starts from these; otherwise it
// guesses them from the picture. It takes at most `steps` steps. False if the fit diverges, if the pixels do not
// determine the parameters, if the contrast is too low, or if a part of the mark's border is outside the picture.
bool fitMark(const cv::Mat &picture, int steps, MarkFit &fit);

// Adds a reflection to a fit of fitMark, in at most `steps` steps, if that explains the picture much better. Otherwise
// the fit stays as it is. A saturated pixel may stand for more light than its grey level shows, so it is ignored if the
// model also expects saturation.
void fitReflection(const cv::Mat &picture, int steps, MarkFit &fit);

}  // namespace pattern_reader
