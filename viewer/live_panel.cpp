#include "viewer/live_panel.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QLabel>
#include <QPushButton>
#include <QShortcut>
#include <QSignalBlocker>
#include <QStandardPaths>
#include <QVBoxLayout>

#include "calibration/next_photograph.h"
#include "viewer/session/session.h"
#include "viewer/views/drawing.h"
#include "viewer/views/live_view.h"

namespace {

constexpr int takenMs = 1000;
constexpr int fileEntry = -1;
const QColor goodColour(40, 170, 100);

QString link() {
    return QString(" <a href=\"%MANUAL%/guides/calibration/calibrating.html#live\">") + LivePanel::tr("More") + "</a>";
}

QString wordsFor(LiveState state) {
    switch (state) {
        case LiveState::NoPattern:
            return LivePanel::tr("No pattern is in sight.");
        case LiveState::Moving:
            return LivePanel::tr("Hold still.");
        case LiveState::Blurred:
            return LivePanel::tr("Too blurred: wait for the focus, or use more light.");
        case LiveState::Known:
            return LivePanel::tr("A similar picture exists: move, tilt or turn the target.");
        case LiveState::Enough:
            return LivePanel::tr("Enough: another picture would hardly improve the calibration.");
        case LiveState::Worth:
            break;
    }
    return LivePanel::tr("Still, sharp and new.");
}

}  // namespace

LivePanel::LivePanel(Session *ownSession, QWidget *parent)
    : QWidget(parent),
      session(ownSession),
      source(new QComboBox(this)),
      size(new QComboBox(this)),
      startButton(new QPushButton(this)),
      takeButton(new QPushButton(tr("Ta&ke Picture (Ctrl+Space)"), this)),
      byItself(new QCheckBox(tr("Automatically"), this)),
      folderButton(new QPushButton(this)),
      status(new QLabel(this)),
      view(new LiveView(this)) {
    for (const NamedCamera &camera : offeredCameras()) {
        source->addItem(camera.name, camera.number);
    }
    source->addItem(tr("Video file..."), fileEntry);
    size->addItem(tr("Default"), QSize());
    for (const QSize &one : {QSize(640, 480), QSize(1280, 720), QSize(1920, 1080), QSize(3840, 2160)}) {
        size->addItem(QString("%1 × %2").arg(one.width()).arg(one.height()), one);
    }
    takenTimer.setSingleShot(true);
    takenTimer.setInterval(takenMs);
    lay();
    connect(&takenTimer, &QTimer::timeout, this, [this] { view->setBorder({}); });
    connect(source, qOverload<int>(&QComboBox::activated), this, &LivePanel::chooseSource);
    connect(startButton, &QPushButton::clicked, this, &LivePanel::startOrStop);
    connect(takeButton, &QPushButton::clicked, &capture, &LiveCapture::takePicture);
    connect(byItself, &QCheckBox::toggled, &capture, &LiveCapture::setTakesByItself);
    connect(folderButton, &QPushButton::clicked, this, &LivePanel::chooseFolder);
    connect(&capture, &LiveCapture::frameShown, this, &LivePanel::showFrame);
    connect(&capture, &LiveCapture::pictureTaken, this, &LivePanel::showTaken);
    connect(&capture, &LiveCapture::ended, this, &LivePanel::showEnd);
    connect(session, &Session::photographsChanged, this, &LivePanel::tellWhatExists);
    connect(session, &Session::photographChanged, this, [this] {
        if (capture.isRunning()) {
            tellWhatExists();
        }
    });
    connect(session, &Session::resultChanged, this, &LivePanel::useResult);
    folder = QDir(QStandardPaths::writableLocation(QStandardPaths::PicturesLocation)).filePath("LmView");
    showFolder();
    showRunning();
    view->clear(tr("Choose a camera or a video file and press \"Start\"."));
}

void LivePanel::lay() {
    source->setToolTip(tr("A camera, a video file, or the first of several numbered pictures.") + link());
    size->setToolTip(tr("The picture size that LmView requests from the camera. A calibration is valid for one size.") +
                     link());
    takeButton->setToolTip(tr("Keeps the next picture, whatever it shows.") + link());
    // This is a second shortcut, because the button's own shortcut is its mnemonic.
    auto *take = new QShortcut(QKeySequence("Ctrl+Space"), this);
    connect(take, &QShortcut::activated, takeButton, &QPushButton::click);
    byItself->setToolTip(tr("Takes a picture when the target is still, sharp, and seen in a new way.") + link());
    byItself->setChecked(true);
    folderButton->setToolTip(tr("The folder in which pictures are kept.") + link());
    status->setObjectName("liveStatus");
    status->setWordWrap(true);
    status->setTextFormat(Qt::PlainText);
    QFont large = status->font();
    large.setPointSizeF(1.3 * large.pointSizeF());
    large.setBold(true);
    status->setFont(large);
    for (QComboBox *box : {source, size}) {
        box->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
        box->setMinimumContentsLength(8);
    }
    auto *sources = new QHBoxLayout;
    sources->addWidget(source, 2);
    sources->addWidget(size, 1);
    sources->addWidget(startButton);
    auto *pictures = new QHBoxLayout;
    pictures->addWidget(byItself);
    pictures->addWidget(takeButton, 1);
    auto *form = new QFormLayout;
    form->setRowWrapPolicy(QFormLayout::WrapLongRows);
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    form->addRow(tr("Source:"), sources);
    form->addRow(tr("Take pictures:"), pictures);
    form->addRow(tr("Keep them in:"), folderButton);
    source->setAccessibleName(tr("Source"));
    size->setAccessibleName(tr("Size of the picture"));
    auto *rows = new QVBoxLayout(this);
    rows->addLayout(form);
    rows->addWidget(status);
    rows->addWidget(view, 1);
}

