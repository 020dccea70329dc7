#pragma once

#include "platform/graphics/detail/ShadowMask.h"

#include <vector>

namespace velmorant::platform {

// Pixels [x0, x1) of one row.
struct PixelRun {
    int x0 = 0, x1 = 0;
    bool operator==(const PixelRun&) const = default;
};

// The inside of a stroked arc, in canvas pixels, less a margin for its
// antialiased edges: an opaque stroke replaces every pixel there whatever lay
// under it. Caps are left out, so the inside is never larger than the stroke.
class ArcInside {
public:
    // Between radii `inner` and `outer` round (cx, cy), swept from `start` through `sweep` (0 to a turn and more) radians.
    ArcInside(double cx, double cy, double inner, double outer, double start, double sweep);

    // Whether every pixel of `tile` lies inside.
    bool holds(const PixelBounds& tile) const;
    // Adds to `runs` pixels of row `y` that lie wholly inside, as runs in no particular order
    // (they may overlap); the pixels of the row it leaves out may lie inside too.
    void addRunsInside(int y, std::vector<PixelRun>& runs) const;

private:
    double cx_, cy_, inner_, outer_, start_, sweep_;
    // The part of the sweep counted as inside, clear of the ends' antialiasing.
    double from_, to_;
    double fromSin_, fromCos_, toSin_, toCos_;
};

// `wanted` less the pixels of row `y` inside any of `insides`, as runs left to right, into `out`;
// `inside` is scratch space. Both are cleared first.
void runsOutside(const std::vector<ArcInside>& insides, int y, PixelRun wanted, std::vector<PixelRun>& out,
                 std::vector<PixelRun>& inside);

}  // namespace velmorant::platform
