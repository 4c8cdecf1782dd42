// Tests the live source without a real camera. Most frames are numbered pictures that are made from the example's
// photographs; others come from an object that stands in for a camera.
#include <QDir>
#include <QImage>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>
#include <cmath>
#include <complex>
#include <csignal>
#include <map>
#include <opencv2/imgproc.hpp>
#include <opencv2/videoio.hpp>

#ifdef Q_OS_UNIX
#include <sys/resource.h>
#endif

#include "viewer/session/edge_blur.h"
#include "viewer/session/live_capture.h"

namespace {

constexpr int width = 960;
constexpr int height = 720;

// Returns a photograph of the example, moved to the right by `shift` pixels and blurred by `blur` pixels. By default it
// is reduced to two thirds, because reading it in full size takes more than a second under the thread sanitizer.
cv::Mat frameOf(int photograph, double shift = 0, double blur = 0, cv::Size size = {width, height}) {
    QImage picture =
        loadPicture(QString("%1/photograph-%2.jpg").arg(VIEWER_EXAMPLE).arg(photograph, 2, 10, QChar('0')));
    const cv::Mat whole(picture.height(), picture.width(), CV_8U, picture.bits(), size_t(picture.bytesPerLine()));
    cv::Mat smaller;
    cv::Mat frame;
    cv::resize(whole, smaller, size, 0, 0, cv::INTER_AREA);
    const cv::Mat motion = (cv::Mat_<double>(2, 3) << 1, 0, shift, 0, 1, 0);
    cv::warpAffine(smaller, frame, motion, smaller.size(), cv::INTER_LINEAR, cv::BORDER_REPLICATE);
    if (blur > 0) {
        cv::Mat blurred;
        cv::GaussianBlur(frame, blurred, {}, blur);
        return blurred;
    }
    return frame;
}

TargetView viewOf(const cv::Mat &frame) {
    return {{frame.cols, frame.rows}, std::make_shared<const PatternReadings>(pattern_reader::readPatterns(frame))};
}

// Writes frames as numbered pictures, which a live source can read like a video.
class Film {
public:
    void add(int count, const cv::Mat &frame) {
        const QImage picture(frame.data, frame.cols, frame.rows, int(frame.step), QImage::Format_Grayscale8);
        const QString whole = name(frames++);
        QVERIFY(picture.save(whole, nullptr, 100));
        for (int i = 1; i < count; ++i) {
            QVERIFY(QFile::copy(whole, name(frames++)));
        }
    }
    QString first() const { return name(0); }

private:
    QString name(int number) const { return folder.filePath(QString("frame-%1.png").arg(number, 3, 10, QChar('0'))); }

    QTemporaryDir folder;
    int frames = 0;
};

// A camera that loses every second frame, and is unplugged after `frameCount` frames. It remembers the settings that it
// was asked for.
class UnreliableCamera : public cv::VideoCapture {
public:
    explicit UnreliableCamera(int frameCount) : framesLeft(frameCount) {}
    using cv::VideoCapture::open;
    bool open(int, int) override { return true; }
    bool isOpened() const override { return true; }
    bool set(int property, double value) override {
        asked[property] = value;
        return true;
    }
    bool read(cv::OutputArray frame) override {
        losesNext = !losesNext;
        if (losesNext || framesLeft == 0) {
            return false;
        }
        --framesLeft;
        picture.copyTo(frame);
        return true;
    }

    cv::Mat picture = cv::Mat(48, 64, CV_8UC3, cv::Scalar(1, 2, 3));
    std::map<int, double> asked;

private:
    int framesLeft;
    bool losesNext = false;
};

}  // namespace

class LiveCaptureTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { qRegisterMetaType<LiveFrame>(); }
    void measuresTheBlurOfEdges();
    void tellsNewViewsFromKnownOnes_data();
    void tellsNewViewsFromKnownOnes();
    void keepsOnlySharpNewFramesOfAStillTarget();
    void savesARequestedPictureUnderAFreeName();
    void saysWhyASourceEnds();
#ifdef Q_OS_UNIX
    void keepsNoPartOfAPictureOnAFullDisk();
#endif
    void noticesThatACameraIsUnplugged();
    void takesFramesOfEveryKind();
    void listsCamerasWithGapsInTheirNumbers();
    void keepsColours();
    void judgesSharpnessByTheSharpestFrameSoFar();
    void stopsAtOnce();
};

