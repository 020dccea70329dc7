#pragma once

#include "platform/core/Geometry.h"
#include "platform/graphics/Image.h"

#include <array>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace velmorant::platform {

// A bitmap kept in a file between runs, exactly as drawn: a header (what kind
// of file, the picture's size, a rectangle its owner notes, the length and a
// checksum of the pixels), then the rows.
struct KeptImage {
    std::shared_ptr<Image> image;
    Rect noted;
};

// The file's kind, bumped whenever the layout of a kind changes.
using KeptImageKind = std::array<char, 8>;

// The picture in `file` drawn at `scale`, of `points` when given; none when the
// file is missing, of another kind or size, shorter or longer than its header
// says, or its pixels do not match their checksum.
std::optional<KeptImage> readKeptImage(const std::filesystem::path& file, const KeptImageKind& kind, double scale,
                                       std::optional<Size> points = std::nullopt);

// Reads the picture in `file`, of `points` and `pixelWidth` x `pixelHeight` pixels, straight into `data`
// (rows `stride` bytes apart): the rectangle its owner noted, or none, under the same conditions as
// `readKeptImage`, with `data` then holding anything.
std::optional<Rect> readKeptImageInto(const std::filesystem::path& file, const KeptImageKind& kind, Size points,
                                      unsigned char* data, int stride, int pixelWidth, int pixelHeight);

// The folder `name` in the user's cache: under $XDG_CACHE_HOME, else ~/.cache;
// none when neither is an absolute path.
std::filesystem::path userCacheFolder(std::string_view name);

// Writes `image` as `folder`/`name`: beside it first, then renamed into place,
// so readers see a whole file or none. False when it could not be written.
bool writeKeptImage(const std::filesystem::path& folder, const std::string& name, const KeptImageKind& kind,
                    const Image& image, Rect noted = {});

}  // namespace velmorant::platform
