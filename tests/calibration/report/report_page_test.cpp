// Parses the finished report page as XML and checks what a user sees.
#include "calibration/report/report_page.h"

#include <gtest/gtest.h>
#include <QRegularExpression>
#include <QXmlStreamReader>

#include <limits>

#include "calibration/report/page_text.h"
#include "tests/calibration/computed_scene.h"

namespace {

using namespace calibration;

struct Page {
    QString text;   // the visible text
    QString drawn;  // coordinates, paths and all other attributes except src, href and aria-label
    QStringList resources;
    QString error;
};

Page readPage(const std::string &html) {
    Page page;
    QXmlStreamReader reader(QByteArray::fromStdString(html));
    while (!reader.atEnd()) {
        reader.readNext();
        if (reader.isCharacters()) {
            page.text += reader.text();
        }
        if (reader.isStartElement()) {
            for (const QXmlStreamAttribute &attribute : reader.attributes()) {
                if (attribute.name() == "src" || attribute.name() == "href") {
                    page.resources += attribute.value().toString();
                } else if (attribute.name() != "aria-label") {
                    page.drawn += attribute.value() + '\n';
                }
            }
        }
    }
    page.error = reader.errorString();
    return page;
}

void expectReadable(const Page &page) {
    EXPECT_EQ(page.error.toStdString(), "");
    const QRegularExpression noNumber("(^|[^a-z])(nan|inf)", QRegularExpression::CaseInsensitiveOption);
    EXPECT_FALSE(noNumber.match(page.drawn).hasMatch()) << noNumber.match(page.drawn).captured().toStdString();
    const QRegularExpression noValue("(^|[^a-z])(nan|inf)([^a-z]|$)", QRegularExpression::CaseInsensitiveOption);
    EXPECT_FALSE(noValue.match(page.text).hasMatch());
    for (const QString &resource : page.resources) {
        EXPECT_TRUE(resource.startsWith("data:image/jpeg;base64,")) << resource.toStdString();
    }
}

const Calibration &calibrated() {
    static const Calibration result = [] {
        Scene scene = makeScene(0.1);
        Observations &observations = scene.observations;
        for (size_t i = 0; i < observations.photographs.size(); i++) {
            observations.photographs[i].name = "IMG_" + std::to_string(100 + i) + ".jpg";
        }
        observations.photographs[3].name = "<b>a & b\"'.jpg";
        observations.photographs[4].name = "bad \xFF\x01 bytes.jpg";
        observations.photographs.push_back({"empty.jpg", 0, 0});
        CalibrateOptions options;
        options.lens = LensModel::Pinhole5;
        return calibrate(observations, options);
    }();
    return result;
}

TEST(ReportPage, showsEveryPhotographAndEscapesHostileNames) {
    ReportInput input;
    input.title = "Robot <1> & \"2\"";
    input.thumbnails = {"\xFF\xD8picture", "no JPEG"};
    input.unread = {{"broken<.jpg", "The file ends too early."}};
    Calibration calibration = calibrated();
    calibration.leftOut.push_back({2, Misfit::Unclear, "Blurred & <disturbed>."});
    const Page page = readPage(reportPage(calibration, input));
    expectReadable(page);
    for (const Photograph &photograph : calibration.observations.photographs) {
        const std::string shown =
            photograph.name.substr(0, 3) == "bad" ? "bad \xEF\xBF\xBD\xEF\xBF\xBD bytes.jpg" : photograph.name;
        EXPECT_TRUE(page.text.contains(QString::fromStdString(shown))) << shown;
    }
    for (const char *expected :
         {"Robot <1> & \"2\"", "broken<.jpg", "Blurred & <disturbed>.", "No pattern was found."}) {
        EXPECT_TRUE(page.text.contains(expected)) << expected;
    }
    EXPECT_TRUE(page.text.contains(QString::fromStdString(calibration.verdict.text)));
    EXPECT_EQ(page.resources.size(), 1);
}

TEST(ReportPage, showsNeitherNanNorInfinity) {
    constexpr double none = std::numeric_limits<double>::quiet_NaN();
    Calibration calibration = calibrated();
    calibration.cameras[0].rms = none;
    calibration.cameras[0].sigmas.assign(9, none);
    calibration.cameras[0].uncertainty.values.assign(calibration.cameras[0].uncertainty.values.size(), none);
    calibration.cameras[1].uncertaintyAtInfinity.values[0] = std::numeric_limits<double>::infinity();
    calibration.cameras[1].uncertainty = {};
    calibration.prints[1].translationSigma.setConstant(none);
    calibration.estimate.rigFromWorld[1].translation.setConstant(none);
    calibration.estimate.intrinsics[1].setConstant(none);
    calibration.next = NextPhotograph{0, 0, RigidMotion{{none, 0, 0}, {0, 0, 500}}, none, 0, "Hold it."};
    expectReadable(readPage(reportPage(calibration)));
    expectReadable(readPage(reportPage(Calibration())));
}

TEST(ReportPage, limitsItsSizeIfThereAreVeryManyPhotographs) {
    Calibration calibration = calibrated();
    Observations &observations = calibration.observations;
    const size_t all = observations.sightings.size();
    for (size_t i = 0; observations.photographs.size() < 6000; i++) {
        Sighting sighting = observations.sightings[i % all];
        observations.photographs.push_back(observations.photographs[size_t(sighting.photograph)]);
        sighting.photograph = int(observations.photographs.size()) - 1;
        sighting.corners.resize(std::min<size_t>(sighting.corners.size(), 12));
        observations.sightings.push_back(sighting);
    }
    const std::string html = reportPage(calibration);
    EXPECT_LT(html.size(), 2'500'000U);
    const Page page = readPage(html);
    expectReadable(page);
    EXPECT_TRUE(page.text.contains("more are not shown"));
}

TEST(PageText, roundsAsTheUncertaintyAllows) {
    EXPECT_EQ(withSigma(1234.5678, 0.1234), "1234.57 \xC2\xB1 0.12");
    EXPECT_EQ(withSigma(1234.5678, 340), "1235 \xC2\xB1 340");
    EXPECT_EQ(withSigma(-0.00012, 0.0096),
              "\xE2\x88\x92"
              "0.0001 \xC2\xB1 0.0096");
    EXPECT_EQ(number(-0.0001, 2), "0.00");
    EXPECT_EQ(count(1234567), "1,234,567");
    EXPECT_EQ(base64("light w"), "bGlnaHQgdw==");
}

}  // namespace
