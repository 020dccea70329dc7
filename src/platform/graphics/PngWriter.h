#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

namespace velmorant::platform {

class Image;

// How the encoder trades size for speed: igzip's level (0 to 3), rows
// unfiltered. Chosen by measurement over every card at scale 3
// (bench/CardBench.cpp, BM_EncodeEveryCard: CPU time for the ten cards, their
// bytes, the worst card against zlib's default level with adaptive filters)
// and callgrind of `show SleepRingsIntent --png`, whole process:
//   level 0: 17.7 ms, 1.53 MB, worst 2.29x; 197.5 M instructions
//   level 1: 17.6 ms, 1.28 MB, worst 1.45x; 197.5 M (chosen)
//   level 2: 17.8 ms, 1.27 MB, worst 1.45x; 197.4 M; its buffers 48 KB larger
//   level 3: 84.6 ms, 1.25 MB, worst 1.50x
//   zlib's default (level 6, adaptive filters): 1.05 MB; zlib level 2 through
//   libspng, as before: 290.7 M instructions for the whole `show`
// Sub or Up filters made all but one or two cards and widget pictures larger.
struct PngOptions {
    int compressionLevel = 1;
    // Stored as an international text chunk under "Description"; empty for none.
    std::string description;
};

// A PNG made band by band (rows top to bottom), so a large picture never has
// to be held whole: into a file, or into memory when no path is given.
class PngEncoder {
public:
    PngEncoder(std::filesystem::path path, int pixelWidth, int pixelHeight, bool alpha, const PngOptions& options = {});
    ~PngEncoder();
    PngEncoder(const PngEncoder&) = delete;
    PngEncoder& operator=(const PngEncoder&) = delete;

    // Appends the first `rows` rows (all when negative) of a band exactly as
    // wide as the picture, converted and compressed before it returns; false
    // once anything failed.
    bool append(const Image& band, int rows = -1);
    // Ends the picture: false, with the reason in `error()`, unless every row was written (no file is then left).
    bool finish();
    const std::string& error() const;
    // The encoded picture, after a successful `finish` into memory.
    std::string bytes() const;

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

// True when every pixel of the bitmap is opaque.
bool isOpaque(const Image& image);

// Writes the bitmap as 8-bit PNG: RGB when every pixel is opaque, else RGBA
// (straight alpha). On failure returns false, says why, and leaves no file.
bool writePng(const Image& image, const std::filesystem::path& path, const PngOptions& options = {},
              std::string* error = nullptr);

// The same encoding into memory; empty on failure.
std::string encodePng(const Image& image, const PngOptions& options = {}, std::string* error = nullptr);

}  // namespace velmorant::platform
