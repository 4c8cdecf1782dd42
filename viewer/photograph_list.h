// The list of photographs. It says what each photograph shows, how well it fits, and whether it takes part.
#pragma once

#include <QAbstractListModel>
#include <QStyledItemDelegate>

#include "viewer/session/session.h"

class PhotographListModel : public QAbstractListModel {
    Q_OBJECT

public:
    // Roles in addition to those of the toolkit. FitRole is the line with the patterns and the residual. ProblemRole
    // says why the photograph, or a part of it, does not help; it is empty if no problem is known.
    enum Role { IdRole = Qt::UserRole, FitRole, ProblemRole };

    // The session must outlive the model.
    explicit PhotographListModel(Session *ownSession);

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    bool setData(const QModelIndex &index, const QVariant &value, int role) override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;

    // Returns the index of a photograph; invalid if the list does not contain the photograph.
    QModelIndex indexOf(int photographId) const;

private:
    void photographsChanged();
    void photographChanged(int id);
    QString fitOf(const SessionPhotograph &photograph) const;
    QString problemOf(const SessionPhotograph &photograph) const;

    Session *session;
    QVector<int> ids;
};

// Draws a photograph as its thumbnail with three lines of text beside it.
class PhotographDelegate : public QStyledItemDelegate {
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;
    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;
};
