#include "tests/faults/program_session.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QDoubleSpinBox>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QGraphicsPixmapItem>
#include <QGraphicsView>
#include <QHelpEvent>
#include <QMessageBox>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QTabWidget>
#include <QTimer>
#include <functional>
#include <memory>

#include "generator/main_window.h"
#include "lmlib/lm_lib_exception.h"
#include "lmlib/result_check.h"
#include "tooltips/custom_tool_tip.h"
#include "tooltips/tool_tip_helper.h"

const char *const ProgramSession::start = "start";
const char *const ProgramSession::anotherPlate = "choose another official plate";
const char *const ProgramSession::saveThatFails = "save to a missing folder";
const char *const ProgramSession::launch = "launch the viewer";

namespace {

const QByteArray oldContents("the file of an earlier save");

// The name that the file dialog returns.
QString chosenFileName;

// Closes every message box with its Ok, after a note of it.
class User {
public:
    User() {
        QObject::connect(&timer, &QTimer::timeout, [this] { answer(QApplication::activeModalWidget()); });
        timer.start(0);
    }

    std::vector<SeenBox> boxes;

private:
    void answer(QWidget *dialog) {
        if (auto *box = qobject_cast<QMessageBox *>(dialog)) {
            boxes.push_back({box->windowTitle(), box->text(), box->detailedText()});
            box->button(QMessageBox::Ok)->click();
        }
    }

    QTimer timer;
};

// The window and the tool tips' helper, as the program holds them, and what is done with them.
class RunningProgram {
public:
    RunningProgram(User &sittingUser, bool cutShort) : user(sittingUser), isCutShort(cutShort) {
        qApp->installEventFilter(&helper);
        QApplication::setActiveWindow(&window);
        window.show();
    }

    const std::vector<SeenAction> &actions() const { return seen; }

    void perform(const QString &name, const std::function<void()> &action) {
        if (isOver()) {
            return;
        }
        SeenAction now;
        now.name = name;
        const qint64 before = picture();
        user.boxes.clear();
        try {
            action();
        } catch (...) {
            now.exceptionEscaped = true;
        }
        seen.push_back(completed(now, before));
    }

    // The boxes that the start has shown are seen as those of an action.
    void noteStart() {
        SeenAction started;
        started.name = ProgramSession::start;
        seen.push_back(completed(started, picture()));
    }

    void save(const QString &name, const QString &fileName) {
        perform(name, [&] {
            chosenFileName = fileName;
            button("saveBtn")->click();
        });
        if (seen.back().name == name) {
            seen.back().file = stateOf(fileName);
        }
    }

    // A change after all else.
    const SeenAction &changeLater() {
        isCutShort = false;
        perform("later change", [&] { choosePage(find<QTabWidget>("patternType")->currentIndex() == 2 ? 1 : 2); });
        return seen.back();
    }

    template <class Widget>
    Widget *find(const char *name) const {
        return window.findChild<Widget *>(name);
    }
    QAbstractButton *button(const char *name) const { return find<QAbstractButton>(name); }
    void choosePage(int page) const { find<QTabWidget>("patternType")->setCurrentIndex(page); }

private:
    bool isOver() const { return isCutShort && faulting_lmlib64::failedCall().has_value(); }

    SeenAction completed(SeenAction action, qint64 pictureBefore) const {
        action.boxes = user.boxes;
        action.lastCall = faulting_lmlib64::callCount();
        action.pictureKept = picture() == pictureBefore;
        action.hasPicture = picture() != 0;
        return action;
    }

    // Which picture the preview shows; 0 for none.
    qint64 picture() const {
        for (QGraphicsItem *item : find<QGraphicsView>("preview")->scene()->items()) {
            if (auto *pixmap = qgraphicsitem_cast<QGraphicsPixmapItem *>(item)) {
                return pixmap->pixmap().cacheKey();
            }
        }
        return 0;
    }

    static FileState stateOf(const QString &fileName) {
        QFile file(fileName);
        if (!file.open(QIODevice::ReadOnly)) {
            return FileState::NoneConcerned;
        }
        const QByteArray contents = file.readAll();
        if (contents == oldContents) {
            return FileState::AsBefore;
        }
        const bool whole = fileName.endsWith(".pdf") ? contents.startsWith("%PDF-") && contents.endsWith("%%EOF\n")
                                                     : contents.startsWith('{') && contents.endsWith("}\n");
        return whole ? FileState::Written : FileState::Damaged;
    }

