// Every library call of a session fails once, with each of several codes: the user gets one clear message, keeps
// the window, the picture and the file, and goes on.
#include <QElapsedTimer>
#include <QLoggingCategory>
#include <QtTest>

#include "lmlib/error_codes.h"
#include "tests/faults/program_session.h"

using faulting_lmlib64::FailedCall;
using faulting_lmlib64::Fault;

namespace {

// What becomes of a failed call.
enum class Effect {
    None,       // its answer is as good as the true one, or its failure is none of the user's business
    Report,     // one report, and the action ends
    NoFailure,  // the command's own failure is not seen
    CutReport,  // the report of the command's own failure says less
    BadPlate,   // the command fails for want of a value of the plate
};

bool endsIn(const FailedCall &call, const char *ending) {
    return QByteArray::fromStdString(call.path).endsWith(ending);
}

// The catalogue's optional values have defaults: a failed read gives one, and so does a node that is not there.
bool isCatalogueValue(const FailedCall &call) {
    return call.path.find("/CalTabs/") != std::string::npos && !endsIn(call, "/Name");
}

Effect effectOf(const FailedCall &call, std::int32_t code, bool commandFails) {
    const bool isText = call.function == "lmLibGetString";
    if (!call.hasResult || call.function == "lmLibErase") {
        return Effect::None;
    }
    if (call.function == "lmLibGetJson" || (isText && call.path.find("/Result/E") != std::string::npos)) {
        return Effect::CutReport;
    }
    if (call.function == "lmLibGetType") {
        const bool tellsNothing =
            endsIn(call, "/Result/ErrorSymbol") || (endsIn(call, "/Command") && code == LmLibResultItemInexistent);
        if (tellsNothing) {
            return commandFails ? Effect::NoFailure : Effect::None;
        }
        // Asked first whether it is there, then of which type it is.
        return isCatalogueValue(call) && call.earlierCalls == 0 && code == LmLibResultItemInexistent ? Effect::None
                                                                                                     : Effect::Report;
    }
    return isCatalogueValue(call) && (isText || call.function == "lmLibGetDouble") ? Effect::None : Effect::Report;
}

// Whether the action draws the plate whose value the failed call has replaced by its default: no plate can be drawn
// with that.
bool drawsBadPlate(const FailedCall &call, const SeenAction &action) {
    const bool isFirst = action.name == ProgramSession::start;
    const bool isOther = action.name == ProgramSession::anotherPlate;
    return isCatalogueValue(call) && (isFirst || isOther) &&
           call.path.find(isFirst ? "/\\8/" : "/\\5/") != std::string::npos;
}

// The item that the exception for the failed call names: a command is known by its slot.
QString itemPath(const FailedCall &call) {
    QString path = QString::fromStdString(call.path);
    if (path.endsWith("/Command")) {
        path.chop(static_cast<int>(qstrlen("/Command")));
    }
    return path;
}

// Whether the call comes after the command's run.
bool hasRun(const FailedCall &call) {
    return call.function == "lmLibWaitForType" || call.function == "lmLibGetType";
}

QString accessMessage(const QString &path, std::int32_t code) {
    return QString("An LmLib error occurred when accessing the item:\n%1: \n\t%2")
        .arg(path, QString::fromStdString(errorName(code)));
}

const QString commandMessage = "An LmLib error occurred while executing the command:\n";

}  // namespace

class ProgramFaultTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void everyFailedCallIsReportedOnce_data();
    void everyFailedCallIsReportedOnce();
    void failedFinalizationEndsTheProcess();
    void cleanupTestCase();

private:
    SeenSession play(const Fault &fault, bool cutShort);
    QString fullCommandMessage() const;
    QString expectedMessage(const FailedCall &call, std::int32_t code, bool commandFails) const;
    QString faultOf(const SeenSession &seen, const Fault &fault) const;
    QString faultOfAction(const SeenAction &seen, const SeenAction &clean, const SeenSession &session,
                          const Fault &fault, bool isConcerned) const;
    QString faultOfBox(const SeenBox &box, const FailedCall &call, const Fault &fault, Effect effect,
                       bool commandFails) const;

    ProgramSession session;
    SeenSession clean;
    std::int64_t runs = 0;
    std::int64_t calls = 0;
    QElapsedTimer elapsed;
};

