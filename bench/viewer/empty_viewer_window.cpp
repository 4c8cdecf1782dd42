// Shows the simplest possible window with a list. start_bench compares LmView with it.
#include <QApplication>
#include <QListView>
#include <QMainWindow>

int main(int argc, char **argv) {
    const QApplication application(argc, argv);
    QMainWindow window;
    window.setCentralWidget(new QListView(&window));
    window.resize(1280, 800);
    window.show();
    return QApplication::exec();
}
