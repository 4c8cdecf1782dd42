// Starts the viewer as a process of its own, which continues when this process ends. Each system has its own source
// file.
#pragma once

class QString;

// The file `program` must exist, and QFileInfo must have found it executable. The start may fail nevertheless. On POSIX
// systems, where QFileInfo checks the file's permission, such a failure is intentionally not reported. On Windows,
// QFileInfo checks only the file name extension, so the file may not be a program at all. There, a message box reports
// the failure.
void startViewer(const QString &program);
