// Decides when a frame of a camera is worth keeping as a photograph: when the target is still and sharp, and is seen in
// another way than in every photograph that exists. Has no threads, no clock and no widgets.
#pragma once

#include <QSize>
#include <memory>
#include <optional>
#include <vector>

#include "viewer/session/session_photograph.h"

enum class LiveState {
    NoPattern,
    Moving,
    Blurred,
    Known,   // a photograph with much the same view exists
    Enough,  // the calibration would hardly gain from another photograph
    Worth,   // it should be kept
};

// How a target is seen in one picture.
struct TargetView {
    QSize size;                                       // pixels, of the picture
    std::shared_ptr<const PatternReadings> readings;  // not null
};

class LiveDecision {
public:
    // Each frame in turn. blur: see edge_blur.h; empty if it is not known.
    LiveState judge(const TargetView &frame, std::optional<double> blur);

    // The photographs that exist; only those of the frame's size count.
    void setPhotographs(std::shared_ptr<const std::vector<TargetView>> views) { photographs = std::move(views); }
    // The last frame was kept. It counts as a photograph for as long as this object lives.
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
    std::optional<double> sharpest;  // pixels
    bool hasEnough = false;
};

// True if the frame shows nothing that the other view does not: the same corners, at much the same place, and from much
// the same direction and distance.
bool isSimilar(const TargetView &frame, const TargetView &other);
