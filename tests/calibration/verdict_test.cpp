// Tests what the user is told about a calibration: the grade, the text, the advice and the notices. The tests do not
// compute a calibration. They take a good one that is written down here, and change it, mostly in a single respect.
#include "calibration/verdict.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

#include "calibration/wording.h"
#include "tests/calibration/computed_scene.h"

namespace calibration {
namespace {

constexpr int cells = 9;  // along each side of a map; each of the picture's 3 x 3 parts has 3 x 3 cells

PictureMap mapOf(const std::function<double(int, int)> &valueAt) {
    PictureMap map{cells, cells, {}};
    for (int i = 0; i < cells * cells; i++) {
        map.values.emplace_back(valueAt(i % cells, i / cells));
    }
    return map;
}

PictureMap evenMap(double value) {
    return mapOf([&](int, int) { return value; });
}

// Makes a map with the same value everywhere except in one of the nine parts of the picture.
PictureMap mapWithPart(int partX, int partY, double there, double elsewhere = 0.05) {
    return mapOf([&](int x, int y) { return x / 3 == partX && y / 3 == partY ? there : elsewhere; });
}

// Makes a calibration that deserves no complaint: one camera, two prints, twelve photographs of each.
Calibration good() {
    Calibration calibration;
    Observations &observations = calibration.observations;
    observations.cameras = {{"a", 1200, 900, LensModel::Pinhole5}};
    observations.prints.resize(2);
    observations.prints[0].number = 0;
    observations.prints[1].number = 4;
    for (int i = 0; i < 24; i++) {
        observations.photographs.push_back({"", 0, i});
        observations.sightings.push_back({i, i % 2, true, {}});
    }
    observations.moments = 24;
    calibration.estimate.groups = {0, 0};
    calibration.prints.resize(2);
    calibration.prints[0].isMeasured = true;
    CameraTrust trust;
    trust.rms = 0.1;
    trust.corners = 500;
    trust.photographs = 24;
    trust.uncertainty = evenMap(0.05);
    trust.halves = evenMap(0.1);
    calibration.cameras = {trust};
    return calibration;
}

Calibration judged(Calibration calibration, bool isLensGiven = false) {
    giveVerdict(calibration, isLensGiven);
    return calibration;
}

std::string joined(const std::vector<std::string> &texts) {
    std::string all;
    for (const std::string &text : texts) {
        all += text + "\n";
    }
    return all;
}

void leaveOut(Calibration &calibration, int count, Misfit misfit, int print) {
    for (int i = 0; i < 24 && count > 0; i++) {
        if (calibration.observations.sightings[size_t(i)].print == print) {
            calibration.leftOut.push_back({i, misfit, ""});
            calibration.observations.sightings[size_t(i)].isUsed = false;
            count--;
        }
    }
}

TEST(Verdict, hasNothingToSayAboutAGoodCalibration) {
    const Calibration calibration = judged(good());
    EXPECT_EQ(calibration.verdict.grade, Grade::Good);
    EXPECT_EQ(calibration.verdict.text, "Good in the whole picture (uncertain by at most 0.05 px).");
    EXPECT_EQ(joined(calibration.verdict.advice), "");
    EXPECT_EQ(joined(calibration.notices), "All lengths rest on the measured size of pattern 0.\n");
}

TEST(Verdict, namesEachFault) {
    struct Row {
        std::function<void(Calibration &)> spoil;
        Grade grade;
        std::string text;    // part of the text
        std::string advice;  // part of the first advice
    };
    const auto uncertainty = [](const PictureMap &map) {
        return [map](Calibration &one) { one.cameras[0].uncertainty = map; };
    };
    const std::vector<Row> faults = {
        {uncertainty(evenMap(0.19)), Grade::Good, "Good in the whole picture (uncertain by at most 0.19 px).", ""},
        {uncertainty(evenMap(0.21)), Grade::Usable, "Uncertain in the whole picture (0.21 px in the middle",
         "Take three photographs with the target in the upper left corner, tilted differently."},
        {uncertainty(evenMap(1.01)), Grade::Poor, "Uncertain in the whole picture (1.0 px in the middle", "Take three"},
        {uncertainty(mapWithPart(1, 1, 0.4)), Grade::Usable, "Uncertain even in the middle (0.40 px; up to 0.40 px",
         "Take three"},
        {uncertainty(mapWithPart(0, 1, 0.4)), Grade::Usable,
         "Good in the middle (0.05 px), but not at the left edge (up to 0.40 px).", "target at the left edge, tilted"},
        {uncertainty(mapWithPart(2, 0, 0.4)), Grade::Usable, "but not in the upper right corner",
         "target in the upper right corner"},
        {uncertainty(mapWithPart(1, 2, 0.4)), Grade::Usable, "but not at the lower edge", "target at the lower edge"},
        {uncertainty(mapWithPart(0, 2, 4.9)), Grade::Usable, "but not in the lower left corner", "lower left corner"},
        {uncertainty(mapWithPart(0, 2, 5.1)), Grade::Usable,
         "but useless in the lower left corner (uncertain by up to 5.1 px): measure nothing there.",
         "lower left corner"},
        {uncertainty(mapWithPart(2, 1, 5.1)), Grade::Poor, "but useless at the right edge", "right edge"},
        {uncertainty(mapOf([](int x, int y) { return x / 3 != 1 && y / 3 != 1 ? 0.3 : 0.1; })), Grade::Usable,
         "Good in the middle (0.10 px), but not in the corners (up to 0.30 px).", "Take three"},
        {uncertainty(mapOf([](int x, int) { return x / 3 == 1 ? 0.1 : 0.3; })), Grade::Usable,
         "but not towards the edges", "Take three"},
        {[](Calibration &one) { one.cameras[0].rms = 1.1; }, Grade::Usable, "The corners fit only to 1.1 px.",
         "Take sharp photographs without motion blur, and fix the prints to a flat, stiff plate."},
        {[](Calibration &one) { one.cameras[0].halves = evenMap(0.26); }, Grade::Usable,
         "Two halves of the photographs give lenses that differ by 0.26 px", "Make sure that neither zoom nor focus"},
        {[](Calibration &one) { one.cameras[0].photographs = 7; }, Grade::Usable, "Only 7 photographs count.",
         "Take at least ten photographs"},
        {[](Calibration &one) { leaveOut(one, 5, Misfit::Unclear, 0); }, Grade::Usable,
         "5 of the 24 photographs did not fit.", "Find out why so many photographs did not fit"},
        {[](Calibration &one) {
             one.observations.sightings[1].photograph = 0;
             leaveOut(one, 5, Misfit::Unclear, 0);
         },
         Grade::Usable, "5 of the 23 photographs did not fit completely.", "Find out why"},
    };
    for (const Row &fault : faults) {
        Calibration calibration = good();
        fault.spoil(calibration);
        calibration = judged(calibration);
        const Verdict &verdict = calibration.verdict;
        EXPECT_EQ(verdict.grade, fault.grade) << verdict.text;
        EXPECT_NE(verdict.text.find(fault.text), std::string::npos) << verdict.text;
        EXPECT_EQ(verdict.advice.empty(), fault.advice.empty()) << verdict.text;
        EXPECT_NE(joined(verdict.advice).find(fault.advice), std::string::npos) << joined(verdict.advice);
    }
}

TEST(Verdict, isSilentJustWithinItsLimits) {
    Calibration calibration = good();
    calibration.cameras[0].rms = 0.99;
    calibration.cameras[0].halves = evenMap(0.24);
    calibration.cameras[0].photographs = 8;
    leaveOut(calibration, 4, Misfit::Unclear, 0);
    calibration = judged(calibration);
    EXPECT_EQ(calibration.verdict.grade, Grade::Good) << calibration.verdict.text;
    EXPECT_EQ(joined(calibration.verdict.advice), "");
}

TEST(Verdict, isThatOfTheWorstCameraAndNamesIt) {
    Calibration calibration = good();
    calibration.observations.cameras = {{"poor", 1200, 900, LensModel::Pinhole5},
                                        {"fine", 1200, 900, LensModel::Pinhole5},
                                        {"absent", 1200, 900, LensModel::Pinhole5}};
    calibration.cameras = {calibration.cameras[0], calibration.cameras[0], CameraTrust()};
    calibration.cameras[0].uncertainty = mapWithPart(2, 1, 6);
    leaveOut(calibration, 6, Misfit::Unclear, 0);
    calibration = judged(calibration, true);
    EXPECT_EQ(calibration.verdict.grade, Grade::Poor);
    EXPECT_EQ(calibration.verdict.text,
              "Camera \"poor\": Good in the middle (0.05 px), but useless at the right edge (uncertain by up to 6.0 "
              "px): measure nothing there. Camera \"fine\": Good in the whole picture (uncertain by at most 0.05 px). "
              "6 of the 24 photographs of all cameras did not fit.");
    EXPECT_NE(joined(calibration.verdict.advice).find("with camera \"poor\" with the target at the right edge"),
              std::string::npos);
    // If the user chose the lens model, another model may be the cure.
    calibration.cameras[1].rms = 2;
    calibration = judged(calibration, true);
    EXPECT_NE(joined(calibration.verdict.advice).find("stiff plate, or let the program choose the lens model."),
              std::string::npos);
}

TEST(Verdict, namesAPrintThatMoved) {
    struct Row {
        int count;
        Misfit misfit;
        bool isNamed;
    };
    for (const Row &row : {Row{3, Misfit::Moved, true}, Row{2, Misfit::Moved, false}, Row{3, Misfit::Unclear, false}}) {
        Calibration calibration = good();
        leaveOut(calibration, row.count, row.misfit, 1);
        const std::string notices = joined(judged(calibration).notices);
        EXPECT_EQ(
            notices.find("Pattern 4 is not at its usual place in 3 of the 12 photographs that show it: it was moved "
                         "between photographs, or two boards have the same number.") != std::string::npos,
            row.isNamed)
            << notices;
    }
}

TEST(Verdict, doesNotCallAPrintMovedIfOnlyTwoSightingsMoved) {
    // A third of this print's sightings are elsewhere, but two are too few to say that it moved.
    Calibration calibration = good();
    for (size_t i = 13; i < 24; i += 2) {
        calibration.observations.sightings[i].print = 0;
    }
    leaveOut(calibration, 2, Misfit::Moved, 1);
    EXPECT_EQ(joined(judged(calibration).notices).find("usual place"), std::string::npos);
}

TEST(Verdict, saysWhatTheLengthsRestOnAndWhichPrintsAreNotLinked) {
    struct Row {
        std::vector<int> groups;
        std::vector<bool> isMeasured, isDetermined;
        std::string notices;
    };
    const std::string exact =
        "No print was measured, so all lengths assume that pattern 0 has the right size on average: its width and its "
        "height may each be wrong, but their geometric mean is right.\n";
    const std::string printers = "; printers are assumed to be exact to 0.5 %.\n";
    const std::string little = "The photographs tell little about the true size or the ratio of width to height of ";
    for (const Row &row : {
             Row{{0, 0, 0}, {false, false, false}, {true, true, true}, exact},
             Row{{0, 0, 0},
                 {false, true, true},
                 {true, false, true},
                 "All lengths rest on the measured size of patterns 4 and 7.\n"},
             Row{{0, 0, 1},
                 {false, false, true},
                 {true, true, true},
                 "Pattern 7 is in no photograph with the others, so its pose relative to the others cannot be known. "
                 "Take photographs that show it together with the others.\nNo print that is linked with pattern 0 was "
                 "measured" +
                     exact.substr(exact.find(", so"))},
             Row{{0, 0, 0}, {false, false, false}, {true, false, true}, little + "pattern 4" + printers + exact},
             Row{{0, 0, 0},
                 {false, false, false},
                 {false, false, false},
                 little + "patterns 0, 4 and 7" + printers + exact},
             Row{{0, -1, 0},
                 {false, false, false},
                 {true, false, true},
                 "Pattern 4 is in no photograph that counts.\n" + exact},
             Row{{0, 1, 1},
                 {false, false, false},
                 {true, true, true},
                 "Patterns 4 and 7 are in no photograph with the others, so their poses relative to the others cannot "
                 "be known. Take photographs that show them together with the others.\n" +
                     exact},
             Row{{0, 1, 2},
                 {true, false, false},
                 {true, true, true},
                 "Pattern 4 is in no photograph with the others, so its pose relative to the others cannot be known. "
                 "Take photographs that show it together with the others.\n"
                 "Pattern 7 is in no photograph with the others, so its pose relative to the others cannot be known. "
                 "Take photographs that show it together with the others.\n"
                 "All lengths rest on the measured size of pattern 0.\n"},
         }) {
        Calibration calibration = good();
        calibration.observations.prints.resize(3);
        calibration.observations.prints[2].number = 7;
        calibration.prints.resize(3);
        calibration.estimate.groups = row.groups;
        for (size_t print = 0; print < 3; print++) {
            calibration.prints[print].isMeasured = row.isMeasured[print];
            calibration.prints[print].isDetermined = row.isDetermined[print];
        }
        calibration = judged(calibration);
        EXPECT_EQ(joined(calibration.notices), row.notices);
        const bool isAdvised = joined(calibration.verdict.advice).find("quarter turn") != std::string::npos;
        EXPECT_EQ(isAdvised, row.notices.find(little) != std::string::npos);
    }
}

TEST(Wording, roundsToTwoDigitsAndNamesPrints) {
    for (const auto &[value, text] : {std::pair(0.0049, "0.005"), std::pair(0.104, "0.10"), std::pair(0.996, "1.0"),
                                      std::pair(9.94, "9.9"), std::pair(9.96, "10"), std::pair(-123.4, "-123")}) {
        EXPECT_EQ(rounded(value), text);
    }
    Observations observations;
    observations.prints.resize(3);
    observations.prints[0].name = "the board";
    observations.prints[1].number = 1;
    EXPECT_EQ(namesOf(observations, {0}), "\"the board\"");
    EXPECT_EQ(namesOf(observations, {0, 1, 2}), "\"the board\", 1 and the target");
    EXPECT_EQ(placeInPicture(0.5, 0.5), "in the middle");
    EXPECT_EQ(placeInPicture(0.9, 0.1), "in the upper right corner");
    EXPECT_EQ(placeInPicture(0.1, 0.5), "at the left edge");
    EXPECT_EQ(placeInPicture(0.5, 0.9), "at the lower edge");
}

}  // namespace
}  // namespace calibration