SeenSession ProgramFaultTest::play(const Fault &fault, bool cutShort) {
    SeenSession seen = session.run(fault, cutShort);
    ++runs;
    calls += seen.calls;
    return seen;
}

QString ProgramFaultTest::fullCommandMessage() const {
    return commandMessage + "GenerateCalibrationPattern: \nFileNotWritten: The file \"" +
           session.file("missing/pattern.pdf") + "\" could not be written: No such file or directory.";
}

void ProgramFaultTest::initTestCase() {
    // The platform without a screen says of many things that it cannot do them.
    QLoggingCategory::setFilterRules("default.warning=false");
    elapsed.start();
    clean = play({}, false);
    QVERIFY(!clean.failedStart && !clean.failedFinalization);
    QCOMPARE(clean.slotsLeft, 0);
    QVERIFY(clean.laterChangeWorked);
    for (const SeenAction &action : clean.actions) {
        const bool fails = action.name == ProgramSession::saveThatFails;
        const bool showsABox = fails || action.name == ProgramSession::launch;
        QVERIFY2(action.boxes.size() == (showsABox ? 1U : 0U), qPrintable(action.name));
        QVERIFY2(action.hasPicture && !action.exceptionEscaped, qPrintable(action.name));
        if (fails) {
            QCOMPARE(action.boxes.front().text, fullCommandMessage());
        } else if (action.name.startsWith("save")) {
            QVERIFY2(action.file == FileState::Written, qPrintable(action.name));
        }
    }
}

void ProgramFaultTest::everyFailedCallIsReportedOnce_data() {
    QTest::addColumn<int>("code");
    QTest::addColumn<bool>("alsoJson");
    for (const int code : {3, 7, 13, 17, 99}) {
        QTest::addRow("code %d", code) << code << false;
    }
    QTest::newRow("code 7, and no details") << 7 << true;
    QTest::newRow("code 17, and no details") << 17 << true;
}

void ProgramFaultTest::everyFailedCallIsReportedOnce() {
    QFETCH(int, code);
    QFETCH(bool, alsoJson);
    for (std::int64_t call = 1; call <= clean.callsBeforeLaterChange; ++call) {
        // One code's sessions are played to their end; what follows a failure does not depend on the code.
        const Fault fault{call, code, alsoJson};
        const SeenSession seen = play(fault, code != 7 || alsoJson);
        const QString wrong = faultOf(seen, fault);
        QVERIFY2(wrong.isEmpty(),
                 qPrintable(QString("call %1, %2 %3: %4")
                                .arg(QString::number(call), QString::fromStdString(seen.failedCall->function),
                                     QString::fromStdString(seen.failedCall->path), wrong)));
    }
}

// What is wrong with a session in which a call failed; empty where all is as it should be.
QString ProgramFaultTest::faultOf(const SeenSession &seen, const Fault &fault) const {
    const FailedCall &call = *seen.failedCall;
    if (seen.failedStart) {
        const bool isCatalogues = seen.failedStart->itemPath.find("/Execute") == 0 && seen.actions.empty();
        const bool isRight = itemPath(call) == QString::fromStdString(seen.failedStart->itemPath) &&
                             seen.failedStart->errorCode == fault.code && isCatalogues;
        return isRight && seen.slotsLeft == 0 ? QString() : "the start fails otherwise";
    }
    std::int64_t firstCall = 1;
    for (std::size_t i = 0; i < seen.actions.size(); ++i) {
        const bool isConcerned = firstCall <= fault.call && fault.call <= seen.actions[i].lastCall;
        const QString wrong = faultOfAction(seen.actions[i], clean.actions[i], seen, fault, isConcerned);
        if (!wrong.isEmpty()) {
            return seen.actions[i].name + ": " + wrong;
        }
        firstCall = seen.actions[i].lastCall + 1;
    }
    if (seen.slotsLeft != (call.function == "lmLibErase" ? 1 : 0)) {
        return QString("%1 slots are left").arg(seen.slotsLeft);
    }
    if (seen.otherFiles != 0) {
        return "a file is left";
    }
    return seen.laterChangeWorked && !seen.failedFinalization ? QString() : "the session does not go on";
}

