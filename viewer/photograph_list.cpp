#include "viewer/photograph_list.h"

#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QPainter>

#include "viewer/views/drawing.h"

namespace {

constexpr int margin = 5;
constexpr int pictureWidth = 76;
constexpr int pictureHeight = 57;

}  // namespace

PhotographListModel::PhotographListModel(Session *ownSession) : session(ownSession) {
    connect(session, &Session::photographsChanged, this, &PhotographListModel::photographsChanged);
    connect(session, &Session::photographChanged, this, &PhotographListModel::photographChanged);
    connect(session, &Session::resultChanged, this, [this] {
        if (!ids.isEmpty()) {
            emit dataChanged(index(0), index(ids.size() - 1));
        }
    });
}

void PhotographListModel::photographsChanged() {
    QVector<int> now;
    for (const SessionPhotograph &photograph : session->photographs()) {
        now.append(photograph.id);
    }
    // If photographs were only added at the end, rows are inserted instead of resetting the model. This keeps the
    // selection and the scroll position.
    if (now.size() > ids.size() && now.mid(0, ids.size()) == ids) {
        beginInsertRows({}, ids.size(), now.size() - 1);
        ids = now;
        endInsertRows();
    } else {
        beginResetModel();
        ids = now;
        endResetModel();
    }
}

void PhotographListModel::photographChanged(int id) {
    const QModelIndex changed = indexOf(id);
    emit dataChanged(changed, changed);
}

QModelIndex PhotographListModel::indexOf(int photographId) const {
    const int row = ids.indexOf(photographId);
    return row < 0 ? QModelIndex() : index(row);
}

int PhotographListModel::rowCount(const QModelIndex &parent) const {
    return parent.isValid() ? 0 : ids.size();
}

Qt::ItemFlags PhotographListModel::flags(const QModelIndex &index) const {
    return QAbstractListModel::flags(index) | Qt::ItemIsUserCheckable;
}

QString PhotographListModel::fitOf(const SessionPhotograph &photograph) const {
    if (photograph.state == PhotographState::Waiting) {
        return tr("waiting");
    }
    QStringList names;
    for (const auto &reading : photograph.readings ? *photograph.readings : PatternReadings()) {
        names << nameOf(reading);
    }
    names.sort();
    const QString patterns = names.isEmpty()     ? tr("no pattern")
                             : names.size() == 1 ? tr("pattern %1").arg(names.first())
                                                 : tr("patterns %1").arg(names.join(", "));
    const auto result = session->result();
    const auto rms = photograph.isIncluded && result ? result->fits.value(photograph.id).rms : std::nullopt;
    return rms ? pixels(*rms) + " · " + patterns : patterns;
}

QString PhotographListModel::problemOf(const SessionPhotograph &photograph) const {
    if (!photograph.problem.isEmpty()) {
        return photograph.problem;
    }
    const auto result = session->result();
    return photograph.isIncluded && result ? result->fits.value(photograph.id).reason : QString();
}

QVariant PhotographListModel::data(const QModelIndex &index, int role) const {
    const SessionPhotograph *photograph = index.isValid() ? session->photograph(ids[index.row()]) : nullptr;
    if (photograph == nullptr) {
        return {};
    }
    switch (role) {
        case Qt::DisplayRole:
            return QFileInfo(photograph->path).fileName();
        case Qt::DecorationRole:
            return photograph->thumbnail;
        case Qt::CheckStateRole:
            return photograph->isIncluded ? Qt::Checked : Qt::Unchecked;
        case Qt::ToolTipRole:
            return QString("<p>%1</p><p>%2</p><p>%3</p>")
                .arg(QDir::toNativeSeparators(photograph->path).toHtmlEscaped(), fitOf(*photograph).toHtmlEscaped(),
                     problemOf(*photograph).toHtmlEscaped());
        case Qt::AccessibleDescriptionRole:
            return fitOf(*photograph) + ". " + problemOf(*photograph);
        case IdRole:
            return photograph->id;
        case FitRole:
            return fitOf(*photograph);
        case ProblemRole:
            return problemOf(*photograph);
        default:
            return {};
    }
}

