#pragma once

#include <deque>
#include <functional>
#include <mutex>
#include <string>

namespace velmorant::service {

// The messages waiting for one event-stream client. The transport takes
// them when the client can be written to; when there are none it leaves a
// wake-up here and parks the connection until the next message or the end.
class EventStream {
public:
    // Queues one message; a client that has fallen this far behind loses the oldest.
    void publish(std::string message);
    // Ends the stream after what is queued.
    void close();

    enum class Take { Message, Parked, Ended };
    // Takes the next message into `out`, or, with none waiting, calls `park`
    // and keeps `wake` for the next publish or close (both under one lock, so
    // a message can never slip between the look and the park).
    Take take(std::string& out, const std::function<void()>& park, std::function<void()> wake);

private:
    static constexpr std::size_t kMaxQueued = 64;
    std::mutex mutex_;
    std::deque<std::string> queue_;
    std::function<void()> wake_;
    bool closed_ = false;
};

}  // namespace velmorant::service
