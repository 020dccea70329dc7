#include "platform/services/DrawingResources.h"

#include "platform/graphics/FontSystem.h"
#include "platform/graphics/ImageResources.h"

namespace velmorant::platform {

DrawingResources::DrawingResources(std::shared_ptr<SharedResources> shared, bool keepsArtwork,
                                   std::filesystem::path resourceDir, double scale,
                                   std::shared_ptr<Diagnostics> diagnostics)
    : shared_(std::move(shared)),
      keepsArtwork_(keepsArtwork),
      resourceDir_(std::move(resourceDir)),
      scale_(scale),
      diagnostics_(std::move(diagnostics)) {}

DrawingResources::~DrawingResources() = default;

const FontSystem& DrawingResources::fonts() {
    if (!shared_->fonts) shared_->fonts = makeFonts();
    return *shared_->fonts;
}

std::unique_ptr<FontSystem> DrawingResources::makeFonts() const {
    return std::make_unique<FontSystem>(resourceDir_ / "fonts" / "fonts.conf");
}

ImagePtr DrawingResources::imageNamed(std::string_view name) {
    std::string key = std::string(name) + "@" + std::to_string(scale_);
    if (auto kept = shared_->artwork.find(key); kept != shared_->artwork.end()) return kept->second;
    // Artwork is cheap to draw again but large at high scales (the recharge
    // backdrop is 1.4 MB at scale 3): unless shared on purpose, it is not
    // kept after its last use.
    auto it = images_.find(name);
    if (it != images_.end()) {
        if (ImagePtr image = it->second.lock()) return image;
    }
    ImagePtr image = loadNamedImage(resourceDir_ / "images", name, scale_, *diagnostics_);
    if (image) images_.insert_or_assign(std::string(name), image);
    if (image && keepsArtwork_) shared_->artwork.emplace(std::move(key), image);
    return image;
}

}  // namespace velmorant::platform
