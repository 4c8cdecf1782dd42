#include "ui/library_image.h"

#include <QGraphicsScene>
#include <QGraphicsView>
#include <QTransform>
#include <algorithm>
#include <array>
#include <cmath>
#include <memory>

#include "camera_library/lmlib64.h"
#include "lmlib/lm_lib_exception.h"
#include "lmlib/result_check.h"

namespace {

// A buffer that is not cleared when it is allocated, because the library fills it.
struct Bytes {
    explicit Bytes(std::size_t byteCount) : data(new unsigned char[byteCount]), size(byteCount) {}

    std::unique_ptr<unsigned char[]> data;
    std::size_t size;
};

struct ImageLayout {
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::int32_t channelCount = 0;
};

const QVector<QRgb> &grayTable() {
    static const QVector<QRgb> table = makeColorTable("gray", 256);
    return table;
}

[[noreturn]] void fail(const std::string &path, std::int32_t code) {
    throw LmLibException(path, code, nullptr);
}

ImageLayout readLayout(const std::string &path) {
    ImageLayout layout;
    std::int32_t isFloat = 0;
    std::int32_t code = 0;
    lmLibGetBinaryInfo(&code, path.c_str(), &layout.width, &layout.height, &layout.channelCount, nullptr, &isFloat,
                       nullptr);
    checkResult(path, code);
    return layout;
}

Bytes readBytes(const std::string &path) {
    std::int32_t code = 0;
    const std::int32_t byteCount = lmLibGetCount(&code, path.c_str());
    checkResult(path, code);
    if (byteCount < 0) {
        fail(path, LmLibResultBufferNotDivisibleByElementSize);
    }
    Bytes bytes(static_cast<std::size_t>(byteCount));
    // The library gets a valid address even if there is nothing to copy.
    unsigned char dummy = 0;
    std::int32_t bytesCopied = 0;
    lmLibGetBinary(&code, path.c_str(), bytes.size == 0 ? &dummy : bytes.data.get(), byteCount, &bytesCopied, nullptr);
    checkResult(path, code);
    if (bytesCopied != byteCount) {
        fail(path, LmLibResultInternalError);
    }
    return bytes;
}

// True if the layout accounts for every byte. The products fit into 64 bits, because every factor is less than 2^31.
bool describes(const ImageLayout &layout, std::size_t byteCount) {
    const auto count = static_cast<std::int64_t>(byteCount);
    if (layout.width <= 0 || layout.height <= 0 || layout.channelCount <= 0) {
        return false;
    }
    const std::int64_t elements = std::int64_t{layout.width} * layout.height;
    return elements <= count && elements * layout.channelCount == count;
}

void scaleValues(Bytes &bytes, double valueScale) {
    std::array<unsigned char, 256> scaled{};
    for (std::size_t value = 0; value < scaled.size(); ++value) {
        const double product = std::round(static_cast<double>(value) * valueScale);
        // NaN counts as 0.
        scaled[value] = product > 0.0 ? static_cast<unsigned char>(std::min(product, 255.0)) : 0;
    }
    std::transform(bytes.data.get(), bytes.data.get() + bytes.size, bytes.data.get(),
                   [&scaled](unsigned char byte) { return scaled[byte]; });
}

QImage makeImage(const Bytes &bytes, const ImageLayout &layout) {
    const auto format = layout.channelCount == 1 ? QImage::Format_Indexed8 : QImage::Format_RGB888;
    const int bytesPerLine = layout.width * layout.channelCount;
    // The copy owns its pixels; the wrapped bytes belong to the caller.
    QImage image = QImage(bytes.data.get(), layout.width, layout.height, bytesPerLine, format).copy();
    if (image.format() == QImage::Format_Indexed8) {
        image.setColorTable(grayTable());
    }
    return image;
}

QImage turned(const QImage &image, std::int32_t quarterTurns) {
    QTransform transform;
    const QPoint center = image.rect().center();
    transform.translate(center.x(), center.y());
    // For angles up to one full turn, the toolkit's rotation is exact and keeps the palette. For greater angles, it
    // would resample the picture.
    transform.rotate((quarterTurns % 4) * 90.0);
    return image.transformed(transform, Qt::FastTransformation);
}

QRgb jetColor(double t) {
    constexpr double slope = 4.0 * 255.0;
    const auto color = [](double red, double green, double blue) {
        const auto lowByte = [](double value) { return static_cast<int>(std::lround(value) & 0xFF); };
        return qRgb(lowByte(red), lowByte(green), lowByte(blue));
    };
    if (t < 0.125) {
        return color(0, 0, (t + 0.125) * slope);
    }
    if (t < 0.375) {
        return color(0, (t - 0.125) * slope, 255);
    }
    if (t < 0.625) {
        return color((t - 0.375) * slope, 255, 255 - (t - 0.375) * slope);
    }
    if (t < 0.875) {
        return color(255, 255 - (t - 0.625) * slope, 0);
    }
    return color(255 - (t - 0.875) * slope, 0, 0);
}

}  // namespace

QImage imageFromBinaryItem(const std::string &path, bool mirrorHorizontally, bool mirrorVertically, bool rotate180,
                           double valueScale, std::int32_t quarterTurns) {
    const ImageLayout layout = readLayout(path);
    Bytes bytes = readBytes(path);
    if (bytes.size == 0) {
        return {};
    }
    if (!describes(layout, bytes.size)) {
        fail(path, LmLibResultBufferNotDivisibleByElementSize);
    }
    if (valueScale != 1.0) {
        scaleValues(bytes, valueScale);
    }
    QImage image = makeImage(bytes, layout);
    if (quarterTurns > 0) {
        image = turned(image, quarterTurns);
    }
    return image.mirrored(rotate180 != mirrorHorizontally, rotate180 != mirrorVertically);
}

QPixmap pixmapFromBinaryItem(const std::string &path, bool mirrorHorizontally, bool mirrorVertically, bool rotate180,
                             double valueScale, std::int32_t quarterTurns) {
    // The picture is passed as a temporary object, so that the toolkit can reuse its memory instead of copying it.
    return QPixmap::fromImage(
        imageFromBinaryItem(path, mirrorHorizontally, mirrorVertically, rotate180, valueScale, quarterTurns),
        Qt::AutoColor);
}

void fitViewToScene(QGraphicsView *view) {
    QGraphicsScene *scene = view->scene();
    if (scene == nullptr) {
        return;
    }
    const QRectF bounds = scene->itemsBoundingRect();
    scene->setSceneRect(bounds);
    view->fitInView(bounds, Qt::KeepAspectRatio);
    view->centerOn(bounds.center());
}

QVector<QRgb> makeColorTable(const std::string &name, int count) {
    std::string lowerName = name;
    std::transform(lowerName.begin(), lowerName.end(), lowerName.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    const bool jet = lowerName == "jet";
    if (count < 1 || (!jet && lowerName != "gray")) {
        return {};
    }
    QVector<QRgb> table(count);
    for (int i = 0; i < count; ++i) {
        const int gray = i % 256;
        table[i] = jet ? jetColor(count > 1 ? static_cast<double>(i) / (count - 1) : 0.0) : qRgb(gray, gray, gray);
    }
    return table;
}
