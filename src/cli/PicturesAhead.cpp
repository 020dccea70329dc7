#include "PicturesAhead.h"

#include "platform/graphics/Image.h"
#include "platform/services/DrawingResources.h"

namespace velmorant::cli {

PicturesAhead::PicturesAhead(platform::Platform& platform)
    : resources_(*platform.drawingResources()), thread_([this] { run(); }) {}

void PicturesAhead::finish() {
    {
        std::lock_guard lock(mutex_);
        stopping_ = true;
    }
    changed_.notify_all();
    if (thread_.joinable()) thread_.join();
}

namespace {

bool hasPictureToDraw(const platform::ViewTree& views) {
    for (const auto& view : views.views()) {
        if (!views.isShown(*view)) continue;
        if (platform::ImagePtr image = views.shownImage(*view); image && !image->isDrawn()) return true;
    }
    return false;
}

}  // namespace

const platform::FontSystem& PicturesAhead::draw(const platform::ViewTree& views) {
    if (!hasPictureToDraw(views)) {
        // Nothing to draw beside the labels: they take the platform's fonts,
        // once the second thread is done setting them up, instead of a second set.
        finish();
        if (failure_) std::rethrow_exception(failure_);
        return resources_.fonts();
    }
    {
        std::unique_lock lock(mutex_);
        views_ = &views;
        changed_.notify_all();
        changed_.wait(lock, [this] { return fontsSetUp_; });
        if (failure_) std::rethrow_exception(failure_);
    }
    // Only after the platform's set: fontconfig's first use is not thread-safe.
    labelFonts_ = resources_.makeFonts();
    return *labelFonts_;
}

void PicturesAhead::run() {
    std::exception_ptr failure;
    try {
        // As a picture holds them: the calling thread may draw one meanwhile (`show --images`).
        std::lock_guard drawing(resources_.drawing());
        resources_.fonts();
    } catch (...) {
        failure = std::current_exception();
    }
    const platform::ViewTree* views = nullptr;
    {
        std::unique_lock lock(mutex_);
        failure_ = failure;
        fontsSetUp_ = true;
        changed_.notify_all();
        changed_.wait(lock, [this] { return views_ != nullptr || stopping_; });
        views = views_;
    }
    if (failure || !views) return;
    for (const auto& view : views->views()) {
        if (stopping_) return;
        if (!views->isShown(*view)) continue;
        platform::ImagePtr image = views->shownImage(*view);
        if (!image) continue;
        // A picture that cannot be drawn here is drawn again, and fails, where the card reads it.
        try {
            image->drawNow();
        } catch (...) {
        }
    }
}

}  // namespace velmorant::cli
