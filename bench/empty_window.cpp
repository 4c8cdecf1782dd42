// Shows the simplest possible window with a graphics view. start_bench compares the program with it.
#include <QApplication>
#include <QGraphicsView>
#include <QMainWindow>

int main(int argc, char **argv) {
    const QApplication application(argc, argv);
    QMainWindow window;
    QGraphicsScene scene;
    window.setCentralWidget(new QGraphicsView(&scene));
    window.resize(899, 553);
    window.show();
    return QApplication::exec();
}
