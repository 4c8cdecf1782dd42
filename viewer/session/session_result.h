// The result that the views show: a calibration, and how well each photograph of the session fits it.
#pragma once

#include <QMap>
#include <QString>
#include <memory>
#include <optional>
#include <vector>

#include "calibration/calibrate.h"
#include "calibration/unused_photograph.h"
#include "viewer/session/print_texture.h"
#include "viewer/session/session_settings.h"

// How well one photograph fits the calibration.
struct PhotographFit {
    int corners = 0;            // number of used corners
    std::optional<double> rms;  // root mean square residual of the used corners, in pixels
    double worst = 0;           // greatest residual of a used corner, in pixels
    QString reason;             // why the photograph or some of its patterns are not used; empty if all are used
};

struct SessionResult {
    // Null if there is no calibration. Then `problem` says why a calibration is impossible. But `problem` is empty if
    // no photograph is included, or if all included photographs are still waiting to be read.
    std::shared_ptr<const calibration::Calibration> calibration;
    QString problem;

    std::vector<int> photographIds;  // the session's id of each photograph in calibration->observations
    QMap<int, PhotographFit> fits;   // by the session's ids; an unused photograph has only a reason
    std::vector<calibration::UnusedPhotograph> unused;  // photographs that were left out before the calibration
    // estimated[i][j] is the pixel to which the estimate projects corner j of sighting i in calibration->observations.
    // It is empty if a pose is not known or the corner cannot be projected.
    std::vector<std::vector<std::optional<Eigen::Vector2d>>> estimated;

    // What is printed on each print of the calibration; empty for a print whose look is not known.
    std::vector<std::vector<PrintBlock>> textures;

    // Returns the index in calibration->observations.photographs of the photograph that has this id in the session; -1
    // if the calibration does not have the photograph.
    int indexOf(int photographId) const;
    // Returns what is printed on a print; empty if that is not known.
    const std::vector<PrintBlock> &textureOf(int print) const;
};

// Returns the transformation from the axes of a print to those of the camera that took a photograph. Empty if the pose
// of the print or of the camera is not known.
std::optional<calibration::RigidMotion> cameraFromPrint(const calibration::Calibration &calibration, int photograph,
                                                        int print);

// Returns a corner that was seen less than one pixel from this place in a photograph; empty if there is none, or if the
// print has no columns and rows with which to name the corner. The result must have a calibration.
std::optional<NamedCorner> cornerAt(const SessionResult &result, int photographId, const Eigen::Vector2d &pixel);

// Sets `fits` and `estimated` from the calibration. Reasons that `fits` already has are kept, and the calibration's
// reasons are added to them.
void describeFits(SessionResult &result);
