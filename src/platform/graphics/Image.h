#pragma once

#include "platform/core/Colour.h"
#include "platform/core/Geometry.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace velmorant::platform {

// A bitmap whose size is given in points and a scale (pixels per point), as
// the phone's images are. Pixels are Cairo ARGB32 (premultiplied). A picture
// may be drawn on demand: its size is known at once, its pixels are drawn the
// first time anything reads them (see `Canvas::drawLater`).
class Image {
public:
    // A transparent bitmap of the given size in points, ceil(points x scale)
    // pixels. None when the size or scale is not finite or negative, or when
    // Cairo cannot make a bitmap that large.
    static std::shared_ptr<Image> create(Size points, double scale);
    ~Image();
    Image(const Image&) = delete;
    Image& operator=(const Image&) = delete;

    Size size() const { return size_; }
    double scale() const { return scale_; }
    // The size and scale never need the pixels.
    int pixelWidth() const { return pixelWidth_; }
    int pixelHeight() const { return pixelHeight_; }
    // The colour of the pixel under `point` (in points), unpremultiplied,
    // components 0...1; transparent outside the bitmap.
    Rgba pixelAt(Point point) const;

    // The resource name for images looked up by name, none for drawn images.
    const std::optional<std::string>& name() const { return name_; }
    void setName(std::string name) { name_ = std::move(name); }

    // Writes the bitmap as PNG; on failure returns false and says why.
    bool writePng(const std::filesystem::path& path, std::string* error = nullptr) const;

    // Whether the pixels exist yet: false only for a picture drawn on demand not yet asked for its pixels.
    bool isDrawn() const;
    // Draws such a picture now, so that its drawing can be timed apart from what reads it.
    void drawNow() const { impl(); }
    // How many pictures drawn on demand this process has drawn so far.
    static std::uint64_t drawingsOnDemand();

    // The bitmap, which the platform's own sources unwrap (platform/graphics/detail/ImageSurface.h);
    // a picture drawn on demand is drawn here, once, whichever thread asks first.
    struct Impl;
    const Impl& impl() const;
    // Takes the bitmap of `impl`, whose pixel size is points x scale; none when it is in an error state.
    static std::shared_ptr<Image> adopt(std::unique_ptr<Impl> impl, Size points, double scale);
    // A picture of `pixelWidth` x `pixelHeight` pixels that `draw` makes the first time its pixels are read.
    // A drawing that fails, or gives pixels of another size, leaves it transparent.
    using Drawing = std::function<std::shared_ptr<const Image>()>;
    static std::shared_ptr<Image> onDemand(Size points, double scale, int pixelWidth, int pixelHeight, Drawing draw);

private:
    struct Pending;
    Image(std::unique_ptr<Impl> impl, Size points, double scale);
    Image(std::unique_ptr<Pending> pending, Size points, double scale, int pixelWidth, int pixelHeight);
    std::unique_ptr<Impl> impl_;
    std::unique_ptr<Pending> pending_;
    Size size_;
    double scale_;
    int pixelWidth_ = 0;
    int pixelHeight_ = 0;
    std::optional<std::string> name_;
};

}  // namespace velmorant::platform
