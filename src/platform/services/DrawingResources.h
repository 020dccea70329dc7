#pragma once

#include "platform/core/Diagnostics.h"
#include "platform/core/Value.h"
#include "platform/graphics/LayerCache.h"

#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

namespace velmorant::platform {

class FontSystem;

// What costs the most to set up and is the same for every card drawn at one
// scale: the font system, the drawn artwork and the pictures' kept layers
// (keyed by all they are drawn from). A program drawing many cards
// shares one among its platforms (on one thread at a time) and sets these up
// once; a platform without one makes its own.
struct SharedResources {
    std::unique_ptr<FontSystem> fonts;
    // Artwork by name and scale, kept for the life of the resources.
    std::map<std::string, ImagePtr, std::less<>> artwork;
    // Enough layers for the pictures of every card.
    LayerCache layers{16};
};

// What a platform draws pictures with: the pinned fonts and the named artwork
// at its scale. Pictures drawn on demand hold on to it, so they can be drawn
// after the platform is gone; they take turns (`drawing`), as the fonts and
// the artwork lookup serve one thread at a time.
class DrawingResources {
public:
    // `keepsArtwork`: artwork stays in `shared` for good, else only while someone holds it.
    DrawingResources(std::shared_ptr<SharedResources> shared, bool keepsArtwork, std::filesystem::path resourceDir,
                     double scale, std::shared_ptr<Diagnostics> diagnostics);
    ~DrawingResources();
    DrawingResources(const DrawingResources&) = delete;
    DrawingResources& operator=(const DrawingResources&) = delete;

    double scale() const { return scale_; }
    // Made on first use.
    const FontSystem& fonts();
    // The same fonts set up anew, for a thread other than the one drawing with `fonts()`.
    std::unique_ptr<FontSystem> makeFonts() const;
    // An image resource by name; none when there is no such artwork. Drawn
    // once and shared while anyone holds it, then let go with its pixels.
    ImagePtr imageNamed(std::string_view name);
    // The layers pictures keep, shared by every platform on these resources.
    LayerCache& layers() { return shared_->layers; }
    // Held while a picture is drawn on demand; a drawing may read another such picture.
    std::recursive_mutex& drawing() { return drawing_; }

private:
    std::shared_ptr<SharedResources> shared_;
    bool keepsArtwork_;
    std::filesystem::path resourceDir_;
    double scale_;
    std::shared_ptr<Diagnostics> diagnostics_;
    std::map<std::string, std::weak_ptr<const Image>, std::less<>> images_;
    std::recursive_mutex drawing_;
};

}  // namespace velmorant::platform
