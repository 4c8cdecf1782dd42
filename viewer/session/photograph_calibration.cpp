#include "viewer/session/photograph_calibration.h"

#include <QCoreApplication>
#include <QFile>

#include "calibration/input/photograph_observations.h"

namespace {

using calibration::CalibrateOptions;
using calibration::CollectedObservations;
using calibration::Observations;

struct Input {
    std::vector<calibration::ReadPhotograph> photographs;
    std::vector<int> ids;
};

Input inputFrom(const QVector<SessionPhotograph> &photographs) {
    Input input;
    for (const SessionPhotograph &photograph : photographs) {
        if (!photograph.isIncluded || photograph.state == PhotographState::Waiting) {
            continue;
        }
        calibration::ReadPhotograph read;
        read.file.path = QFile::encodeName(photograph.path).toStdString();
        read.exifCamera = photograph.exifCamera;
        read.isTruncated = photograph.isTruncated;
        read.width = photograph.width;
        read.height = photograph.height;
        if (photograph.readings) {
            read.readings = *photograph.readings;
        } else {
            read.error = photograph.problem.toStdString();
        }
        input.photographs.push_back(std::move(read));
        input.ids.push_back(photograph.id);
    }
    return input;
}

calibration::PrintedTarget targetFrom(const SessionSettings &settings) {
    calibration::PrintedTarget target;
    target.gridSpacing = settings.gridSpacing;
    target.square = settings.boardSquare;
    for (const QString &file : settings.patternFiles) {
        for (auto &pattern : pattern_reader::loadPrintedPatterns(QFile::encodeName(file).toStdString())) {
            target.patterns.push_back(std::move(pattern));
        }
    }
    return target;
}

// Finds the ids of photographs by their names. The names must come in the order of the photographs, because each search
// begins after the previous match.
class Names {
public:
    explicit Names(const Input &allInput) : input(allInput) {}
    int idOf(const std::string &name) {
        while (next < input.ids.size() && input.photographs[next].file.path != name) {
            ++next;
        }
        return next < input.ids.size() ? input.ids[next++] : -1;
    }

private:
    const Input &input;
    size_t next = 0;
};

// Returns the measured sizes in the form that the calibration needs: by the index of the print. In the settings, they
// are listed by pattern number. Sizes of patterns that are not among the prints are dropped. A size that may belong to
// several prints is dropped, too, and a notice says so.
std::vector<calibration::MeasuredPrint> measuredPrints(const SessionSettings &settings,
                                                       const Observations &observations,
                                                       std::vector<std::string> &notices) {
    std::vector<calibration::MeasuredPrint> measured;
    bool isAmbiguous = false;
    for (size_t i = 0; i < observations.prints.size(); ++i) {
        const auto entry = settings.measured.find(observations.prints[i].number);
        if (entry == settings.measured.end()) {
            continue;
        }
        if (canBeMeasured(observations, i)) {
            measured.push_back({int(i), {entry->x(), entry->y()}});
        } else {
            isAmbiguous = true;
        }
    }
    if (isAmbiguous) {
        notices.push_back(
            QCoreApplication::translate("PhotographCalibration",
                                        "The lengths that were entered for a print without a number are not used, "
                                        "because several prints here have no number.")
                .toStdString());
    }
    return measured;
}

// True if cameras and prints are the same. Only then can a calibration start from the previous result.
bool areAlike(const Observations &a, const Observations &b) {
    const auto sameCamera = [](const calibration::Camera &one, const calibration::Camera &other) {
        return one.name == other.name && one.width == other.width && one.height == other.height;
    };
    const auto samePrint = [](const calibration::Print &one, const calibration::Print &other) {
        return one.number == other.number && one.points == other.points;
    };
    return std::equal(a.cameras.begin(), a.cameras.end(), b.cameras.begin(), b.cameras.end(), sameCamera) &&
           std::equal(a.prints.begin(), a.prints.end(), b.prints.begin(), b.prints.end(), samePrint);
}

void calibrateInto(SessionResult &result, const CollectedObservations &collected, const SessionSettings &settings,
                   CalibrateOptions options) {
    options.lens = settings.lens;
    options.mayBend = settings.mayBend;
    std::vector<std::string> notices = collected.notices;
    options.measured = measuredPrints(settings, collected.observations, notices);
    if (options.previous && !areAlike(options.previous->observations, collected.observations)) {
        options.previous = nullptr;
    }
    auto calibration = calibration::calibrate(collected.observations, options);
    calibration.notices.insert(calibration.notices.end(), notices.begin(), notices.end());
    result.calibration = std::make_shared<const calibration::Calibration>(std::move(calibration));
    describeFits(result);
}

void addTextures(SessionResult &result, const QVector<SessionPhotograph> &photographs) {
    const std::vector<std::optional<PrintLook>> looks = looksOf(*result.calibration, result.photographIds, photographs);
    for (size_t print = 0; print < looks.size(); ++print) {
        result.textures.push_back(looks[print] ? textureOf(result.calibration->observations.prints[print],
                                                           result.calibration->estimate.shapes[print], *looks[print])
                                               : std::vector<PrintBlock>());
    }
}

}  // namespace

SessionResult calibratePhotographs(const QVector<SessionPhotograph> &photographs, const SessionSettings &settings,
                                   const CalibrateOptions &options) {
    SessionResult result;
    try {
        const Input input = inputFrom(photographs);
        if (input.ids.empty()) {
            return result;
        }
        const CollectedObservations collected = calibration::collectObservations(
            input.photographs, targetFrom(settings), settings.arrangement == Arrangement::Rig);
        result.unused = collected.unused;
        Names unusedNames(input);
        for (const calibration::UnusedPhotograph &unused : collected.unused) {
            result.fits[unusedNames.idOf(unused.name)].reason = QString::fromStdString(unused.reason);
        }
        Names usedNames(input);
        for (const calibration::Photograph &photograph : collected.observations.photographs) {
            result.photographIds.push_back(usedNames.idOf(photograph.name));
        }
        calibrateInto(result, collected, settings, options);
        addTextures(result, photographs);
    } catch (const calibration::Cancelled &) {
        throw;
    } catch (const std::bad_alloc &) {
        result.problem = QCoreApplication::translate("PhotographCalibration", "There is not enough memory.");
    } catch (const std::exception &error) {
        result.problem = QString::fromStdString(error.what());
    }
    return result;
}

bool canBeMeasured(const Observations &observations, size_t print) {
    const int number = observations.prints[print].number;
    return std::count_if(observations.prints.begin(), observations.prints.end(),
                         [number](const calibration::Print &other) { return other.number == number; }) == 1;
}
