// Records with strace which files a program and its children create, write, rename and remove, in any folder. There is
// a record only in builds that define WRITES_ARE_RECORDED, and only where strace is allowed to trace.
#pragma once

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QStringList>
#include <QTemporaryDir>

class WriteRecord {
public:
    WriteRecord() {
#ifdef WRITES_ARE_RECORDED
        keeps = QProcess::execute("strace", {"-o", "/dev/null", "true"}) == 0;
#endif
        if (!keeps) {
            qWarning("Changes of files are not recorded here.");
        }
    }

    // The command that starts the program and records its writes. With strace's option -D, the process that is started
    // runs the program itself, and the tracer runs in another process. So the number of the started process is the
    // number of the program's process.
    QStringList commandFor(const QString &program) const {
        const QString calls =
            "open,openat,creat,truncate,rename,renameat,renameat2,link,linkat,symlink,symlinkat,unlink,unlinkat,"
            "mkdir,mkdirat,rmdir,mknod,mknodat";
        return keeps ? QStringList{"strace",         "-D",   "-f",   "-q", "-y",       "-z",
                                   "--seccomp-bpf",  "-s",   "4096", "-o", fileName(), "-e",
                                   "trace=" + calls, program}
                     : QStringList{program};
    }

    bool isKept() const {
        return keeps;
    }

    // True if the record contains the end of this process, or if there is no record.
    bool isComplete(qint64 process) const {
        const QRegularExpression end(QString("^%1 +\\+\\+\\+ ").arg(process), QRegularExpression::MultilineOption);
        return !keeps || contents().contains(end);
    }

    // The files that were opened for writing, and all names in the other recorded calls, such as rename. Relative names
    // are made absolute with the test's current folder. If another thread interrupts a call, strace writes the call as
    // two lines; only the first has the names.
    QStringList paths() const {
        static const QRegularExpression opening(R"(^\d+ +(?:open|openat)\()");
        static const QRegularExpression opened(R"( = \d+<(.*)>)");
        static const QRegularExpression named("\"([^\"]*)\"");
        QStringList paths;
        for (const QString &line : contents().split('\n')) {
            const bool isOpening = line.contains(opening);
            if (isOpening && !line.contains("O_WRONLY") && !line.contains("O_RDWR") && !line.contains("O_CREAT")) {
                continue;
            }
            const QRegularExpressionMatch open = opened.match(line);
            if (isOpening && open.hasMatch()) {
                paths << open.captured(1);
                continue;
            }
            for (auto names = named.globalMatch(line); names.hasNext();) {
                paths << QDir::current().absoluteFilePath(names.next().captured(1));
            }
        }
        return paths;
    }

private:
    QString fileName() const {
        return folder.filePath("record");
    }

    QString contents() const {
        QFile file(fileName());
        return file.open(QIODevice::ReadOnly) ? QString::fromLocal8Bit(file.readAll()) : QString();
    }

    QTemporaryDir folder;
    bool keeps = false;
};
