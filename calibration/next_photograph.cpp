#include "calibration/next_photograph.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "calibration/dense_solve.h"
#include "calibration/wording.h"

namespace calibration {

namespace {

// To save time, the poses are compared by the uncertainty on a coarse map of the picture.
constexpr int mapColumns = 12;
constexpr int mapRows = 9;
constexpr double tilt = 35;  // degrees
// A pose is advised only if a photograph of the target in this pose lowers the greatest uncertainty to less than this
// share of its present value.
constexpr double usefulShare = 0.95;
// The uncertainty of a lens is negligible below this share of the standard deviation of one corner, because it then
// adds at most 3 % to the error of that corner. The limit that follows from the share is at least leastNegligible
// pixels, even if corners are very exact, and at most mostNegligible pixels, even if they fit badly.
constexpr double negligibleShare = 0.25;
constexpr double leastNegligible = 0.005;
constexpr double mostNegligible = 0.05;
// A pose is considered only if at least this share of the corners, and at least six corners, would be in the picture.
// With fewer corners in the picture, the target could hardly be recognised.
constexpr double leastVisible = 0.3;

// The place and the tilt of the target, in terms that a user understands.
struct Hold {
    double x, y;            // of the target's middle, as shares of the picture's width and height
    double distance;        // mm
    double aboutX, aboutY;  // tilts about the x and y axes, degrees
};

std::vector<Hold> candidates(double usualDistance) {
    std::vector<Hold> holds;
    for (const double factor : {1.0, 0.6}) {
        for (const double y : {0.5, 0.15, 0.85}) {
            for (const double x : {0.5, 0.15, 0.85}) {
                for (const auto &[aboutX, aboutY] : std::initializer_list<std::pair<double, double>>{
                         {0, 0}, {tilt, 0}, {-tilt, 0}, {0, tilt}, {0, -tilt}}) {
                    holds.push_back({x, y, factor * usualDistance, aboutX, aboutY});
                }
            }
        }
    }
    return holds;
}

// Returns a typical standard deviation of a camera's corners along one axis, in pixels. The value is that of the first
// corner in the camera's first used sighting; 1 if the camera has no such corner.
double sigmaOfCorner(const Calibration &calibration, int camera) {
    for (const Sighting &sighting : calibration.observations.sightings) {
        const Photograph &photograph = calibration.observations.photographs[size_t(sighting.photograph)];
        if (sighting.isUsed && photograph.camera == camera && !sighting.corners.empty()) {
            return sighting.corners.front().sigma;
        }
    }
    return 1;
}

// Predicts the uncertainty of one camera after one more photograph of one print.
class Prediction {
public:
    Prediction(const Calibration &what, int whichCamera, int whichPrint)
        : calibration(what),
          cameraNumber(whichCamera),
          printNumber(whichPrint),
          camera(what.observations.cameras[size_t(whichCamera)]),
          lens(what.estimate.intrinsics[size_t(whichCamera)]),
          covariance(what.covariance.lensAndShape(whichCamera, whichPrint)),
          sigma(sigmaOfCorner(what, whichCamera)) {
        const std::vector<Eigen::Vector2d> &points = what.observations.prints[size_t(whichPrint)].points;
        for (const Eigen::Vector2d &point : points) {
            middle.head<2>() += point / double(points.size());
        }
    }

    // Returns the greatest uncertainty now, on a map of this size.
    double before(int columns, int rows) const { return greatest(covariance, columns, rows); }

    // Returns the greatest uncertainty after a photograph of the print in this pose. Empty if the camera would see too
    // little of the print.
    std::optional<double> after(const RigidMotion &cameraFromPrint, int columns, int rows) const {
        const std::optional<Eigen::MatrixXd> derivatives = rowsOf(cameraFromPrint);
        if (!derivatives) {
            return std::nullopt;
        }
        const Eigen::MatrixXd information = gramMatrix(*derivatives) / (sigma * sigma);
        // `lower` is (covariance^-1 + information)^-1, computed without inverting the covariance, which is nearly
        // singular for some lenses.
        const Eigen::MatrixXd one = Eigen::MatrixXd::Identity(covariance.rows(), covariance.cols());
        const Eigen::MatrixXd lower = solve(one + covariance * information, covariance);
        return greatest((lower + lower.transpose()) / 2, columns, rows);
    }

