// Shows the picture of the current pattern, which the camera library draws.
#include <QGraphicsPixmapItem>
#include <QGraphicsView>
#include <QPixmap>

#include "generator/main_window.h"
#include "lmlib/tree_command.h"
#include "lmlib/tree_item.h"
#include "ui/library_image.h"

namespace {

// The longer side of the picture in pixels.
constexpr std::int32_t previewImageSize = 2000;

}  // namespace

void MainWindow::generatePreview() {
    const TreeCommand command("GenerateCalibrationPattern");
    // This "Encoding" belongs to the whole command. A Halcon pattern also has its own "Encoding", which
    // writePatternParameters sets.
    command.parameters()["Encoding"] = true;
    command.parameters()["ImageSize"] = previewImageSize;
    writePatternParameters(command.parameters()["Patterns"][0], 0);
    command.execute(true);
    previewImage = imageFromBinaryItem(command.result()["Patterns"][0].path(), false, false, false, 1.0, 0);

    // The old picture is removed only after the new one has been made, so that the old one stays if the command fails.
    scene.clear();
    auto *picture = scene.addPixmap(QPixmap::fromImage(previewImage));
    picture->setTransformationMode(Qt::SmoothTransformation);
    fitViewToScene(form.preview);
}
