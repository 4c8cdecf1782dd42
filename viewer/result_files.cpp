#include "viewer/result_files.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QDir>
#include <QFile>

#include "calibration/output/result_files.h"
#include "calibration/report/report_page.h"
#include "file_writing/safe_file.h"
#include "viewer/report_pdf.h"

namespace {

using calibration::AssemblyAxes;
using calibration::Calibration;
using calibration::Print;

constexpr int thumbnailQuality = 70;

AssemblyAxes::Corner cornerOf(const Print &print, size_t point) {
    return {print.number, print.cells[point].x(), print.cells[point].y()};
}

// Chooses three corners that give the axes of the print's own file. Only the origin differs: it is the corner nearest
// to the file's origin.
std::optional<AssemblyAxes> axesOf(const Print &print) {
    if (print.cells.empty()) {
        return std::nullopt;
    }
    const auto farthest = [&print](const Eigen::Vector2d &weights) {
        size_t best = 0;
        for (size_t i = 1; i < print.points.size(); ++i) {
            best = weights.dot(print.points[i]) > weights.dot(print.points[best]) ? i : best;
        }
        return best;
    };
    size_t origin = 0;
    for (size_t i = 1; i < print.points.size(); ++i) {
        origin = print.points[i].norm() < print.points[origin].norm() ? i : origin;
    }
    const auto onLine = [&](int axis) {
        size_t best = origin;
        for (size_t i = 0; i < print.points.size(); ++i) {
            const bool isOnLine = print.cells[i][1 - axis] == print.cells[origin][1 - axis];
            best = isOnLine && print.cells[i][axis] > print.cells[best][axis] ? i : best;
        }
        return best;
    };
    const size_t x = onLine(0) != origin ? onLine(0) : farthest({1, 0});
    const size_t y = onLine(1) != origin ? onLine(1) : farthest({0, 1});
    return AssemblyAxes{{cornerOf(print, origin), cornerOf(print, x), cornerOf(print, y)}};
}

std::optional<AssemblyAxes> chosenAxes(const Calibration &calibration, const SessionSettings &settings) {
    if (settings.frame) {
        AssemblyAxes axes;
        for (size_t i = 0; i < 3; ++i) {
            const NamedCorner &corner = (*settings.frame)[i];
            axes.corners[i] = {corner.pattern, corner.column, corner.row};
        }
        return axes;
    }
    for (const Print &print : calibration.observations.prints) {
        if (settings.reference && print.number == *settings.reference) {
            return axesOf(print);
        }
    }
    return std::nullopt;
}

std::string jpegOf(const QImage &picture) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    picture.save(&buffer, "JPEG", thumbnailQuality);
    return bytes.toStdString();
}

}  // namespace

QString writeResults(const SessionResult &result, const SessionSettings &settings, const QString &folder) {
    try {
        calibration::ResultNotes notes;
        notes.unused = result.unused;
        notes.axes = chosenAxes(*result.calibration, settings);
        notes.program = "LmView " + QCoreApplication::applicationVersion().toStdString();
        calibration::writeResultFiles(QFile::encodeName(folder).toStdString(),
                                      calibration::resultFiles(*result.calibration, notes).files);
    } catch (const std::exception &error) {
        return QString::fromLocal8Bit(error.what());
    }
    return {};
}

QString writeReport(const SessionResult &result, const QVector<SessionPhotograph> &photographs, const QString &file) {
    calibration::ReportInput input;
    for (const int id : result.photographIds) {
        const auto found = std::find_if(photographs.begin(), photographs.end(),
                                        [id](const SessionPhotograph &photograph) { return photograph.id == id; });
        input.thumbnails.push_back(found == photographs.end() ? std::string() : jpegOf(found->thumbnail));
    }
    for (const calibration::UnusedPhotograph &unused : result.unused) {
        input.unread.push_back({unused.name, unused.reason});
    }
    const std::string page = calibration::reportPage(*result.calibration, input);
    const bool isPdf = file.endsWith(".pdf", Qt::CaseInsensitive);
    const QByteArray bytes = isPdf ? reportPdf(page) : QByteArray::fromStdString(page);
    try {
        file_writing::SafeFiles files;
        files.write(QFile::encodeName(file).toStdString(), bytes.toStdString());
        files.commit();
    } catch (const std::exception &error) {
        return QString::fromLocal8Bit(error.what());
    }
    return {};
}
