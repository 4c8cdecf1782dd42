#include "calibration/verdict.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>

#include "calibration/wording.h"

namespace calibration {

namespace {

// Limits of the greatest uncertainty in a part of the picture, in pixels. For comparison: a good corner is exact to
// about 0.1 px.
constexpr double goodUncertainty = 0.2;
constexpr double usableUncertainty = 1;
// A part of the picture is useless if its greatest uncertainty is above this limit, in pixels. Usually no photograph
// shows the target there.
constexpr double uselessUncertainty = 5;
constexpr double greatestRms = 1;  // pixels
constexpr int fewPhotographs = 8;
constexpr double greatestShareLeftOut = 0.2;
constexpr int fewMoved = 3;
// The photographs are divided into two halves, and one lens is estimated from each half. Random errors alone make these
// two lenses differ by about twice the uncertainty.
constexpr double greatestHalvesRatio = 5;

constexpr int parts = 3;  // along the picture's width, and along its height
constexpr size_t partCount = 9;

struct PartOfPicture {
    double greatest = 0;
    double x = 0, y = 0;  // the middle of the part, as shares of the picture's width and height
    bool isCorner = false;
};

// Returns the nine parts of the picture, row by row.
std::array<PartOfPicture, partCount> partsOf(const PictureMap &map) {
    std::array<PartOfPicture, partCount> result;
    for (int row = 0; row < map.rows; row++) {
        for (int column = 0; column < map.columns; column++) {
            const int y = row * parts / map.rows;
            const int x = column * parts / map.columns;
            PartOfPicture &part = result[size_t(y) * parts + size_t(x)];
            part.x = (x + 0.5) / parts;
            part.y = (y + 0.5) / parts;
            part.isCorner = x != 1 && y != 1;
            part.greatest = std::max(part.greatest, map.at(column, row).value_or(0));
        }
    }
    return result;
}

Grade worse(Grade a, Grade b) {
    return std::max(a, b);
}

double medianOf(const PictureMap &map) {
    std::vector<double> values;
    for (const std::optional<double> &value : map.values) {
        if (value) {
            values.push_back(*value);
        }
    }
    if (values.empty()) {
        return 0;
    }
    const auto middle = values.begin() + std::ptrdiff_t(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

class VerdictWriter {
public:
    VerdictWriter(Calibration &what, bool isGiven)
        : calibration(what), observations(what.observations), isLensGiven(isGiven) {}

    void run() {
        calibration.verdict = {Grade::Good, "", {}};
        for (size_t camera = 0; camera < calibration.cameras.size(); camera++) {
            if (calibration.cameras[camera].corners > 0) {
                judgeCamera(camera);
            }
        }
        judgeLeftOut();
        nameMoved();
        nameGroups();
        nameUndetermined();
        nameScale();
    }

private:
    void say(const std::string &text, Grade grade) {
        std::string &all = calibration.verdict.text;
        all += (all.empty() ? "" : " ") + text;
        calibration.verdict.grade = worse(calibration.verdict.grade, grade);
    }

    void advise(const std::string &text) {
        std::vector<std::string> &advice = calibration.verdict.advice;
        if (std::find(advice.begin(), advice.end(), text) == advice.end()) {
            advice.push_back(text);
        }
    }

    void judgeCamera(size_t camera) {
        const CameraTrust &trust = calibration.cameras[camera];
        if (observations.cameras.size() > 1) {
            say("Camera \"" + observations.cameras[camera].name + "\":", Grade::Good);
        }
        judgePicture(camera);
        if (trust.rms > greatestRms) {
            say("The corners fit only to " + rounded(trust.rms) + " px.", Grade::Usable);
            advise("Take sharp photographs without motion blur, and fix the prints to a flat, stiff plate" +
                   std::string(isLensGiven ? ", or let the program choose the lens model." : "."));
        }
        if (trust.halves && medianOf(*trust.halves) > greatestHalvesRatio * medianOf(trust.uncertainty)) {
            say("Two halves of the photographs give lenses that differ by " + rounded(medianOf(*trust.halves)) +
                    " px, more than their uncertainty explains.",
                Grade::Usable);
            advise("Make sure that neither zoom nor focus changed and that no print moved or bent between photographs" +
                   std::string(isLensGiven ? ", or let the program choose the lens model." : "."));
        }
        if (trust.photographs < fewPhotographs) {
            say("Only " + counted(trust.photographs, "photograph") + (trust.photographs == 1 ? " counts." : " count."),
                Grade::Usable);
            advise(
                "Take at least ten photographs, with the target tilted to all sides and in all parts of the picture.");
        }
    }

    void judgePicture(size_t camera) {
        const std::array<PartOfPicture, partCount> all = partsOf(calibration.cameras[camera].uncertainty);
        const double middle = all[partCount / 2].greatest;
        std::vector<PartOfPicture> bad;
        for (const PartOfPicture &part : all) {
            if (part.greatest > goodUncertainty) {
                bad.push_back(part);
            }
        }
        const auto worst = std::max_element(all.begin(), all.end(), [](const PartOfPicture &a, const PartOfPicture &b) {
            return a.greatest < b.greatest;
        });
        if (bad.empty()) {
            say("Good in the whole picture (uncertain by at most " + rounded(worst->greatest) + " px).", Grade::Good);
            return;
        }
        std::vector<PartOfPicture> useless;
        std::copy_if(bad.begin(), bad.end(), std::back_inserter(useless),
                     [](const PartOfPicture &part) { return part.greatest > uselessUncertainty; });
        if (middle > goodUncertainty) {
            const bool isWhole = bad.size() == all.size();
            say((isWhole ? "Uncertain in the whole picture (" : "Uncertain even in the middle (") + rounded(middle) +
                    (isWhole ? " px in the middle, up to " : " px; up to ") + rounded(worst->greatest) + " px " +
                    placeInPicture(worst->x, worst->y) + ").",
                worst->greatest <= usableUncertainty ? Grade::Usable : Grade::Poor);
        } else if (useless.empty()) {
            say("Good in the middle (" + rounded(middle) + " px), but not " + placesOf(bad) + " (up to " +
                    rounded(worst->greatest) + " px).",
                Grade::Usable);
        } else {
            say("Good in the middle (" + rounded(middle) + " px), but useless " + placesOf(useless) +
                    " (uncertain by up to " + rounded(worst->greatest) + " px): measure nothing there.",
                isOnlyCorners(useless) ? Grade::Usable : Grade::Poor);
        }
        const std::string with = observations.cameras.size() > 1
                                     ? " with camera \"" + observations.cameras[camera].name + "\""
                                     : std::string();
        advise("Take three photographs" + with + " with the target " + placeInPicture(worst->x, worst->y) +
               ", tilted differently.");
    }

    static bool isOnlyCorners(const std::vector<PartOfPicture> &some) {
        return std::all_of(some.begin(), some.end(), [](const PartOfPicture &part) { return part.isCorner; });
    }

    static std::string placesOf(const std::vector<PartOfPicture> &bad) {
        if (bad.size() == 1) {
            return placeInPicture(bad[0].x, bad[0].y);
        }
        return isOnlyCorners(bad) ? "in the corners" : "towards the edges";
    }

    void judgeLeftOut() {
        std::vector<bool> isCounted(observations.photographs.size(), false);
        std::vector<bool> isLeftOut(observations.photographs.size(), false);
        for (const Sighting &sighting : observations.sightings) {
            isCounted[size_t(sighting.photograph)] = true;
        }
        for (const LeftOut &one : calibration.leftOut) {
            isLeftOut[size_t(observations.sightings[size_t(one.sighting)].photograph)] = true;
        }
        // True if at least one photograph has both a sighting that was left out and a sighting that is used.
        const bool isPrintLeftOut = std::any_of(
            observations.sightings.begin(), observations.sightings.end(),
            [&](const Sighting &sighting) { return sighting.isUsed && isLeftOut[size_t(sighting.photograph)]; });
        const auto total = std::count(isCounted.begin(), isCounted.end(), true);
        const auto bad = std::count(isLeftOut.begin(), isLeftOut.end(), true);
        if (double(bad) > greatestShareLeftOut * double(total)) {
            // This text is about all cameras together. It says so, because the texts before it are each about one
            // camera.
            const std::string cameras = observations.cameras.size() > 1 ? " of all cameras" : "";
            say(std::to_string(bad) + " of the " + counted(total, "photograph") + cameras +
                    (isPrintLeftOut ? " did not fit completely." : " did not fit."),
                Grade::Usable);
            advise("Find out why so many photographs did not fit; the reason is given with each.");
        }
    }

    void nameMoved() {
        std::vector<int> moved(observations.prints.size(), 0);
        std::vector<int> all(observations.prints.size(), 0);
        for (const Sighting &sighting : observations.sightings) {
            all[size_t(sighting.print)]++;
        }
        for (const LeftOut &one : calibration.leftOut) {
            moved[size_t(observations.sightings[size_t(one.sighting)].print)] += one.misfit == Misfit::Moved ? 1 : 0;
        }
        for (size_t print = 0; print < moved.size(); print++) {
            if (moved[print] >= fewMoved && moved[print] > greatestShareLeftOut * all[print]) {
                calibration.notices.push_back(capitalised(namesOf(observations, {int(print)})) +
                                              " is not at its usual place in " + std::to_string(moved[print]) +
                                              " of the " + std::to_string(all[print]) +
                                              " photographs that show it: it was moved between photographs, or two "
                                              "boards have the same number. Calibrate the photographs before and after "
                                              "the move separately.");
            }
        }
    }

    void nameGroups() {
        const std::vector<int> &groups = calibration.estimate.groups;
        const int first = calibration.firstGroup();
        std::vector<int> unseen;
        std::vector<std::vector<int>> others;
        for (size_t print = 0; print < groups.size(); print++) {
            if (groups[print] < 0) {
                unseen.push_back(int(print));
            } else if (groups[print] != first) {
                others.resize(std::max(others.size(), size_t(groups[print]) + 1));
                others[size_t(groups[print])].push_back(int(print));
            }
        }
        for (const std::vector<int> &group : others) {
            if (!group.empty()) {
                const std::string names = capitalised(namesOf(observations, group));
                calibration.notices.push_back(names + (group.size() > 1 ? " are" : " is") +
                                              " in no photograph with the others, so " +
                                              (group.size() > 1 ? "their poses" : "its pose") +
                                              " relative to the others cannot be known. Take photographs that show " +
                                              (group.size() > 1 ? "them" : "it") + " together with the others.");
            }
        }
        if (!unseen.empty()) {
            calibration.notices.push_back(capitalised(namesOf(observations, unseen)) +
                                          (unseen.size() > 1 ? " are" : " is") + " in no photograph that counts.");
        }
    }

    void nameUndetermined() {
        std::vector<int> undetermined;
        for (size_t print = 0; print < calibration.prints.size(); print++) {
            // A measured print needs no notice: its size rests on the measurement, not on the assumed accuracy of
            // printers.
            const PrintTrust &trust = calibration.prints[print];
            if (calibration.estimate.groups[print] >= 0 && !trust.isDetermined && !trust.isMeasured) {
                undetermined.push_back(int(print));
            }
        }
        if (!undetermined.empty()) {
            calibration.notices.push_back(
                "The photographs tell little about the true size or the ratio of width to "
                "height of " +
                namesOf(observations, undetermined) + "; printers are assumed to be exact to 0.5 %.");
            advise("Take some photographs with the target or the camera turned by a quarter turn.");
        }
    }

    // Says which prints determine the scale of the first group: its measured prints or, if it has none, its first
    // print. Measured prints of other groups have no effect on this scale.
    void nameScale() {
        const int group = calibration.firstGroup();
        std::vector<int> linked;
        std::vector<int> measured;
        for (size_t print = 0; print < calibration.prints.size(); print++) {
            if (group >= 0 && calibration.estimate.groups[print] == group) {
                linked.push_back(int(print));
                if (calibration.prints[print].isMeasured) {
                    measured.push_back(int(print));
                }
            }
        }
        if (!measured.empty()) {
            calibration.notices.push_back("All lengths rest on the measured size of " +
                                          namesOf(observations, measured) + ".");
        } else if (!linked.empty()) {
            const bool isAnyMeasured = std::any_of(calibration.prints.begin(), calibration.prints.end(),
                                                   [](const PrintTrust &trust) { return trust.isMeasured; });
            const std::string first = namesOf(observations, {linked.front()});
            calibration.notices.push_back(
                (isAnyMeasured ? "No print that is linked with " + first + " was measured" : "No print was measured") +
                ", so all lengths assume that " + first +
                " has the right size on average: its width and its height may each be wrong, but their geometric mean "
                "is right.");
        }
    }

    Calibration &calibration;
    const Observations &observations;
    bool isLensGiven;
};

}  // namespace

void giveVerdict(Calibration &calibration, bool isLensGiven) {
    VerdictWriter(calibration, isLensGiven).run();
}

}  // namespace calibration
