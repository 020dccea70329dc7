#pragma once

#include "platform/graphics/detail/CHandles.h"

#include <cstddef>

namespace velmorant::platform {

// An image surface whose pixels are left as they come, for a caller that
// writes every pixel it later reads: clearing a large bitmap costs as much
// as drawing much of it. Its pixels come from where BitmapMemory.h says.
// None when it cannot be had (or is empty).
SurfacePtr uninitialisedSurface(cairo_format_t format, int width, int height);

inline constexpr std::size_t kHugePage = std::size_t{2} << 20;

// The length mapped for a bitmap of `bytes` on huge pages: whole `page`s, and
// whole huge pages when the part past the last whole one is half of one or
// more, so that one more huge page costs little memory and saves faults.
std::size_t hugePageMappingLength(std::size_t bytes, std::size_t page);

}  // namespace velmorant::platform