void LiveCaptureTest::measuresTheBlurOfEdges() {
    const cv::Size whole(1440, 1080);
    const PatternReadings readings = pattern_reader::readPatterns(frameOf(1, 0, 0, whole));
    const double own = edgeBlur(frameOf(1, 0, 0, whole), readings).value_or(0);
    QVERIFY2(own > 0.3 && own < 1, qPrintable(QString::number(own)));
    for (const double added : {1.0, 2.0}) {
        const double measured = edgeBlur(frameOf(1, 0, added, whole), readings).value_or(0);
        const double expected = std::hypot(own, added);
        QVERIFY2(std::abs(measured - expected) < 0.25 * expected,
                 qPrintable(QString("%1 instead of %2 px").arg(measured).arg(expected)));
    }
    QVERIFY(!edgeBlur(frameOf(1, 0, 0, whole), {}));

    // The round marks of a plate, 60 pixels apart.
    cv::Mat plate(600, 600, CV_8U, cv::Scalar(220));
    pattern_reader::PatternReading marks;
    marks.kind = pattern_reader::PatternKind::Plate;
    for (int column = 0; column < 7; ++column) {
        for (int row = 0; row < 7; ++row) {
            const cv::Point middle(120 + 60 * column, 120 + 60 * row);
            cv::circle(plate, middle, 15, cv::Scalar(30), cv::FILLED, cv::LINE_AA);
            marks.corners.push_back({middle, {2 + 2 * column, 2 + 2 * row}});
        }
    }
    for (const double added : {1.0, 2.0}) {
        cv::Mat blurred;
        cv::GaussianBlur(plate, blurred, {}, added);
        const double measured = edgeBlur(blurred, {marks}).value_or(0);
        QVERIFY2(std::abs(measured - added) < 0.3 * added, qPrintable(QString("%1 px").arg(measured)));
    }
}

void LiveCaptureTest::tellsNewViewsFromKnownOnes_data() {
    // Each row compares a frame with an earlier view. Both are made from the corners of the same photograph. The
    // frame's corners are moved in three steps: they are scaled and turned, then squeezed in x by a factor, then moved
    // to the right by `shift` times the picture's diagonal. The earlier view has only `share` of the corners.
    QTest::addColumn<double>("scale");
    QTest::addColumn<double>("turn");
    QTest::addColumn<double>("squeeze");
    QTest::addColumn<double>("shift");
    QTest::addColumn<double>("share");
    QTest::addColumn<bool>("isSimilar");
    QTest::newRow("same") << 1.0 << 0.0 << 1.0 << 0.0 << 1.0 << true;
    QTest::newRow("little of everything") << 1.1 << 0.2 << 0.97 << 0.05 << 0.8 << true;
    QTest::newRow("nearer") << 1.4 << 0.0 << 1.0 << 0.0 << 1.0 << false;
    QTest::newRow("farther") << 0.7 << 0.0 << 1.0 << 0.0 << 1.0 << false;
    QTest::newRow("turned") << 1.0 << 1.57 << 1.0 << 0.0 << 1.0 << false;
    QTest::newRow("tilted by 35 degrees") << 1.0 << 0.0 << 0.82 << 0.0 << 1.0 << false;
    QTest::newRow("elsewhere") << 1.0 << 0.0 << 1.0 << 0.2 << 1.0 << false;
    QTest::newRow("more corners") << 1.0 << 0.0 << 1.0 << 0.0 << 0.5 << false;
}

void LiveCaptureTest::tellsNewViewsFromKnownOnes() {
    QFETCH(const double, scale);
    QFETCH(const double, turn);
    QFETCH(const double, squeeze);
    QFETCH(const double, shift);
    QFETCH(const double, share);
    static const TargetView other = viewOf(frameOf(1));  // reading a picture takes seconds under a sanitizer
    PatternReadings moved = *other.readings;
    const double diagonal = std::hypot(width, height);
    for (auto &reading : moved) {
        for (auto &corner : reading.corners) {
            const std::complex<double> place(corner.image.x - width / 2.0, corner.image.y - height / 2.0);
            const std::complex<double> turned = std::polar(scale, turn) * place;
            corner.image = cv::Point2f(float(width / 2.0 + squeeze * turned.real() + shift * diagonal),
                                       float(height / 2.0 + turned.imag()));
        }
    }
    PatternReadings seen = *other.readings;
    for (auto &reading : seen) {
        reading.corners.resize(size_t(share * double(reading.corners.size())));
    }
    const TargetView before{other.size, std::make_shared<const PatternReadings>(seen)};
    QTEST(isSimilar({other.size, std::make_shared<const PatternReadings>(moved)}, before), "isSimilar");
    const TargetView ofAnotherCamera{other.size * 2, before.readings};
    QVERIFY(!isSimilar(other, ofAnotherCamera));
}

