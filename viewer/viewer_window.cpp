#include "viewer/viewer_window.h"

#include <QAction>
#include <QCheckBox>
#include <QCloseEvent>
#include <QCoreApplication>
#include <QDropEvent>
#include <QEventLoop>
#include <QFileInfo>
#include <QGroupBox>
#include <QLabel>
#include <QMimeData>
#include <QProgressBar>
#include <QPushButton>
#include <QSlider>
#include <QSplitter>
#include <QTabWidget>
#include <QVBoxLayout>
#include <cmath>
#include <utility>

#include "viewer/axes_panel.h"
#include "viewer/live_panel.h"
#include "viewer/session/photograph_calibration.h"
#include "viewer/settings_panel.h"
#include "viewer/views/coverage_view.h"
#include "viewer/views/patterns_view.h"
#include "viewer/views/photograph_view.h"
#include "viewer/views/residual_view.h"
#include "viewer/views/scene_view.h"
#include "viewer/views/summary_view.h"
#include "viewer/views/uncertainty_view.h"

namespace {

// The last position of the slider. The positions, from 0, stand for the factors 1, 2, 5, 10 ... 10,000.
constexpr int factorSteps = 12;

int factorAt(int step) {
    const int digits[] = {1, 2, 5};
    return digits[step % 3] * int(std::pow(10, step / 3));
}

QStringList pathsIn(const QMimeData *data) {
    QStringList paths;
    for (const QUrl &url : data->urls()) {
        if (url.isLocalFile()) {
            paths << url.toLocalFile();
        }
    }
    return paths;
}

}  // namespace

ViewerWindow::ViewerWindow(const QString &recoveryFolder) : session(calibratePhotographs), photographs(&session) {
    setWindowTitle(tr("LmView"));
    setObjectName("ViewerWindow");
    setAcceptDrops(true);
    auto *columns = new QSplitter(this);
    columns->setChildrenCollapsible(false);
    columns->addWidget(makePhotographColumn());
    columns->addWidget(makePictureColumn());
    columns->addWidget(makeResultColumn());
    columns->setStretchFactor(0, 0);
    columns->setStretchFactor(1, 1);
    columns->setStretchFactor(2, 2);
    auto *whole = new QWidget(this);
    auto *rows = new QVBoxLayout(whole);
    rows->setContentsMargins(6, 6, 6, 6);
    rows->addWidget(makeRecoveryBar());
    rows->addWidget(columns, 1);
    setCentralWidget(whole);
    makeMenus();
    resize(1280, 800);
    columns->setSizes({280, 380, 600});
    connectSession();
    if (!recoveryFolder.isEmpty()) {
        startRecovery(recoveryFolder);
    }
    showProgress();
    list->setFocus();
}

ViewerWindow::~ViewerWindow() = default;

QWidget *ViewerWindow::makePhotographColumn() {
    auto *column = new QWidget(this);
    auto *rows = new QVBoxLayout(column);
    rows->setContentsMargins(0, 0, 0, 0);
    auto *add = new QPushButton(tr("&Add..."), column);
    add->setToolTip(tr("Add photographs. You can also drop or paste files and folders."));
    auto *out = new QPushButton(tr("&Take Out"), column);
    out->setToolTip(tr("Take the selected photographs out of the calibration, or put them back."));
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(add);
    buttons->addWidget(out);
    connect(add, &QPushButton::clicked, this, &ViewerWindow::addPhotographs);
    connect(out, &QPushButton::clicked, this, &ViewerWindow::toggleSelected);

    list = new QListView(column);
    list->setObjectName("photographs");
    list->setAccessibleName(tr("Photographs"));
    list->setModel(&photographs);
    list->setItemDelegate(new PhotographDelegate(list));
    list->setSelectionMode(QAbstractItemView::ExtendedSelection);
    list->setUniformItemSizes(true);
    list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    list->setMinimumWidth(230);

    progressText = new QLabel(column);
    progressText->setWordWrap(true);
    progress = new QProgressBar(column);
    cancel = new QPushButton(tr("Cancel"), column);
    connect(cancel, &QPushButton::clicked, &session, &Session::cancelReading);
    auto *running = new QHBoxLayout;
    running->addWidget(progress, 1);
    running->addWidget(cancel);

    auto *group = new QGroupBox(tr("Settings"), column);
    auto *groupRows = new QVBoxLayout(group);
    groupRows->setContentsMargins(6, 4, 6, 6);
    settingsPanel = new SettingsPanel(group);
    groupRows->addWidget(settingsPanel);
    rows->addLayout(buttons);
    rows->addWidget(list, 1);
    rows->addWidget(progressText);
    rows->addLayout(running);
    rows->addWidget(group);
    return column;
}

