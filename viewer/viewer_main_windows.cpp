// The entry point on Windows. It makes the toolkit draw windows at the scale that the user has set for the screen.
#include <QGuiApplication>

#include "viewer/viewer_program.h"

int main(int argc, char **argv) {
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    QGuiApplication::setHighDpiScaleFactorRoundingPolicy(Qt::HighDpiScaleFactorRoundingPolicy::PassThrough);
    return runViewer(argc, argv);
}
