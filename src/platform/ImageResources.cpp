#include "ImageResources.h"

#include "Image.h"

#include <librsvg/rsvg.h>

#include <cmath>

namespace velmorant::platform {

ImagePtr loadNamedImage(const std::filesystem::path& imagesDir, std::string_view name, double scale,
                        Diagnostics& diagnostics) {
    std::filesystem::path stem(name);
    // A name may carry the phone's file extension ("RechargeBkg.png"); the artwork is vector.
    if (stem.extension() == ".png") stem.replace_extension();
    std::filesystem::path file = imagesDir / (stem.string() + ".svg");
    std::error_code ec;
    if (!std::filesystem::is_regular_file(file, ec)) return nullptr;

    GError* error = nullptr;
    RsvgHandle* handle = rsvg_handle_new_from_file(file.c_str(), &error);
    if (!handle) {
        diagnostics.report("image " + file.string() + " cannot be read: " + (error ? error->message : "unknown error"));
        if (error) g_error_free(error);
        return nullptr;
    }
    double width = 0, height = 0;
    if (!rsvg_handle_get_intrinsic_size_in_pixels(handle, &width, &height) || width <= 0 || height <= 0) {
        diagnostics.report("image " + file.string() + " has no width and height");
        g_object_unref(handle);
        return nullptr;
    }
    auto image = Image::create({width, height}, scale);
    cairo_t* cr = cairo_create(image->surface());
    cairo_scale(cr, scale, scale);
    RsvgRectangle viewport{0, 0, width, height};
    if (!rsvg_handle_render_document(handle, cr, &viewport, &error)) {
        diagnostics.report("image " + file.string() + " cannot be drawn: " + (error ? error->message : "unknown error"));
        if (error) g_error_free(error);
    }
    cairo_destroy(cr);
    g_object_unref(handle);
    std::shared_ptr<Image> named = std::const_pointer_cast<Image>(image);
    named->setName(std::string(name));
    return named;
}

}  // namespace velmorant::platform
