#pragma once

namespace velmorant::platform {

// An 8-bit alpha bitmap (Cairo A8) to blur in place: `height` rows of
// `width` bytes, `stride` bytes apart.
struct AlphaBitmap {
    unsigned char* data = nullptr;
    int width = 0, height = 0, stride = 0;
};

// Blurs with a Gaussian of standard deviation `sigma` (pixels). Pixels outside
// the bitmap count as transparent, so a shape needs 3 sigma of room around it.
void blurAlpha(AlphaBitmap bitmap, double sigma);

// The two ways of doing it, kept side by side for the benchmark that chose
// between them: three successive box blurs, and the sampled Gaussian itself.
void boxBlurAlpha(AlphaBitmap bitmap, double sigma);
void gaussianBlurAlpha(AlphaBitmap bitmap, double sigma);

}  // namespace velmorant::platform
