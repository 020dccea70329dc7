#include "platform/graphics/ImageResources.h"

#include "platform/graphics/detail/CHandles.h"
#include "platform/graphics/detail/ImageSurface.h"

#include <librsvg/rsvg.h>

#include <cmath>
#include <fstream>
#include <iterator>
#include <string>

namespace velmorant::platform {

ImagePtr loadNamedImage(const std::filesystem::path& imagesDir, std::string_view name, double scale,
                        Diagnostics& diagnostics) {
    std::filesystem::path stem(name);
    // A name may carry the phone's file extension ("RechargeBkg.png"); the artwork is vector.
    if (stem.extension() == ".png") stem.replace_extension();
    std::filesystem::path file = imagesDir / (stem.string() + ".svg");
    std::error_code ec;
    if (!std::filesystem::is_regular_file(file, ec)) return nullptr;

    // Read here rather than by librsvg, whose file loading starts GIO's
    // virtual file system: more start-up time and memory than the drawing.
    // (The artwork refers to no other files, so it needs no base location.)
    std::ifstream in(file, std::ios::binary);
    if (!in) {
        diagnostics.report("image " + file.string() + " cannot be opened");
        return nullptr;
    }
    std::string svg((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    GErrorPtr error;
    GObjectPtr<RsvgHandle> handle(
        rsvg_handle_new_from_data(reinterpret_cast<const guint8*>(svg.data()), svg.size(), error.out()));
    if (!handle) {
        diagnostics.report("image " + file.string() + " cannot be read: " + error.message());
        return nullptr;
    }
    double width = 0, height = 0;
    if (!rsvg_handle_get_intrinsic_size_in_pixels(handle.get(), &width, &height) || !(width > 0 && height > 0)) {
        diagnostics.report("image " + file.string() + " has no width and height");
        return nullptr;
    }
    auto image = Image::create({width, height}, scale);
    if (!image) {
        diagnostics.report("image " + file.string() + " is too large to draw at scale " + std::to_string(scale));
        return nullptr;
    }
    CairoPtr cr(cairo_create(cairoSurface(*image)));
    cairo_scale(cr.get(), scale, scale);
    RsvgRectangle viewport{0, 0, width, height};
    if (!rsvg_handle_render_document(handle.get(), cr.get(), &viewport, error.out())) {
        diagnostics.report("image " + file.string() + " cannot be drawn: " + error.message());
    }
    image->setName(std::string(name));
    return image;
}

}  // namespace velmorant::platform
