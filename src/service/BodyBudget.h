#pragma once

#include <atomic>
#include <cstddef>

namespace velmorant::service {

// The request-body bytes every connection together may hold at once: a body
// reserves memory before it is allocated and gives it back when its request
// is done, so many clients uploading at once cannot add up to more.
class BodyBudget {
public:
    explicit BodyBudget(std::size_t limit) : limit_(limit) {}

    // False, reserving nothing, when `bytes` more would pass the bound.
    bool reserve(std::size_t bytes) {
        std::size_t held = held_.load(std::memory_order_relaxed);
        do {
            if (bytes > limit_ - held) return false;
        } while (!held_.compare_exchange_weak(held, held + bytes, std::memory_order_relaxed));
        return true;
    }
    void release(std::size_t bytes) { held_.fetch_sub(bytes, std::memory_order_relaxed); }
    std::size_t held() const { return held_.load(std::memory_order_relaxed); }

private:
    const std::size_t limit_;
    std::atomic<std::size_t> held_ = 0;
};

}  // namespace velmorant::service
