// Makes photographs that do not fit the example. If they are added to the example's photographs, the calibration must
// leave them out and name them.
#pragma once

#include <QDir>
#include <QImage>
#include <QStringList>

// Makes three files in a folder from a good photograph. One is too blurred to be read, one has another size, and one
// looks as if it had been taken with another zoom. Returns the file names; empty if a file could not be written.
inline QStringList writeBadPhotographs(const QDir &folder, const QString &goodPhotograph) {
    const QImage good(goodPhotograph);
    const QSize size = good.size();
    const auto scaled = [](const QImage &picture, const QSize &newSize) {
        return picture.scaled(newSize, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    };
    const struct {
        const char *name;
        QImage picture;
    } bad[] = {
        {"blurred.jpg", scaled(scaled(good, size / 60), size)},
        {"smaller.jpg", scaled(good, size * 0.8)},
        {"zoomed.jpg", scaled(good.copy(QRect(QPoint(200, 150), size - QSize(400, 300))), size)},
    };
    QStringList names;
    for (const auto &one : bad) {
        if (!one.picture.save(folder.filePath(one.name), "JPEG", 95)) {
            return {};
        }
        names << one.name;
    }
    return names;
}