    std::optional<RigidMotion> pose(const Hold &hold) const {
        Eigen::Vector3d direction;
        if (!unproject(camera.lens, lens.data(), {hold.x * camera.width, hold.y * camera.height}, direction)) {
            return std::nullopt;
        }
        constexpr double degree = 3.14159265358979323846 / 180;
        const Eigen::Matrix3d turn = rotationBetween(Eigen::Vector3d::UnitZ(), direction) *
                                     rotationMatrix({hold.aboutX * degree, 0, 0}) *
                                     rotationMatrix({0, hold.aboutY * degree, 0});
        return RigidMotion{rotationVector(turn), hold.distance * direction - turn * middle};
    }

private:
    double greatest(const Eigen::MatrixXd &lensAndShape, int columns, int rows) const {
        const Eigen::Index size = lens.size();
        const double distance = calibration.cameras[size_t(cameraNumber)].distance;
        return projectionUncertainty(camera, lens, lensAndShape.topLeftCorner(size, size), distance, columns, rows)
            .greatest()
            .value_or(0);
    }

    // Returns the derivatives of the visible corners with respect to the lens and the print's shape, without the part
    // that has the same effect as a change of the print's unknown pose. Empty if too few corners are visible.
    std::optional<Eigen::MatrixXd> rowsOf(const RigidMotion &cameraFromPrint) const {
        const std::vector<Eigen::Vector2d> &points = calibration.observations.prints[size_t(printNumber)].points;
        const PrintShape &shape = calibration.estimate.shapes[size_t(printNumber)];
        const std::vector<int> &free = calibration.freedom.shapes[size_t(printNumber)];
        const Eigen::Matrix3d rotation = rotationMatrix(cameraFromPrint.rotation);
        Eigen::MatrixXd byShared(2 * Eigen::Index(points.size()), covariance.rows());
        Eigen::MatrixXd byPose(byShared.rows(), 6);
        Eigen::Index row = 0;
        for (const Eigen::Vector2d &drawn : points) {
            const PrintedPoint printed = printedPoint(shape.numbers.data(), shape.reach, drawn);
            const Eigen::Vector3d turned = rotation * printed.place;
            Projection projection;
            if (!project(camera.lens, lens.data(), turned + cameraFromPrint.translation, projection) ||
                !isInside(projection.image)) {
                continue;
            }
            byShared.block(row, 0, 2, lens.size()) = projection.byParameters;
            for (size_t i = 0; i < free.size(); i++) {
                byShared.block<2, 1>(row, lens.size() + Eigen::Index(i)) =
                    projection.byPoint * rotation * printed.byNumbers.col(free[i]);
            }
            byPose.block<2, 3>(row, 0) = -projection.byPoint * crossMatrix(turned);
            byPose.block<2, 3>(row, 3) = projection.byPoint;
            row += 2;
        }
        if (double(row) < std::max(12.0, leastVisible * double(byShared.rows()))) {
            return std::nullopt;
        }
        byShared.conservativeResize(row, Eigen::NoChange);
        byPose.conservativeResize(row, Eigen::NoChange);
        return orthogonalPart(std::move(byShared), byPose);
    }

    bool isInside(const Eigen::Vector2d &pixel) const {
        return pixel.x() >= 0 && pixel.y() >= 0 && pixel.x() < camera.width && pixel.y() < camera.height;
    }

