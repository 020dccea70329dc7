#pragma once

#include "platform/graphics/FontSystem.h"
#include "platform/services/DrawingResources.h"
#include "platform/services/Platform.h"
#include "platform/views/ViewTree.h"

#include <atomic>
#include <condition_variable>
#include <exception>
#include <memory>
#include <mutex>
#include <thread>

namespace velmorant::cli {

// One card's drawing shared with a second core, for a program that draws a
// single card and ends. That core first sets up the platform's fonts, while
// the calling thread reads the stores and fills the views; then it draws the
// views' pictures while the calling thread lays out and draws the labels in a
// second set of fonts (a set serves one thread at a time). Until this object
// is gone, the calling thread leaves the platform's fonts alone.
class PicturesAhead {
public:
    explicit PicturesAhead(platform::Platform& platform);
    ~PicturesAhead() { finish(); }
    PicturesAhead(const PicturesAhead&) = delete;
    PicturesAhead& operator=(const PicturesAhead&) = delete;

    // Has every shown picture of `views` drawn on the second core, in view
    // order, and sets up and returns the fonts for the card's labels (the
    // platform's, when there is no picture to draw). `views` must outlive the
    // drawing: see `finish`. Throws what setting up fonts threw.
    const platform::FontSystem& draw(const platform::ViewTree& views);
    // Lets the second core go, once the picture it is drawing, if any, is done;
    // pictures not yet drawn are left to whoever reads them.
    void finish();

private:
    void run();

    platform::DrawingResources& resources_;
    std::mutex mutex_;
    std::condition_variable changed_;
    bool fontsSetUp_ = false;
    std::unique_ptr<platform::FontSystem> labelFonts_;
    std::exception_ptr failure_;
    const platform::ViewTree* views_ = nullptr;
    std::atomic<bool> stopping_ = false;
    // Last, so that it starts once the rest exists.
    std::jthread thread_;
};

}  // namespace velmorant::cli
