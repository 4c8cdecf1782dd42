// Drags files with the mouse from a window of this process and drops them onto another program, as a user drags files
// from a file manager. The display must be an X server. Every wait has a time limit.
#pragma once

#include <QPoint>
#include <QStringList>
#include <QWidget>

class Desktop;

class FileDrag : public QWidget {
    Q_OBJECT

public:
    // The mouse is moved every 30 ms. The program at the target must show that it would take the files. If it has not
    // shown this after `mostMoves` moves of the mouse, the drag is given up.
    explicit FileDrag(const Desktop &usersDesktop, int mostMoves = 700);

    // Drops the files at a place of the screen, in pixels. True if the program there took them.
    bool drop(const QStringList &files, QPoint place);

protected:
    void mouseMoveEvent(QMouseEvent *event) override;

private:
    // Moves the mouse one step towards the target. At the target, releases the button if the program shows that it
    // would take the files, or if this is the last move.
    void moveAndRelease();

    const Desktop &desktop;
    int mostSteps;
    QStringList files;
    QPoint target;
    int steps = 0;
    bool wouldBeTaken = false;
    bool hasEnded = false;
    bool wasTaken = false;
};
