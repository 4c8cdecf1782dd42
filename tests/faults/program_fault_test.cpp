// One session with the real window and library: start, every page with a change on it, saves, the way to the viewer, a
// tool tip, and the end. It is played again for every library call that it makes, and that call fails: the user gets
// one report of it, keeps the window, the picture and the file, and goes on.
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QDoubleSpinBox>
#include <QFile>
#include <QFileDialog>
#include <QGraphicsPixmapItem>
#include <QGraphicsView>
#include <QHelpEvent>
#include <QLoggingCategory>
#include <QMessageBox>
#include <QPushButton>
#include <QSpinBox>
#include <QTabWidget>
#include <QTemporaryDir>
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
#include "tests/faults/faulting_lmlib64.h"
#include "tooltips/custom_tool_tip.h"
#include "tooltips/tool_tip_helper.h"

using faulting_lmlib64::FailedCall;

namespace {

const QByteArray oldContents("the file of an earlier save");
const QString accessReport("An LmLib error occurred when accessing the item:\n");
const QString commandReport("An LmLib error occurred while executing the command:\n");

QString chosenFileName;  // what the file dialog returns

}  // namespace

// In place of the toolkit's, which takes longer to open than all the rest of a session and makes no library call.
// The tests of the save action answer the real one.
QString QFileDialog::getSaveFileName(QWidget * /*parent*/, const QString & /*caption*/, const QString & /*directory*/,
                                     const QString & /*filter*/, QString * /*selectedFilter*/, Options /*options*/) {
    return chosenFileName;
}

namespace {

struct SeenAction {
    QString name;
    std::int64_t lastCall = 0;
    QStringList boxes;  // their texts
    bool pictureKept = true;
    bool hasPicture = false;
    QByteArray file;  // its contents afterwards, where the action is a save
};

struct SeenSession {
    std::vector<SeenAction> actions;  // the last is a change after all else
    // What an exception that escaped says. It is not kept, as it holds its command's slot.
    std::optional<std::pair<std::string, int>> escaped;
    std::int64_t calls = 0;
    std::int32_t slotsLeft = 0;
    int otherFiles = 0;
    FailedCall failedCall;
};

// Plays one session. Where it is cut short, the action in which a call failed is followed only by the last change.
class Session {
public:
    Session(const QTemporaryDir &filesFolder, bool cutShort) : folder(filesFolder), isCutShort(cutShort) {
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
        perform("choose another official plate", [this] { find<QComboBox>("officialPattern")->setCurrentIndex(3); });
        perform("go to Single", [this] { choosePage(1); });
        perform("change Single", [this] { find<QComboBox>("singleThickness")->setCurrentIndex(2); });
        perform("go to Flexible", [this] { choosePage(2); });
        perform("change Flexible", [this] { find<QSpinBox>("flexibleWidth")->stepUp(); });
        perform("go to Halcon", [this] { choosePage(4); });
        perform("change Halcon", [this] { find<QDoubleSpinBox>("halconOuterSize")->stepUp(); });
        perform("encode a Halcon offset", [this] { find<QAbstractButton>("halconEncodeOffset")->click(); });
        perform("go to Assembly", [this] { choosePage(3); });
        perform("change Assembly", [this] { find<QSpinBox>("assemblyNumberOfPatterns")->setValue(3); });
        save("assembly.pdf");
        perform("go back to Single", [this] { choosePage(1); });
        save("pattern.pdf");
        save("pattern.json");
        save("missing/pattern.pdf");
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
        if (isCutShort && faulting_lmlib64::failedCall()) {
            return;
        }
        const qint64 before = picture();
        actions.emplace_back();
        actions.back().name = name;
        action();
        actions.back().lastCall = faulting_lmlib64::callCount();
        actions.back().pictureKept = picture() == before;
        actions.back().hasPicture = picture() != 0;
    }

    void save(const char *fileName) {
        const QString path = folder.filePath(fileName);
        perform(QString("save ") + fileName, [&] {
            chosenFileName = path;
            find<QAbstractButton>("saveBtn")->click();
            QFile file(path);
            actions.back().file = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
        });
    }

