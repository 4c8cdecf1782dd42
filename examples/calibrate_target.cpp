// calibrate_target PATTERN.json PICTURE...: calibrates the camera that took the pictures of one printed pattern.
#include <calibration/calibrate.h>
#include <pattern_reader/photograph.h>
#include <pattern_reader/printed_pattern.h>

#include <iostream>
#include <map>

namespace {

using calibration::Observations;

// Maps the position of a point of the print, in mm, to the point's index.
using PointIndex = std::map<std::pair<double, double>, int>;

PointIndex addPrint(const pattern_reader::PrintedPattern &pattern, Observations &observations) {
    PointIndex index;
    calibration::Print &print = observations.prints.emplace_back();
    print.name = "target";
    for (const cv::Point2d &point : pattern.points) {
        index[{point.x, point.y}] = int(print.points.size());
        print.points.emplace_back(point.x, point.y);
    }
    return index;
}

void addPicture(const char *file, const std::vector<pattern_reader::PrintedPattern> &patterns, const PointIndex &index,
                Observations &observations) {
    const pattern_reader::Photograph photograph = pattern_reader::loadPhotograph(file);
    if (observations.cameras.empty()) {
        observations.cameras.push_back({"camera", photograph.grey.cols, photograph.grey.rows});
    }
    const int number = int(observations.photographs.size());
    observations.photographs.push_back({file, 0, number});
    for (const pattern_reader::PatternReading &reading : pattern_reader::readPhotograph(photograph)) {
        const auto places = pattern_reader::objectPoints(reading, patterns);
        if (!places) {
            continue;  // the reading does not fit the printed pattern
        }
        calibration::Sighting &sighting = observations.sightings.emplace_back();
        sighting.photograph = number;
        for (std::size_t i = 0; i < places->size(); ++i) {
            const pattern_reader::PatternCorner &corner = reading.corners[i];
            calibration::SeenCorner seen;
            seen.point = index.at({(*places)[i].x, (*places)[i].y});
            seen.image = {corner.image.x, corner.image.y};
            seen.sigma = corner.sigma;
            sighting.corners.push_back(seen);
        }
    }
}

}  // namespace

int main(int count, char **arguments) {
    try {
        if (count < 3) {
            throw std::runtime_error("Usage: calibrate_target PATTERN.json PICTURE...");
        }
        auto patterns = pattern_reader::loadPrintedPatterns(arguments[1]);
        patterns.erase(patterns.begin() + 1, patterns.end());  // of an assembly, only the first pattern is used
        Observations observations;
        const PointIndex index = addPrint(patterns.front(), observations);
        for (int i = 2; i < count; ++i) {
            addPicture(arguments[i], patterns, index, observations);
        }
        observations.moments = int(observations.photographs.size());
        calibration::CalibrateOptions options;
        options.lens = calibration::LensModel::Pinhole5;
        const calibration::Calibration result = calibration::calibrate(observations, options);
        const Eigen::VectorXd &lens = result.estimate.intrinsics.front();
        std::cout << "focal lengths " << lens[0] << ' ' << lens[1] << "\ncentre " << lens[2] << ' ' << lens[3]
                  << "\nrms " << result.cameras.front().rms << '\n'
                  << result.verdict.text << '\n';
        return 0;
    } catch (const std::exception &error) {
        std::cerr << error.what() << '\n';
        return 1;
    }
}