void LiveCaptureTest::keepsOnlySharpNewFramesOfAStillTarget() {
    Film film;
    film.add(5, frameOf(1));
    // The target moves in these frames, so none of them is kept. The last one would be a new view if the target were
    // still.
    for (int i = 1; i <= 3; ++i) {
        film.add(1, frameOf(1, 53 * i));
    }
    film.add(4, frameOf(5, 0, 2));
    film.add(5, frameOf(5));
    film.add(5, frameOf(1, 3));  // this view is known from this run
    film.add(5, frameOf(9));     // this view is known from the session
    const QTemporaryDir folder;
    LiveCapture capture;
    capture.setPhotographs({viewOf(frameOf(9))});
    const QSignalSpy taken(&capture, &LiveCapture::pictureTaken);
    const QSignalSpy ends(&capture, &LiveCapture::ended);
    QVector<LiveState> states;
    connect(&capture, &LiveCapture::frameShown, this, [&](const LiveFrame &frame) { states << frame.state; });
    capture.start({0, film.first(), {}}, folder.filePath("made/here"), {});
    QTRY_COMPARE_WITH_TIMEOUT(ends.count(), 1, 280000);
    QVERIFY(!capture.isRunning());
    QCOMPARE(taken.count(), 2);
    // The saved pictures are the frames themselves, in full size.
    for (int i = 0; i < 2; ++i) {
        const QImage kept = QImage(taken[i][0].toString()).convertToFormat(QImage::Format_Grayscale8);
        QCOMPARE(kept.size(), QSize(width, height));
        const cv::Mat expected = frameOf(i == 0 ? 1 : 5);
        const cv::Mat found(kept.height(), kept.width(), CV_8U, const_cast<uchar *>(kept.bits()),
                            size_t(kept.bytesPerLine()));
        QVERIFY(cv::norm(found, expected, cv::NORM_INF) <= 1);
    }
    for (const LiveState state : {LiveState::Moving, LiveState::Blurred, LiveState::Worth, LiveState::Known}) {
        QVERIFY2(states.contains(state), qPrintable(QString::number(int(state))));
    }
}

void LiveCaptureTest::savesARequestedPictureUnderAFreeName() {
    Film film;
    film.add(15, frameOf(1));
    const QTemporaryDir folder;
    QFile occupied(folder.filePath("picture-0001.png"));
    QVERIFY(occupied.open(QIODevice::WriteOnly) && occupied.write("mine") == 4);
    occupied.close();
    LiveCapture capture;
    capture.setTakesByItself(false);
    capture.setEnough(true);
    const QSignalSpy taken(&capture, &LiveCapture::pictureTaken);
    const QSignalSpy frames(&capture, &LiveCapture::frameShown);
    capture.start({0, film.first(), {}}, folder.path(), {});
    QTRY_VERIFY_WITH_TIMEOUT(frames.count() >= 4, 280000);
    QCOMPARE(taken.count(), 0);
    capture.takePicture();
    QTRY_COMPARE_WITH_TIMEOUT(taken.count(), 1, 280000);
    QCOMPARE(taken[0][0].toString(), folder.filePath("picture-0002.png"));
    QVERIFY(occupied.open(QIODevice::ReadOnly) && occupied.readAll() == "mine");
}