    // Which picture the preview shows; 0 for none.
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

    const QTemporaryDir &folder;
    bool isCutShort;
    QTimer user;
    std::unique_ptr<MainWindow> window;
    std::unique_ptr<VistrelToolTipHelper> helper;
};

bool isWhole(const QByteArray &file) {
    return (file.startsWith("%PDF-") && file.endsWith("%%EOF\n")) || (file.startsWith('{') && file.endsWith("}\n"));
}

// The catalogue's optional values have defaults: where one cannot be read, an action that draws its plate may fail.
bool isCatalogueValue(const FailedCall &call) {
    return call.path.find("/CalTabs/") != std::string::npos;
}

// Whether the user need not hear of the failure: what the call was for is done without it, or said less well.
bool mayBeSilent(const FailedCall &call) {
    const QString path = QString::fromStdString(call.path);
    return !call.hasResult || call.function == "lmLibErase" || call.function == "lmLibGetJson" ||
           isCatalogueValue(call) || path.contains("/Result/Error") ||
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
    SeenSession play(std::int64_t failingCall, int code, bool cutShort);
    QString complaintAbout(const SeenSession &seen, std::int64_t failingCall, int code) const;
    QString complaintAbout(const SeenAction &seen, const SeenAction &cleanAction, const FailedCall &call, int code,
                           bool isConcerned) const;

    // In memory, where there is such a file system: every save flushes to the disk.
    QTemporaryDir folder{(QFileInfo("/dev/shm").isWritable() ? "/dev/shm" : QDir::tempPath()) + "/faults-XXXXXX"};
    SeenSession clean;
    std::int64_t sessions = 0;
    std::int64_t calls = 0;
};

SeenSession ProgramFaultTest::play(std::int64_t failingCall, int code, bool cutShort) {
    const QStringList names{"assembly.pdf", "pattern.pdf", "pattern.json"};
    for (const QString &name : names) {
        QFile file(folder.filePath(name));
        file.open(QIODevice::WriteOnly);
        file.write(oldContents);
    }
    faulting_lmlib64::realFinalize();
    faulting_lmlib64::setFault({failingCall, code});
    SeenSession seen;
    {
        Session session(folder, cutShort);
        try {
            session.play();
        } catch (const LmLibException &exception) {
            seen.escaped = {exception.itemPath, exception.errorCode};
        }
        seen.actions = session.actions;
        seen.calls = faulting_lmlib64::callCount();
        seen.slotsLeft = faulting_lmlib64::realChildCount("/Execute");
    }
    seen.failedCall = faulting_lmlib64::failedCall().value_or(FailedCall());
    const auto entries = QDir(folder.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    seen.otherFiles = entries.size() - names.size();
    ++sessions;
    calls += seen.calls;
    return seen;
}

void ProgramFaultTest::initTestCase() {
    // The platform without a screen logs many things that it cannot do.
    QLoggingCategory::setFilterRules("default.warning=false");
    clean = play(0, 0, false);
    QVERIFY(!clean.escaped);
    QCOMPARE(clean.slotsLeft, 0);
    for (const SeenAction &action : clean.actions) {
        const bool showsABox = action.name == "launch the viewer" || action.name == "save missing/pattern.pdf";
        QVERIFY2(action.boxes.size() == (showsABox ? 1 : 0), qPrintable(action.name));
        QVERIFY2(action.hasPicture, qPrintable(action.name));
        QVERIFY2(isWhole(action.file) == (action.name.startsWith("save") && !showsABox), qPrintable(action.name));
    }
}

void ProgramFaultTest::everyFailedCallIsReportedOnce_data() {
    QTest::addColumn<int>("code");
    for (const int code : {3, 7, 13, 17, 99}) {
        QTest::addRow("code %d", code) << code;
    }
}

void ProgramFaultTest::everyFailedCallIsReportedOnce() {
    QFETCH(int, code);
    const SeenAction &beforeLast = clean.actions[clean.actions.size() - 2];
    for (std::int64_t call = 1; call <= beforeLast.lastCall; ++call) {
        // One code's sessions are played to their end; what follows a failure does not depend on the code.
        const SeenSession seen = play(call, code, code != 7);
        const QString complaint = complaintAbout(seen, call, code);
        QVERIFY2(complaint.isEmpty(),
                 qPrintable(QString("call %1, %2 %3: %4")
                                .arg(QString::number(call), QString::fromStdString(seen.failedCall.function),
                                     QString::fromStdString(seen.failedCall.path), complaint)));
    }
}

// What is wrong with a session in which a call failed; empty where all is as it should be.
QString ProgramFaultTest::complaintAbout(const SeenSession &seen, std::int64_t failingCall, int code) const {
    if (seen.escaped) {
        // Without the catalogue there is no window.
        const bool isCatalogues = seen.actions.size() == 1 && seen.escaped->first.find("/Execute") == 0;
        return isCatalogues && seen.escaped->second == code && seen.slotsLeft == 0 ? "" : "an exception escapes";
    }
    std::int64_t firstCall = 1;
    for (std::size_t i = 0; i < seen.actions.size(); ++i) {
        const SeenAction &action = seen.actions[i];
        const bool isLater = action.name == clean.actions.back().name;
        const bool isConcerned = firstCall <= failingCall && failingCall <= action.lastCall;
        const QString complaint = complaintAbout(action, isLater ? clean.actions.back() : clean.actions[i],
                                                 seen.failedCall, code, isConcerned);
        if (!complaint.isEmpty()) {
            return action.name + ": " + complaint;
        }
        firstCall = action.lastCall + 1;
    }
    if (seen.slotsLeft != (seen.failedCall.function == "lmLibErase" ? 1 : 0)) {
        return QString("%1 slots are left").arg(seen.slotsLeft);
    }
    return seen.otherFiles == 0 ? "" : "a file is left";
}

QString ProgramFaultTest::complaintAbout(const SeenAction &seen, const SeenAction &cleanAction, const FailedCall &call,
                                         int code, bool isConcerned) const {
    const bool isOwnFailure = cleanAction.boxes.size() == 1;  // shown without any fault, in a text of its own
    const bool mayReport = isConcerned || isCatalogueValue(call);
    const bool mustReport = isConcerned && !mayBeSilent(call);
    const int boxes = seen.boxes.size();
    if (boxes > 1 || (boxes == 0 && (mustReport || (isOwnFailure && !isConcerned))) ||
        (boxes == 1 && !mayReport && !isOwnFailure)) {
        return QString("%1 boxes").arg(boxes);
    }
    const bool isReported = boxes == 1 && !isOwnFailure;
    if (isReported && !isCatalogueValue(call)) {
        const QString report = seen.boxes.front();
        QString path = QString::fromStdString(call.path);
        path.remove(QRegularExpression("/Command$"));  // a command is known by its slot
        const bool saysWhat = report == accessReport + path + ": \n\t" + QString::fromStdString(errorName(code));
        if (!(code == LmLibResultExecutionFailed ? report.startsWith(commandReport) : saysWhat)) {
            return "the report says \"" + report + "\"";
        }
    }
    if (!(isWhole(seen.file) == isWhole(cleanAction.file) || (isReported && seen.file == oldContents))) {
        return "the file is not as it should be";
    }
    // The button that goes off and the button that goes on each draw a picture.
    const bool drawsTwice = seen.name == "encode a Halcon offset";
    const bool hasPicture = seen.hasPicture || (isReported && seen.name == "start");
    if (!hasPicture || seen.pictureKept != (cleanAction.pictureKept || (isReported && !drawsTwice))) {
        return "the picture is not as it should be";
    }
    return "";
}

void ProgramFaultTest::cleanupTestCase() {
    qInfo("%lld sessions with %lld library calls; a session has %lld calls", static_cast<long long>(sessions),
          static_cast<long long>(calls), static_cast<long long>(clean.calls));
}

QTEST_MAIN(ProgramFaultTest)
#include "program_fault_test.moc"
