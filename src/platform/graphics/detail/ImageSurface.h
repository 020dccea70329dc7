#pragma once

// The Cairo surface inside an Image, for the platform's own drawing and encoding.

#include "platform/graphics/Image.h"
#include "platform/graphics/detail/CHandles.h"

namespace velmorant::platform {

struct Image::Impl {
    SurfacePtr surface;
};

inline cairo_surface_t* cairoSurface(const Image& image) { return image.impl().surface.get(); }

// Takes ownership of an ARGB32 surface whose pixel size is points x scale;
// none (the surface released) when the surface is in an error state.
inline std::shared_ptr<Image> adoptSurface(SurfacePtr surface, Size points, double scale) {
    return Image::adopt(std::make_unique<Image::Impl>(Image::Impl{std::move(surface)}), points, scale);
}

}  // namespace velmorant::platform
