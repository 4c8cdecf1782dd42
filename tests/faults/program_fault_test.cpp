// Plays a session with the real window: start, a change on every page, saving, starting the viewer, and a tool tip. The
// session is repeated for each of its library calls and each of several result codes. In each repetition, this call
// fails with this code. If the program cannot do without the call, the user gets exactly one report. In any case the
// window and the picture stay, and the next action works. There is one exception: if the catalogue cannot be read at
// the start, no window appears.
#include <QApplication>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFileDialog>
#include <QGraphicsPixmapItem>
#include <QGraphicsView>
#include <QHelpEvent>
#include <QLoggingCategory>
#include <QMessageBox>
#include <QPushButton>
#include <QRegularExpression>
#include <QSpinBox>
#include <QTabWidget>
#include <QTimer>
#include <QtTest>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "generator/main_window.h"
#include "lmlib/error_codes.h"
#include "lmlib/lm_lib_exception.h"
#include "tests/scripted_lmlib64/scripted_lmlib64.h"
#include "tooltips/custom_tool_tip.h"
#include "tooltips/tool_tip_helper.h"

using scripted_lmlib64::Call;

namespace {

const QString accessReport("An LmLib error occurred when accessing the item:\n");
const QString commandReport("An LmLib error occurred while executing the command:\n");

}  // namespace

// Replaces the toolkit's function. The toolkit's dialog would take longer to open than the rest of a session takes. The
// dialog makes no library call, so the sessions do not need it. The tests of the save action use the real dialog.
QString QFileDialog::getSaveFileName(QWidget * /*parent*/, const QString & /*caption*/, const QString & /*directory*/,
                                     const QString & /*filter*/, QString * /*selectedFilter*/, Options /*options*/) {
    return "pattern.pdf";
}

namespace {

struct SeenAction {
    QString name;
    std::size_t callsSoFar = 0;
    QStringList boxes;  // the texts of the message boxes
    bool pictureKept = true;
    bool hasPicture = false;
};

struct SeenSession {
    std::vector<SeenAction> actions;  // the last action goes to another page
    // The path and the code of an exception that escaped. The exception itself is not stored: as long as it exists, the
    // slot of the failed command is not erased.
    std::optional<std::pair<std::string, int>> escaped;
    std::vector<Call> calls;
    bool isSlotLeft = false;
};

// Plays one session. If it is cut short, the action in which a call failed is followed only by the last action.
class Session {
public:
    // The call with this number, counted from 1, fails. If the number is 0, no call fails.
    Session(std::size_t call, bool cutShort) : failingCall(call), isCutShort(cutShort) {
        QObject::connect(&user, &QTimer::timeout, [this] { closeBox(); });
        user.start(0);
    }

    void play() {
        perform("start", [this] {
            window = std::make_unique<MainWindow>();
            helper = std::make_unique<VistrelToolTipHelper>();
            qApp->installEventFilter(helper.get());
            QApplication::setActiveWindow(window.get());
            window->show();
        });
        perform("choose another official plate", [this] { find<QComboBox>("officialPattern")->setCurrentIndex(1); });
        perform("go to Single", [this] { choosePage(1); });
        perform("change Single", [this] { find<QComboBox>("singleThickness")->setCurrentIndex(2); });
        perform("go to Flexible", [this] { choosePage(2); });
        perform("change Flexible", [this] { find<QSpinBox>("flexibleWidth")->stepUp(); });
        perform("go to Halcon", [this] { choosePage(4); });
        perform("change Halcon", [this] { find<QDoubleSpinBox>("halconOuterSize")->stepUp(); });
        perform("encode a Halcon offset", [this] { find<QAbstractButton>("halconEncodeOffset")->click(); });
        perform("go to Assembly", [this] { choosePage(3); });
        perform("change Assembly", [this] { find<QSpinBox>("assemblyNumberOfPatterns")->setValue(3); });
        perform("save an assembly", [this] { find<QAbstractButton>("saveBtn")->click(); });
        perform("go back to Single", [this] { choosePage(1); });
        perform("save", [this] { find<QAbstractButton>("saveBtn")->click(); });
        perform("save where no file can be written", [this] {
            scripted_lmlib64::failCommand("GenerateCalibrationPattern", "NotWritten", "No.");
            find<QAbstractButton>("saveBtn")->click();
        });
        scripted_lmlib64::setCommandResult("GenerateCalibrationPattern", "{}");
        perform("launch the viewer", [this] { find<QAbstractButton>("calibrateBtn")->click(); });
        perform("tool tip", [this] {
            auto *widget = find<QAbstractButton>("calibrateBtn");
            QHelpEvent event(QEvent::ToolTip, QPoint(1, 1), widget->mapToGlobal(QPoint(1, 1)));
            QApplication::sendEvent(widget, &event);
            QVERIFY(QCustomToolTip::isVisible());
        });
        isCutShort = false;
        perform("later change", [this] { choosePage(find<QTabWidget>("patternType")->currentIndex() == 2 ? 1 : 2); });
    }

