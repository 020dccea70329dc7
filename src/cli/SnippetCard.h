#pragma once

#include "platform/core/Date.h"
#include "platform/core/Geometry.h"
#include "platform/services/Platform.h"
#include "platform/views/ViewTree.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace velmorant::cli {

class PicturesAhead;

// Names the file an image was written to, or none when images are not written.
using ImageWriter = std::function<std::optional<std::string>(const platform::Image&, const std::string& hint)>;

// One snippet filled for an intent as the host would ask for it.
struct SnippetCard {
    // {"success", "size", "views", "accessibility"}, as `show` prints it (JSON text).
    std::string record;
    // What a screen reader says for the card.
    std::string spoken;
    platform::Size size;
    // The card as PNG, when asked for in memory.
    std::string png;
};

struct SnippetCard;
// Handed the filled views while they live, for drawing them some other way.
using CardDrawer = std::function<void(const platform::ViewTree& views, const SnippetCard& card)>;

struct SnippetOptions {
    // The host's maximum snippet width in points.
    double width = 390;
    // The card is drawn into this file (with the spoken text as its description) when given...
    std::filesystem::path pngFile;
    // ...or into `SnippetCard::png`.
    bool pngInMemory = false;
    // Where the record's images go, if anywhere.
    ImageWriter images;
    // Called after the views are filled and before they are gone.
    CardDrawer draw;
    // Draws the pictures of `pngFile`'s card on a second core, its labels in fonts of their own.
    PicturesAhead* picturesAhead = nullptr;
};

// Fills the snippet of `intent`; throws std::runtime_error when the card cannot be written.
SnippetCard showSnippet(platform::Platform& platform, std::string_view intent, const SnippetOptions& options);

inline SnippetCard showSnippet(platform::Platform& platform, std::string_view intent, double width,
                               const std::filesystem::path& png = {}) {
    return showSnippet(platform, intent, {.width = width, .pngFile = png});
}

// What one card is drawn from. Stores come from `preferencesDir`, else from
// the property-list bytes given, else they are empty.
struct CardRequest {
    std::string intent;
    double width = 390;
    std::filesystem::path preferencesDir;
    std::optional<std::string> sharedStore;
    std::optional<std::string> standardStore;
    // None follows the system clock.
    std::optional<platform::Date> now;
    // IANA zone and ICU locale; empty uses the system's zone and en_US.
    std::string timeZoneId;
    std::string localeId;
    bool png = true;
};

struct Card {
    // The view record as `show` prints it.
    std::string json;
    // Empty unless asked for.
    std::string png;
};

// Draws cards one after another, with the fonts and artwork for its scale set
// up once and kept: what a program serving many cards holds on to. Each card
// reads its stores afresh. One renderer serves one thread at a time.
class CardRenderer {
public:
    // Throws std::invalid_argument for a scale outside 0 to 16.
    explicit CardRenderer(double scale = 3, std::filesystem::path resourceDir = {});

    // Throws std::invalid_argument for an unknown locale or zone, or a store
    // given as bytes that cannot be read; std::runtime_error when the card
    // cannot be drawn.
    Card render(const CardRequest& request);

private:
    double scale_;
    std::filesystem::path resourceDir_;
    std::shared_ptr<platform::SharedResources> shared_;
};

}  // namespace velmorant::cli
