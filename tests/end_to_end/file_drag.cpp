#include "tests/end_to_end/file_drag.h"

#include <QDrag>
#include <QMimeData>
#include <QMouseEvent>
#include <QTimer>
#include <QUrl>
#include <QtTest>

#include "tests/end_to_end/desktop.h"

namespace {

constexpr int stepMs = 30;
constexpr int stepsToTarget = 10;
constexpr QRect ownPlace(0, 0, 90, 40);

QStringList moveTo(QPoint place) {
    return {"mousemove", QString::number(place.x()), QString::number(place.y())};
}

}  // namespace

// The window bypasses the window manager. So it stays where it is put, lies above all other windows, and takes the
// focus from none of them.
FileDrag::FileDrag(const Desktop &usersDesktop, int mostMoves)
    : QWidget(nullptr, Qt::BypassWindowManagerHint | Qt::FramelessWindowHint),
      desktop(usersDesktop),
      mostSteps(mostMoves) {
    setGeometry(ownPlace);
}

bool FileDrag::drop(const QStringList &draggedFiles, QPoint place) {
    files = draggedFiles;
    target = place;
    steps = 0;
    wouldBeTaken = hasEnded = wasTaken = false;
    show();
    raise();
    if (!QTest::qWaitForWindowExposed(this)) {
        return false;
    }
    desktop.xdotool(moveTo(ownPlace.center()) + QStringList{"mousedown", "1", "mousemove_relative", "25", "5"});
    static_cast<void>(QTest::qWaitFor([this] { return hasEnded; }, 2 * mostSteps * stepMs));
    desktop.xdotool({"mouseup", "1"});  // releases the button if the drag never began
    hide();
    return wasTaken;
}

void FileDrag::mouseMoveEvent(QMouseEvent *event) {
    if ((event->buttons() & Qt::LeftButton) == 0 || steps > 0) {
        return;
    }
    QList<QUrl> urls;
    for (const QString &file : files) {
        urls << QUrl::fromLocalFile(file);
    }
    auto *content = new QMimeData;
    content->setUrls(urls);
    auto *drag = new QDrag(this);  // the toolkit deletes it
    drag->setMimeData(content);
    connect(drag, &QDrag::actionChanged, this,
            [this](Qt::DropAction action) { wouldBeTaken = action == Qt::CopyAction; });
    // The drag runs an event loop of its own, in which a timer moves the mouse.
    QTimer hand;
    connect(&hand, &QTimer::timeout, this, &FileDrag::moveAndRelease);
    hand.start(stepMs);
    wasTaken = drag->exec(Qt::CopyAction) == Qt::CopyAction;
    hasEnded = true;
}

void FileDrag::moveAndRelease() {
    ++steps;
    if (steps <= stepsToTarget) {
        desktop.xdotool(moveTo(ownPlace.center() + (target - ownPlace.center()) * steps / stepsToTarget));
    } else if (!wouldBeTaken && steps < mostSteps) {
        // Moves to and fro by a pixel, so that the program is asked again whether it would take the files.
        desktop.xdotool(moveTo(target + QPoint(steps % 2, 0)));
    } else {
        desktop.xdotool({"mouseup", "1"});
    }
}
