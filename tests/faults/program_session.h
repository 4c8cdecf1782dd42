// One session with the program as a user has it, played on the real window with the real library behind
// faulting_lmlib64.h, and what was seen of it: start, every page with a change on it, a save of each type, the
// save of an assembly, a save that fails, the way to the viewer, a tool tip, and the end.
#pragma once

#include <QString>
#include <QTemporaryDir>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tests/faults/faulting_lmlib64.h"

// A message box, closed as soon as it was open.
struct SeenBox {
    QString title;
    QString text;
    QString details;
};

enum class FileState { NoneConcerned, AsBefore, Written, Damaged };

struct SeenAction {
    QString name;
    std::vector<SeenBox> boxes;
    std::int64_t lastCall = 0;
    bool exceptionEscaped = false;
    bool pictureKept = true;  // the one shown before the action is shown after it
    bool hasPicture = false;
    FileState file = FileState::NoneConcerned;
};

// What an exception that ends the process says.
struct SeenEnd {
    std::string itemPath;
    std::int32_t errorCode = 0;
};

struct SeenSession {
    std::vector<SeenAction> actions;  // until the process ends
    std::optional<SeenEnd> failedStart;
    std::optional<SeenEnd> failedFinalization;
    bool laterChangeWorked = false;  // an update without a box, and with a new picture
    std::int32_t slotsLeft = 0;      // before the finalisation
    int otherFiles = 0;              // in the folder of the saves
    std::int64_t callsBeforeLaterChange = 0;
    std::int64_t calls = 0;  // the last is the finalisation
    std::optional<faulting_lmlib64::FailedCall> failedCall;
};

class ProgramSession {
public:
    ProgramSession();

    // Plays the session from the start of the program to its end. Where it is cut short, the action in which the
    // call failed is followed only by the later change and the end.
    SeenSession run(const faulting_lmlib64::Fault &fault, bool cutShort);

    QString file(const QString &name) const { return folder.filePath(name); }

    // The two actions that draw an official plate, the catalogue's last and its fourth from the end, and the two that
    // show a box without any fault: the file is to go where no folder is, and the viewer is not there.
    static const char *const start;
    static const char *const anotherPlate;
    static const char *const saveThatFails;
    static const char *const launch;

private:
    QTemporaryDir folder;
};
