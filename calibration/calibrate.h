// Computes a whole calibration from observed corners: the lenses, the rig, all poses and the shape of every print. The
// result also says how far each of them can be trusted, which photographs did not fit and why, and which photograph
// would help most. Nothing here reads photographs or writes files.
//
// observations.h defines axes, units and groups of prints. Photographs do not determine the absolute scale. If
// CalibrateOptions::measured has no print of a group, the group's first print counts as exact: the geometric mean of
// its x and y scale is 1. All functions may be called from several threads at the same time. The same input gives the
// same result, to the last bit, with any number of processors. Texts are whole sentences in English for the user.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "calibration/calibration_export.h"
#include "calibration/covariance.h"
#include "calibration/projection_uncertainty.h"

namespace calibration {

struct Calibration;

// The measured size of a print divided by its size in the drawing, along x and along y.
struct MeasuredPrint {
    int print = 0;
    Eigen::Vector2d ratio{1, 1};
};

enum class Stage { StartValues, ChoosingModels, Solving, JudgingTrust };

struct CalibrateOptions {
    // The model of every camera. If absent, each camera gets the simplest model that is nearly as good as the
    // best one at predicting photographs that were held out (not used to estimate it).
    std::optional<LensModel> lens;
    // If true, prints may bend. A print gets a bend only if that predicts held-out photographs clearly better, and
    // if the bend differs from 0 by clearly more than its standard deviations.
    bool mayBend = true;
    std::vector<MeasuredPrint> measured;
    // An earlier result for similar observations with the same cameras and prints. If its lens models and bends can be
    // kept, the calibration starts from the earlier result. This is much faster and changes the new result by only a
    // small share of its standard deviations. Models and bends can be kept if the earlier call had the same `lens` and
    // `mayBend`. If `lens` is absent or `mayBend` is true, models or bends were chosen from photographs. The number of
    // these photographs must then also be similar to the number in this call (a factor of at most 1.5). Otherwise, the
    // earlier result is ignored.
    std::shared_ptr<const Calibration> previous;
    // Called from time to time in the thread that called calibrate(), with the completed share of the stage, from 0
    // to 1.
    std::function<void(Stage, double)> onProgress;
    // Called at least after every iteration of a solve, by several threads at the same time. If it returns true,
    // calibrate() throws Cancelled.
    std::function<bool()> isCancelled;
};

enum class Misfit {
    NoPose,       // the print's pose could not be found from its corners
    Moved,        // the corners fit together, but the print is elsewhere than in the other photographs
    AnotherLens,  // the corners do not fit this lens in any pose, but they fit a lens with another focal length
    Unclear,      // the corners fit no lens and no pose: they are blurred, disturbed or misread
};

// A sighting that the calibration does not use, and the reason.
struct LeftOut {
    int sighting = 0;
    Misfit misfit = Misfit::Unclear;
    std::string reason;
};

struct ModelTrial {
    LensModel lens = LensModel::Pinhole5;
    double heldOutError = 0;  // pixels: rms per point in photographs that were not used to estimate the lens
};

struct CameraTrust {
    double rms = 0;   // pixels: root mean square distance between the used corners and their projections
    int corners = 0;  // the number of used corners
    int photographs = 0;
    std::vector<double> sigmas;  // standard deviations of the intrinsics, in their order
    // mm: the median, over the used sightings, of the distance from the camera to the middle of the corners
    double distance = 0;
    PictureMap uncertainty;  // at that distance; see projection_uncertainty.h
    PictureMap uncertaintyAtInfinity;
    // How far apart the projections by two lenses are, for points at `distance`. One lens is estimated from every
    // second moment (Photograph::moment), the other from the remaining ones. Empty if one of the halves does not
    // determine the lens.
    std::optional<PictureMap> halves;
    std::vector<ModelTrial> trials;  // empty if no models were compared
};

struct PrintTrust {
    // Standard deviations of the print's pose in the world; all 0 for the first print of a group.
    Eigen::Vector3d rotationSigma = Eigen::Vector3d::Zero();     // degrees, about the world's axes
    Eigen::Vector3d translationSigma = Eigen::Vector3d::Zero();  // mm
    // The standard deviation of each point's place in the world, in the direction in which it is greatest, in mm. Empty
    // if the print has no pose.
    std::vector<double> pointSigmas;
    // False if the photographs say little about the print's scale or about its ratio of x to y. This is so if the
    // standard deviation of the scale or of the ratio is at least 70 % of the standard deviation that ShapePrior
    // assumes for it before any photograph is used.
    bool isDetermined = true;
    bool isMeasured = false;  // true if CalibrateOptions::measured has this print
};

// How the models were chosen: the options `lens` and `mayBend`, and the number of photographs that show a pattern.
struct ModelOrigin {
    std::optional<LensModel> lens;
    bool mayBend = true;
    int photographs = 0;
};

// The summary of the result. `advice` says what to do: first for each camera, then for the calibration as a
// whole. The list is empty if nothing needs to be done.
enum class Grade { Good, Usable, Poor };
struct Verdict {
    Grade grade = Grade::Poor;
    std::string text;
    std::vector<std::string> advice;
};

// The photograph, of those that findNextPhotograph() compares, that would most reduce the greatest uncertainty.
struct NextPhotograph {
    int camera = 0;
    int print = 0;
    RigidMotion cameraFromPrint;
    double uncertaintyBefore = 0;  // pixels: the greatest uncertainty in the picture without the new photograph
    double uncertaintyAfter = 0;   // pixels: the greatest uncertainty in the picture with the new photograph
    std::string text;              // where to hold the target, in words
};

struct Calibration {
    // The given observations with three changes: `isUsed` tells which sightings and corners were used, each camera has
    // the chosen lens model, and the corners' standard deviations are multiplied by one factor per camera, so that they
    // agree with the residuals.
    Observations observations;
    Estimate estimate;
    Freedom freedom;
    Covariance covariance;
    std::vector<LeftOut> leftOut;
    std::vector<CameraTrust> cameras;
    std::vector<PrintTrust> prints;
    ModelOrigin modelOrigin;
    Verdict verdict;
    std::optional<NextPhotograph> next;
    // Sentences with further information for the user: which prints moved, which are not linked with the others, which
    // are not determined, and which define the scale.
    std::vector<std::string> notices;

    // Returns the group of the first print with a pose, or -1 if no print has a pose. The world of this group is the
    // coordinate system of the results.
    CALIBRATION_API int firstGroup() const;
};

// Thrown if no calibration can be made. The text is a sentence for the user that says why.
class CALIBRATION_API CalibrationImpossible : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

class CALIBRATION_API Cancelled : public std::runtime_error {
public:
    Cancelled() : std::runtime_error("The calibration was cancelled.") {}
};

// Throws CalibrationImpossible if the observations do not determine a calibration (for example, because there are no
// corners, too few photographs or only photographs from one direction), or if they contradict each other. Throws
// Cancelled if options.isCancelled returns true.
CALIBRATION_API Calibration calibrate(const Observations &observations, const CalibrateOptions &options = {});

}  // namespace calibration
