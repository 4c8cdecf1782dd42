// Compares an assembly file with the true places of the example's patterns.
#pragma once

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QString>
#include <algorithm>
#include <optional>

#include "calibration/rigid_motion.h"
#include "viewer/example/example_assembly.h"

// Returns the greatest distance, in mm, between the place of a corner in the file and its true place. The places in the
// file must be in the axes of pattern 0. Empty if the file cannot be read or lacks a corner of a pattern.
inline std::optional<double> greatestCornerError(const QString &fileName) {
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly)) {
        return std::nullopt;
    }
    const QJsonArray patterns = QJsonDocument::fromJson(file.readAll()).object()["Patterns"].toArray();
    if (patterns.size() != example_assembly::patternCount) {
        return std::nullopt;
    }
    double greatest = 0;
    for (const QJsonValue &pattern : patterns) {
        const auto &pose = example_assembly::worldFromPattern[size_t(pattern["Number"].toInt())];
        const calibration::RigidMotion worldFromPattern{Eigen::Vector3d(pose.rotation.data()),
                                                        Eigen::Vector3d(pose.translation.data())};
        const QJsonArray points = pattern["Points"].toArray();
        if (points.size() != 15 * 15) {
            return std::nullopt;
        }
        for (const QJsonValue &value : points) {
            const QJsonArray row = value.toArray();  // column, row, X, Y, Z, standard deviation
            const Eigen::Vector3d drawn((row[0].toInt() - 7) * example_assembly::gridSpacing / 2,
                                        (row[1].toInt() - 7) * example_assembly::gridSpacing / 2, 0);
            const Eigen::Vector3d found(row[2].toDouble(), row[3].toDouble(), row[4].toDouble());
            greatest = std::max(greatest, (found - worldFromPattern * drawn).norm());
        }
    }
    return greatest;
}
