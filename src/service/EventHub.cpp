#include "EventHub.h"

#include "platform/core/FileDescriptor.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <iostream>

namespace velmorant::service {
namespace {

using platform::FileDescriptor;

constexpr int kKeepAliveMillis = 5000;
// Writers replace a store with a rename; a burst of changes is told once.
constexpr int kSettleMillis = 50;

bool isStoreFile(std::string_view name) { return name.ends_with(".plist"); }

}  // namespace

EventHub::EventHub(const std::filesystem::path& storeDir, std::size_t maxStreams)
    : maxStreams_(maxStreams), wakeFd_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    thread_ = std::thread([this, storeDir] { watch(storeDir); });
}

EventHub::~EventHub() {
    stop();
    if (wakeFd_ >= 0) ::close(wakeFd_);
}

std::shared_ptr<EventStream> EventHub::open() {
    std::lock_guard lock(mutex_);
    std::erase_if(streams_, [](const auto& weak) { return weak.expired(); });
    if (stopping_ || streams_.size() >= maxStreams_) return nullptr;
    auto stream = std::make_shared<EventStream>();
    // Sent at once, so the client knows the stream is open.
    stream->publish("retry: 2000\n: open\n\n");
    streams_.push_back(stream);
    return stream;
}

void EventHub::publish(const std::string& message) {
    std::vector<std::shared_ptr<EventStream>> live;
    {
        std::lock_guard lock(mutex_);
        for (const auto& weak : streams_)
            if (auto stream = weak.lock()) live.push_back(std::move(stream));
    }
    for (const auto& stream : live) stream->publish(message);
}

void EventHub::stop() {
    if (stopping_.exchange(true)) return;
    std::uint64_t one = 1;
    if (::write(wakeFd_, &one, sizeof one) < 0) {
        // The thread still ends at its next keep-alive.
    }
    if (thread_.joinable()) thread_.join();
    std::vector<std::shared_ptr<EventStream>> live;
    {
        std::lock_guard lock(mutex_);
        for (const auto& weak : streams_)
            if (auto stream = weak.lock()) live.push_back(std::move(stream));
        streams_.clear();
    }
    for (const auto& stream : live) stream->close();
}

void EventHub::watch(const std::filesystem::path& storeDir) {
    FileDescriptor inotify(storeDir.empty() ? -1 : ::inotify_init1(IN_CLOEXEC | IN_NONBLOCK));
    if (inotify.get() >= 0 &&
        ::inotify_add_watch(inotify.get(), storeDir.c_str(), IN_CLOSE_WRITE | IN_MOVED_TO | IN_DELETE | IN_CREATE) < 0)
        std::cerr << "velmorant-snippet serve: cannot watch " << storeDir.string() << ": " << std::strerror(errno)
                  << " (pages will not update by themselves)\n";
    bool changed = false;
    while (!stopping_) {
        pollfd fds[2] = {{wakeFd_, POLLIN, 0}, {inotify.get(), POLLIN, 0}};
        int ready = ::poll(fds, inotify.get() >= 0 ? 2 : 1, changed ? kSettleMillis : kKeepAliveMillis);
        if (stopping_) break;
        if (ready == 0) {
            if (changed) publish("event: stores\ndata: {\"changed\": true}\n\n");
            else publish(": keep-alive\n\n");
            changed = false;
            continue;
        }
        if (ready > 0 && (fds[1].revents & POLLIN)) {
            alignas(inotify_event) char buffer[4096];
            ssize_t n;
            while ((n = ::read(inotify.get(), buffer, sizeof buffer)) > 0) {
                for (char* at = buffer; at < buffer + n;) {
                    auto* event = reinterpret_cast<inotify_event*>(at);
                    if (event->len && isStoreFile(event->name)) changed = true;
                    at += sizeof(inotify_event) + event->len;
                }
            }
        }
    }
}

}  // namespace velmorant::service
