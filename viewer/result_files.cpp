#include "viewer/result_files.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <stdexcept>

#include "calibration/output/result_files.h"
#include "calibration/report/report_page.h"
#include "viewer/report_pdf.h"
#include "viewer/session/common_axes.h"
#include "viewer/session/whole_file.h"

namespace {

constexpr int thumbnailQuality = 70;

std::string jpegOf(const QImage &picture) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    picture.save(&buffer, "JPEG", thumbnailQuality);
    return bytes.toStdString();
}

calibration::ReportInput reportInput(const SessionResult &result, const QVector<SessionPhotograph> &photographs) {
    calibration::ReportInput input;
    for (const int id : result.photographIds) {
        const auto found = std::find_if(photographs.begin(), photographs.end(),
                                        [id](const SessionPhotograph &photograph) { return photograph.id == id; });
        input.thumbnails.push_back(found == photographs.end() ? std::string() : jpegOf(found->thumbnail));
    }
    for (const calibration::UnusedPhotograph &unused : result.unused) {
        input.unread.push_back({unused.name, unused.reason});
    }
    return input;
}

QByteArray reportBytes(const std::string &page, bool isPdf) {
    QByteArray bytes = isPdf ? reportPdf(page) : QByteArray::fromStdString(page);
    if (bytes.isEmpty()) {
        throw std::runtime_error("The report could not be converted to a PDF.");
    }
    return bytes;
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
    try {
        const std::string page = calibration::reportPage(*result.calibration, reportInput(result, photographs));
        return writeWholeFile(file, reportBytes(page, file.endsWith(".pdf", Qt::CaseInsensitive)));
    } catch (const std::exception &error) {
        return QString::fromLocal8Bit(error.what());
    }
}
