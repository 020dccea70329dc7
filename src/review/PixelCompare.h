#pragma once

#include "Picture.h"

#include <cstdint>
#include <vector>

namespace velmorant::review {

enum class PixelMark : std::uint8_t { Same, AntiAliased, Changed };

// Where two pictures differ. Pictures of different sizes are not compared
// pixel by pixel: `sizeDiffers` is set and the marks are empty.
struct PictureDifference {
    bool sizeDiffers = false;
    std::uint64_t changedPixels = 0;
    std::uint64_t antiAliasedPixels = 0;
    // One mark per pixel, row by row; empty when nothing differs.
    std::vector<PixelMark> marks;
    // The box holding every changed pixel (or, with none, every anti-aliased one).
    std::uint32_t left = 0, top = 0, right = 0, bottom = 0;
};

// The squared YIQ distance between two straight RGBA pixels, each first laid
// over white by its alpha; 35215 is the largest possible.
double yiqDistance(const std::uint8_t* a, const std::uint8_t* b);
inline constexpr double kMaxYiqDistance = 35215;

// Compares pixel by pixel. A pixel differs when its YIQ distance exceeds
// kMaxYiqDistance x threshold²; a differing pixel that sits on an edge in
// either picture (darker and brighter neighbours, at most two equal to it, and
// its darkest or brightest neighbour inside a flat area in both pictures) is
// anti-aliasing rather than change.
PictureDifference comparePictures(const Picture& before, const Picture& after, double threshold);

// `after` faded to a dim grey, changed pixels in red, anti-aliasing in yellow.
Picture differencePicture(const Picture& after, const PictureDifference& difference);

}  // namespace velmorant::review
