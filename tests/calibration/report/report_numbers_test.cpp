// Reads the numbers and figures of the report back and compares them with those of the calibration. The calibration is
// made from a computed scene whose residuals, poses and shapes are known, so nothing has to be solved.
#include <gtest/gtest.h>
#include <QRegularExpression>
#include <QString>
#include <QStringList>

#include <cmath>

#include "calibration/report/camera_figures.h"
#include "calibration/report/report_page.h"
#include "tests/calibration/computed_scene.h"

namespace {

using namespace calibration;
using Eigen::Vector2d;
using Eigen::Vector3d;

constexpr double degree = 3.14159265358979323846 / 180;
// The vector from the place where a corner was seen to the place where the calibration projects it, in pixels.
const Vector2d shift(-0.3, 0.2);

Calibration makeCalibration() {
    Scene scene = makeScene(0);
    Calibration calibration;
    calibration.freedom.shapes = {{PrintShape::ratio}, {0, 1, 2, 3, 4, 5}};
    for (Sighting &sighting : scene.observations.sightings) {
        for (SeenCorner &corner : sighting.corners) {
            corner.image -= shift;
            corner.sigma = 0.1;
        }
    }
    calibration.covariance = covarianceOf(scene.observations, calibration.freedom, scene.truth).value();
    calibration.observations = scene.observations;
    calibration.estimate = scene.truth;
    for (size_t i = 0; i < 2; i++) {
        Print &print = calibration.observations.prints[i];
        print.number = int(i) + 3;
        print.name = "sheet " + std::to_string(print.number);
    }
    for (size_t i = 0; i < calibration.observations.photographs.size(); i++) {
        calibration.observations.photographs[i].name = "photo" + std::to_string(i);
    }
    calibration.cameras.resize(2);
    for (int camera = 0; camera < 2; camera++) {
        CameraTrust &trust = calibration.cameras[size_t(camera)];
        trust.rms = camera == 0 ? 0.3 : 0.1;
        trust.corners = camera == 0 ? 100 : 700;
        const Eigen::VectorXd sigmas = calibration.covariance.intrinsics(camera).diagonal().cwiseSqrt();
        trust.sigmas.assign(sigmas.begin(), sigmas.end());
    }
    calibration.prints.resize(2);
    calibration.prints[1].translationSigma = {0.11, 0.22, 0.33};
    calibration.prints[1].rotationSigma = {0.011, 0.022, 0.033};
    calibration.prints[1].pointSigmas = {0.2, 0.5, 0.3};
    return calibration;
}

// Returns the text of each cell of the table row whose first cells have these texts.
QStringList rowOf(const std::string &html, const QStringList &start) {
    static const QRegularExpression row("<tr[^>]*>(.*?)</tr>", QRegularExpression::DotMatchesEverythingOption);
    static const QRegularExpression cell("<td[^>]*>(.*?)</td>", QRegularExpression::DotMatchesEverythingOption);
    static const QRegularExpression tag("<[^>]*>");
    auto rows = row.globalMatch(QString::fromStdString(html));
    while (rows.hasNext()) {
        QStringList texts;
        auto cells = cell.globalMatch(rows.next().captured(1));
        while (cells.hasNext()) {
            texts += cells.next().captured(1).remove(tag).replace(QChar(0x2212), '-');
        }
        if (texts.mid(0, start.size()) == start) {
            return texts;
        }
    }
    ADD_FAILURE() << "no row " << start.join(", ").toStdString();
    return {};
}

// Compares a cell such as "1.23 ± 0.45" with a value and its standard deviation, to the digits that the cell shows.
void expectValue(const QString &text, double value, double sigma) {
    const QStringList parts = text.split(QString::fromUtf8(" \xC2\xB1 "));
    ASSERT_EQ(parts.size(), 2) << text.toStdString();
    const double unit = std::pow(10, -(parts[1].size() - parts[1].indexOf('.') - 1));
    EXPECT_NEAR(parts[0].toDouble(), value, unit * 0.51) << text.toStdString();
    EXPECT_NEAR(parts[1].toDouble(), sigma, unit * 0.51) << text.toStdString();
    EXPECT_GT(sigma, 9 * unit) << "the standard deviation has two digits";
}

// Returns, for each path with this attribute, all numbers of the path. In a path, M and L are followed by x and y, and
// h and v by one number.
std::vector<std::vector<double>> pathsOf(const std::string &svg, const QString &attribute) {
    std::vector<std::vector<double>> paths;
    const QRegularExpression path("<path " + attribute + " d=\"([^\"]*)\"");
    static const QRegularExpression number("-?[0-9.]+");
    auto found = path.globalMatch(QString::fromStdString(svg));
    while (found.hasNext()) {
        paths.emplace_back();
        auto numbers = number.globalMatch(found.next().captured(1));
        while (numbers.hasNext()) {
            paths.back().push_back(numbers.next().captured().toDouble());
        }
    }
    return paths;
}

TEST(ReportNumbers, ofTheLensAreThoseOfTheCalibration) {
    Calibration calibration = makeCalibration();
    std::string html = reportPage(calibration);
    const char *names[] = {"fx", "fy", "cx", "cy", "k1", "k2", "p1", "p2", "k3"};
    for (int i = 0; i < 9; i++) {
        SCOPED_TRACE(names[i]);
        expectValue(rowOf(html, {names[i]}).value(1), calibration.estimate.intrinsics[0](i),
                    std::sqrt(calibration.covariance.intrinsics(0)(i, i)));
    }
    // Without distortion and with the principal point in the middle, a picture of 1200 x 900 pixels shows these angles.
    calibration.estimate.intrinsics[0].setZero();
    calibration.estimate.intrinsics[0].head(4) << 1100, 1000, 599.5, 449.5;
    html = reportPage(calibration);
    const auto angle = [](double halfTangent) {
        return QString::number(2 * std::atan(halfTangent) / degree, 'f', 1) + QChar(0xB0);
    };
    const QString expected = angle(600 / 1100.0) + " " + QChar(0xD7) + " " + angle(450 / 1000.0) + ", diagonal " +
                             angle(std::hypot(600 / 1100.0, 450 / 1000.0));
    EXPECT_TRUE(QString::fromStdString(html).contains(expected)) << expected.toStdString();
}

TEST(ReportNumbers, ofTheRigAndThePrintsAreThoseOfTheCalibration) {
    Calibration calibration = makeCalibration();
    calibration.prints[0].isDetermined = false;
    const std::string html = reportPage(calibration);
    const RigidMotion &second = calibration.estimate.cameraFromRig[1];
    const Eigen::MatrixXd rig = calibration.covariance.cameraFromRig(1);
    const QStringList row = rowOf(html, {"b", "a"});
    ASSERT_EQ(row.size(), 9);
    const Vector3d direction = second.translation.normalized();
    expectValue(row[2], second.translation.norm(), std::sqrt(direction.dot(rig.bottomRightCorner<3, 3>() * direction)));
    const RigidMotion &pose = calibration.estimate.worldFromPrint[1];
    const QStringList placed = rowOf(html, {"sheet 4", "4", "1"});
    ASSERT_EQ(placed.size(), 10);
    EXPECT_EQ(placed[9].toStdString(), "0.50") << "the greatest standard deviation of its points";
    for (int axis = 0; axis < 3; axis++) {
        expectValue(row[3 + axis], second.translation[axis], std::sqrt(rig(3 + axis, 3 + axis)));
        expectValue(row[6 + axis], second.rotation[axis] / degree, std::sqrt(rig(axis, axis)) / degree);
        expectValue(placed[3 + axis], pose.translation[axis], 0.11 * (axis + 1));
        expectValue(placed[6 + axis], pose.rotation[axis] / degree, 0.011 * (axis + 1));
    }
    const Eigen::MatrixXd shape = calibration.covariance.shape(1);
    const QString tables = QString::fromStdString(html);
    const std::string shapes = tables.mid(tables.indexOf("How the prints differ")).toStdString();
    const QStringList bent = rowOf(shapes, {"sheet 4", "4"});
    ASSERT_EQ(bent.size(), 7);
    expectValue(bent[2], 100 * std::exp(0.001), 100 * std::sqrt(shape(0, 0)));
    expectValue(bent[3], 100 * std::exp(-0.004), 100 * std::sqrt(shape(1, 1)));
    expectValue(bent[4], 100 * 0.0005, 100 * std::sqrt(shape(2, 2)));
    // The grid of corners is symmetric, so the plane that fits best is not tilted, and the height of the bend is the
    // range of z.
    double least = 0;
    double most = 0;
    for (const Vector2d &drawn : calibration.observations.prints[1].points) {
        const Vector2d p = drawn / 100;
        const double z = 0.6 * p.x() * p.x() - 0.3 * p.x() * p.y() + 0.2 * p.y() * p.y();
        least = std::min(least, z);
        most = std::max(most, z);
    }
    EXPECT_NEAR(bent[5].toDouble(), most - least, 0.005);
    EXPECT_EQ(bent[6], "");
    const QStringList flat = rowOf(shapes, {"sheet 3", "3"});
    EXPECT_EQ(flat.value(2), "100.000 (fixed)");
    EXPECT_EQ(flat.value(5), "0 (flat)");
    EXPECT_EQ(flat.value(6), "The photographs do not determine its scale or x:y.");

    // A number that was free is not called fixed, even if its covariance is not known.
    calibration.freedom.shapes[0].push_back(PrintShape::scale);
    const QString others = QString::fromStdString(reportPage(calibration));
    const std::string otherShapes = others.mid(others.indexOf("How the prints differ")).toStdString();
    EXPECT_EQ(rowOf(otherShapes, {"sheet 3", "3"}).value(2), "100.000");
}

TEST(ReportNumbers, ofPhotographsCountOnlyTheUsedCorners) {
    Calibration calibration = makeCalibration();
    std::vector<Sighting> &sightings = calibration.observations.sightings;
    int seen = 0;
    for (Sighting &sighting : sightings) {
        if (sighting.photograph == 0) {
            seen += int(sighting.corners.size());
            sighting.corners[2].isUsed = false;
            sighting.corners[2].image.x() += 50;  // a bad corner has no part in the rms
        }
    }
    const int prints =
        int(std::count_if(sightings.begin(), sightings.end(), [](const Sighting &one) { return one.photograph == 0; }));
    calibration.verdict = {Grade::Usable, "The text.", {"First advice.", "Second advice."}};
    calibration.notices = {"A notice."};
    const std::string html = reportPage(calibration);
    const QStringList row = rowOf(html, {"1", "photo0"});
    ASSERT_GE(row.size(), 6);
    EXPECT_EQ(row[2], "a");
    EXPECT_EQ(row[3], prints == 2 ? "sheet 3, sheet 4" : "sheet 3");
    EXPECT_EQ(row[4], QString("%1 of %2").arg(seen - prints).arg(seen));
    EXPECT_NEAR(row[5].toDouble(), shift.norm(), 0.002);
    // The rms of 100 corners with 0.3 px and 700 corners with 0.1 px is 0.141 px.
    const QString page = QString::fromStdString(html);
    EXPECT_TRUE(page.contains("<b>0.141</b> px<span>residual, rms per corner</span>"));
    EXPECT_TRUE(page.contains("<b>800</b> <span>corners used</span>"));
    EXPECT_TRUE(page.contains("<section class=\"verdict usable\"><div class=\"sign\">!</div><div><h2>Usable</h2>"));
    EXPECT_TRUE(page.contains("<ol><li>First advice.</li><li>Second advice.</li></ol>"));
    EXPECT_TRUE(page.contains("<li>A notice.</li>"));
}

TEST(ReportFigures, drawResidualsFromTheSeenCornerToTheProjectedOne) {
    const Calibration calibration = makeCalibration();
    const Figure figure = residualFigure(calibration, 0);
    const std::vector<std::vector<double>> arrows = pathsOf(figure.svg, "class=\"thin\"");
    ASSERT_EQ(arrows.size(), 1U);
    const auto &[x, y] = std::pair(arrows[0][2] - arrows[0][0], arrows[0][3] - arrows[0][1]);
    EXPECT_NEAR(std::atan2(y, x), std::atan2(shift.y(), shift.x()), 0.02);
    // The figure is half as large as the picture.
    const QRegularExpression enlarged("enlarged (\\d+) times");
    const double factor = enlarged.match(QString::fromStdString(figure.caption)).captured(1).toDouble();
    EXPECT_NEAR(std::hypot(x, y), shift.norm() * factor / 2, 0.2);
    const Figure mean = meanResidualFigure(calibration, 0);
    EXPECT_TRUE(QString::fromStdString(mean.caption).contains("Greatest mean: 0.36 px.")) << mean.caption;
}

TEST(ReportFigures, showWhereCornersWereSeen) {
    Calibration calibration = makeCalibration();
    for (Sighting &sighting : calibration.observations.sightings) {
        for (SeenCorner &corner : sighting.corners) {
            corner.isUsed = corner.image.x() < 400 && corner.image.y() > 450;
        }
    }
    const std::string svg = coverageFigure(calibration, 0).svg;
    int shown = 0;
    for (const std::vector<double> &cells : pathsOf(svg, "fill=\"#[0-9a-f]{6}\"")) {
        for (size_t i = 0; i + 4 < cells.size(); i += 5) {  // five numbers: M x y h v h
            if (cells[i + 1] < 450) {                       // the legend is below
                EXPECT_LT(cells[i], 201);
                EXPECT_GE(cells[i + 1], 224);
                shown++;
            }
        }
    }
    EXPECT_GT(shown, 5);
}

TEST(ReportFigures, colourAMapByFixedLimits) {
    const Camera camera{"a", 1200, 900, LensModel::Pinhole5};
    const std::string svg = mapFigure(camera, {2, 2, {0.001, 0.0099, 0.0051, 3}}, "", "").svg;
    const auto cellsOf = [&](const char *colour) {
        std::vector<std::pair<double, double>> cells;
        for (const std::vector<double> &path : pathsOf(svg, QString("fill=\"%1\"").arg(colour))) {
            for (size_t i = 0; i + 4 < path.size() && path[i + 1] < 450; i += 5) {
                cells.emplace_back(path[i], path[i + 1]);
            }
        }
        return cells;
    };
    using Cells = std::vector<std::pair<double, double>>;
    EXPECT_EQ(cellsOf("#e2f0d9"), (Cells{{0, 0}})) << "the lightest, below 0.005 px";
    EXPECT_EQ(cellsOf("#5c103c"), (Cells{{300, 225}})) << "the darkest, above 2 px";
    EXPECT_EQ(cellsOf("#cde7ce"), (Cells{{300, 0}, {0, 225}})) << "from 0.005 to 0.01 px";
}

TEST(ReportFigures, drawTheSceneToScale) {
    const Calibration calibration = makeCalibration();
    const QString page = QString::fromStdString(reportPage(calibration));
    const QString above = page.mid(page.indexOf("Seen from above"),
                                   page.indexOf("Seen from the right") - page.indexOf("Seen from above"));
    const std::string svg = above.toStdString();
    const std::vector<double> print = pathsOf(svg, "class=\"print\"").at(0);
    double left = 1e9;
    double right = -1e9;
    for (size_t i = 0; i < print.size(); i += 2) {
        left = std::min(left, print[i]);
        right = std::max(right, print[i]);
    }
    const double scale = (right - left) / 160;
    // The path of a camera's pyramid begins at the apex.
    const std::vector<std::vector<double>> cameras = pathsOf(svg, "class=\"camera0\"");
    ASSERT_EQ(cameras.size(), 14U);
    for (size_t moment = 0; moment < cameras.size(); moment++) {
        const RigidMotion &pose = calibration.estimate.rigFromWorld[moment];
        const Vector3d centre = -(rotationMatrix(pose.rotation).transpose() * pose.translation);
        EXPECT_NEAR((cameras[moment][0] - (left + right) / 2) / scale, centre.x(), 3);
        EXPECT_NEAR((cameras[moment][1] - print[1]) / scale, -centre.z(), 3)
            << "the camera's distance in front of the print";
    }
    const QRegularExpression text("text-anchor=\"start\">(\\d+) mm<");
    const std::vector<double> bar = pathsOf(svg, "class=\"frame\"").at(0);
    EXPECT_NEAR((bar[2] - bar[0]) / scale, text.match(above).captured(1).toDouble(), 3);
}

TEST(ReportFigures, labelTheTargetOfTheNextPhotograph) {
    Calibration calibration = makeCalibration();
    // The print's top left corner is at (-80, -60) mm, relative to the print's middle.
    calibration.next = NextPhotograph{0, 0, {{0, 0, 0}, {0, 0, 400}}, 0.987, 0.123, "Hold it."};
    const QString svg = QString::fromStdString(nextPhotographFigure(calibration).svg);
    for (const auto &[label, side] : {std::pair("top left", -80), std::pair("top right", 80)}) {
        const QRegularExpression text(QString("x=\"([0-9.]+)\" y=\"([0-9.]+)\" text-anchor=\"middle\">%1<").arg(label));
        const QRegularExpressionMatch found = text.match(svg);
        Vector2d image;
        ASSERT_TRUE(
            project(LensModel::Pinhole5, calibration.estimate.intrinsics[0].data(), Vector3d(side, -60, 400), image));
        EXPECT_NEAR(found.captured(1).toDouble(), image.x() / 2, 1) << label;
        EXPECT_NEAR(found.captured(2).toDouble(), image.y() / 2 - 4, 1) << label;
    }
    EXPECT_TRUE(QString::fromStdString(nextPhotographFigure(calibration).caption).contains("from 0.99 to 0.12 px"));
}

}  // namespace