bool PhotographListModel::setData(const QModelIndex &index, const QVariant &value, int role) {
    if (!index.isValid() || role != Qt::CheckStateRole) {
        return false;
    }
    session->setIncluded({ids[index.row()]}, value.toInt() == Qt::Checked);
    return true;
}

QSize PhotographDelegate::sizeHint(const QStyleOptionViewItem &option, const QModelIndex &) const {
    return {200, qMax(pictureHeight, 3 * option.fontMetrics.lineSpacing()) + 2 * margin};
}

void PhotographDelegate::paint(QPainter *painter, const QStyleOptionViewItem &given, const QModelIndex &index) const {
    QStyleOptionViewItem option = given;
    initStyleOption(&option, index);
    option.text.clear();
    option.icon = QIcon();
    option.features &= ~QStyleOptionViewItem::HasDecoration;
    const bool isSelected = (option.state & QStyle::State_Selected) != 0;
    const QPalette::ColorGroup group =
        (option.state & QStyle::State_Active) != 0 ? QPalette::Active : QPalette::Inactive;
    if (isSelected) {
        // Some styles, such as that of Windows, draw a selected item, or the item under the mouse, in a colour on which
        // HighlightedText cannot be read.
        painter->fillRect(option.rect, option.palette.brush(group, QPalette::Highlight));
        option.state &= ~(QStyle::State_Selected | QStyle::State_MouseOver);
    }
    const QStyle *style = option.widget == nullptr ? QApplication::style() : option.widget->style();
    // The style draws the background if the item is not selected, the check box and the focus. The code below draws the
    // rest.
    style->drawControl(QStyle::CE_ItemViewItem, &option, painter, option.widget);
    const QRect box = style->subElementRect(QStyle::SE_ItemViewItemCheckIndicator, &option, option.widget);

    painter->save();
    const QRect room = option.rect.adjusted(0, margin, -margin, -margin);
    const QRect picture(box.right() + margin, room.top(), pictureWidth, pictureHeight);
    const QImage thumbnail = index.data(Qt::DecorationRole).value<QImage>();
    if (thumbnail.isNull()) {
        painter->fillRect(picture, QColor(128, 128, 128, 60));
    } else {
        painter->setRenderHint(QPainter::SmoothPixmapTransform);
        QRect shown(QPoint(), thumbnail.size().scaled(picture.size(), Qt::KeepAspectRatio));
        shown.moveCenter(picture.center());
        painter->drawImage(shown, thumbnail);
    }

    const QColor ink = option.palette.color(group, isSelected ? QPalette::HighlightedText : QPalette::Text);
    const bool isOut = index.data(Qt::CheckStateRole).toInt() != Qt::Checked;
    const int height = option.fontMetrics.lineSpacing();
    const QRect line(picture.right() + 2 * margin, room.top(), room.right() - picture.right() - 2 * margin, height);
    const auto draw = [&](int number, const QString &text, const QColor &colour) {
        painter->setPen(colour);
        painter->drawText(line.translated(0, number * height), Qt::AlignLeft | Qt::AlignVCenter,
                          option.fontMetrics.elidedText(text, Qt::ElideRight, line.width()));
    };
    QColor pale = ink;
    pale.setAlpha(isOut ? 110 : 180);
    draw(0, index.data(Qt::DisplayRole).toString(), isOut ? pale : ink);
    draw(1, index.data(PhotographListModel::FitRole).toString(), pale);
    const QColor warning = isSelected ? ink : isDark(option.palette) ? QColor(255, 150, 130) : QColor(176, 40, 30);
    draw(2, index.data(PhotographListModel::ProblemRole).toString(), warning);
    painter->restore();
}
