// Starts the viewer as a process of its own, which continues when this process ends. Each system has its own source
// file.
#pragma once

class QString;

// The file must exist, and QFileInfo must have found it executable. On POSIX systems, QFileInfo checks the file's
// permission. If the start fails nevertheless, this is intentionally not reported. On Windows, QFileInfo checks only
// the file name extension. If the file is not a program after all, the start fails and a message box says so.
void startViewer(const QString &program);
