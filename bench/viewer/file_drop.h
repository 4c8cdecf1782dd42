// Drops files onto a window, as a file manager does.
#pragma once

#include <QCoreApplication>
#include <QDropEvent>
#include <QMimeData>
#include <QUrl>
#include <QWidget>

inline void drop(QWidget &window, const QStringList &files) {
    QMimeData data;
    QList<QUrl> urls;
    for (const QString &file : files) {
        urls << QUrl::fromLocalFile(file);
    }
    data.setUrls(urls);
    QDragEnterEvent enter(QPoint(100, 100), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&window, &enter);
    QDropEvent event(QPointF(100, 100), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&window, &event);
}
