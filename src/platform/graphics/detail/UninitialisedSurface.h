#pragma once

#include "platform/graphics/detail/CHandles.h"

namespace velmorant::platform {

// An image surface whose pixels are left as they come, for a caller that
// writes every pixel it later reads: clearing a large bitmap costs as much
// as drawing much of it. Its pixels come from where BitmapMemory.h says.
// None when it cannot be had (or is empty).
SurfacePtr uninitialisedSurface(cairo_format_t format, int width, int height);

}  // namespace velmorant::platform
