#include "ResultCache.h"

#include <cstdio>

namespace velmorant::service {

std::shared_ptr<const CachedResult> ResultCache::find(const std::string& etag) {
    std::lock_guard lock(mutex_);
    auto it = index_.find(etag);
    if (it == index_.end()) return nullptr;
    order_.splice(order_.end(), order_, it->second);
    return it->second->second;
}

void ResultCache::insert(const std::string& etag, std::shared_ptr<const CachedResult> result) {
    std::size_t size = result->bytes;
    if (size > maxBytes_) return;
    std::lock_guard lock(mutex_);
    if (index_.contains(etag)) return;
    while (bytes_ + size > maxBytes_ && !order_.empty()) {
        bytes_ -= order_.front().second->bytes;
        index_.erase(order_.front().first);
        order_.pop_front();
    }
    order_.emplace_back(etag, std::move(result));
    index_[etag] = std::prev(order_.end());
    bytes_ += size;
}

std::size_t ResultCache::bytes() const {
    std::lock_guard lock(mutex_);
    return bytes_;
}

Fingerprint& Fingerprint::add(std::string_view part) {
    auto mix = [this](unsigned char c) {
        a_ = (a_ ^ c) * 0x100000001b3ull;
        b_ = ((b_ ^ c) * 0xff51afd7ed558ccdull);
        b_ ^= b_ >> 29;
    };
    for (unsigned char c : part) mix(c);
    std::uint64_t length = part.size();
    for (int i = 0; i < 8; ++i) mix(static_cast<unsigned char>(length >> (8 * i)));
    return *this;
}

std::string Fingerprint::etag() const {
    char text[40];
    std::snprintf(text, sizeof text, "\"%016llx%016llx\"", static_cast<unsigned long long>(a_),
                  static_cast<unsigned long long>(b_));
    return text;
}

}  // namespace velmorant::service
