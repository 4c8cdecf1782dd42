// Shows a window with an empty list and nothing else. start_bench compares the start of LmView with the start of this
// program.
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
