#include "viewer/session/session_file.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QUuid>

#include "viewer/session/whole_file.h"

namespace {

constexpr const char *format = "LmView session";

QString tr(const char *text) {
    return QCoreApplication::translate("SessionFile", text);
}

QString storedPath(const QDir &folder, const QString &path) {
    const QString relative = folder.relativeFilePath(path);
    return relative.startsWith("..") ? path : relative;
}

}  // namespace

QString saveSession(const QString &file, const SessionDocument &document) {
    const QDir folder = QFileInfo(file).absoluteDir();
    QJsonArray photographs;
    for (const SessionEntry &entry : document.photographs) {
        photographs.append(QJsonObject{{"Path", storedPath(folder, entry.path)}, {"Included", entry.isIncluded}});
    }
    const QJsonObject json{
        {"Format", format}, {"Version", 1}, {"Photographs", photographs}, {"Settings", toJson(document.settings)}};
    return writeWholeFile(file, QJsonDocument(json).toJson());
}

std::optional<SessionDocument> openSession(const QString &file, QString &problem) {
    QFile input(file);
    if (!input.open(QIODevice::ReadOnly)) {
        problem = tr("The session %1 cannot be opened: %2").arg(QDir::toNativeSeparators(file), input.errorString());
        return std::nullopt;
    }
    const QJsonObject json = QJsonDocument::fromJson(input.readAll()).object();
    if (json["Format"].toString() != format) {
        problem = tr("%1 is not a session of LmView.").arg(QDir::toNativeSeparators(file));
        return std::nullopt;
    }
    const QDir folder = QFileInfo(file).absoluteDir();
    SessionDocument document;
    document.settings = settingsFromJson(json["Settings"].toObject());
    const QJsonArray photographs = json["Photographs"].toArray();
    for (const QJsonValue &value : photographs) {
        const QJsonObject entry = value.toObject();
        const QString path = entry["Path"].toString();
        if (!path.isEmpty()) {
            document.photographs.append(
                {QDir::cleanPath(folder.absoluteFilePath(path)), entry["Included"].toBool(true)});
        }
    }
    return document;
}

RecoveryCopy::RecoveryCopy(const QString &recoveryFolder) : folder(recoveryFolder) {}

RecoveryCopy::~RecoveryCopy() {
    if (!file.isEmpty()) {
        QFile::remove(file);
    }
}

void RecoveryCopy::create() {
    if (!QDir().mkpath(folder)) {
        return;
    }
    const QString name = QDir(folder).filePath(QUuid::createUuid().toString(QUuid::WithoutBraces));
    lock = std::make_unique<QLockFile>(name + ".lock");
    lock->setStaleLockTime(0);
    if (lock->tryLock()) {
        file = name + ".json";
    }
}

QString RecoveryCopy::keep(const SessionDocument &document) {
    if (file.isEmpty()) {
        create();
    }
    return file.isEmpty() ? tr("The folder %1 cannot be written to.").arg(QDir::toNativeSeparators(folder))
                          : saveSession(file, document);
}

std::optional<SessionDocument> RecoveryCopy::takeLeftOver() {
    for (const QFileInfo &entry : QDir(folder).entryInfoList({"*.json"}, QDir::Files, QDir::Time)) {
        const QString path = entry.absoluteFilePath();
        QLockFile other(entry.absoluteDir().filePath(entry.completeBaseName() + ".lock"));
        other.setStaleLockTime(0);
        if (path == file || !other.tryLock()) {
            continue;
        }
        QString problem;
        std::optional<SessionDocument> document = openSession(path, problem);
        const bool isWorthKeeping = document && !document->photographs.isEmpty();
        // If this program cannot keep a copy of its own, the old one stays for the next start.
        if (!isWorthKeeping || keep(*document).isEmpty()) {
            QFile::remove(path);
        }
        if (isWorthKeeping) {
            return document;
        }
    }
    return std::nullopt;
}
