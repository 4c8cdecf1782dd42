// Computes a whole calibration from observed corners: lenses, rig, poses and the shape of every print, how far each can
// be trusted, which photographs did not fit and why, and which photograph would help most. It reads no photographs and
// writes no files.
//
// Axes and units as in observations.h. Photographs do not determine the absolute scale. If no print of a group was
// measured, the group's first print counts as exact: the geometric mean of its x and y scale is 1.
// Every function may be called from any thread at the same time. The same input gives the same result, to the last
// bit, with any number of processors. Texts are whole sentences in English for the user.
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

// How large a print really is: its measured size divided by the size in its drawing, in x and y.
struct MeasuredPrint {
    int print = 0;
    Eigen::Vector2d ratio{1, 1};
};

enum class Stage { StartValues, ChoosingModels, Solving, JudgingTrust };

struct CalibrateOptions {
    // The model of every camera. If absent, a model is chosen for each camera by how well it predicts held-out
    // photographs.
    std::optional<LensModel> lens;
    // Lets prints bend if that predicts held-out photographs better.
    bool mayBend = true;
    std::vector<MeasuredPrint> measured;
    // A result for similar observations with the same cameras and prints, to start from. The models that it chose are
    // kept, so this is much faster.
    std::shared_ptr<const Calibration> previous;
    // Called now and then by the calling thread, with the share of the stage that is done, 0 to 1.
    std::function<void(Stage, double)> onProgress;
    // Asked now and then; once it returns true, calibrate() throws Cancelled.
    std::function<bool()> isCancelled;
};

enum class Misfit {
    NoPose,       // the print's pose could not be found from its corners
    Moved,        // fits by itself, but not where the other photographs have the print
    AnotherLens,  // does not fit this lens in any pose, but fits one with another focal length
    Unclear,      // fits nothing: blurred, disturbed or misread
};

// A sighting that does not count, with the reason.
struct LeftOut {
    int sighting = 0;
    Misfit misfit = Misfit::Unclear;
    std::string reason;
};

struct ModelTrial {
    LensModel lens = LensModel::Pinhole5;
    double heldOutError = 0;  // pixels, rms per point over photographs that the lens was not estimated from
};

struct CameraTrust {
    double rms = 0;   // pixels per point: root mean square of the distances of the used corners from their estimate
    int corners = 0;  // used ones
    int photographs = 0;
    std::vector<double> sigmas;  // standard deviations of the intrinsics, in their order
    double distance = 0;         // mm: the median distance of the prints
    PictureMap uncertainty;      // at that distance, see projection_uncertainty.h
    PictureMap uncertaintyAtInfinity;
    // Difference between the lens from one half of the moments and the lens from the other half; empty if a half does
    // not determine it.
    std::optional<PictureMap> halves;
    std::vector<ModelTrial> trials;  // empty if the model was given
};

struct PrintTrust {
    // Standard deviations of the print's pose in the world; all 0 for the first print of a group.
    Eigen::Vector3d rotationSigma = Eigen::Vector3d::Zero();     // degrees, about the world's axes
    Eigen::Vector3d translationSigma = Eigen::Vector3d::Zero();  // mm
    // Of each point in the world, mm, along the worst direction. Empty if the print has no pose.
    std::vector<double> pointSigmas;
    // False if the photographs tell little more about the print's scale or ratio than the prior does.
    bool isDetermined = true;
    bool isMeasured = false;
};

// The words that lead the result. `advice` says what to do, the most useful first; empty if nothing is needed.
enum class Grade { Good, Usable, Poor };
struct Verdict {
    Grade grade = Grade::Poor;
    std::string text;
    std::vector<std::string> advice;
};

// The photograph that would lower the greatest uncertainty most.
struct NextPhotograph {
    int camera = 0;
    int print = 0;
    RigidMotion cameraFromPrint;
    double uncertaintyBefore = 0;  // pixels: the greatest over the picture
    double uncertaintyAfter = 0;
    std::string text;  // where to hold the target, in words
};

struct Calibration {
    // With isUsed as decided, each camera's lens as chosen, and the corners' standard deviations as the residuals show
    // them: those given, times one factor per camera.
    Observations observations;
    Estimate estimate;
    Freedom freedom;
    Covariance covariance;
    std::vector<LeftOut> leftOut;
    std::vector<CameraTrust> cameras;
    std::vector<PrintTrust> prints;
    Verdict verdict;
    std::optional<NextPhotograph> next;
    // What else the user must know: prints that no photograph links, prints that are not determined, what the scale
    // rests on.
    std::vector<std::string> notices;

    // The group that the first print with a pose belongs to: the common coordinate system of the results.
    CALIBRATION_API int firstGroup() const;
};

// The reason why no calibration can be made, as a sentence for the user.
class CALIBRATION_API CalibrationImpossible : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

class CALIBRATION_API Cancelled : public std::runtime_error {
public:
    Cancelled() : std::runtime_error("The calibration was cancelled.") {}
};

// Throws CalibrationImpossible if the observations do not determine a calibration: too few photographs, all from one
// direction, no corner at all.
CALIBRATION_API Calibration calibrate(const Observations &observations, const CalibrateOptions &options = {});

}  // namespace calibration
