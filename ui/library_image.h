// Turns a binary item of the camera library's tree into a picture, and fits a view to its scene.
//
// Items are taken to have 8 bits per channel, interleaved channels, and rows from the top down without padding. An item
// with one channel gives an indexed picture with a grey palette; any other item gives an RGB picture. Pictures own
// their pixels. Use these functions only on the GUI thread. Paths are in the library's narrow encoding. A failed
// library call throws LmLibException with the item's path.
#pragma once

#include <QImage>
#include <QPixmap>
#include <QRgb>
#include <QVector>
#include <cstdint>
#include <string>

class QGraphicsView;

// Returns the picture of the item at `path`; null if the item has no bytes. First, every byte is multiplied by
// `valueScale`, rounded (half away from zero) and clamped to 0 to 255. Next, the picture is turned clockwise by 90
// degrees `quarterTurns` times, or not at all if `quarterTurns` is not positive. Last, the picture is mirrored.
// `rotate180` mirrors in both directions. Mirroring twice in the same direction has no effect: `rotate180` together
// with `mirrorHorizontally` only mirrors vertically, and together with `mirrorVertically` only horizontally. Throws
// LmLibException with code 7 (InternalError) if the library copies more or fewer bytes than the item has, and with
// code 16 (BufferNotDivisibleByElementSize) if the number of bytes is not width x height x channels.
QImage imageFromBinaryItem(const std::string &path, bool mirrorHorizontally, bool mirrorVertically, bool rotate180,
                           double valueScale, std::int32_t quarterTurns);

// Returns the same picture as a pixmap.
QPixmap pixmapFromBinaryItem(const std::string &path, bool mirrorHorizontally, bool mirrorVertically, bool rotate180,
                             double valueScale, std::int32_t quarterTurns);

// Sets the scene's rectangle to the bounding rectangle of all its items. Shows this rectangle in the centre of the
// view, as large as the view allows, without changing its aspect ratio. Does nothing if the view has no scene.
void fitViewToScene(QGraphicsView *view);

// Returns the opaque colours of the table "gray" (black to white, repeated every 256 colours) or "jet" (blue through
// green to red). The name's case does not matter. Empty for any other name or a count below 1.
QVector<QRgb> makeColorTable(const std::string &name, int count);
