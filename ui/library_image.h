// From a binary item of the camera library's tree to a picture, and fitting a view to what it shows.
//
// Items are taken as 8 bits per channel, channels interleaved, rows from the top and packed. One channel gives an
// indexed picture with a grey palette, any other number RGB. Pictures own their pixels. GUI thread only; paths are
// in the library's narrow encoding. A failing library call is an LmLibException with the item's path.
#pragma once

#include <QImage>
#include <QPixmap>
#include <QRgb>
#include <QVector>
#include <cstdint>
#include <string>

class QGraphicsView;

// The picture of the item at path; a null picture for an item without bytes. Every byte is multiplied by valueScale,
// rounded half away from zero and clamped. Then come quarterTurns turns by 90 degrees clockwise (none where not
// positive), then the mirroring; rotate180 flips both axes, so that with one of the mirrorings it cancels that one.
// Throws LmLibException with code 7 (InternalError) when the library copies another number of bytes than the item
// has, and with code 16 (BufferNotDivisibleByElementSize) when that number is not width x height x channels.
QImage imageFromBinaryItem(const std::string &path, bool mirrorHorizontally, bool mirrorVertically, bool rotate180,
                           double valueScale, std::int32_t quarterTurns);

// The same as a pixmap.
QPixmap pixmapFromBinaryItem(const std::string &path, bool mirrorHorizontally, bool mirrorVertically, bool rotate180,
                             double valueScale, std::int32_t quarterTurns);

// Makes the bounding rectangle of all items the scene's rectangle, and shows it centred and as large as it fits with
// its aspect ratio kept. A view without a scene is left alone.
void fitViewToScene(QGraphicsView *view);

// The opaque colours of the table called "gray" (black to white, over and over from 256 on) or "jet" (blue over green
// to red), in whatever case the name is written. Empty for another name or a count below 1.
QVector<QRgb> makeColorTable(const std::string &name, int count);
