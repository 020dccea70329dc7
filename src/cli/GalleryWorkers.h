#pragma once

#include "platform/services/Platform.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <vector>

namespace velmorant::cli {

// Draws independent gallery items on several threads, each with a platform
// of its own (its own fonts, artwork and kept layers, as these serve one
// thread at a time) set up like the gallery's and holding copies of its stores.
class GalleryWorkers {
public:
    // Up to `threads` threads in all, the calling one included, on `main` and
    // platforms made like it. The extra platforms are set up here, one after
    // another, as fontconfig's and ICU's first use is not thread-safe.
    GalleryWorkers(platform::Platform& main, std::size_t threads);
    ~GalleryWorkers();
    GalleryWorkers(const GalleryWorkers&) = delete;
    GalleryWorkers& operator=(const GalleryWorkers&) = delete;

    // As many threads as the machine runs at once, at most four.
    static std::size_t defaultThreads();

    // Gives every extra platform a copy of what the stores of the main one hold now.
    void copyStores();

    // Runs item(platform, i) for every i below `count`, each once, on some
    // thread with that thread's platform; items are taken in order. The first
    // error stops the taking of further items and is thrown once all threads are done.
    void run(std::size_t count, const std::function<void(platform::Platform&, std::size_t)>& item);

private:
    platform::Platform& main_;
    std::vector<std::unique_ptr<platform::Platform>> extra_;
};

}  // namespace velmorant::cli
