#include "Image.h"

#include <cmath>
#include <cstdint>

namespace velmorant::platform {

std::shared_ptr<Image> Image::create(Size points, double scale) {
    int w = std::max(0, static_cast<int>(std::ceil(points.width * scale)));
    int h = std::max(0, static_cast<int>(std::ceil(points.height * scale)));
    return adopt(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, w, h), points, scale);
}

std::shared_ptr<Image> Image::adopt(cairo_surface_t* surface, Size points, double scale) {
    return std::shared_ptr<Image>(new Image(surface, points, scale));
}

Image::~Image() { cairo_surface_destroy(surface_); }

int Image::pixelWidth() const { return cairo_image_surface_get_width(surface_); }
int Image::pixelHeight() const { return cairo_image_surface_get_height(surface_); }

Rgba Image::pixelAt(Point point) const {
    int x = static_cast<int>(std::floor(point.x * scale_));
    int y = static_cast<int>(std::floor(point.y * scale_));
    if (x < 0 || y < 0 || x >= pixelWidth() || y >= pixelHeight()) return {};
    cairo_surface_flush(surface_);
    const unsigned char* row = cairo_image_surface_get_data(surface_) + y * cairo_image_surface_get_stride(surface_);
    std::uint32_t argb = reinterpret_cast<const std::uint32_t*>(row)[x];
    double a = ((argb >> 24) & 0xff) / 255.0;
    if (a == 0) return {};
    auto channel = [&](int shift) { return ((argb >> shift) & 0xff) / 255.0 / a; };
    return {channel(16), channel(8), channel(0), a};
}

bool Image::writePng(const std::filesystem::path& path, std::string* error) const {
    cairo_surface_flush(surface_);
    cairo_status_t status = cairo_surface_write_to_png(surface_, path.c_str());
    if (status != CAIRO_STATUS_SUCCESS) {
        if (error) *error = cairo_status_to_string(status);
        return false;
    }
    return true;
}

}  // namespace velmorant::platform
