#include "calibration/report/report_page.h"

#include <algorithm>
#include <cmath>

#include "calibration/report/camera_figures.h"
#include "calibration/report/corner_residuals.h"
#include "calibration/report/page_text.h"
#include "calibration/report/sections.h"

namespace calibration {

namespace {

constexpr size_t mostCameras = 24;

struct GradeWords {
    const char *styleClass, *sign, *word;
};

GradeWords wordsOf(Grade grade) {
    switch (grade) {
        case Grade::Good:
            return {"good", "\xE2\x9C\x93", "Good"};
        case Grade::Usable:
            return {"usable", "!", "Usable"};
        case Grade::Poor:
            break;
    }
    return {"poor", "\xE2\x9C\x95", "Poor"};
}

std::string verdictSection(const Calibration &calibration) {
    const GradeWords words = wordsOf(calibration.verdict.grade);
    std::string html = std::string("<section class=\"verdict ") + words.styleClass + "\"><div class=\"sign\">" +
                       words.sign + "</div><div><h2>" + words.word + "</h2><p class=\"lead\">" +
                       escaped(calibration.verdict.text) + "</p>\n";
    if (!calibration.verdict.advice.empty()) {
        html += "<h3>What to do</h3><ol>";
        for (const std::string &advice : calibration.verdict.advice) {
            html += "<li>" + escaped(advice) + "</li>";
        }
        html += "</ol>\n";
    }
    return html + "</div></section>\n";
}

std::string tile(const std::string &value, const std::string &unit, const char *what) {
    return "<div class=\"tile\"><b>" + value + "</b> " + unit + "<span>" + what + "</span></div>\n";
}

std::string tiles(const Calibration &calibration) {
    double squares = 0;
    long corners = 0;
    double worst = 0;
    for (const CameraTrust &trust : calibration.cameras) {
        squares += trust.rms * trust.rms * trust.corners;
        corners += trust.corners;
        worst = std::max(worst, trust.uncertainty.greatest().value_or(0));
    }
    const std::vector<PhotographSummary> summaries = summariseEach(calibration);
    const auto used = std::count_if(summaries.begin(), summaries.end(),
                                    [](const PhotographSummary &summary) { return summary.used > 0; });
    return "<div class=\"tiles\">" +
           tile(corners > 0 ? number(std::sqrt(squares / double(corners)), 3) : number(0, 0), "px",
                "residual, rms per corner") +
           tile(rounded(worst, 2), "px", "greatest uncertainty in a picture") +
           tile(count(used) + " of " + count(long(summaries.size())), "", "photographs used") +
           tile(count(corners), "", "corners used") +
           tile(count(long(calibration.observations.cameras.size())), "",
                calibration.observations.cameras.size() == 1 ? "camera" : "cameras") +
           tile(count(long(calibration.observations.prints.size())), "",
                calibration.observations.prints.size() == 1 ? "pattern" : "patterns") +
           "</div>\n";
}

std::string notices(const Calibration &calibration) {
    if (calibration.notices.empty()) {
        return {};
    }
    std::string html = "<section class=\"notices\"><h2>Notices</h2><ul>";
    for (const std::string &notice : calibration.notices) {
        html += "<li>" + escaped(notice) + "</li>";
    }
    return html + "</ul></section>\n";
}

std::string nextSection(const Calibration &calibration) {
    const Figure figure = nextPhotographFigure(calibration);
    if (figure.svg.empty()) {
        return {};
    }
    return "<section class=\"next\"><h2>The next photograph</h2><div><p class=\"lead\">" +
           escaped(calibration.next->text) + "</p></div>" + "<figure>" + figure.svg + "<figcaption>" +
           escaped(figure.caption) + "</figcaption></figure></section>\n";
}

const char *explanations() {
    return "<section class=\"about\"><h2>How to read this</h2><dl>"
           "<dt>Residual</dt><dd>The distance between a corner in a photograph and the same corner as the calibration "
           "projects it. A small residual does not show that the calibration is right: a few photographs that are all "
           "alike have small residuals, too.</dd>"
           "<dt>Uncertainty</dt><dd>How far the image of a point could move if all photographs were taken again. Judge "
           "a calibration by its uncertainty. The uncertainty is right only if the lens model fits. The mean residuals "
           "show whether it does.</dd>"
           "<dt>Difference between halves</dt><dd>The difference between two calibrations, each from one half of the "
           "photographs. It also shows errors that are not random.</dd>"
           "<dt>\xC2\xB1</dt><dd>One standard deviation. The true value is within twice this in 95 of 100 cases.</dd>"
           "<dt>Scale</dt><dd>Photographs do not show how large things are. All lengths are based on the size of a "
           "print. Measure its check bars with a caliper if lengths matter.</dd></dl></section>\n";
}

}  // namespace

std::string reportPage(const Calibration &calibration, const ReportInput &input) {
    std::string html =
        "<!DOCTYPE html>\n<html lang=\"en\" xmlns=\"http://www.w3.org/1999/xhtml\"><head><meta charset=\"utf-8\"/>\n"
        "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\"/>\n"
        "<meta name=\"color-scheme\" content=\"light dark\"/>\n<title>" +
        escaped(input.title) + "</title>\n<style>\n" + reportStyle() + "</style></head>\n<body><main>\n<header><h1>" +
        escaped(input.title) + "</h1></header>\n";
    html += verdictSection(calibration) + tiles(calibration) + notices(calibration) + nextSection(calibration);
    const size_t cameras = calibration.observations.cameras.size();
    for (size_t camera = 0; camera < std::min(cameras, mostCameras); camera++) {
        html += cameraSection(calibration, int(camera));
    }
    if (cameras > mostCameras) {
        html += "<p>" + count(long(cameras - mostCameras)) + " more cameras are not shown.</p>\n";
    }
    html += rigSection(calibration) + sceneSection(calibration) + printSection(calibration) +
            photographSection(calibration, input) + explanations();
    return html + "</main></body></html>\n";
}

}  // namespace calibration
