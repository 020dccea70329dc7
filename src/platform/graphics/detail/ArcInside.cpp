#include "platform/graphics/detail/ArcInside.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace velmorant::platform {
namespace {

constexpr double kTurn = 2 * M_PI;
constexpr double kEverywhere = std::numeric_limits<double>::infinity();

// Offsets dx from the centre, lo to hi; empty when lo > hi.
struct Span {
    double lo = -kEverywhere, hi = kEverywhere;
    Span meet(Span other) const { return {std::max(lo, other.lo), std::min(hi, other.hi)}; }
};

// The offsets that satisfy a * dx <= b.
Span atMost(double a, double b) {
    if (a > 0) return {-kEverywhere, b / a};
    if (a < 0) return {b / a, kEverywhere};
    return b >= 0 ? Span{} : Span{kEverywhere, -kEverywhere};
}

// The nearest whole numbers above and below `v` (within int's range): cheaper than a call to ceil or floor.
int roundedDown(double v) {
    const int t = static_cast<int>(v);
    return t > v ? t - 1 : t;
}
int roundedUp(double v) {
    const int t = static_cast<int>(v);
    return t < v ? t + 1 : t;
}

}  // namespace

ArcInside::ArcInside(double cx, double cy, double inner, double outer, double start, double sweep)
    : cx_(cx), cy_(cy), inner_(inner), outer_(outer), start_(start), sweep_(sweep) {
    const double margin = 2 / std::max(inner, 1.0);
    from_ = start + margin;
    to_ = start + sweep - margin;
    fromSin_ = std::sin(from_);
    fromCos_ = std::cos(from_);
    toSin_ = std::sin(to_);
    toCos_ = std::cos(to_);
}

bool ArcInside::holds(const PixelBounds& tile) const {
    const double corners[4][2] = {{tile.x0 - cx_, tile.y0 - cy_},
                                  {tile.x1 - cx_, tile.y0 - cy_},
                                  {tile.x0 - cx_, tile.y1 - cy_},
                                  {tile.x1 - cx_, tile.y1 - cy_}};
    // Nearest point of the tile to the centre, then its farthest corner.
    const double nx = std::clamp(0.0, corners[0][0], corners[3][0]);
    const double ny = std::clamp(0.0, corners[0][1], corners[3][1]);
    if (nx * nx + ny * ny < inner_ * inner_) return false;
    for (const auto& c : corners)
        if (c[0] * c[0] + c[1] * c[1] > outer_ * outer_) return false;
    if (sweep_ >= kTurn) return true;
    // The tile lies off the centre, so its angles run between those of its corners.
    double lowest = kTurn, highest = 0;
    for (const auto& c : corners) {
        double a = std::fmod(std::atan2(c[1], c[0]) - start_, kTurn);
        if (a < 0) a += kTurn;
        lowest = std::min(lowest, a);
        highest = std::max(highest, a);
    }
    return highest - lowest < M_PI && lowest >= from_ - start_ && highest <= to_ - start_;
}

void ArcInside::addRunsInside(int y, std::vector<PixelRun>& runs) const {
    // The row's top and bottom edges, from the centre: every corner of a pixel lies on one.
    const double top = y - cy_, bottom = y + 1 - cy_;
    const double far = std::max(std::abs(top), std::abs(bottom));
    const double near = top <= 0 && bottom >= 0 ? 0 : std::min(std::abs(top), std::abs(bottom));
    if (far >= outer_) return;
    const double out = std::sqrt(outer_ * outer_ - far * far);
    const double in = near < inner_ ? std::sqrt(inner_ * inner_ - near * near) : 0;
    // Left and right of the hole, or one span where the row passes above or below it.
    const Span rings[2] = {{-out, in > 0 ? -in : out}, {in, out}};
    const int ringCount = in > 0 ? 2 : 1;

    // The sweep as half-planes through the centre, each pixel wholly in one: the angle at
    // least `from_` (up to half a turn on), and at most `to_` (from half a turn before).
    Span sides[2];
    int sideCount = 1;
    if (sweep_ < kTurn) {
        if (to_ <= from_) return;
        const Span fromSide = atMost(fromSin_, fromCos_ * top).meet(atMost(fromSin_, fromCos_ * bottom));
        const Span toSide = atMost(-toSin_, -toCos_ * top).meet(atMost(-toSin_, -toCos_ * bottom));
        if (to_ - from_ <= M_PI) {
            sides[0] = fromSide.meet(toSide);
        } else {
            // Wider than half a turn: either half-plane lies within the sweep.
            sides[0] = fromSide;
            sides[1] = toSide;
            sideCount = 2;
        }
    }
    constexpr double kFar = 1e9;
    for (int r = 0; r < ringCount; ++r) {
        for (int i = 0; i < sideCount; ++i) {
            const Span s = rings[r].meet(sides[i]);
            const int x0 = roundedUp(std::clamp(cx_ + s.lo, -kFar, kFar));
            const int x1 = roundedDown(std::clamp(cx_ + s.hi, -kFar, kFar));
            if (x1 > x0) runs.push_back({x0, x1});
        }
    }
}

void runsOutside(const std::vector<ArcInside>& insides, int y, PixelRun wanted, std::vector<PixelRun>& out,
                 std::vector<PixelRun>& inside) {
    out.clear();
    inside.clear();
    for (const ArcInside& arc : insides) arc.addRunsInside(y, inside);
    std::sort(inside.begin(), inside.end(), [](const PixelRun& a, const PixelRun& b) { return a.x0 < b.x0; });
    int x = wanted.x0;
    for (const PixelRun& run : inside) {
        if (x >= wanted.x1) break;
        if (run.x0 > x) out.push_back({x, std::min(run.x0, wanted.x1)});
        x = std::max(x, run.x1);
    }
    if (x < wanted.x1) out.push_back({x, wanted.x1});
}

}  // namespace velmorant::platform