QWidget *ViewerWindow::makePictureColumn() {
    auto *column = new QWidget(this);
    auto *rows = new QVBoxLayout(column);
    rows->setContentsMargins(0, 0, 0, 0);
    picture = new PhotographView(column);
    auto *corners = new QCheckBox(tr("Cor&ners"), column);
    corners->setChecked(true);
    auto *straight = new QCheckBox(tr("Un&distorted"), column);
    straight->setToolTip(tr("Shows the photograph as a lens without distortion would: straight lines are straight."));
    auto *residuals = new QCheckBox(tr("Residual arro&ws"), column);
    residuals->setChecked(true);
    residuals->setToolTip(
        tr("Each arrow begins at a corner. It points away from the position that the calibration predicts for the "
           "corner. Its length is the distance from that position, enlarged. Where corners are close together, only "
           "the longest arrow is drawn; zoom in to see the others."));
    factor = new QSlider(Qt::Horizontal, column);
    factor->setRange(0, factorSteps);
    factor->setAccessibleName(tr("Factor of the residual arrows"));
    factor->setMinimumWidth(50);
    factorText = new QLabel(column);
    auto *pictureChoices = new QHBoxLayout;
    pictureChoices->addWidget(corners);
    pictureChoices->addWidget(straight);
    pictureChoices->addStretch();
    auto *arrowChoices = new QHBoxLayout;
    arrowChoices->addWidget(residuals);
    arrowChoices->addWidget(factor, 1);
    arrowChoices->addWidget(factorText);
    rows->addWidget(picture, 1);
    rows->addLayout(pictureChoices);
    rows->addLayout(arrowChoices);
    connect(corners, &QCheckBox::toggled, picture, &PhotographView::setShowsCorners);
    connect(straight, &QCheckBox::toggled, picture, &PhotographView::setUndistorted);
    connect(residuals, &QCheckBox::toggled, picture, &PhotographView::setShowsResiduals);
    connect(factor, &QSlider::valueChanged, this, [this](int step) {
        picture->setResidualFactor(factorAt(step));
        factorText->setText(QString("× %1").arg(factorAt(step)));
    });
    factor->setValue(7);  // 200
    connect(picture, &PhotographView::cornerPicked, this, &ViewerWindow::cornerPicked);
    return column;
}

void ViewerWindow::addTab(ResultView *view, const QString &title) {
    views.push_back(view);
    tabs->addTab(view, title);
}

QWidget *ViewerWindow::makeTabs() {
    tabs = new QTabWidget(this);
    tabs->setObjectName("views");
    tabs->setUsesScrollButtons(true);
    auto *residualView = new ResidualView(tabs);
    sceneView = new SceneView(tabs);
    patternsView = new PatternsView(tabs);
    addTab(new SummaryView(tabs), tr("&Result"));
    addTab(new CoverageView(tabs), tr("Co&verage"));
    addTab(residualView, tr("Resid&uals"));
    addTab(new UncertaintyView(tabs), tr("Uncertaint&y"));
    addTab(sceneView, tr("S&cene"));
    addTab(patternsView, tr("&Patterns"));
    live = new LivePanel(&session, tabs);
    tabs->addTab(live, tr("Ca&mera"));
    connect(residualView, &ResidualView::photographChosen, this, &ViewerWindow::showPhotograph);
    connect(residualView, &ResidualView::cornerChosen, this, [this](int id, QPointF pixel) {
        showPhotograph(id);
        picture->centreOn(pixel);
    });
    connect(patternsView, &PatternsView::settingsEdited, &session, &Session::setSettings);
    return tabs;
}

QWidget *ViewerWindow::makeResultColumn() {
    auto *column = new QWidget(this);
    auto *rows = new QVBoxLayout(column);
    rows->setContentsMargins(0, 0, 0, 0);
    axes = new AxesPanel(column);
    axes->hide();
    rows->addWidget(makeTabs(), 1);
    rows->addWidget(axes);
    connect(axes, &AxesPanel::settingsEdited, &session, &Session::setSettings);
    connect(axes, &AxesPanel::pickingToggled, this, [this](bool isOn) {
        picture->setPicksCorners(isOn);
        if (isOn) {
            pickedCorners.clear();
        }
    });
    return column;
}

QWidget *ViewerWindow::makeRecoveryBar() {
    recoveryBar = new QFrame(this);
    recoveryBar->setFrameShape(QFrame::StyledPanel);
    auto *row = new QHBoxLayout(recoveryBar);
    row->setContentsMargins(8, 4, 8, 4);
    auto *restore = new QPushButton(tr("Restore"), recoveryBar);
    auto *discard = new QPushButton(tr("Discard"), recoveryBar);
    row->addWidget(new QLabel(tr("LmView ended unexpectedly. Restore its photographs and settings?"), this), 1);
    row->addWidget(restore);
    row->addWidget(discard);
    recoveryBar->hide();
    connect(restore, &QPushButton::clicked, this, [this] {
        recoveryBar->hide();
        session.open(*std::exchange(leftOver, std::nullopt));
    });
    connect(discard, &QPushButton::clicked, this, [this] {
        recoveryBar->hide();
        leftOver.reset();
    });
    return recoveryBar;
}