    User &user;
    bool isCutShort;
    MainWindow window;
    VistrelToolTipHelper helper;
    std::vector<SeenAction> seen;
};

void changeEveryPage(RunningProgram &program) {
    program.perform(ProgramSession::anotherPlate,
                    [&] { program.find<QComboBox>("officialPattern")->setCurrentIndex(3); });
    program.perform("go to Single", [&] { program.choosePage(1); });
    program.perform("change Single", [&] { program.find<QComboBox>("singleThickness")->setCurrentIndex(2); });
    program.perform("go to Flexible", [&] { program.choosePage(2); });
    program.perform("change Flexible", [&] { program.find<QSpinBox>("flexibleWidth")->stepUp(); });
    program.perform("go to Halcon", [&] { program.choosePage(4); });
    program.perform("change Halcon", [&] { program.find<QDoubleSpinBox>("halconOuterSize")->stepUp(); });
    // The button that goes off and the button that goes on each draw a picture.
    program.perform("encode a Halcon offset", [&] { program.button("halconEncodeOffset")->click(); });
    program.perform("go to Assembly", [&] { program.choosePage(3); });
    program.perform("change Assembly", [&] { program.find<QSpinBox>("assemblyNumberOfPatterns")->setValue(3); });
}

void writeOldFile(const QString &fileName) {
    QFile file(fileName);
    if (!file.open(QIODevice::WriteOnly) || file.write(oldContents) != oldContents.size()) {
        qFatal("%s cannot be written", qPrintable(fileName));
    }
}

void showToolTip(RunningProgram &program) {
    QWidget *widget = program.button("calibrateBtn");
    QHelpEvent event(QEvent::ToolTip, QPoint(1, 1), widget->mapToGlobal(QPoint(1, 1)));
    QApplication::sendEvent(widget, &event);
    if (!QCustomToolTip::isVisible()) {
        qFatal("There is no tool tip");
    }
}

SeenEnd endOf(const LmLibException &exception) {
    return {exception.itemPath, exception.errorCode};
}

std::optional<SeenEnd> finalize() {
    std::int32_t result = 0;
    lmLibFinalize(&result);
    try {
        checkResult("", result);
    } catch (const LmLibException &exception) {
        return endOf(exception);
    }
    return std::nullopt;
}

}  // namespace

// In place of the toolkit's, which takes longer to open than all the rest of a session and makes no library call.
// The tests of the save action answer the real one.
QString QFileDialog::getSaveFileName(QWidget * /*parent*/, const QString & /*caption*/, const QString & /*directory*/,
                                     const QString & /*filter*/, QString * /*selectedFilter*/, Options /*options*/) {
    return chosenFileName;
}

namespace {

// A file system in memory, where there is one: the saves flush the file and its folder to the disk.
QString folderTemplate() {
    const QString memory("/dev/shm");
    return (QFileInfo(memory).isWritable() ? memory : QDir::tempPath()) + "/program_session-XXXXXX";
}

void play(const ProgramSession &session, RunningProgram &program) {
    program.noteStart();
    changeEveryPage(program);
    program.save("save an assembly", session.file("assembly.pdf"));
    program.perform("go back to Single", [&] { program.choosePage(1); });
    program.save("save as PDF", session.file("pattern.pdf"));
    program.save("save as JSON", session.file("pattern.json"));
    program.save(ProgramSession::saveThatFails, session.file("missing/pattern.pdf"));
    program.perform(ProgramSession::launch, [&] { program.button("calibrateBtn")->click(); });
    program.perform("tool tip", [&] { showToolTip(program); });
}

}  // namespace

ProgramSession::ProgramSession() : folder(folderTemplate()) {
    if (!folder.isValid()) {
        qFatal("There is no temporary folder");
    }
}

SeenSession ProgramSession::run(const faulting_lmlib64::Fault &fault, bool cutShort) {
    const QStringList names{"assembly.pdf", "pattern.pdf", "pattern.json"};
    for (const QString &name : names) {
        writeOldFile(file(name));
    }
    SeenSession session;
    User user;
    std::unique_ptr<RunningProgram> program;
    faulting_lmlib64::realFinalize();
    faulting_lmlib64::setFault(fault);
    try {
        program = std::make_unique<RunningProgram>(user, cutShort);
    } catch (const LmLibException &exception) {
        session.failedStart = endOf(exception);
    }
    if (program != nullptr) {
        play(*this, *program);
        session.callsBeforeLaterChange = faulting_lmlib64::callCount();
        const SeenAction &later = program->changeLater();
        session.laterChangeWorked = later.boxes.empty() && !later.pictureKept && later.hasPicture;
        session.actions = program->actions();
        session.actions.pop_back();
    }
    session.slotsLeft = faulting_lmlib64::realChildCount("/Execute");
    if (program != nullptr) {
        session.failedFinalization = finalize();
    }
    program.reset();
    session.calls = faulting_lmlib64::callCount();
    session.failedCall = faulting_lmlib64::failedCall();
    const auto entries = QDir(folder.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    session.otherFiles = entries.size() - names.size();
    return session;
}
