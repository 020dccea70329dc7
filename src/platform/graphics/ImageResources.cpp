#include "platform/graphics/ImageResources.h"

#include "platform/graphics/detail/ArtworkCache.h"
#include "platform/graphics/detail/CHandles.h"
#include "platform/graphics/detail/ImageSurface.h"

#include <librsvg/rsvg.h>

#include <dlfcn.h>

#include <cmath>
#include <fstream>
#include <iterator>
#include <string>

namespace velmorant::platform {
namespace {

// librsvg and the libraries it brings (GIO, GdkPixbuf, libxml2 and ICU's
// shared copy, libmount, ...) are a third of the program's start-up and 6 MB
// of its memory, and a run whose artwork is in the cache draws none: it is
// loaded when the first artwork is drawn. It stays loaded for the life of the
// process, since the object types it registers cannot be taken back.
struct Rsvg {
    decltype(&rsvg_handle_new_from_data) newFromData = nullptr;
    decltype(&rsvg_handle_get_intrinsic_size_in_pixels) intrinsicSize = nullptr;
    decltype(&rsvg_handle_render_document) renderDocument = nullptr;

    // None, with the reason in `error`, when the library cannot be loaded.
    static const Rsvg* load(std::string& error) {
        static const Rsvg loaded;
        static const std::string loadError = loaded.reason();
        error = loadError;
        return loadError.empty() ? &loaded : nullptr;
    }

private:
    Rsvg() {
        void* library = ::dlopen("librsvg-2.so.2", RTLD_NOW | RTLD_LOCAL);
        if (!library) return;
        newFromData = reinterpret_cast<decltype(newFromData)>(::dlsym(library, "rsvg_handle_new_from_data"));
        intrinsicSize = reinterpret_cast<decltype(intrinsicSize)>(::dlsym(library, "rsvg_handle_get_intrinsic_size_in_pixels"));
        renderDocument = reinterpret_cast<decltype(renderDocument)>(::dlsym(library, "rsvg_handle_render_document"));
    }
    std::string reason() const {
        if (newFromData && intrinsicSize && renderDocument) return {};
        const char* why = ::dlerror();
        return std::string("librsvg cannot be loaded") + (why ? std::string(": ") + why : std::string());
    }
};

// The artwork drawn at `scale`; `complete` tells whether it was drawn without error.
std::shared_ptr<Image> render(const std::filesystem::path& file, const std::string& svg, double scale, Diagnostics& diagnostics,
                bool& complete) {
    complete = false;
    std::string unavailable;
    const Rsvg* rsvg = Rsvg::load(unavailable);
    if (!rsvg) {
        diagnostics.report("image " + file.string() + " cannot be drawn: " + unavailable);
        return nullptr;
    }
    GErrorPtr error;
    GObjectPtr<RsvgHandle> handle(
        rsvg->newFromData(reinterpret_cast<const guint8*>(svg.data()), svg.size(), error.out()));
    if (!handle) {
        diagnostics.report("image " + file.string() + " cannot be read: " + error.message());
        return nullptr;
    }
    double width = 0, height = 0;
    if (!rsvg->intrinsicSize(handle.get(), &width, &height) || !(width > 0 && height > 0)) {
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
    if (!rsvg->renderDocument(handle.get(), cr.get(), &viewport, error.out())) {
        diagnostics.report("image " + file.string() + " cannot be drawn: " + error.message());
        return image;
    }
    complete = true;
    return image;
}

}  // namespace

ImagePtr loadNamedImage(const std::filesystem::path& imagesDir, std::string_view name, double scale,
                        Diagnostics& diagnostics, const std::filesystem::path& cacheDir) {
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
    ArtworkCache cache(cacheDir);
    std::string entry = ArtworkCache::entryName(stem.filename().string(), svg, scale);
    std::shared_ptr<Image> image = cache.find(entry, scale);
    if (!image) {
        bool complete = false;
        image = render(file, svg, scale, diagnostics, complete);
        if (!image) return nullptr;
        if (complete) cache.keep(entry, *image);
    }
    image->setName(std::string(name));
    return image;
}

ImagePtr loadNamedImage(const std::filesystem::path& imagesDir, std::string_view name, double scale,
                        Diagnostics& diagnostics) {
    static const std::filesystem::path cacheDir = ArtworkCache::defaultFolder();
    return loadNamedImage(imagesDir, name, scale, diagnostics, cacheDir);
}

}  // namespace velmorant::platform
