#pragma once

#include "platform/services/Platform.h"
#include "platform/core/Value.h"

#include <functional>
#include <memory>

namespace velmorant::snippet_ui {

// What a picture drawn on demand draws with: the platform's fonts and artwork,
// and the layers kept with those resources.
struct PictureTools {
    platform::DrawingResources& resources;
    platform::LayerCache& layers;
};

// A square picture `side` points wide at the platform's scale whose pixels
// `draw` draws when they are first read, one such drawing at a time per
// platform. `draw` holds copies of all it shows, so the picture is the one
// asked for even when the stores, the clock or the theme change afterwards.
platform::ImagePtr drawLater(platform::Platform& platform, float side,
                             std::function<platform::ImagePtr(PictureTools&)> draw);

}  // namespace velmorant::snippet_ui