QString ProgramFaultTest::faultOfAction(const SeenAction &seen, const SeenAction &cleanAction,
                                        const SeenSession &faultySession, const Fault &fault, bool isConcerned) const {
    if (seen.exceptionEscaped) {
        return "an exception escapes";
    }
    const FailedCall &call = *faultySession.failedCall;
    const bool commandFails = seen.name == ProgramSession::saveThatFails;
    const Effect effect = drawsBadPlate(call, seen) ? Effect::BadPlate
                          : isConcerned             ? effectOf(call, fault.code, commandFails)
                                                    : Effect::None;
    const bool reports = !commandFails && (effect == Effect::Report || effect == Effect::BadPlate);
    const std::size_t boxes = effect == Effect::NoFailure ? 0 : reports ? 1 : cleanAction.boxes.size();
    if (seen.boxes.size() != boxes) {
        return QString("%1 boxes instead of %2").arg(seen.boxes.size()).arg(boxes);
    }
    const bool isWritten = cleanAction.file == FileState::Written;
    if (isWritten && seen.file != (reports && !hasRun(call) ? FileState::AsBefore : FileState::Written)) {
        return "the file is not as it should be";
    }
    const bool drawsTwice = seen.name == "encode a Halcon offset";
    const bool keepsPicture = cleanAction.pictureKept || (reports && !drawsTwice);
    if (seen.pictureKept != keepsPicture || seen.hasPicture != !(reports && seen.name == ProgramSession::start)) {
        return "the picture is not as it should be";
    }
    if (boxes == 0) {
        return {};
    }
    return faultOfBox(seen.boxes.front(), call, fault, effect, commandFails);
}

QString ProgramFaultTest::faultOfBox(const SeenBox &box, const FailedCall &call, const Fault &fault, Effect effect,
                                     bool commandFails) const {
    if (effect == Effect::BadPlate) {
        return box.text.startsWith(commandMessage + "GenerateCalibrationPattern: \nInvalidParameter")
                   ? QString()
                   : "the report says \"" + box.text + "\"";
    }
    if (effect == Effect::Report || effect == Effect::CutReport || commandFails) {
        const QString message =
            effect == Effect::Report ? expectedMessage(call, fault.code, commandFails) : fullCommandMessage();
        const bool isCut = effect == Effect::CutReport && call.function == "lmLibGetString";
        const bool isRight =
            isCut ? message.startsWith(box.text) && box.text.startsWith(commandMessage) && box.text != message
                  : box.text == message;
        if (!isRight || !box.title.isEmpty()) {
            return "the report says \"" + box.text + "\" instead of \"" + message + "\"";
        }
        const bool noDetails = fault.alsoJson || call.function == "lmLibGetJson";
        const bool hasDetails = box.details.startsWith("Current node value:\n");
        return (noDetails ? box.details == "Unavailable" : hasDetails || box.details == "Unavailable")
                   ? QString()
                   : "the details say " + box.details;
    }
    // The question for the viewer's place is answered with nothing where it fails.
    const bool isUnanswered = call.path.find("/LmView") != std::string::npos;
    const bool isRight = box.title == "Error" && box.text.endsWith("/LmView does not exist") != isUnanswered &&
                         box.text.endsWith(" does not exist");
    return isRight ? QString() : "the viewer's box says " + box.text;
}

QString ProgramFaultTest::expectedMessage(const FailedCall &call, std::int32_t code, bool commandFails) const {
    if (code != LmLibResultExecutionFailed) {
        return accessMessage(itemPath(call), code);
    }
    // The command's own failure is there to be told where the command has run.
    return commandFails && hasRun(call) ? fullCommandMessage() : commandMessage;
}

void ProgramFaultTest::failedFinalizationEndsTheProcess() {
    for (const int code : {3, 7, 13, 17, 99}) {
        const SeenSession seen = play({clean.calls, code, false}, false);
        QCOMPARE(QString::fromStdString(seen.failedCall->function), QString("lmLibFinalize"));
        QVERIFY(seen.failedFinalization.has_value());
        QCOMPARE(seen.failedFinalization->itemPath, std::string());
        QCOMPARE(seen.failedFinalization->errorCode, code);
    }
}

void ProgramFaultTest::cleanupTestCase() {
    qInfo("%lld sessions with %lld library calls in %lld s; a session has %lld calls", static_cast<long long>(runs),
          static_cast<long long>(calls), static_cast<long long>(elapsed.elapsed() / 1000),
          static_cast<long long>(clean.calls));
}

QTEST_MAIN(ProgramFaultTest)
#include "program_fault_test.moc"
