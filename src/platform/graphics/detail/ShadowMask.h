#pragma once

#include "platform/graphics/detail/CHandles.h"

#include <functional>
#include <optional>
#include <vector>

namespace velmorant::platform {

// Pixels of a canvas: [x0, x1) x [y0, y1).
struct PixelBounds {
    int x0 = 0, y0 = 0, x1 = 0, y1 = 0;
    int width() const { return x1 - x0; }
    int height() const { return y1 - y0; }
    bool empty() const { return x1 <= x0 || y1 <= y0; }
};

// The alpha of a shadow: an A8 surface, one byte per canvas pixel, with its
// top left corner at canvas pixel (x, y). It covers at least the bounds asked
// for; only `parts` (in canvas pixels, row by row of tiles, each row left to
// right) hold alpha: elsewhere its bytes mean nothing (they may never have
// been written), so only the parts are read.
struct ShadowMask {
    SurfacePtr alpha;
    int x = 0, y = 0;
    std::vector<PixelBounds> parts;
};

// Where the blur is worked out: on coarser cells when sigma is wide enough
// (fast, within a few levels of alpha), or on the canvas's own pixels. Text
// needs pixels: Cairo puts each glyph on a whole device pixel, so on cells
// its shadow would sit up to half a cell away from the glyph.
enum class MaskGrid { Coarse, Pixels };

// Draws a shape's alpha through `paint` (given a context whose matrix maps
// canvas pixels, the shape already moved by the shadow's offset), blurs it
// with a Gaussian of `sigma` pixels, and returns it over `bounds`. The shape
// must lie within `bounds` grown by 3 sigma; none when memory runs out.
// Tiles `hidden` says will be painted over whatever lies under them (in
// canvas pixels) are neither worked out nor among the parts.
std::optional<ShadowMask> makeShadowMask(PixelBounds bounds, double sigma,
                                         const std::function<void(cairo_t*)>& paint,
                                         MaskGrid grid = MaskGrid::Coarse,
                                         const std::function<bool(const PixelBounds&)>& hidden = {});

// One row of `cellCount` cells scaled across to `width` pixels: pixel x lies
// between cells first[x] and first[x] + 1 (`first` never falls), weight[x] of
// the way, as a float.
void scaleCellsAcross(const unsigned char* cells, int cellCount, const int* first, const float* weight, int width,
                      float* out);

}  // namespace velmorant::platform
