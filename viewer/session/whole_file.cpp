#include "viewer/session/whole_file.h"

#include <QFile>
#include <exception>

#include "file_writing/safe_file.h"

QString writeWholeFile(const QString &file, const QByteArray &content) {
    try {
        file_writing::SafeFiles files;
        files.write(QFile::encodeName(file).toStdString(), content.toStdString());
        files.commit();
    } catch (const std::exception &error) {
        return QString::fromLocal8Bit(error.what());
    }
    return {};
}
