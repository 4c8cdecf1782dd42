// Starts the viewer as a process of its own, which outlives this one. One source file per system.
#pragma once

class QString;

// The file must exist and be executable as far as QFileInfo can tell. On POSIX systems that is the file's permission,
// so a start that fails nevertheless is intentionally not reported. On Windows it is only the ending of its name, so a
// file that is no program is noticed here, and a message box says so.
void startViewer(const QString &program);
