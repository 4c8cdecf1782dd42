#include "bench/reader/conditions.h"

#include <algorithm>
#include <cmath>

#include "bench/reader/scene_parts.h"
#include "bench/reader/scenes.h"

namespace reader_bench {

namespace {

cv::Point2d anyDirection(Dice &dice) {
    const double angle = dice.real(0, 2 * CV_PI);
    return {std::cos(angle), std::sin(angle)};
}

cv::Point2d placeIn(const cv::Rect2d &bounds, Dice &dice) {
    return {bounds.x + dice.real(0.15, 0.85) * bounds.width, bounds.y + dice.real(0.15, 0.85) * bounds.height};
}

double side(const SceneDraft &draft) {
    return draft.flexibleCorners.empty() ? 16 : std::max(draft.flexibleCorners.width, draft.flexibleCorners.height) + 1;
}

void noisy(SceneDraft &draft, Dice &dice) {
    draft.exposure.noiseSigma = dice.logarithmic(0.5, 8);
    draft.exposure.blurSigma = dice.real(0.4, 1.2);
    draft.exposure.lightSlope = {};
    draft.exposure.vignette = 0;
}

void dim(SceneDraft &draft, Dice &dice) {
    draft.pixelsPerSquare = dice.logarithmic(10, 40);
    draft.exposure.inkLevel = float(dice.real(15, 30));
    draft.exposure.paperLevel = draft.exposure.inkLevel + float(dice.real(40, 120));
    draft.exposure.noiseSigma = dice.real(4, 12);
}

void small(SceneDraft &draft, Dice &dice) {
    draft.pixelsPerSquare = dice.real(3, 6);
    draft.tiltDegrees = dice.real(0, 30);
    draft.exposure.blurSigma = dice.real(0.3, 0.6);
    draft.exposure.noiseSigma = dice.real(0.5, 3);
}

// Limits the size of the picture: to 150 megapixels in 1 % of the pictures, to 64 in 2 %, to 12 in 7 %, and to 1 to 4
// in all others. A board is larger than the limit, so the picture shows only its middle, with an area of 7 x 7 squares
// or more. A plate is at most about as large as the limit. If the plate is smaller, its picture is smaller, too.
void large(SceneDraft &draft, Dice &dice) {
    const double draw = dice.real(0, 1);
    draft.megapixels = draw < 0.01 ? 150 : draw < 0.03 ? 64 : draw < 0.1 ? 12 : dice.real(1, 4);
    const double side = std::sqrt(draft.megapixels * 1e6);
    draft.flexibleCorners = {};
    draft.tiltDegrees = dice.real(0, 30);
    // A plate must fit into the picture.
    const double squares = draft.plate ? 22 : 7;
    draft.pixelsPerSquare = std::min(1500.0, dice.logarithmic(0.5, 1) * side / squares);
    draft.exposure.blurSigma = dice.real(0.5, 3);
}

void steep(SceneDraft &draft, Dice &dice) {
    draft.pixelsPerSquare = dice.logarithmic(10, 50);
    draft.tiltDegrees = dice.real(45, 60);
}

void verySteep(SceneDraft &draft, Dice &dice) {
    draft.pixelsPerSquare = dice.logarithmic(15, 80);
    draft.tiltDegrees = dice.real(60, 80);
}

void soft(SceneDraft &draft, Dice &dice) {
    draft.pixelsPerSquare = dice.logarithmic(12, 100);
    draft.flexibleCorners = {};
}

void softFinish(ComposedScene &composed, Dice &dice) {
    composed.scene.exposure.defocusRadius = dice.real(0.1, 0.3) * composed.leastStep;
}

// The picture is out of focus by an amount that changes over the picture. The amount is zero along a line, which may
// lie outside the pattern.
void defocusFinish(ComposedScene &composed, Dice &dice) {
    const double greatest = dice.real(0.15, 0.35) * composed.leastStep;
    const double across = std::hypot(composed.size.width, composed.size.height) / 2;
    composed.scene.exposure.defocusSlope = anyDirection(dice) * (greatest / across);
    composed.scene.exposure.defocusRadius = dice.real(0, 0.5) * greatest;
}

void motionFinish(ComposedScene &composed, Dice &dice) {
    composed.scene.exposure.motion = anyDirection(dice) * (dice.real(0.1, 0.45) * composed.leastStep);
}

void rollingShutter(SceneDraft &draft, Dice &dice) {
    draft.shiftPerRow = {dice.real(-0.2, 0.2), dice.real(-0.1, 0.1), 0};
    draft.turnPerRow = cv::Vec3d(dice.real(-1, 1), dice.real(-1, 1), dice.real(-3, 3)) * 1e-4;
}

void distorted(SceneDraft &draft, Dice &dice) {
    draft.viewShare = dice.real(1, 1.5);
    draft.distortion = dice.real(-0.12, 0.15);
    draft.tiltDegrees = dice.real(0, 30);
}

void fisheye(SceneDraft &draft, Dice &dice) {
    draft.fisheye = true;
    draft.pixelsPerSquare = dice.logarithmic(8, 30);
    draft.viewShare = dice.real(0.4, 1.6);
    draft.tiltDegrees = dice.real(0, 40);
}

// Rolled paper, whose surface turns by 15 to 70° from one side of the pattern to the other.
void bent(SceneDraft &draft, Dice &dice) {
    draft.tiltDegrees = dice.real(0, 35);
    PaperSheet::Form form;
    form.direction = dice.real(0, CV_PI);
    form.curvature = (dice.chance(0.5) ? 1 : -1) * dice.real(0.26, 1.2) / side(draft);
    draft.sheet = form;
}

void waved(SceneDraft &draft, Dice &dice) {
    draft.tiltDegrees = dice.real(0, 35);
    PaperSheet::Form form;
    form.direction = dice.real(0, CV_PI);
    form.waveSlope = dice.real(0.05, 0.3);
    form.waveLength = dice.real(0.4, 1.2) * side(draft);
    form.wavePhase = dice.real(0, 2 * CV_PI);
    draft.sheet = form;
}

void creased(SceneDraft &draft, Dice &dice) {
    draft.tiltDegrees = dice.real(0, 35);
    PaperSheet::Form form;
    form.direction = dice.real(0, CV_PI);
    for (int i = dice.whole(1, 3); i > 0; i--) {
        const double angle = (dice.chance(0.5) ? 1 : -1) * dice.real(0.05, 0.3);
        form.creases.emplace_back(dice.real(-0.4, 0.4) * side(draft), angle);
    }
    draft.sheet = form;
}

void inkSpread(SceneDraft &draft, Dice &dice) {
    draft.print.inkSpread = dice.real(-0.04, 0.08);
}

void halftone(SceneDraft &draft, Dice &dice) {
    draft.print.halftonePeriod = dice.real(0.05, 0.15);
    draft.print.halftoneDepth = dice.real(0.2, 0.7);
    draft.print.halftoneAngle = dice.real(0, CV_PI / 2);
}

void gradient(SceneDraft &draft, Dice &dice) {
    draft.exposure.lightSlope = anyDirection(dice) * dice.real(0.6, 1.2);
}

void hardShadowFinish(ComposedScene &composed, Dice &dice) {
    Shadow shadow;
    shadow.edge = placeIn(composed.bounds, dice);
    shadow.side = anyDirection(dice);
    shadow.depth = dice.real(0.3, 0.75);
    shadow.penumbra = dice.logarithmic(0.7, 8);
    composed.scene.exposure.shadows.push_back(shadow);
    if (dice.chance(0.3)) {
        // This is the shadow of a narrow object: beyond the second border, the light is full again.
        Shadow border = shadow;
        border.edge += shadow.side * (dice.real(1, 4) * composed.leastStep);
        border.depth = 1 - 1 / (1 - shadow.depth);
        composed.scene.exposure.shadows.push_back(border);
    }
}

void glareFinish(ComposedScene &composed, Dice &dice) {
    Glare glare;
    glare.centre = placeIn(composed.bounds, dice);
    glare.radius = dice.real(0.05, 0.18) * std::min(composed.bounds.width, composed.bounds.height);
    glare.strength = dice.real(60, 400);
    composed.scene.exposure.glares.push_back(glare);
}

// Adds fingers that reach over the pattern from outside. Their ends are round.
void handsFinish(ComposedScene &composed, Dice &dice) {
    const cv::Rect2d &bounds = composed.bounds;
    const double across = std::min(bounds.width, bounds.height);
    const cv::Point2d middle = (bounds.tl() + bounds.br()) / 2;
    const double level = dice.real(50, 190);
    for (int i = dice.whole(1, 3); i > 0; i--) {
        const cv::Point2d from = anyDirection(dice);
        const cv::Point2d tip = middle + from * (dice.real(0.15, 0.45) * across);
        const double halfWidth = dice.real(0.03, 0.1) * across;
        const cv::Point2d sideways(-from.y, from.x);
        Obstacle finger;
        finger.level = level;
        finger.outline = {tip + from * (2 * across) + sideways * halfWidth};
        for (int step = 0; step <= 12; step++) {
            const double angle = CV_PI * step / 12;
            finger.outline.push_back(tip + sideways * (std::cos(angle) * halfWidth) -
                                     from * (std::sin(angle) * halfWidth));
        }
        finger.outline.push_back(tip + from * (2 * across) - sideways * halfWidth);
        composed.scene.exposure.obstacles.push_back(finger);
    }
}

// Pictures with small squares are compressed less, because strong compression would wipe the squares out.
void jpegFinish(ComposedScene &composed, Dice &dice) {
    const int least = int(std::clamp(5 + (16 - composed.leastStep) * 4, 5.0, 45.0));
    composed.scene.exposure.jpegQuality = dice.whole(least, 95);
}

void sharpened(SceneDraft &draft, Dice &dice) {
    draft.exposure.sharpening = dice.real(0.5, 2.5);
    draft.exposure.sharpeningSigma = dice.real(0.7, 2.5);
}

void colourSensor(SceneDraft &draft, Dice &dice) {
    Exposure &exposure = draft.exposure;
    draft.pixelsPerSquare = dice.logarithmic(4, 40);
    draft.tiltDegrees = dice.real(0, 40);
    exposure.bayer = true;
    exposure.cast = {dice.real(0.4, 0.9), 1, dice.real(0.4, 0.9)};
    exposure.balanceError = dice.real(-0.1, 0.1);
    exposure.shotNoise = dice.real(0, 0.05);
}

void toneCurve(SceneDraft &draft, Dice &dice) {
    draft.exposure.toneGamma = dice.real(1.4, 2.6);
    draft.exposure.toneGain = dice.real(0.4, 1.9);
    draft.exposure.shotNoise = dice.real(0, 0.03);
}

void manyCorners(SceneDraft &draft, Dice &dice) {
    draft.flexibleCorners = {dice.whole(60, 200), dice.whole(60, 200)};
    draft.pixelsPerSquare = dice.real(6, 10);
    draft.tiltDegrees = dice.real(0, 30);
    draft.exposure.blurSigma = dice.real(0.4, 0.8);
    draft.megapixels = 4;
}

void fewCorners(SceneDraft &draft, Dice &dice) {
    draft.flexibleCorners = {dice.whole(5, 9), dice.whole(5, 9)};
}

void covered(SceneDraft &draft, Dice &) {
    draft.coverQuarter = true;
}

void cut(SceneDraft &draft, Dice &) {
    draft.cutQuarter = true;
}

void mirrored(SceneDraft &draft, Dice &dice) {
    draft.mirrored = true;
    draft.pixelsPerSquare = dice.logarithmic(8, 100);
    draft.tiltDegrees = dice.real(0, 60);
}

// A picture as a phone takes it: many of the other conditions, mostly in a milder form.
void phone(SceneDraft &draft, Dice &dice) {
    colourSensor(draft, dice);
    toneCurve(draft, dice);
    draft.pixelsPerSquare = dice.logarithmic(10, 50);
    draft.exposure.toneGain = dice.real(0.8, 1.4);
    draft.exposure.sharpening = dice.real(0.3, 1.2);
    draft.exposure.jpegQuality = dice.whole(70, 95);
    draft.exposure.noiseSigma = dice.real(1, 4);
    draft.megapixels = dice.chance(0.05) ? 12 : 2;
    rollingShutter(draft, dice);
    draft.shiftPerRow *= 0.2;
    draft.turnPerRow *= 0.2;
    if (dice.chance(0.5)) {
        waved(draft, dice);
    }
}

void phoneFinish(ComposedScene &composed, Dice &dice) {
    if (dice.chance(0.5)) {
        hardShadowFinish(composed, dice);
    }
    if (dice.chance(0.3)) {
        handsFinish(composed, dice);
    }
    composed.scene.exposure.motion = anyDirection(dice) * (dice.real(0, 0.15) * composed.leastStep);
}

unsigned seedOf(unsigned number) {
    return number * 2654435761U + 97;
}

}  // namespace

const std::vector<Condition> &conditions() {
    static const std::vector<Condition> all = {
        {"ordinary", "everyday: 4 to 40 px per square, tilt to 60°, about half of the patterns with a quarter hidden",
         false, nullptr, nullptr},
        {"noise", "white noise of 0.5 to 8 grey levels", false, noisy, nullptr},
        {"dim", "contrast of 40 to 120 and noise of 4 to 12 grey levels", false, dim, nullptr},
        {"small", "3 to 6 px per square", false, small, nullptr},
        {"large", "pictures of up to 150 megapixels: up to 1,500 px per square for boards, and up to 550 for plates",
         false, large, nullptr},
        {"steep", "tilt of 45 to 60°", false, steep, nullptr},
        {"very-steep", "tilt of 60 to 80°", false, verySteep, nullptr},
        {"soft", "out of focus by 0.1 to 0.3 squares", false, soft, softFinish},
        {"defocus", "defocus that changes by 0.15 to 0.35 squares from the middle to a corner", false, nullptr,
         defocusFinish},
        {"motion", "motion blur of 0.1 to 0.45 squares", false, nullptr, motionFinish},
        {"rolling-shutter", "rolling shutter: up to 0.2 px and 0.02° per row", false, rollingShutter, nullptr},
        {"distortion", "wide angle with radial distortion of up to 15 %", false, distorted, nullptr},
        {"fisheye", "fisheye lens, up to 90° from its axis", false, fisheye, nullptr},
        {"bent", "paper rolled by 15 to 70°", false, bent, nullptr},
        {"waved", "paper with waves that tilt it by 3 to 17°", false, waved, nullptr},
        {"creased", "paper with one to three creases of 3 to 17°", false, creased, nullptr},
        {"ink-spread", "ink that spreads by -0.04 to 0.08 squares", false, inkSpread, nullptr},
        {"halftone", "ink printed as a halftone", false, halftone, nullptr},
        {"gradient", "light that changes by 60 to 120 % over the picture", false, gradient, nullptr},
        {"hard-shadow", "a shadow that takes 30 to 75 % of the light and has a sharp border", false, nullptr,
         hardShadowFinish},
        {"glare", "a reflection", false, nullptr, glareFinish},
        {"hands", "one to three fingers in front", false, nullptr, handsFinish},
        {"jpeg", "JPEG of quality 5 to 95", false, nullptr, jpegFinish},
        {"sharpened", "sharpened by the camera", false, sharpened, nullptr},
        {"bayer", "colour sensor, 4 to 40 px per square", false, colourSensor, nullptr},
        {"tone", "tone curve with a gamma of 1.4 to 2.6; light paper is often clipped", false, toneCurve, nullptr},
        {"many-corners", "60 to 200 corners on a side", true, manyCorners, nullptr},
        {"few-corners", "5 to 9 corners on a side", true, fewCorners, nullptr},
        {"covered", "a quarter of the pattern is covered", false, covered, nullptr},
        {"cut", "a quarter of the pattern is outside the picture", false, cut, nullptr},
        {"mirrored", "mirrored pictures: the reader must not read any pattern", false, mirrored, nullptr},
        {"phone", "phone camera: many of these conditions at once", false, phone, phoneFinish},
    };
    return all;
}

size_t conditionOf(unsigned number) {
    return number % conditions().size();
}

std::optional<size_t> conditionNamed(const std::string &id) {
    for (size_t i = 0; i < conditions().size(); i++) {
        if (id == conditions()[i].id) {
            return i;
        }
    }
    return std::nullopt;
}

Scene makeConditionScene(unsigned number, Marks marks) {
    const Condition &condition = conditions()[conditionOf(number)];
    if (condition.prepare == nullptr && condition.finish == nullptr) {
        return makeScene(number / unsigned(conditions().size()), marks);
    }
    Dice dice(seedOf(number));
    const bool plate = !condition.boardsOnly && number / conditions().size() % 5 % 2 == 1;
    SceneDraft draft = makeDraft(plate, dice);
    if (condition.prepare != nullptr) {
        condition.prepare(draft, dice);
    }
    ComposedScene composed = compose(draft, dice);
    if (condition.finish != nullptr) {
        condition.finish(composed, dice);
    }
    composed.scene.marks = marks;
    const cv::Mat background = makeBackground(composed.size, dice);
    takePicture(composed.scene, background, dice);
    return composed.scene;
}

}  // namespace reader_bench
