#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

namespace velmorant::platform {

class Image;

// The row filter each PNG scanline is written with.
enum class PngFilter { None, Sub, Up, Average, Paeth, Adaptive };

// How zlib looks for repeats: the full search, or only runs of equal bytes.
enum class PngStrategy { Default, Filtered, HuffmanOnly, RunLength };

// How the encoder trades size for speed, chosen by measurement over every
// card at scale 3 (bench/CardBench.cpp, BM_EncodeEveryCard; callgrind of
// `show TimeAsleepIntent --png`, whole process):
//   level 1, no filter, 32 KB window, memLevel 8: 410.6 M instructions, 237 KB
//   level 2, no filter, 32 KB window, memLevel 6: 390.8 M, 222 KB (chosen)
//   level 3, same:                               391.8 M, 214 KB
//   memLevel 4 / 9:                              394.0 M / 440.9 M
//   window 16 KB or 8 KB:                         +33 M (the window slides more often)
//   Sub or Up filter: +118 M; run-length or Huffman-only strategy: 1.7x to 37x
//   Cairo's size on some card (they repeat pixels three bytes apart, not one).
// zlib's smaller hash (memLevel 6) is cheaper to slide than the default; the
// worst card stays within 1.33x of Cairo's writer, whose level 6 and
// adaptive filters cost several times as long.
struct PngOptions {
    int compressionLevel = 2;
    PngFilter filter = PngFilter::None;
    PngStrategy strategy = PngStrategy::Default;
    // zlib's window (9 to 15 bits) and hash memory (1 to 9).
    int windowBits = 15;
    int memLevel = 6;
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

    // A band's rows converted to the file's pixel layout, ready to compress.
    struct Rows {
        std::unique_ptr<std::uint8_t[]> bytes;  // `count` rows, then one spare byte
        int count = 0;
        bool wrongWidth = false;
    };
    // Converts the first `rows` rows (all when negative) of a band; safe to
    // call on one thread while another appends, so that the thread drawing
    // the bands takes this part off the one compressing them.
    Rows convert(const Image& band, int rows = -1) const;
    // Appends converted rows, or the first `rows` rows of a band exactly as
    // wide as the picture; false once anything failed.
    bool append(const Rows& rows);
    bool append(const Image& band, int rows = -1) { return append(convert(band, rows)); }
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
