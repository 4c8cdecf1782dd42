// The picture of the current pattern, drawn by the camera library.
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
    // The command's own "Encoding"; a Halcon pattern has another one in its element of "Patterns".
    command.parameters()["Encoding"] = true;
    command.parameters()["ImageSize"] = previewImageSize;
    writePatternParameters(command.parameters()["Patterns"][0], 0);
    command.execute(true);
    previewImage = imageFromBinaryItem(command.result()["Patterns"][0].path(), false, false, false, 1.0, 0);

    // The old picture is removed only now that there is a new one.
    scene.clear();
    auto *picture = scene.addPixmap(QPixmap::fromImage(previewImage));
    picture->setTransformationMode(Qt::SmoothTransformation);
    fitViewToScene(form.preview);
}