    const Calibration &calibration;
    int cameraNumber;
    int printNumber;
    const Camera &camera;
    const Eigen::VectorXd &lens;
    Eigen::MatrixXd covariance;
    double sigma;
    Eigen::Vector3d middle = Eigen::Vector3d::Zero();
};

// Returns the camera with the greatest uncertainty; -1 if the uncertainty of no camera is known.
int worstCamera(const Calibration &calibration) {
    int worst = -1;
    double greatest = 0;
    for (size_t camera = 0; camera < calibration.cameras.size(); camera++) {
        const double value = calibration.cameras[camera].uncertainty.greatest().value_or(0);
        if (value > greatest) {
            greatest = value;
            worst = int(camera);
        }
    }
    return worst;
}

// Returns the print of which a camera saw the most corners.
int usualPrint(const Calibration &calibration, int camera) {
    std::vector<size_t> corners(calibration.observations.prints.size(), 0);
    for (const Sighting &sighting : calibration.observations.sightings) {
        const Photograph &photograph = calibration.observations.photographs[size_t(sighting.photograph)];
        if (takesPart(calibration.observations, sighting, calibration.estimate) && photograph.camera == camera) {
            corners[size_t(sighting.print)] += sighting.corners.size();
        }
    }
    return int(std::max_element(corners.begin(), corners.end()) - corners.begin());
}

// Returns the first words of the advice.
std::string request(const Calibration &calibration, int camera) {
    if (!isLensCertain(calibration)) {
        return "Take a photograph ";
    }
    return "More photographs hardly help: the lens is uncertain by at most " +
           rounded(calibration.cameras[size_t(camera)].uncertainty.greatest().value_or(0)) +
           " px, a single corner by " + rounded(sigmaOfCorner(calibration, camera)) +
           " px. The most useful photograph would be one ";
}

std::string describe(const Calibration &calibration, int camera, int print, const Hold &hold) {
    const Observations &observations = calibration.observations;
    std::string text = request(calibration, camera);
    if (observations.cameras.size() > 1) {
        text += "with camera \"" + observations.cameras[size_t(camera)].name + "\" ";
    }
    text += "that shows " +
            (observations.prints.size() > 1 ? namesOf(observations, {print}) : std::string("the target")) + " " +
            placeInPicture(hold.x, hold.y) + ", " + rounded(hold.distance) + " mm away";
    if (hold.aboutX != 0 || hold.aboutY != 0) {
        const char *side = hold.aboutX > 0 ? "upper" : hold.aboutX < 0 ? "lower" : hold.aboutY > 0 ? "right" : "left";
        text += " and tilted by " + rounded(tilt) + " degrees, so that its " + side +
                " side in the picture is nearer to the camera";
    }
    return text + ".";
}

}  // namespace

bool isLensCertain(const Calibration &calibration) {
    bool isAny = false;
    for (size_t camera = 0; camera < calibration.cameras.size(); camera++) {
        const std::optional<double> greatest = calibration.cameras[camera].uncertainty.greatest();
        const double negligible =
            std::clamp(negligibleShare * sigmaOfCorner(calibration, int(camera)), leastNegligible, mostNegligible);
        if (greatest && *greatest > negligible) {
            return false;
        }
        isAny = isAny || greatest;
    }
    return isAny;
}

std::optional<NextPhotograph> findNextPhotograph(const Calibration &calibration) {
    const int camera = worstCamera(calibration);
    if (camera < 0) {
        return std::nullopt;
    }
    const int print = usualPrint(calibration, camera);
    const Prediction prediction(calibration, camera, print);
    std::optional<NextPhotograph> best;
    double least = usefulShare * prediction.before(mapColumns, mapRows);
    for (const Hold &hold : candidates(calibration.cameras[size_t(camera)].distance)) {
        const std::optional<RigidMotion> pose = prediction.pose(hold);
        const std::optional<double> after = pose ? prediction.after(*pose, mapColumns, mapRows) : std::nullopt;
        if (after && *after < least) {
            least = *after;
            best = NextPhotograph{camera, print, *pose, 0, 0, describe(calibration, camera, print, hold)};
        }
    }
    if (!best) {
        return std::nullopt;
    }
    // The figures that the user sees come from a map as fine as that of the report.
    const PictureMap &map = calibration.cameras[size_t(camera)].uncertainty;
    best->uncertaintyBefore = prediction.before(map.columns, map.rows);
    best->uncertaintyAfter = prediction.after(best->cameraFromPrint, map.columns, map.rows).value_or(0);
    return best->uncertaintyAfter < usefulShare * best->uncertaintyBefore ? best : std::nullopt;
}

}  // namespace calibration
