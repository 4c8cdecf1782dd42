// What the views show: a calibration, and how each photograph of the session fits it.
#pragma once

#include <QMap>
#include <QString>
#include <memory>
#include <optional>
#include <vector>

#include "calibration/calibrate.h"
#include "calibration/unused_photograph.h"
#include "viewer/session/session_settings.h"

// How one photograph fits.
struct PhotographFit {
    int corners = 0;            // used ones
    std::optional<double> rms;  // pixels per point, of the used corners
    double worst = 0;           // pixels, of the used corners
    QString reason;             // why all or some of it does not count; empty if everything does
};

struct SessionResult {
    // Null if no calibration is possible; `problem` says why.
    std::shared_ptr<const calibration::Calibration> calibration;
    QString problem;

    std::vector<int> photographIds;  // the session's numbers of calibration->observations.photographs
    QMap<int, PhotographFit> fits;   // by those numbers; photographs that the calibration never saw have a reason too
    std::vector<calibration::UnusedPhotograph> unused;  // photographs that gave the calibration nothing
    // Where the estimate puts the corners: for each sighting, for each of its corners; empty if it has no such place.
    std::vector<std::vector<std::optional<Eigen::Vector2d>>> estimated;

    // The index in the calibration of a photograph of the session; -1 if it is not in it.
    int indexOf(int photographId) const;
};

// The transform from a print's own axes to those of the camera that took a photograph; empty if a pose is not known.
std::optional<calibration::RigidMotion> cameraFromPrint(const calibration::Calibration &calibration, int photograph,
                                                        int print);

// The corner that was seen nearest to a pixel of a photograph; empty if none was within a pixel.
std::optional<NamedCorner> cornerAt(const SessionResult &result, int photographId, const Eigen::Vector2d &pixel);

// Fills in everything that follows from the calibration.
void describeFits(SessionResult &result);
