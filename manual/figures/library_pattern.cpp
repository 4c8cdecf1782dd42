#include "manual/figures/library_pattern.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <stdexcept>

#include "lmlib/tree_command.h"
#include "ui/library_image.h"

namespace {

QJsonObject readPattern(const QString &fileName) {
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly)) {
        throw std::runtime_error("The library wrote no pattern file.");
    }
    QJsonObject pattern = QJsonDocument::fromJson(file.readAll()).object()["Patterns"].toArray()[0].toObject();
    if (pattern["Points"].toArray().isEmpty()) {
        throw std::runtime_error("The library's pattern file holds no points.");
    }
    return pattern;
}

QPointF pairOf(const QJsonValue &value) {
    const QJsonArray pair = value.toArray();
    return {pair[0].toDouble(), pair[1].toDouble()};
}

// In the file, the origin of positions follows from the parameter `Offset`, which is the position of the pattern's
// reference point. In `pattern.points`, positions are relative to the top-left corner of the pattern without its quiet
// zone.
void readDimensions(const QJsonObject &file, LibraryPattern &pattern) {
    const QPointF outerSize = pairOf(file["OuterSize"]);
    pattern.outerSize = QSizeF(outerSize.x(), outerSize.y());
    pattern.quietZone = file["QuietZone"].toDouble();
    pattern.gridSpacing = file["Parameters"].toObject()["GridSpacing"].toDouble();
    pattern.columns = file["LatticeSize"].toArray()[0].toInt();
    pattern.rows = file["LatticeSize"].toArray()[1].toInt();
    pattern.referenceColumn = file["ReferenceIndex"].toArray()[0].toInt();
    pattern.referenceRow = file["ReferenceIndex"].toArray()[1].toInt();
    const QPointF topLeft = pairOf(file["TopLeft"]);
    for (const QJsonValue value : file["Points"].toArray()) {
        const QJsonArray point = value.toArray();
        pattern.points.push_back(QPointF(point[2].toDouble(), point[3].toDouble()) - topLeft);
    }
    if (pattern.points.size() != static_cast<std::size_t>(pattern.columns) * static_cast<std::size_t>(pattern.rows)) {
        throw std::runtime_error("The library's pattern file does not hold a point for each place of its lattice.");
    }
}

}  // namespace

LibraryPattern makeLibraryPattern(const std::function<void(const TreeItem &)> &write, int longerSidePixels) {
    const QTemporaryDir folder;
    const QString fileName = folder.filePath("pattern.json");
    const TreeCommand command("GenerateCalibrationPattern");
    command.parameters()["ImageSize"] = longerSidePixels;
    command.parameters()["Filename"] = fileName.toLocal8Bit().toStdString();
    write(command.parameters()["Patterns"][0]);
    command.execute(true);

    LibraryPattern pattern;
    pattern.picture = imageFromBinaryItem(command.result()["Patterns"][0].path(), false, false, false, 1.0, 0).copy();
    readDimensions(readPattern(fileName), pattern);
    return pattern;
}