QString LivePanel::statusText() const {
    return status->text();
}

void LivePanel::suggestFolder(const QString &path) {
    if (!hasChosenFolder) {
        folder = path;
        showFolder();
    }
}

void LivePanel::showFolder() {
    const QString name = QDir::toNativeSeparators(folder);
    constexpr int longest = 40;
    folderButton->setText(name.size() > longest ? "…" + name.right(longest) : name);
}

void LivePanel::chooseFolder() {
    const QString chosen = QFileDialog::getExistingDirectory(this, tr("Keep Pictures in"), folder);
    if (!chosen.isEmpty()) {
        folder = chosen;
        hasChosenFolder = true;
        showFolder();
    }
}

void LivePanel::chooseSource() {
    if (source->currentData().toInt() != fileEntry) {
        return;
    }
    const QString file = QFileDialog::getOpenFileName(
        this, tr("Open Video"), videoFile,
        tr("Videos (*.avi *.mp4 *.mkv *.mov *.webm *.m4v *.mpg *.ogv);;First of numbered pictures (*.png *.jpg *.tif "
           "*.bmp);;All files (*)"));
    if (!file.isEmpty()) {
        startFile(file);
    }
}

void LivePanel::startFile(const QString &file) {
    videoFile = file;
    const int entry = source->findData(fileEntry);
    source->setItemText(entry, tr("Video file: %1").arg(QFileInfo(file).fileName()));
    source->setCurrentIndex(entry);
    start();
}

void LivePanel::startOrStop() {
    if (!capture.isRunning()) {
        if (source->currentData().toInt() == fileEntry && videoFile.isEmpty()) {
            chooseSource();
        } else {
            start();
        }
        return;
    }
    capture.stop();
    view->clear(tr("Choose a camera or a video file and press \"Start\"."));
    say(tr("Stopped. %1 pictures were taken.").arg(takenCount), false);
    showRunning();
}

void LivePanel::start() {
    FrameSourceChoice choice;
    choice.camera = source->currentData().toInt();
    choice.file = choice.camera == fileEntry ? videoFile : QString();
    choice.size = size->currentData().toSize();
    takenCount = 0;
    tellWhatExists();
    useResult();
    capture.start(choice, folder, session->settings());
    view->clear(tr("Opening..."));
    say(tr("Opening..."), false);
    showRunning();
}

void LivePanel::showRunning() {
    const bool isRunning = capture.isRunning();
    startButton->setText(isRunning ? tr("Stop") : tr("Start"));
    takeButton->setEnabled(isRunning);
    folderButton->setEnabled(!isRunning);
    size->setEnabled(!isRunning);
    source->setEnabled(!isRunning);
}

void LivePanel::say(const QString &text, bool isBad) {
    QPalette colours = palette();
    if (isBad) {
        colours.setColor(QPalette::WindowText, isDark(palette()) ? QColor(255, 150, 130) : QColor(176, 40, 30));
    }
    status->setPalette(colours);
    status->setText(text);
}

void LivePanel::showFrame(const LiveFrame &frame) {
    if (!capture.isRunning()) {
        return;
    }
    view->showFrame(frame);
    if (!takenTimer.isActive()) {
        say(wordsFor(frame.state), false);
    }
}

void LivePanel::showTaken(const QString &file) {
    ++takenCount;
    session->add({file});
    say(tr("Picture %1 taken.").arg(takenCount), false);
    view->setBorder(goodColour);
    takenTimer.start();
}

void LivePanel::showEnd(const QString &reason, bool isProblem) {
    takenTimer.stop();
    view->setBorder({});
    say(tr("%1 Pictures taken: %2.").arg(reason).arg(takenCount), isProblem);
    showRunning();
}

void LivePanel::tellWhatExists() {
    std::vector<TargetView> views;
    for (const SessionPhotograph &photograph : session->photographs()) {
        if (photograph.isIncluded && photograph.readings) {
            views.push_back({{photograph.width, photograph.height}, photograph.readings});
        }
    }
    capture.setPhotographs(std::move(views));
}

void LivePanel::useResult() {
    const auto result = session->result();
    const auto calibration = result ? result->calibration : nullptr;
    view->setResult(result);
    // The calibration only says whether the cameras need more photographs. The patterns of an assembly may need more
    // even if the cameras do not, so an assembly never has enough.
    capture.setEnough(calibration && (!calibration->next || calibration::isLensCertain(*calibration)) &&
                      session->settings().arrangement != Arrangement::Assembly);
}
