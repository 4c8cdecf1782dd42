#include "viewer/session/live_capture.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QDir>
#include <QEvent>
#include <QFileInfo>
#include <algorithm>
#include <opencv2/imgproc.hpp>
#include <utility>

#include "viewer/session/edge_blur.h"
#include "viewer/session/whole_file.h"

namespace {

constexpr int greatestShownWidth = 1000;  // pixels

QString tr(const char *text) {
    return QCoreApplication::translate("LiveCapture", text);
}

QImage imageOf(const cv::Mat &bgr) {
    return {bgr.data, bgr.cols, bgr.rows, int(bgr.step), QImage::Format_BGR888};
}

QImage forShowing(const cv::Mat &bgr) {
    cv::Mat small = bgr;
    if (bgr.cols > greatestShownWidth) {
        cv::resize(bgr, small, {greatestShownWidth, std::max(1, bgr.rows * greatestShownWidth / bgr.cols)}, 0, 0,
                   cv::INTER_AREA);
    }
    return imageOf(small).convertToFormat(QImage::Format_RGB32);
}

cv::Mat greyOf(const cv::Mat &bgr) {
    cv::Mat grey;
    cv::cvtColor(bgr, grey, cv::COLOR_BGR2GRAY);
    return grey;
}

// Returns the path for a new picture in the folder. The file names have the form "picture-0001.png". Counts `number`
// up, at least by one, until no file in the folder has the name with this number.
QString freeName(const QDir &folder, int &number) {
    QString file;
    do {
        file = folder.filePath(QString("picture-%1.png").arg(++number, 4, 10, QChar('0')));
    } while (QFileInfo::exists(file));
    return file;
}

// Saves the picture. Returns an empty text, or the reason why it was not saved.
QString keep(const cv::Mat &bgr, const QString &file) {
    const QString folder = QFileInfo(file).path();
    if (!QDir().mkpath(folder)) {
        return tr("The picture cannot be saved, because the folder %1 cannot be made.")
            .arg(QDir::toNativeSeparators(folder));
    }
    QByteArray bytes;
    QBuffer buffer(&bytes);
    if (!buffer.open(QIODevice::WriteOnly) || !imageOf(bgr).save(&buffer, "PNG")) {
        return tr("There is not enough memory to save the picture.");
    }
    return writeWholeFile(file, bytes);
}

}  // namespace

LiveCapture::LiveCapture() = default;

LiveCapture::~LiveCapture() = default;

void LiveCapture::start(const FrameSourceChoice &choice, const QString &folder, const SessionSettings &settings) {
    stop();
    int number = 0;
    {
        const std::lock_guard<std::mutex> lock(exchange.mutex);
        number = exchange.run;
        exchange.takesNext = false;
    }
    work.add([this, number, choice, folder, settings](const BackgroundWork::IsCancelled &isCancelled) {
        End end;
        try {
            end = run(number, choice, folder, settings, isCancelled);
        } catch (const std::bad_alloc &) {
            end.reason = tr("There is not enough memory for these pictures.");
        } catch (const std::exception &error) {
            end.reason = QString::fromLocal8Bit(error.what());
        }
        return [this, end] { emit ended(end.reason, end.isProblem); };
    });
}

void LiveCapture::stop() {
    work.cancel();
    const std::lock_guard<std::mutex> lock(exchange.mutex);
    ++exchange.run;
    exchange.frame.reset();
}

void LiveCapture::takePicture() {
    const std::lock_guard<std::mutex> lock(exchange.mutex);
    exchange.takesNext = true;
}

void LiveCapture::setTakesByItself(bool takes) {
    const std::lock_guard<std::mutex> lock(exchange.mutex);
    exchange.takesByItself = takes;
}

void LiveCapture::setPhotographs(std::vector<TargetView> views) {
    auto shared = std::make_shared<const std::vector<TargetView>>(std::move(views));
    const std::lock_guard<std::mutex> lock(exchange.mutex);
    exchange.photographs = std::move(shared);
}

void LiveCapture::setEnough(bool isEnough) {
    const std::lock_guard<std::mutex> lock(exchange.mutex);
    exchange.hasEnough = isEnough;
}

LiveCapture::End LiveCapture::run(int number, const FrameSourceChoice &choice, const QString &folder,
                                  const SessionSettings &settings, const BackgroundWork::IsCancelled &isCancelled) {
    FrameSource source(choice);
    QString problem = source.open();
    if (!problem.isEmpty()) {
        return {problem};
    }
    pattern_reader::ReadingOptions options;
    options.isCancelled = isCancelled;
    if (settings.board) {
        options.board = cv::Size(settings.board->width(), settings.board->height());
    }
    LiveDecision decision;
    int lastName = 0;
    while (!isCancelled()) {
        const cv::Mat bgr = source.next();
        if (bgr.empty()) {
            return {source.endText(), !source.isFile()};
        }
        const cv::Mat grey = greyOf(bgr);
        const TargetView view{{bgr.cols, bgr.rows},
                              std::make_shared<const PatternReadings>(pattern_reader::readPatterns(grey, options))};
        if (isCancelled()) {
            break;
        }
        bool takesByItself = false;
        bool takesNext = false;
        {
            const std::lock_guard<std::mutex> lock(exchange.mutex);
            decision.setPhotographs(exchange.photographs);
            decision.setEnough(exchange.hasEnough);
            takesByItself = exchange.takesByItself;
            takesNext = std::exchange(exchange.takesNext, false);
        }
        const std::optional<double> blur = edgeBlur(grey, *view.readings);
        const LiveState state = decision.judge(view, blur);
        QString file;
        if (takesNext || (takesByItself && state == LiveState::Worth)) {
            file = freeName(QDir(folder), lastName);
            QString failure = keep(bgr, file);
            if (!failure.isEmpty()) {
                return {failure};
            }
            decision.keptLast();
        }
        deliver(number, {forShowing(bgr), view.size, view.readings, state, blur}, file);
    }
    return {};
}

void LiveCapture::deliver(int run, const LiveFrame &frame, const QString &file) {
    const std::lock_guard<std::mutex> lock(exchange.mutex);
    const bool isAnnounced = exchange.frame || !exchange.files.isEmpty();
    if (run == exchange.run) {
        exchange.frame = frame;
    }
    if (!file.isEmpty()) {
        exchange.files << file;
    }
    if (!isAnnounced) {
        QCoreApplication::postEvent(this, new QEvent(QEvent::User));
    }
}

void LiveCapture::customEvent(QEvent *) {
    std::optional<LiveFrame> frame;
    QStringList files;
    {
        const std::lock_guard<std::mutex> lock(exchange.mutex);
        frame.swap(exchange.frame);
        files.swap(exchange.files);
    }
    if (frame) {
        emit frameShown(*frame);
    }
    for (const QString &file : qAsConst(files)) {
        emit pictureTaken(file);
    }
}
