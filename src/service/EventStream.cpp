#include "EventStream.h"

#include <utility>

namespace velmorant::service {

void EventStream::publish(std::string message) {
    std::function<void()> wake;
    {
        std::lock_guard lock(mutex_);
        if (closed_) return;
        if (queue_.size() == kMaxQueued) queue_.pop_front();
        queue_.push_back(std::move(message));
        wake = std::exchange(wake_, nullptr);
    }
    if (wake) wake();
}

void EventStream::close() {
    std::function<void()> wake;
    {
        std::lock_guard lock(mutex_);
        closed_ = true;
        wake = std::exchange(wake_, nullptr);
    }
    if (wake) wake();
}

EventStream::Take EventStream::take(std::string& out, const std::function<void()>& park, std::function<void()> wake) {
    std::lock_guard lock(mutex_);
    if (!queue_.empty()) {
        out = std::move(queue_.front());
        queue_.pop_front();
        return Take::Message;
    }
    if (closed_) return Take::Ended;
    park();
    wake_ = std::move(wake);
    return Take::Parked;
}

}  // namespace velmorant::service
