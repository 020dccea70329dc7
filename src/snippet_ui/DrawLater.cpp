#include "snippet_ui/DrawLater.h"

#include "platform/graphics/Canvas.h"

#include <mutex>

namespace velmorant::snippet_ui {

platform::ImagePtr drawLater(platform::Platform& platform, float side,
                             std::function<platform::ImagePtr(PictureTools&)> draw) {
    return platform::Canvas::drawLater(
        {side, side}, platform.screenScale(),
        [resources = platform.drawingResources(), draw = std::move(draw)] {
            std::lock_guard lock(resources->drawing());
            PictureTools tools{*resources, resources->layers()};
            return draw(tools);
        });
}

}  // namespace velmorant::snippet_ui
