#include "platform/graphics/Image.h"

#include "platform/graphics/PngWriter.h"
#include "platform/graphics/detail/ImageSurface.h"

#include <atomic>
#include <cmath>
#include <cstdint>
#include <mutex>
#include <new>

namespace velmorant::platform {
namespace {

// Pixels along one side, or -1 when the side cannot be a bitmap's.
int pixelsFor(double points, double scale) {
    double pixels = std::ceil(points * scale);
    if (!std::isfinite(pixels) || pixels < 0 || pixels > INT32_MAX) return -1;
    return static_cast<int>(pixels);
}

std::atomic<std::uint64_t> drawnOnDemand{0};

}  // namespace

// The drawing still to do, and the picture it gave once done.
struct Image::Pending {
    std::once_flag once;
    Drawing draw;
    std::shared_ptr<const Image> drawn;
    std::atomic<bool> done{false};
};

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

std::shared_ptr<Image> Image::onDemand(Size points, double scale, int pixelWidth, int pixelHeight, Drawing draw) {
    if (pixelWidth < 0 || pixelHeight < 0 || !draw) return nullptr;
    auto pending = std::make_unique<Pending>();
    pending->draw = std::move(draw);
    return std::shared_ptr<Image>(new Image(std::move(pending), points, scale, pixelWidth, pixelHeight));
}

Image::Image(std::unique_ptr<Impl> impl, Size points, double scale)
    : impl_(std::move(impl)),
      size_(points),
      scale_(scale),
      pixelWidth_(cairo_image_surface_get_width(impl_->surface.get())),
      pixelHeight_(cairo_image_surface_get_height(impl_->surface.get())) {}

Image::Image(std::unique_ptr<Pending> pending, Size points, double scale, int pixelWidth, int pixelHeight)
    : pending_(std::move(pending)), size_(points), scale_(scale), pixelWidth_(pixelWidth), pixelHeight_(pixelHeight) {}

Image::~Image() = default;

const Image::Impl& Image::impl() const {
    if (!pending_) return *impl_;
    Pending& pending = *pending_;
    std::call_once(pending.once, [&] {
        std::shared_ptr<const Image> drawn = pending.draw();
        if (!drawn || drawn->pixelWidth() != pixelWidth_ || drawn->pixelHeight() != pixelHeight_) {
            // Nothing but the promised size will do: then a transparent picture.
            drawn = adoptSurface(SurfacePtr(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, pixelWidth_, pixelHeight_)),
                                 size_, scale_);
            // Without memory even for that, the next reader tries again.
            if (!drawn) throw std::bad_alloc();
        }
        pending.drawn = std::move(drawn);
        // The drawing holds copies of what it draws from: let them go with it.
        pending.draw = nullptr;
        drawnOnDemand.fetch_add(1, std::memory_order_relaxed);
        pending.done.store(true, std::memory_order_release);
    });
    return pending.drawn->impl();
}

bool Image::isDrawn() const { return !pending_ || pending_->done.load(std::memory_order_acquire); }

std::uint64_t Image::drawingsOnDemand() { return drawnOnDemand.load(std::memory_order_relaxed); }

Rgba Image::pixelAt(Point point) const {
    double px = std::floor(point.x * scale_);
    double py = std::floor(point.y * scale_);
    if (!(px >= 0 && py >= 0 && px < pixelWidth_ && py < pixelHeight_)) return {};
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
