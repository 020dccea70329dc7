#pragma once

#include "platform/core/Colour.h"
#include "platform/core/Geometry.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

namespace velmorant::platform {

// A bitmap whose size is given in points and a scale (pixels per point), as
// the phone's images are. Pixels are Cairo ARGB32 (premultiplied).
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
    int pixelWidth() const;
    int pixelHeight() const;
    // The colour of the pixel under `point` (in points), unpremultiplied,
    // components 0...1; transparent outside the bitmap.
    Rgba pixelAt(Point point) const;

    // The resource name for images looked up by name, none for drawn images.
    const std::optional<std::string>& name() const { return name_; }
    void setName(std::string name) { name_ = std::move(name); }

    // Writes the bitmap as PNG; on failure returns false and says why.
    bool writePng(const std::filesystem::path& path, std::string* error = nullptr) const;

    // The bitmap, which the platform's own sources unwrap (platform/graphics/detail/ImageSurface.h).
    struct Impl;
    const Impl& impl() const { return *impl_; }
    // Takes the bitmap of `impl`, whose pixel size is points x scale; none when it is in an error state.
    static std::shared_ptr<Image> adopt(std::unique_ptr<Impl> impl, Size points, double scale);

private:
    Image(std::unique_ptr<Impl> impl, Size points, double scale);
    std::unique_ptr<Impl> impl_;
    Size size_;
    double scale_;
    std::optional<std::string> name_;
};

}  // namespace velmorant::platform
