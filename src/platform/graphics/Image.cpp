#include "platform/graphics/Image.h"

#include "platform/graphics/PngWriter.h"
#include "platform/graphics/detail/ImageSurface.h"

#include <cmath>
#include <cstdint>

namespace velmorant::platform {
namespace {

// Pixels along one side, or -1 when the side cannot be a bitmap's.
int pixelsFor(double points, double scale) {
    double pixels = std::ceil(points * scale);
    if (!std::isfinite(pixels) || pixels < 0 || pixels > INT32_MAX) return -1;
    return static_cast<int>(pixels);
}

}  // namespace

std::shared_ptr<Image> Image::create(Size points, double scale) {
    if (!std::isfinite(scale) || scale < 0) return nullptr;
    int w = pixelsFor(points.width, scale);
    int h = pixelsFor(points.height, scale);
    if (w < 0 || h < 0) return nullptr;
    return adoptSurface(SurfacePtr(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, w, h)), points, scale);
}

std::shared_ptr<Image> Image::adopt(std::unique_ptr<Impl> impl, Size points, double scale) {
    if (!impl || !impl->surface || cairo_surface_status(impl->surface.get()) != CAIRO_STATUS_SUCCESS) return nullptr;
    return std::shared_ptr<Image>(new Image(std::move(impl), points, scale));
}

Image::Image(std::unique_ptr<Impl> impl, Size points, double scale)
    : impl_(std::move(impl)), size_(points), scale_(scale) {}

Image::~Image() = default;

int Image::pixelWidth() const { return cairo_image_surface_get_width(cairoSurface(*this)); }
int Image::pixelHeight() const { return cairo_image_surface_get_height(cairoSurface(*this)); }

Rgba Image::pixelAt(Point point) const {
    double px = std::floor(point.x * scale_);
    double py = std::floor(point.y * scale_);
    if (!(px >= 0 && py >= 0 && px < pixelWidth() && py < pixelHeight())) return {};
    int x = static_cast<int>(px), y = static_cast<int>(py);
    cairo_surface_t* surface = cairoSurface(*this);
    cairo_surface_flush(surface);
    const unsigned char* row = cairo_image_surface_get_data(surface) + y * cairo_image_surface_get_stride(surface);
    std::uint32_t argb = reinterpret_cast<const std::uint32_t*>(row)[x];
    double a = ((argb >> 24) & 0xff) / 255.0;
    if (a == 0) return {};
    auto channel = [&](int shift) { return ((argb >> shift) & 0xff) / 255.0 / a; };
    return {channel(16), channel(8), channel(0), a};
}

bool Image::writePng(const std::filesystem::path& path, std::string* error) const {
    return platform::writePng(*this, path, {}, error);
}

}  // namespace velmorant::platform
