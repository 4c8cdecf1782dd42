#include "camera_library/output/pdf_pages.h"

#include <cairo-pdf.h>

#include <algorithm>
#include <new>
#include <utility>

#include "camera_library/output/cairo_drawing.h"
#include "camera_library/pattern/number_text.h"

namespace lmlib64 {

namespace {

constexpr double captionSize = 2.5;
constexpr double labelSize = 2.3;
constexpr double quarterTurn = 1.5707963267948966;

struct Output {
    std::string bytes;
    bool isComplete = true;
};

// Cairo calls this: no exception may pass through it, and it does not always remember what is returned.
cairo_status_t appendBytes(void *closure, const unsigned char *data, unsigned int length) noexcept {
    auto &output = *static_cast<Output *>(closure);
    try {
        output.bytes.append(reinterpret_cast<const char *>(data), length);
    } catch (...) {
        output.isComplete = false;
    }
    return output.isComplete ? CAIRO_STATUS_SUCCESS : CAIRO_STATUS_NO_MEMORY;
}

double textWidth(cairo_t *context, const std::string &text) {
    cairo_text_extents_t extents{};
    cairo_text_extents(context, text.c_str(), &extents);
    return extents.x_advance;
}

void selectFont(cairo_t *context, double size) {
    cairo_select_font_face(context, "sans-serif", CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_NORMAL);
    cairo_set_font_size(context, size);
}

void drawCaption(cairo_t *context, const PrintedPage &page) {
    selectFont(context, captionSize);
    const double width = textWidth(context, page.caption);
    const double shrink = std::min(1.0, page.layout.captionWidth / std::max(width, 1.0));
    selectFont(context, captionSize * shrink);
    cairo_move_to(context, page.layout.caption.x - width * shrink / 2.0, page.layout.caption.y);
    cairo_show_text(context, page.caption.c_str());
}

void drawCheckBar(cairo_t *context, const CheckBar &bar) {
    cairo_new_path(context);
    for (const Rectangle &shape : checkBarShapes(bar)) {
        cairo_rectangle(context, shape.left, shape.top, shape.right - shape.left, shape.bottom - shape.top);
    }
    cairo_set_fill_rule(context, CAIRO_FILL_RULE_WINDING);
    cairo_fill(context);

    const std::string label = numberText(bar.length) + " mm";
    selectFont(context, labelSize);
    cairo_save(context);
    cairo_translate(context, bar.label.x, bar.label.y);
    cairo_rotate(context, bar.isAlongY ? -quarterTurn : 0.0);
    cairo_move_to(context, 0.0, 0.0);
    cairo_show_text(context, label.c_str());
    cairo_restore(context);
}

void drawPage(cairo_t *context, const PrintedPage &page) {
    cairo_save(context);
    cairo_scale(context, pageUnitsPerMm, pageUnitsPerMm);
    cairo_set_source_rgb(context, 0.0, 0.0, 0.0);
    cairo_save(context);
    cairo_translate(context, page.layout.pattern.x, page.layout.pattern.y);
    fillDarkShapes(context, page.geometry);
    cairo_restore(context);
    drawCheckBar(context, page.layout.barAlongX);
    drawCheckBar(context, page.layout.barAlongY);
    drawCaption(context, page);
    cairo_restore(context);
}

}  // namespace

std::string drawPdfPages(const std::vector<PrintedPage> &pages) {
    Output output;
    const CairoSurface surface(cairo_pdf_surface_create_for_stream(appendBytes, &output, 1.0, 1.0));
    checkCairo(cairo_surface_status(surface.get()));
    const CairoContext context(cairo_create(surface.get()));
    for (const PrintedPage &page : pages) {
        cairo_pdf_surface_set_size(surface.get(), page.layout.width * pageUnitsPerMm,
                                   page.layout.height * pageUnitsPerMm);
        drawPage(context.get(), page);
        cairo_show_page(context.get());
    }
    cairo_surface_finish(surface.get());
    if (!output.isComplete) {
        throw std::bad_alloc();
    }
    checkCairo(cairo_status(context.get()));
    checkCairo(cairo_surface_status(surface.get()));
    return std::move(output.bytes);
}

}  // namespace lmlib64
