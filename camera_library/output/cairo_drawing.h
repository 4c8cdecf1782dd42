// The one place where Cairo is given a pattern's shapes: every output that draws through it fills them
// with fillDarkShapes, at the scale and place it has set up. Not part of any other file's interface.
#pragma once

#include <cairo.h>

#include <memory>

#include "camera_library/pattern/pattern_geometry.h"

namespace lmlib64 {

struct DestroyCairo {
    void operator()(cairo_t *context) const { cairo_destroy(context); }
    void operator()(cairo_surface_t *surface) const { cairo_surface_destroy(surface); }
};
using CairoContext = std::unique_ptr<cairo_t, DestroyCairo>;
using CairoSurface = std::unique_ptr<cairo_surface_t, DestroyCairo>;

/// Fills all shapes as one path with the current source. The user space is the geometry's: millimetres, y down.
void fillDarkShapes(cairo_t *context, const PatternGeometry &geometry);

/// Throws std::runtime_error with Cairo's reason where it has failed.
void checkCairo(cairo_status_t status);

}  // namespace lmlib64