void LiveCaptureTest::saysWhyASourceEnds() {
    Film film;
    film.add(6, frameOf(1));
    const QTemporaryDir folder;
    QFile occupied(folder.filePath("a-file"));
    QVERIFY(occupied.open(QIODevice::WriteOnly));
    const struct {
        FrameSourceChoice choice;
        QString folder;
        QString said;
        bool isProblem;
    } cases[] = {
        {{0, folder.filePath("gone.avi"), {}}, folder.path(), "gone.avi", true},
        {{999, {}, {}}, folder.path(), "cannot be opened", true},
        {{0, film.first(), {}}, folder.path(), "has ended", false},
        {{0, film.first(), {}}, folder.filePath("a-file/below"), "cannot be saved", true},
    };
    for (const auto &one : cases) {
        LiveCapture capture;
        const QSignalSpy ends(&capture, &LiveCapture::ended);
        capture.start(one.choice, one.folder, {});
        QTRY_COMPARE_WITH_TIMEOUT(ends.count(), 1, 280000);
        QVERIFY2(ends[0][0].toString().contains(one.said), qPrintable(ends[0][0].toString()));
        QCOMPARE(ends[0][1].toBool(), one.isProblem);
    }
}

#ifdef Q_OS_UNIX
void LiveCaptureTest::keepsNoPartOfAPictureOnAFullDisk() {
    Film film;
    film.add(6, frameOf(1));
    const QTemporaryDir folder;
    LiveCapture capture;
    const QSignalSpy taken(&capture, &LiveCapture::pictureTaken);
    const QSignalSpy ends(&capture, &LiveCapture::ended);
    std::signal(SIGXFSZ, SIG_IGN);
    // A limit on the size of files stands in for the full disk. Because SIGXFSZ is ignored, a write beyond the limit
    // fails but does not end the program.
    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    const rlimit full{100000, before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &full);
    capture.start({0, film.first(), {}}, folder.path(), {});
    const bool hasEnded = QTest::qWaitFor([&ends] { return ends.count() == 1; }, 280000);
    setrlimit(RLIMIT_FSIZE, &before);
    QVERIFY(hasEnded && ends[0][1].toBool());
    QVERIFY2(ends[0][0].toString().contains("picture-0001.png"), qPrintable(ends[0][0].toString()));
    QCOMPARE(taken.count(), 0);
    QCOMPARE(QDir(folder.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot), QStringList());
}
#endif

// The source must not stop if the camera loses single frames. UnreliableCamera loses every second frame.
void LiveCaptureTest::noticesThatACameraIsUnplugged() {
    constexpr int frameCount = 3;
    FrameSource source({0, {}, {}}, std::make_unique<UnreliableCamera>(frameCount));
    QCOMPARE(source.open(), QString());
    for (int i = 0; i < frameCount; ++i) {
        QCOMPARE(source.next().cols, 64);
    }
    QVERIFY(source.next().empty());
    QVERIFY(!source.isFile());
    QVERIFY2(source.endText().contains("unplugged"), qPrintable(source.endText()));
}

void LiveCaptureTest::takesFramesOfEveryKind() {
    const struct {
        const char *kind;
        cv::Mat picture;
        cv::Vec3b expected;
    } cases[] = {{"colour", cv::Mat(4, 4, CV_8UC3, cv::Scalar(1, 2, 3)), {1, 2, 3}},
                 {"grey", cv::Mat(4, 4, CV_8UC1, cv::Scalar(77)), {77, 77, 77}},
                 {"16 bits", cv::Mat(4, 4, CV_16UC1, cv::Scalar(100 * 257)), {100, 100, 100}},
                 {"with transparency", cv::Mat(4, 4, CV_8UC4, cv::Scalar(1, 2, 3, 9)), {1, 2, 3}}};
    for (const auto &one : cases) {
        auto camera = std::make_unique<UnreliableCamera>(1);
        camera->picture = one.picture;
        const std::map<int, double> &asked = camera->asked;
        FrameSource source({0, {}, {1280, 720}}, std::move(camera));
        QCOMPARE(source.open(), QString());
        const cv::Mat frame = source.next();
        QVERIFY2(frame.type() == CV_8UC3 && frame.at<cv::Vec3b>(1, 2) == one.expected, one.kind);
        QCOMPARE(asked.at(cv::CAP_PROP_FRAME_WIDTH), 1280.0);
        QCOMPARE(asked.at(cv::CAP_PROP_FRAME_HEIGHT), 720.0);
    }
}

