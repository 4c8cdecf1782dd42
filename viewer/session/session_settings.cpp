#include "viewer/session/session_settings.h"

#include <QJsonArray>

namespace {

using calibration::LensModel;

constexpr LensModel lenses[] = {LensModel::Pinhole4, LensModel::Pinhole5, LensModel::Pinhole8, LensModel::Pinhole12,
                                LensModel::Fisheye};
const char *const arrangements[] = {"Cameras", "Rig", "Assembly"};
constexpr int greatestPattern = 17;
constexpr int greatestBoardSide = 200;
constexpr double greatestSpacing = 10000;  // mm

QJsonObject toJson(const NamedCorner &corner) {
    return {{"Pattern", corner.pattern}, {"Column", corner.column}, {"Row", corner.row}};
}

std::optional<std::array<NamedCorner, 3>> frameFromJson(const QJsonArray &json) {
    if (json.size() != 3) {
        return std::nullopt;
    }
    std::array<NamedCorner, 3> frame;
    for (int i = 0; i < 3; ++i) {
        const QJsonObject corner = json[i].toObject();
        frame[size_t(i)] = {corner["Pattern"].toInt(), corner["Column"].toInt(), corner["Row"].toInt()};
    }
    return frame;
}

double lengthFromJson(const QJsonValue &value) {
    const double length = value.toDouble();
    return length > 0 && length <= greatestSpacing ? length : 0;
}

QMap<int, QPointF> measuredFromJson(const QJsonObject &json) {
    QMap<int, QPointF> measured;
    for (const QString &number : json.keys()) {
        const QJsonArray ratio = json[number].toArray();
        const double x = ratio.at(0).toDouble();
        const double y = ratio.at(1).toDouble();
        if (x > 0.5 && x < 2 && y > 0.5 && y < 2) {
            measured[number.toInt()] = {x, y};
        }
    }
    return measured;
}

}  // namespace

bool operator==(const SessionSettings &a, const SessionSettings &b) {
    return toJson(a) == toJson(b);
}

QJsonObject toJson(const SessionSettings &settings) {
    QJsonObject json{{"Arrangement", arrangements[int(settings.arrangement)]},
                     {"MayBend", settings.mayBend},
                     {"GridSpacing", settings.gridSpacing},
                     {"BoardSquare", settings.boardSquare},
                     {"PatternFiles", QJsonArray::fromStringList(settings.patternFiles)}};
    if (settings.lens) {
        json["Lens"] = calibration::nameOf(*settings.lens);
    }
    if (settings.board) {
        json["Board"] = QJsonArray{settings.board->width(), settings.board->height()};
    }
    if (!settings.measured.isEmpty()) {
        QJsonObject measured;
        for (auto entry = settings.measured.begin(); entry != settings.measured.end(); ++entry) {
            measured[QString::number(entry.key())] = QJsonArray{entry.value().x(), entry.value().y()};
        }
        json["Measured"] = measured;
    }
    if (settings.reference) {
        json["ReferencePattern"] = *settings.reference;
    }
    if (settings.frame) {
        QJsonArray frame;
        for (const NamedCorner &corner : *settings.frame) {
            frame.append(toJson(corner));
        }
        json["Frame"] = frame;
    }
    return json;
}

SessionSettings settingsFromJson(const QJsonObject &json) {
    SessionSettings settings;
    for (int i = 0; i < 3; ++i) {
        if (json["Arrangement"].toString() == arrangements[i]) {
            settings.arrangement = Arrangement(i);
        }
    }
    for (const LensModel lens : lenses) {
        if (json["Lens"].toString() == calibration::nameOf(lens)) {
            settings.lens = lens;
        }
    }
    settings.mayBend = json["MayBend"].toBool(true);
    settings.gridSpacing = lengthFromJson(json["GridSpacing"]);
    settings.boardSquare = lengthFromJson(json["BoardSquare"]);
    const QJsonArray files = json["PatternFiles"].toArray();
    for (const QJsonValue &file : files) {
        settings.patternFiles.append(file.toString());
    }
    const QSize board(json["Board"].toArray().at(0).toInt(), json["Board"].toArray().at(1).toInt());
    if (qMin(board.width(), board.height()) >= 3 && qMax(board.width(), board.height()) <= greatestBoardSide) {
        settings.board = board;
    }
    settings.measured = measuredFromJson(json["Measured"].toObject());
    const int reference = json["ReferencePattern"].toInt(-1);
    if (reference >= 0 && reference <= greatestPattern) {
        settings.reference = reference;
    }
    settings.frame = frameFromJson(json["Frame"].toArray());
    return settings;
}
