// Measures one update of the window, from a changed field to the repainted view. Its processor time is compared with
// the time that the toolkit needs to show a picture of the same size, and its elapsed time with a fixed limit.
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QGraphicsPixmapItem>
#include <QGraphicsView>
#include <QSpinBox>
#include <QTabWidget>
#include <cstring>
#include <functional>
#include <memory>
#include <vector>

#include "bench/measurement.h"
#include "camera_library/lmlib64.h"
#include "generator/main_window.h"
#include "ui/library_image.h"

namespace {

constexpr int pixels = 2000;
constexpr int rounds = 151;

// Shows a picture with as little work as possible. It does only what every update must do: it fills 4 MB of memory as
// the library does, copies this memory twice (out of the library, and into an image), makes a pixmap of the indexed
// image, and repaints the view.
class Floor {
public:
    explicit Floor(QGraphicsView *graphicsView) : view(graphicsView), palette(makeColorTable("gray", 256)) {}

    Time time() {
        QGraphicsScene *own = view->scene();
        view->setScene(&scene);
        const Time time = timeOf([this] { show(); });
        view->setScene(own);
        return time;
    }

private:
    void show() {
        constexpr std::size_t byteCount = std::size_t{pixels} * pixels;
        const std::unique_ptr<unsigned char[]> filled(new unsigned char[byteCount]);
        const std::unique_ptr<unsigned char[]> copied(new unsigned char[byteCount]);
        std::memset(filled.get(), ++grey % 256, byteCount);
        std::memcpy(copied.get(), filled.get(), byteCount);
        QImage image = QImage(copied.get(), pixels, pixels, pixels, QImage::Format_Indexed8).copy();
        image.setColorTable(palette);
        scene.clear();
        scene.addPixmap(QPixmap::fromImage(image))->setTransformationMode(Qt::SmoothTransformation);
        fitViewToScene(view);
        view->viewport()->repaint();
    }

    QGraphicsView *view;
    QGraphicsScene scene;
    QVector<QRgb> palette;
    int grey = 0;
};

template <class Widget>
Widget *field(const MainWindow &window, const char *name) {
    return window.findChild<Widget *>(QString::fromLatin1(name));
}

// Measures updates that switch a field between two values. The updates and the least possible work (Floor) take turns.
void benchUpdate(Table &table, const MainWindow &window, const std::string &what,
                 const std::function<void(bool)> &change, double bound) {
    auto *view = field<QGraphicsView>(window, "preview");
    Floor floor(view);
    bool other = false;
    const auto update = [&] {
        other = !other;
        return timeOf([&] {
            change(other);
            view->viewport()->repaint();
        });
    };
    const auto times = measureAlternately(rounds, {update, [&] { return floor.time(); }});
    table.row("update of page " + what, times[0], "ms", "showing any picture of this size", times[1], bound);
    table.row("elapsed time of this update", times[0], "ms", 20.0);
}

struct Page {
    const char *what;
    int index;
    std::function<void(bool)> change;
};

std::vector<Page> pages(const MainWindow &window) {
    return {
        {"Official", 0,
         [&](bool other) { field<QComboBox>(window, "officialPattern")->setCurrentIndex(other ? 1 : 0); }},
        {"Custom", 1, [&](bool other) { field<QComboBox>(window, "singleThickness")->setCurrentIndex(other ? 1 : 0); }},
        {"Assembly", 3, [&](bool other) { field<QCheckBox>(window, "assemblyPolarity")->setChecked(other); }},
        {"Halcon", 4, [&](bool other) { field<QDoubleSpinBox>(window, "halconOuterSize")->setValue(other ? 90 : 80); }},
    };
}

void benchUpdates(Table &table, MainWindow &window) {
    auto *tabs = field<QTabWidget>(window, "patternType");
    for (const Page &page : pages(window)) {
        tabs->setCurrentIndex(page.index);
        benchUpdate(table, window, page.what, page.change, 1.5);
    }
    tabs->setCurrentIndex(2);
    const struct {
        int size;
        double bound;
    } sizes[] = {{5, 1.5}, {15, 1.5}, {45, 0.0}, {91, 2.0}};
    for (const auto &[size, bound] : sizes) {
        field<QSpinBox>(window, "flexibleWidth")->setValue(size);
        field<QSpinBox>(window, "flexibleHeight")->setValue(size);
        benchUpdate(
            table, window, "Flexible, " + std::to_string(size) + " x " + std::to_string(size) + " corners",
            [&](bool other) { field<QSpinBox>(window, "flexibleOffsetXSpacings")->setValue(other ? 1 : 0); }, bound);
    }
}

}  // namespace

int main(int argc, char **argv) {
    const QApplication application(argc, argv);
    MainWindow window;
    window.show();
    QApplication::processEvents();
    Table table("One update of the window");
    benchUpdates(table, window);
    return table.exitCode();
}