    std::vector<SeenAction> actions;

private:
    template <class Widget>
    Widget *find(const char *name) const {
        return window->findChild<Widget *>(name);
    }
    void choosePage(int page) const { find<QTabWidget>("patternType")->setCurrentIndex(page); }

    void perform(const QString &name, const std::function<void()> &action) {
        if (isCutShort && failingCall != 0 && scripted_lmlib64::calls().size() >= failingCall) {
            return;
        }
        const qint64 before = picture();
        actions.emplace_back();
        actions.back().name = name;
        action();
        actions.back().callsSoFar = scripted_lmlib64::calls().size();
        actions.back().pictureKept = picture() == before;
        actions.back().hasPicture = picture() != 0;
    }

    // A number that identifies the picture in the preview; 0 if there is none.
    qint64 picture() const {
        const auto items =
            window == nullptr ? QList<QGraphicsItem *>() : find<QGraphicsView>("preview")->scene()->items();
        for (QGraphicsItem *item : items) {
            if (auto *pixmap = qgraphicsitem_cast<QGraphicsPixmapItem *>(item)) {
                return pixmap->pixmap().cacheKey();
            }
        }
        return 0;
    }

    void closeBox() {
        if (auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget())) {
            actions.back().boxes << box->text();
            box->button(QMessageBox::Ok)->click();
        }
    }

    std::size_t failingCall;
    bool isCutShort;
    QTimer user;
    std::unique_ptr<MainWindow> window;
    std::unique_ptr<VistrelToolTipHelper> helper;
};

// True if the failure need not be reported. Either the program can do without the call, or only a detail is missing in
// the report of another failure.
bool mayBeSilent(const Call &call) {
    const QString path = QString::fromStdString(call.path);
    return !call.hasResult || call.function == "lmLibErase" || call.function == "lmLibGetJson" ||
           path.contains("/CalTabs/") || path.contains("/Result/Error") ||
           (call.function == "lmLibGetType" && path.endsWith("/Command"));
}

}  // namespace

class ProgramFaultTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void everyFailedCallIsReportedOnce_data();
    void everyFailedCallIsReportedOnce();
    void cleanupTestCase();

private:
    SeenSession play(std::size_t failingCall, int code, bool cutShort);
    QString complaintAbout(const SeenSession &seen, std::size_t failingCall, int code) const;

    SeenSession clean;
    std::size_t sessions = 0;
    std::size_t calls = 0;
};

SeenSession ProgramFaultTest::play(std::size_t failingCall, int code, bool cutShort) {
    scripted_lmlib64::loadDefaultScript();
    if (failingCall != 0) {
        scripted_lmlib64::setResult("*", "*", code, static_cast<std::int32_t>(failingCall));
    }
    SeenSession seen;
    {
        Session session(failingCall, cutShort);
        try {
            session.play();
        } catch (const LmLibException &exception) {
            seen.escaped = {exception.itemPath, exception.errorCode};
        }
        seen.actions = session.actions;
        seen.calls = scripted_lmlib64::calls();
        seen.isSlotLeft = scripted_lmlib64::nodeJson("/Execute") != "{}";
    }
    ++sessions;
    calls += seen.calls.size();
    return seen;
}

void ProgramFaultTest::initTestCase() {
    // Without a screen, the toolkit logs many things that it cannot do.
    QLoggingCategory::setFilterRules("default.warning=false");
    clean = play(0, 0, false);
    QVERIFY(!clean.escaped && !clean.isSlotLeft);
    for (const SeenAction &action : clean.actions) {
        const bool showsABox = action.name == "launch the viewer" || action.name == "save where no file can be written";
        QVERIFY2(action.boxes.size() == (showsABox ? 1 : 0), qPrintable(action.name));
        QVERIFY2(action.hasPicture, qPrintable(action.name));
    }
}

