#pragma once

#include "platform/core/Colour.h"

#include <cstdint>

namespace velmorant::platform {

// `colour` as Cairo paints it into an ARGB32 pixel: premultiplied, 8 bits a channel.
std::uint32_t premultipliedPixel(const Rgba& colour);

// Paints `pixel` (premultiplied) through the `count` alpha bytes of `mask` over
// as many pixels of `row`, to the byte as Cairo paints a colour through an A8
// mask with its OVER operator, so that a picture does not change with the way
// its shadows are painted.
void paintThroughMask(std::uint32_t pixel, const unsigned char* mask, std::uint32_t* row, int count);

// Paints the `count` premultiplied pixels of `source` over as many of `row`,
// to the byte as Cairo paints an image with its OVER operator.
void paintOver(const std::uint32_t* source, std::uint32_t* row, int count);

}  // namespace velmorant::platform
