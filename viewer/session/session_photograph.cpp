#include "viewer/session/session_photograph.h"

#include <QCoreApplication>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <opencv2/imgproc.hpp>

#include "calibration/input/exif_camera.h"
#include "pattern_reader/photograph.h"

namespace {

QString tr(const char *text) {
    return QCoreApplication::translate("SessionPhotograph", text);
}

// Compares numbers within names by their value: photo2 comes before photo10.
bool isBefore(const QString &a, const QString &b) {
    int i = 0;
    int j = 0;
    const auto number = [](const QString &text, int &at) {
        qulonglong value = 0;
        for (; at < text.size() && text[at].isDigit(); ++at) {
            value = 10 * value + qulonglong(text[at].digitValue());
        }
        return value;
    };
    while (i < a.size() && j < b.size()) {
        if (a[i].isDigit() && b[j].isDigit()) {
            const qulonglong x = number(a, i);
            const qulonglong y = number(b, j);
            if (x != y) {
                return x < y;
            }
        } else if (a[i] != b[j]) {
            return a[i] < b[j];
        } else {
            ++i;
            ++j;
        }
    }
    return a.size() - i < b.size() - j || (a.size() - i == b.size() - j && a < b);
}

QImage copyOf(const cv::Mat &grey) {
    QImage image(grey.cols, grey.rows, QImage::Format_Grayscale8);
    for (int y = 0; y < grey.rows; ++y) {
        std::copy_n(grey.ptr(y), grey.cols, image.scanLine(y));
    }
    return image;
}

QImage makeThumbnail(const cv::Mat &grey) {
    const QSize size = QSize(grey.cols, grey.rows).scaled(thumbnailSize, Qt::KeepAspectRatio).expandedTo({1, 1});
    cv::Mat small;
    cv::resize(grey, small, {size.width(), size.height()}, 0, 0, cv::INTER_AREA);
    return copyOf(small);
}

}  // namespace

void readFromFile(SessionPhotograph &photograph, const SessionSettings &settings,
                  const std::function<bool()> &isCancelled) {
    photograph.state = PhotographState::Unreadable;
    try {
        if (!QFileInfo::exists(photograph.path)) {
            photograph.problem = tr("The file is gone: %1").arg(photograph.path);
            return;
        }
        const std::string path = QFile::encodeName(photograph.path).toStdString();
        const pattern_reader::Photograph picture = pattern_reader::loadPhotograph(path);
        photograph.exifCamera = calibration::exifCamera(path);
        photograph.isTruncated = picture.truncated;
        photograph.width = picture.grey.cols;
        photograph.height = picture.grey.rows;
        photograph.thumbnail = makeThumbnail(picture.grey);
        pattern_reader::ReadingOptions options;
        options.isCancelled = isCancelled;
        if (settings.board) {
            options.board = cv::Size(settings.board->width(), settings.board->height());
        }
        const auto readings = std::make_shared<const PatternReadings>(readPhotograph(picture, options));
        photograph.readings = readings;
        photograph.state = PhotographState::Read;
        photograph.problem.clear();
        if (readings->empty()) {
            photograph.problem =
                picture.truncated
                    ? tr("The file is incomplete, and no pattern was found in the part that could be read.")
                    : tr("No pattern was found: it may be too small, blurred, or outside the picture.");
        }
    } catch (const std::bad_alloc &) {
        photograph.problem = tr("There is not enough memory to read this photograph.");
    } catch (const std::exception &error) {
        photograph.problem = QString::fromLocal8Bit(error.what());
    }
}

QImage loadPicture(const QString &path) {
    try {
        return copyOf(pattern_reader::loadPhotograph(QFile::encodeName(path).toStdString()).grey);
    } catch (const std::exception &) {
        return {};
    }
}

bool isPictureName(const QString &path) {
    static const QStringList endings{"jpg", "jpeg", "png", "tif", "tiff", "pgm", "ppm", "bmp", "webp"};
    return endings.contains(QFileInfo(path).suffix().toLower());
}

QStringList photographFilesIn(const QStringList &filesAndFolders) {
    QStringList files;
    for (const QString &path : filesAndFolders) {
        if (!QFileInfo(path).isDir()) {
            files.append(QFileInfo(path).absoluteFilePath());
            continue;
        }
        QStringList inFolder;
        QDirIterator entries(path, QDir::Files, QDirIterator::Subdirectories);
        while (entries.hasNext()) {
            const QString file = entries.next();
            if (isPictureName(file)) {
                inFolder.append(QFileInfo(file).absoluteFilePath());
            }
        }
        std::sort(inFolder.begin(), inFolder.end(), isBefore);
        files += inFolder;
    }
    return files;
}
