#pragma once

#include "platform/graphics/detail/CHandles.h"

#include <cstddef>
#include <cstdlib>

namespace velmorant::platform {

// An image surface whose pixels are left as they come, for a caller that
// writes every pixel it later reads: clearing a large bitmap costs as much
// as drawing much of it. None when it cannot be had (or is empty).
inline SurfacePtr uninitialisedSurface(cairo_format_t format, int width, int height) {
    static cairo_user_data_key_t pixelsKey;
    if (width <= 0 || height <= 0) return nullptr;
    const int stride = cairo_format_stride_for_width(format, width);
    if (stride <= 0) return nullptr;
    auto* pixels = static_cast<unsigned char*>(std::malloc(static_cast<std::size_t>(stride) * height));
    if (!pixels) return nullptr;
    SurfacePtr made(cairo_image_surface_create_for_data(pixels, format, width, height, stride));
    if (cairo_surface_status(made.get()) != CAIRO_STATUS_SUCCESS ||
        cairo_surface_set_user_data(made.get(), &pixelsKey, pixels, std::free) != CAIRO_STATUS_SUCCESS) {
        std::free(pixels);
        return nullptr;
    }
    return made;
}

}  // namespace velmorant::platform
