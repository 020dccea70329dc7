#pragma once

#include "EventStream.h"

#include <atomic>
#include <filesystem>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace velmorant::service {

// The event-stream clients, told when the store files change on disk (seen
// through inotify on the store folder) and sent a comment every few seconds
// so that idle streams stay open and dead ones are found.
class EventHub {
public:
    // Watches `storeDir` when it is not empty; at most `maxStreams` clients at once.
    EventHub(const std::filesystem::path& storeDir, std::size_t maxStreams);
    ~EventHub();
    EventHub(const EventHub&) = delete;
    EventHub& operator=(const EventHub&) = delete;

    // A new client's stream; none when there are already `maxStreams`.
    std::shared_ptr<EventStream> open();
    void publish(const std::string& message);
    // Ends every stream and stops watching.
    void stop();

private:
    void watch(const std::filesystem::path& storeDir);

    std::size_t maxStreams_;
    std::mutex mutex_;
    std::vector<std::weak_ptr<EventStream>> streams_;
    int wakeFd_ = -1;
    std::atomic<bool> stopping_ = false;
    std::thread thread_;
};

}  // namespace velmorant::service
