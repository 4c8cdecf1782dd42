// Starts the viewer as a process of its own, which continues when this process ends. Each system has its own source
// file.
#pragma once

class QString;

// The file must exist, and QFileInfo must have found it executable. On POSIX systems, QFileInfo has checked the file's
// permission, so a start that still fails is intentionally not reported. On Windows, QFileInfo has checked only the
// file name extension, so starting a file that is not a program can fail; a message box reports this failure.
void startViewer(const QString &program);
