// read_target PICTURE GRID_SPACING: prints one line for each corner in the picture. The line has x and y in pixels,
// then x, y and z in mm.
#include <pattern_reader/pattern_reader.h>
#include <pattern_reader/printed_pattern.h>

#include <cstdlib>
#include <iostream>
#include <opencv2/imgcodecs.hpp>

int main(int count, char **arguments) {
    if (count != 3) {
        std::cerr << "Usage: read_target PICTURE GRID_SPACING\n";
        return 2;
    }
    const cv::Mat picture = cv::imread(arguments[1], cv::IMREAD_GRAYSCALE);
    if (picture.empty()) {
        std::cerr << arguments[1] << " is not a picture\n";
        return 1;
    }
    for (const pattern_reader::PatternReading &reading : pattern_reader::readPatterns(picture)) {
        const auto points = pattern_reader::objectPoints(reading, std::atof(arguments[2]));
        for (std::size_t i = 0; i < points.size(); ++i) {
            const pattern_reader::PatternCorner &corner = reading.corners[i];
            std::cout << corner.image.x << ' ' << corner.image.y << ' ' << points[i].x << ' ' << points[i].y << ' '
                      << points[i].z << '\n';
        }
    }
    return 0;
}