void ViewerWindow::connectSession() {
    connect(&session, &Session::resultChanged, this, &ViewerWindow::showResult);
    connect(&session, &Session::progressChanged, this, &ViewerWindow::showProgress);
    connect(&session, &Session::photographChanged, this, [this](int id) {
        if (id == picture->photographId()) {
            showCurrentPhotograph();
        }
    });
    connect(&session, &Session::photographsChanged, this, [this] {
        if (!list->currentIndex().isValid() && photographs.rowCount() > 0) {
            list->setCurrentIndex(photographs.index(0));
        }
        showCurrentPhotograph();
    });
    connect(&session, &Session::settingsChanged, this, [this] {
        settingsPanel->setSettings(session.settings());
        sceneView->setSettings(session.settings());
        patternsView->setSettings(session.settings());
        axes->setSettings(session.settings());
        axes->setVisible(session.settings().arrangement == Arrangement::Assembly);
    });
    connect(settingsPanel, &SettingsPanel::edited, &session, &Session::setSettings);
    connect(list->selectionModel(), &QItemSelectionModel::currentChanged, this, &ViewerWindow::showCurrentPhotograph);
    // A running timer is not started again. While many photographs are read, changes follow each other all the time. If
    // every change restarted the timer, it would not fire before the last photograph is read.
    const auto keepLater = [this] {
        if (recovery && !recoveryTimer.isActive()) {
            recoveryTimer.start();
        }
    };
    connect(&session, &Session::photographsChanged, this, keepLater);
    connect(&session, &Session::photographChanged, this, keepLater);
    connect(&session, &Session::settingsChanged, this, keepLater);
}

void ViewerWindow::showCurrentPhotograph() {
    picture->showPhotograph(session.photograph(list->currentIndex().data(PhotographListModel::IdRole).toInt()));
}

void ViewerWindow::showPhotograph(int id) {
    const QModelIndex index = photographs.indexOf(id);
    if (index.isValid()) {
        list->setCurrentIndex(index);
        list->scrollTo(index);
    }
}

void ViewerWindow::showResult() {
    const auto result = session.result();
    for (ResultView *view : views) {
        view->setResult(result);
    }
    picture->setResult(result);
    axes->setResult(result.get());
    const bool isCalibrated = result && result->calibration;
    saveResultsAction->setEnabled(isCalibrated);
    reportAction->setEnabled(isCalibrated);
}

void ViewerWindow::showProgress() {
    const bool isReading = session.isReading();
    progress->setVisible(isReading || session.isCalibrating());
    cancel->setVisible(isReading);
    if (isReading) {
        progress->setRange(0, session.readingTotal());
        progress->setValue(session.readingDone());
        progressText->setText(
            tr("Reading photograph %1 of %2").arg(session.readingDone() + 1).arg(session.readingTotal()));
    } else if (session.isCalibrating()) {
        progress->setRange(0, 0);
        progressText->setText(tr("Calibrating..."));
    } else {
        const int count = session.photographs().size();
        progressText->setText(count == 0   ? tr("No photographs yet")
                              : count == 1 ? tr("1 photograph")
                                           : tr("%1 photographs").arg(count));
    }
}

void ViewerWindow::cornerPicked(QPointF pixel) {
    const auto result = session.result();
    const auto corner = result && result->calibration
                            ? cornerAt(*result, picture->photographId(), {pixel.x(), pixel.y()})
                            : std::nullopt;
    if (!corner || pickedCorners.size() >= 3) {
        return;
    }
    pickedCorners.push_back(*corner);
    axes->setPickedCorners(int(pickedCorners.size()));
    if (pickedCorners.size() == 3) {
        SessionSettings settings = session.settings();
        settings.frame = {pickedCorners[0], pickedCorners[1], pickedCorners[2]};
        session.setSettings(settings);
    }
}

void ViewerWindow::dragEnterEvent(QDragEnterEvent *event) {
    if (!pathsIn(event->mimeData()).isEmpty()) {
        event->acceptProposedAction();
    }
}

void ViewerWindow::dropEvent(QDropEvent *event) {
    open(pathsIn(event->mimeData()));
    event->acceptProposedAction();
}

void ViewerWindow::closeEvent(QCloseEvent *event) {
    while (saving.open() > 0) {
        QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents | QEventLoop::WaitForMoreEvents);
    }
    recovery.reset();  // the user ends the session, so nothing is left to recover
    recoveryTimer.stop();
    event->accept();
}
