// Drops files onto a place of the screen, with the mouse, for scripts that drive programs under wine:
//   drop_files X Y FILE...
// X and Y are in pixels. Ends with 0 if the program there took the files. This tool moves the mouse, so run it
// on a desktop of its own (tests/with_desktop.sh).
#include <QApplication>
#include <QFileInfo>

#include "tests/end_to_end/desktop.h"
#include "tests/end_to_end/file_drag.h"

int main(int argumentCount, char **arguments) {
    const QApplication application(argumentCount, arguments);
    const QStringList given = QApplication::arguments();
    if (given.size() < 4) {
        return 2;
    }
    QStringList files;
    for (const QString &file : given.mid(3)) {
        files << QFileInfo(file).absoluteFilePath();
    }
    const Desktop desktop{};
    FileDrag drag(desktop);
    return drag.drop(files, QPoint(given[1].toInt(), given[2].toInt())) ? 0 : 1;
}
