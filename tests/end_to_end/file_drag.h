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
    explicit FileDrag(const Desktop &usersDesktop);

    // Drops the files at a place of the screen, in pixels. True if the program there took them.
    bool drop(const QStringList &files, QPoint place);

protected:
    void mouseMoveEvent(QMouseEvent *event) override;

private:
    // Moves the mouse to the target in small steps, and releases the button once the program shows that it would take
    // the files.
    void moveAndRelease();

    const Desktop &desktop;
    QStringList files;
    QPoint target;
    int steps = 0;
    bool wouldBeTaken = false;
    bool hasEnded = false;
    bool wasTaken = false;
};
