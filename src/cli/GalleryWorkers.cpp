#include "GalleryWorkers.h"

#include "Gallery.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <thread>

namespace velmorant::cli {

namespace {

std::unique_ptr<platform::Platform> platformLike(platform::Platform& main) {
    auto platform = std::make_unique<platform::Platform>(platform::PlatformOptions{
        .timeZoneId = main.timeZoneId(),
        .localeId = main.localeId(),
        .preferredLanguages = main.preferredLanguages(),
        .scale = main.screenScale(),
        .resourceDir = main.resourceDir(),
        // Its stores are in memory: there are no files to report on.
        .diagnostics = [](std::string_view) {},
    });
    platform->setNow(main.now());
    platform->fonts();
    return platform;
}

}  // namespace

GalleryWorkers::GalleryWorkers(platform::Platform& main, std::size_t threads) : main_(main) {
    main_.fonts();
    for (std::size_t i = 1; i < threads; ++i) extra_.push_back(platformLike(main_));
}

GalleryWorkers::~GalleryWorkers() = default;

std::size_t GalleryWorkers::defaultThreads() {
    return std::clamp<std::size_t>(std::thread::hardware_concurrency(), 1, 4);
}

void GalleryWorkers::copyStores() {
    for (auto& platform : extra_) cli::copyStores(main_, *platform);
}

void GalleryWorkers::run(std::size_t count, const std::function<void(platform::Platform&, std::size_t)>& item) {
    std::atomic<std::size_t> next{0};
    std::atomic<bool> failed{false};
    std::exception_ptr error;
    std::mutex errorLock;
    auto work = [&](platform::Platform& platform) {
        for (std::size_t i; !failed && (i = next++) < count;) {
            try {
                item(platform, i);
            } catch (...) {
                std::lock_guard lock(errorLock);
                if (!error) error = std::current_exception();
                failed = true;
            }
        }
    };
    {
        std::vector<std::jthread> threads;
        for (std::size_t i = 0; i < extra_.size() && i + 1 < count; ++i)
            threads.emplace_back([&, platform = extra_[i].get()] { work(*platform); });
        work(main_);
    }
    if (error) std::rethrow_exception(error);
}

}  // namespace velmorant::cli
