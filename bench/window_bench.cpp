// One update of the window, from a changed field to the repainted view, compared with what the toolkit itself must do
// to show a picture of that size.
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
constexpr int repetitions = 41;

// Fill 4 MB, copy them twice, make a pixmap of an indexed image, repaint the view.
double floorTime(QGraphicsView *view) {
    QGraphicsScene scene;
    QGraphicsScene *own = view->scene();
    view->setScene(&scene);
    const QVector<QRgb> palette = makeColorTable("gray", 256);
    const std::size_t byteCount = std::size_t{pixels} * pixels;
    int grey = 0;
    const double time = medianTime(repetitions, [&] {
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
    });
    view->setScene(own);
    return time;
}

template <class Widget>
Widget *field(const MainWindow &window, const char *name) {
    return window.findChild<Widget *>(QString::fromLatin1(name));
}

double updateTime(const MainWindow &window, const std::function<void(bool)> &change) {
    auto *viewport = field<QGraphicsView>(window, "preview")->viewport();
    bool other = false;
    return medianTime(repetitions, [&] {
        other = !other;
        change(other);
        viewport->repaint();
    });
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
    auto *view = field<QGraphicsView>(window, "preview");
    auto *tabs = field<QTabWidget>(window, "patternType");
    const double floor = floorTime(view);
    const char *floorName = "showing any such picture";

    for (const Page &page : pages(window)) {
        tabs->setCurrentIndex(page.index);
        table.row(std::string("update of page ") + page.what, updateTime(window, page.change), "ms", floorName, floor,
                  1.5);
    }
    tabs->setCurrentIndex(2);
    const struct {
        int size;
        double bound;
    } sizes[] = {{5, 1.5}, {15, 1.5}, {45, 0.0}, {91, 2.0}};
    for (const auto &[size, bound] : sizes) {
        field<QSpinBox>(window, "flexibleWidth")->setValue(size);
        field<QSpinBox>(window, "flexibleHeight")->setValue(size);
        const double time = updateTime(
            window, [&](bool other) { field<QSpinBox>(window, "flexibleOffsetXSpacings")->setValue(other ? 1 : 0); });
        const auto what = "update of page Flexible, " + std::to_string(size) + " x " + std::to_string(size);
        table.row(what, time, "ms", floorName, floor, bound);
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