void LiveCaptureTest::listsCamerasWithGapsInTheirNumbers() {
    const QTemporaryDir folder;
    for (const char *entry : {"video10", "video2", "video4", "video-old"}) {
        QVERIFY(QDir(folder.path()).mkdir(entry));
        QFile name(folder.filePath(QString(entry) + "/name"));
        QVERIFY(name.open(QIODevice::WriteOnly) && name.write(QByteArray("the ") + entry + "\n") > 0);
    }
    QVERIFY(QFile::remove(folder.filePath("video4/name")));
    const std::vector<NamedCamera> cameras = offeredCameras(folder.path());
    QCOMPARE(cameras.size(), size_t(2));
    QCOMPARE(cameras[0].number, 2);
    QCOMPARE(cameras[1].number, 10);
    QCOMPARE(cameras[1].name, QString("the video10"));
    const std::vector<NamedCamera> withoutList = offeredCameras(folder.filePath("absent"));
    QCOMPARE(withoutList.size(), size_t(4));
    QVERIFY(withoutList[3].number == 3 && withoutList[3].name == "Camera 4");
}

void LiveCaptureTest::keepsColours() {
    const QTemporaryDir folder;
    QImage orange(64, 48, QImage::Format_RGB32);
    orange.fill(QColor(250, 120, 10));
    for (int i = 0; i < 30; ++i) {
        QVERIFY(orange.save(folder.filePath(QString("frame-%1.png").arg(i, 3, 10, QChar('0')))));
    }
    LiveCapture capture;
    const QSignalSpy taken(&capture, &LiveCapture::pictureTaken);
    const QSignalSpy frames(&capture, &LiveCapture::frameShown);
    capture.start({0, folder.filePath("frame-000.png"), {}}, folder.filePath("kept"), {});
    QTRY_VERIFY_WITH_TIMEOUT(frames.count() > 0, 60000);
    QCOMPARE(frames[0][0].value<LiveFrame>().picture.pixelColor(1, 1), QColor(250, 120, 10));
    capture.takePicture();
    QTRY_VERIFY_WITH_TIMEOUT(taken.count() > 0, 60000);
    QCOMPARE(QImage(taken[0][0].toString()).pixelColor(1, 1), QColor(250, 120, 10));
}

// A blur of up to 1.5 px counts as sharp, and a blur above 2.5 px does not. Between these limits, the blur may be up to
// 1.4 times that of the sharpest frame so far.
void LiveCaptureTest::judgesSharpnessByTheSharpestFrameSoFar() {
    const struct {
        double sharpest;  // blur of all frames before the last one, in pixels
        double blur;      // of the last frame, in pixels
        bool hasEnough;
        LiveState state;
    } cases[] = {{0.5, 1.4, false, LiveState::Worth},   {0.5, 1.6, false, LiveState::Blurred},
                 {1.6, 2.1, false, LiveState::Worth},   {1.6, 2.4, false, LiveState::Blurred},
                 {2.4, 2.6, false, LiveState::Blurred}, {0.5, 1.4, true, LiveState::Enough}};
    static const TargetView view = viewOf(frameOf(1));
    for (const auto &one : cases) {
        LiveDecision decision;
        decision.setEnough(one.hasEnough);
        QVERIFY(decision.judge(view, one.sharpest) == LiveState::Moving);
        for (int i = 0; i < 3; ++i) {
            decision.judge(view, one.sharpest);
        }
        QVERIFY2(decision.judge(view, one.blur) == one.state, qPrintable(QString::number(one.blur)));
    }
}

// After stop() returns, no frame of the first run may be shown.
void LiveCaptureTest::stopsAtOnce() {
    Film film;
    film.add(15, frameOf(1));
    const QTemporaryDir folder;
    LiveCapture capture;
    const QSignalSpy frames(&capture, &LiveCapture::frameShown);
    const QSignalSpy ends(&capture, &LiveCapture::ended);
    capture.start({0, film.first(), {}}, folder.path(), {});
    QTRY_VERIFY_WITH_TIMEOUT(frames.count() > 0, 280000);
    capture.stop();
    QVERIFY(!capture.isRunning());
    const int shown = frames.count();
    QTest::qWait(300);
    QCOMPARE(frames.count(), shown);
    capture.start({0, film.first(), {}}, folder.path(), {});
    QTRY_VERIFY_WITH_TIMEOUT(frames.count() > shown, 280000);
    QCOMPARE(ends.count(), 0);
}

QTEST_GUILESS_MAIN(LiveCaptureTest)
#include "live_capture_test.moc"
