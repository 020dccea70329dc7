#pragma once

#include <cairo.h>

namespace velmorant::platform {

struct ArcBox {
    double x0 = 0, y0 = 0, x1 = 0, y1 = 0;
};

// How far past the true outline Cairo's flattened curves may paint, in device
// pixels: its default tolerance (0.1) for the arc and again for its offset.
constexpr double kArcBoxSlack = 0.25;

// A box holding every point Cairo paints when it strokes, `halfWidth` either
// side, an arc round (cx, cy) of `radius` from `start` through `sweep` (at
// least 0) radians, ended by `cap`; all in device pixels. Found from the arc's
// geometry, it costs a fraction of asking Cairo to stroke the arc for its extents.
ArcBox strokedArcBox(double cx, double cy, double radius, double start, double sweep, double halfWidth,
                     cairo_line_cap_t cap);

}  // namespace velmorant::platform
