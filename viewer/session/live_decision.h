// Decides when a frame of a camera is worth keeping as a photograph. The target must be still and sharp, the view must
// differ from those of all existing photographs, and the calibration must still gain from another photograph. This file
// uses no threads, no clock and no widgets.
#pragma once

#include <QSize>
#include <memory>
#include <optional>
#include <vector>

#include "viewer/session/session_photograph.h"

enum class LiveState {
    NoPattern,  // fewer than eight corners
    Moving,     // the target has not yet been still for three frames in a row
    Blurred,
    Known,   // a photograph with a similar view exists
    Enough,  // another photograph would hardly improve the calibration
    Worth,   // the frame should be kept
};

// The patterns that were read in one picture.
struct TargetView {
    QSize size;                                       // of the picture, in pixels
    std::shared_ptr<const PatternReadings> readings;  // not null
};

class LiveDecision {
public:
    // Call this for each frame in turn. `blur` is the result of edgeBlur() for this frame, in pixels. If it is empty,
    // the frame counts as blurred.
    LiveState judge(const TargetView &frame, std::optional<double> blur);

    // Sets the existing photographs. A frame is compared only with photographs of its own size.
    void setPhotographs(std::shared_ptr<const std::vector<TargetView>> views) { photographs = std::move(views); }
    // Tells this object that the last frame was kept. The frame counts as a photograph as long as this object lives.
    void keptLast() { kept.push_back(last); }
    void setEnough(bool isEnough) { hasEnough = isEnough; }

private:
    bool isStill(const TargetView &frame) const;
    bool isSharp(double blur);
    bool isKnown(const TargetView &frame) const;

    std::shared_ptr<const std::vector<TargetView>> photographs;  // may be null
    std::vector<TargetView> kept;
    TargetView last;
    int stillFrames = 0;
    std::optional<double> sharpest;  // least blur so far, in pixels
    bool hasEnough = false;
};

// True if the frame shows little that is new. This is so if all of the following hold: both pictures have the same
// size; the other view has at least eight of the frame's corners, and at least 60 % of them; and these corners are at
// nearly the same place in both pictures, seen from nearly the same direction and distance.
bool isSimilar(const TargetView &frame, const TargetView &other);
