#include "platform/graphics/detail/StrokedArcBox.h"

#include <algorithm>
#include <cmath>

namespace velmorant::platform {
namespace {

constexpr double kTurn = 2 * M_PI;

struct Growing {
    ArcBox box{INFINITY, INFINITY, -INFINITY, -INFINITY};
    void add(double x, double y) {
        box = {std::min(box.x0, x), std::min(box.y0, y), std::max(box.x1, x), std::max(box.y1, y)};
    }
};

}  // namespace

ArcBox strokedArcBox(double cx, double cy, double radius, double start, double sweep, double halfWidth,
                     cairo_line_cap_t cap) {
    if (radius < halfWidth) {
        // Wider than the circle, the stroke folds over the centre, where Cairo's
        // outline is no simple band: take the disc no point of it lies outside,
        // a square cap's corners being the farthest.
        const double reach = radius + halfWidth * (cap == CAIRO_LINE_CAP_SQUARE ? M_SQRT2 : 1) + kArcBoxSlack;
        return {cx - reach, cy - reach, cx + reach, cy + reach};
    }
    Growing g;
    // The band between the stroke's edges, radius - half to radius + half, is
    // widest at the ends and where the sweep crosses an axis (every axis once
    // it sweeps a turn).
    auto band = [&](double angle) {
        const double c = std::cos(angle), s = std::sin(angle);
        for (double rho : {radius - halfWidth, radius + halfWidth}) g.add(cx + rho * c, cy + rho * s);
    };
    const double end = start + sweep;
    band(start);
    band(end);
    for (int quarter = 0; quarter < 4; ++quarter) {
        const double axis = quarter * M_PI / 2;
        double past = std::fmod(axis - start, kTurn);
        if (past < 0) past += kTurn;
        if (past <= sweep) band(axis);
    }
    // The caps: a square reaches half the width on along the tangent, past
    // the start backwards and past the end forwards; a round one is a disc of
    // half the width round each end.
    for (double angle : {start, end}) {
        const double c = std::cos(angle), s = std::sin(angle);
        const double px = cx + radius * c, py = cy + radius * s;
        if (cap == CAIRO_LINE_CAP_SQUARE) {
            const double along = angle == start ? -halfWidth : halfWidth;
            for (double across : {-halfWidth, halfWidth}) g.add(px + across * c - along * s, py + across * s + along * c);
        } else if (cap == CAIRO_LINE_CAP_ROUND) {
            g.add(px - halfWidth, py - halfWidth);
            g.add(px + halfWidth, py + halfWidth);
        }
    }
    const ArcBox& b = g.box;
    return {b.x0 - kArcBoxSlack, b.y0 - kArcBoxSlack, b.x1 + kArcBoxSlack, b.y1 + kArcBoxSlack};
}

}  // namespace velmorant::platform
