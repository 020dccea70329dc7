#pragma once

// Pango layouts with the pinned fonts, for the platform's own text drawing.

#include "platform/graphics/FontSystem.h"
#include "platform/graphics/detail/CHandles.h"

#include <pango/pangocairo.h>

namespace velmorant::platform {

// A layout in device pixels: the system font at `font`'s size (points) x
// `pixelsPerPoint` and its weight, for a context with an identity matrix.
GObjectPtr<PangoLayout> layoutInPixels(const FontSystem& fonts, const Font& font, double pixelsPerPoint);

}  // namespace velmorant::platform