void ProgramFaultTest::everyFailedCallIsReportedOnce_data() {
    QTest::addColumn<int>("code");
    for (const int code : {FAILURE_CODES}) {
        QTest::addRow("code %d", code) << code;
    }
}

void ProgramFaultTest::everyFailedCallIsReportedOnce() {
    QFETCH(int, code);
    const SeenAction &lastButOne = clean.actions[clean.actions.size() - 2];
    for (std::size_t number = 1; number <= lastButOne.callsSoFar; ++number) {
        // Only the sessions with the code 7 are played to the end, because what follows a failure does not depend on
        // the code.
        const SeenSession seen = play(number, code, code != 7);
        const QString complaint = complaintAbout(seen, number, code);
        const Call &call = seen.calls[number - 1];
        QVERIFY2(complaint.isEmpty(),
                 qPrintable(QString("call %1, %2 %3: %4")
                                .arg(QString::number(number), QString::fromStdString(call.function),
                                     QString::fromStdString(call.path), complaint)));
    }
}

// Returns what is wrong with the only report of a failed call; empty if nothing is wrong.
QString complaintAboutReport(const QString &report, const Call &call, int code) {
    QString path = QString::fromStdString(call.path);
    path.remove(QRegularExpression("/Command$"));  // the report names the slot, not its child "Command"
    const bool isRight = code == LmLibResultExecutionFailed
                             ? report.startsWith(commandReport)
                             : report == accessReport + path + ": \n\t" + QString::fromStdString(errorName(code));
    return isRight ? "" : "the report says \"" + report + "\"";
}

QString complaintAboutAction(const SeenAction &seen, const SeenAction &clean, const Call *failedCall, int code) {
    const bool isOwnFailure = !clean.boxes.isEmpty();  // the action shows a box even if no call fails
    const bool mustReport = failedCall == nullptr ? isOwnFailure : !mayBeSilent(*failedCall);
    const bool mayReport = isOwnFailure || failedCall != nullptr;
    if (seen.boxes.size() > (mayReport ? 1 : 0) || (mustReport && seen.boxes.isEmpty())) {
        return QString("%1 boxes").arg(seen.boxes.size());
    }
    const bool isReported = !seen.boxes.isEmpty() && !isOwnFailure;
    // This action switches one button off and another one on; each of the two causes a new picture.
    const bool drawsTwice = seen.name == "encode a Halcon offset";
    const bool hasPicture = seen.hasPicture || (isReported && seen.name == "start");
    if (!hasPicture || seen.pictureKept != (clean.pictureKept || (isReported && !drawsTwice))) {
        return "the picture is not as it should be";
    }
    return isReported ? complaintAboutReport(seen.boxes.front(), *failedCall, code) : "";
}

// Returns what is wrong with a session in which a call failed; empty if nothing is wrong.
QString ProgramFaultTest::complaintAbout(const SeenSession &seen, std::size_t failingCall, int code) const {
    const Call &call = seen.calls[failingCall - 1];
    if (seen.isSlotLeft && call.function != "lmLibErase") {
        return "a slot is left";
    }
    if (seen.escaped) {
        // If the catalogue cannot be read, there is no window, and an exception reports the failed command.
        const bool isCatalogues = seen.actions.size() == 1 && seen.escaped->first.find("/Execute") == 0;
        return isCatalogues && seen.escaped->second == code ? "" : "an exception escapes";
    }
    std::size_t callsBefore = 0;
    for (std::size_t i = 0; i < seen.actions.size(); ++i) {
        const SeenAction &action = seen.actions[i];
        const bool isConcerned = callsBefore < failingCall && failingCall <= action.callsSoFar;
        const bool isLast = action.name == clean.actions.back().name;
        const QString complaint = complaintAboutAction(action, isLast ? clean.actions.back() : clean.actions[i],
                                                       isConcerned ? &call : nullptr, code);
        if (!complaint.isEmpty()) {
            return action.name + ": " + complaint;
        }
        callsBefore = action.callsSoFar;
    }
    return "";
}

void ProgramFaultTest::cleanupTestCase() {
    qInfo("%zu sessions with %zu library calls; a session has %zu calls", sessions, calls, clean.calls.size());
}

QTEST_MAIN(ProgramFaultTest)
#include "program_fault_test.moc"
