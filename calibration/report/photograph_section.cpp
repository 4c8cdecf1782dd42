#include <algorithm>
#include <cmath>

#include "calibration/report/corner_residuals.h"
#include "calibration/report/drawing.h"
#include "calibration/report/page_text.h"
#include "calibration/report/sections.h"

namespace calibration {

namespace {

using Eigen::Vector2d;

constexpr size_t mostRows = 4000;
constexpr size_t openRows = 60;  // a table with more rows is folded at first
constexpr size_t mostThumbnails = 300;
constexpr size_t mostThumbnailBytes = 40000;
constexpr size_t mostTips = 400;  // if there are more photographs, the bars have no tooltips

const Photograph &photographOf(const Calibration &calibration, size_t index) {
    return calibration.observations.photographs[index];
}

double greatestRms(const std::vector<PhotographSummary> &summaries) {
    double result = 0;
    for (const PhotographSummary &summary : summaries) {
        result = std::max(result, std::isfinite(summary.rms()) ? summary.rms() : 0);
    }
    return result;
}

void drawAxis(Drawing &drawing, double width, double height, double left, double greatest) {
    const double step = niceBelow(greatest / 2);
    Path lines;
    for (int i = 0; i * step <= greatest * 1.0001; i++) {
        const double y = height * (1 - i * step / greatest) + 10;
        lines.line({left, y}, {width, y});
        drawing.text("note", {left - 6, y + 5}, Drawing::Anchor::End, shortest(i * step, 6));
    }
    drawing.add("grid", lines);
}

// Draws one bar for each photograph, in the order of the table.
std::string bars(const Calibration &calibration, const std::vector<PhotographSummary> &summaries) {
    const double greatest = greatestRms(summaries);
    if (!(greatest > 0)) {
        return {};
    }
    constexpr double width = 1200;
    constexpr double height = 180;
    constexpr double left = 60;
    Drawing drawing(width, height + 34, "Residual of each photograph");
    drawAxis(drawing, width, height, left, greatest);
    const double pitch = std::min(40.0, (width - left) / double(summaries.size()));
    Path all;
    Path crosses;
    for (size_t i = 0; i < summaries.size(); i++) {
        const double x = left + pitch * double(i);
        const double length = height * summaries[i].rms() / greatest;
        Path bar;
        Path &target = summaries.size() <= mostTips ? bar : all;
        if (summaries[i].used > 0) {
            target.rectangle(x + pitch * 0.1, 10 + height - length, pitch * 0.8, length);
        }
        drawing.add("bar", bar,
                    std::to_string(i + 1) + " " + photographOf(calibration, i).name + ": " +
                        number(summaries[i].rms(), 3) + " px");
        if (!summaries[i].reasons.empty()) {
            const Vector2d middle(x + pitch / 2, height + 20);
            crosses.line(middle - Vector2d(4, 4), middle + Vector2d(4, 4));
            crosses.line(middle - Vector2d(4, -4), middle + Vector2d(4, -4));
        }
    }
    drawing.add("bar", all);
    drawing.add("cross", crosses);
    return "<figure class=\"wide\"><h4>Residual of each photograph</h4>\n" + drawing.svg() +
           "<figcaption>Root mean square in px, in the order of the table. A cross marks a photograph in which a "
           "pattern is left out.</figcaption></figure>\n";
}

std::string thumbnail(const ReportInput &input, size_t index, size_t &shown) {
    if (index >= input.thumbnails.size() || shown >= mostThumbnails) {
        return {};
    }
    const std::string &jpeg = input.thumbnails[index];
    if (jpeg.size() > mostThumbnailBytes || jpeg.compare(0, 2, "\xFF\xD8") != 0) {
        return {};
    }
    shown++;
    return "<img alt=\"\" src=\"data:image/jpeg;base64," + base64(jpeg) + "\"/>";
}

std::string printsOf(const Calibration &calibration, std::vector<int> prints) {
    constexpr size_t most = 12;
    std::sort(prints.begin(), prints.end());
    prints.erase(std::unique(prints.begin(), prints.end()), prints.end());
    std::string text;
    for (size_t i = 0; i < std::min(prints.size(), most); i++) {
        const Print &print = calibration.observations.prints[size_t(prints[i])];
        text += (text.empty() ? "" : ", ") + (print.name.empty() ? std::to_string(print.number) : print.name);
    }
    return escaped(text) + (prints.size() > most ? " \xE2\x80\xA6" : "");
}

std::string noteOf(const PhotographSummary &summary) {
    if (summary.seen == 0) {
        return "No pattern was found.";
    }
    std::string text;
    for (const std::string &reason : summary.reasons) {
        text += (text.empty() ? "" : " ") + escaped(reason);
    }
    return text;
}

std::string row(const Calibration &calibration, const PhotographSummary &summary, size_t index,
                const std::string &picture) {
    const Photograph &photograph = photographOf(calibration, index);
    const bool isOut = summary.used == 0;
    return std::string(isOut ? "<tr class=\"out\">" : "<tr>") + numberCell(std::to_string(index + 1)) +
           (picture.empty() ? std::string() : cell(picture)) + cell(escaped(photograph.name)) +
           cell(escaped(calibration.observations.cameras[size_t(photograph.camera)].name)) +
           cell(printsOf(calibration, summary.prints)) +
           numberCell(count(summary.used) + " of " + count(summary.seen)) +
           numberCell(isOut ? "" : number(summary.rms(), 3)) + cell(noteOf(summary)) + "</tr>\n";
}

std::string unreadRows(const ReportInput &input, bool hasPictures, size_t room) {
    std::string html;
    for (size_t i = 0; i < std::min(input.unread.size(), room); i++) {
        html += hasPictures ? "<tr class=\"out\"><td></td><td></td>" : "<tr class=\"out\"><td></td>";
        html += cell(escaped(input.unread[i].name));
        html += "<td></td><td></td><td></td><td></td>";
        html += cell(escaped(input.unread[i].reason));
        html += "</tr>\n";
    }
    return html;
}

std::string table(const Calibration &calibration, const ReportInput &input,
                  const std::vector<PhotographSummary> &summaries) {
    std::vector<std::string> pictures(std::min(summaries.size(), mostRows));
    size_t shown = 0;
    for (size_t i = 0; i < pictures.size(); i++) {
        pictures[i] = thumbnail(input, i, shown);
    }
    const bool hasPictures = shown > 0;
    std::string html = "<div class=\"scroll\"><table>";
    html += hasPictures ? headings({">#", "", "Photograph", "Camera", "Patterns", ">Corners used", ">rms, px", "Note"})
                        : headings({">#", "Photograph", "Camera", "Patterns", ">Corners used", ">rms, px", "Note"});
    html += "<tbody>";
    for (size_t i = 0; i < pictures.size(); i++) {
        if (hasPictures && pictures[i].empty()) {
            pictures[i] = " ";
        }
        html += row(calibration, summaries[i], i, pictures[i]);
    }
    html += unreadRows(input, hasPictures, mostRows - pictures.size());
    const size_t all = summaries.size() + input.unread.size();
    if (all > mostRows) {
        html += "<tr><td colspan=\"8\">" + count(long(all - mostRows)) + " more are not shown.</td></tr>\n";
    }
    return html + "</tbody></table></div>\n";
}

}  // namespace

std::string photographSection(const Calibration &calibration, const ReportInput &input) {
    const std::vector<PhotographSummary> summaries = summariseEach(calibration);
    const std::string rows = table(calibration, input, summaries);
    std::string html = "<section><h2>Photographs</h2>\n" + bars(calibration, summaries);
    if (summaries.size() + input.unread.size() > openRows) {
        html += "<details><summary>All " + count(long(summaries.size() + input.unread.size())) +
                " photographs</summary>\n" + rows + "</details>\n";
    } else {
        html += rows;
    }
    return html + "</section>\n";
}

}  // namespace calibration
