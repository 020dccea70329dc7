#pragma once

#include "Http.h"

#include <cstddef>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>

namespace velmorant::service {

struct CachedResult {
    // The whole answer, ready to be sent again.
    std::shared_ptr<const PreparedResponse> response;
    // The body's size.
    std::size_t bytes = 0;
};

// Recent results by ETag, least recently used first out, bounded by the
// bytes of the bodies held. Safe from any thread.
class ResultCache {
public:
    explicit ResultCache(std::size_t maxBytes) : maxBytes_(maxBytes) {}

    std::shared_ptr<const CachedResult> find(const std::string& etag);
    // A result larger than the whole cache is not kept.
    void insert(const std::string& etag, std::shared_ptr<const CachedResult> result);
    std::size_t bytes() const;

private:
    using Entry = std::pair<std::string, std::shared_ptr<const CachedResult>>;
    mutable std::mutex mutex_;
    std::list<Entry> order_;
    std::unordered_map<std::string, std::list<Entry>::iterator> index_;
    std::size_t bytes_ = 0;
    std::size_t maxBytes_;
};

// A strong validator of everything a response depends on, as a quoted ETag.
class Fingerprint {
public:
    Fingerprint& add(std::string_view part);
    std::string etag() const;

private:
    // Two independent 64-bit hashes (FNV-1a and a multiply-rotate mix) of the
    // parts and their lengths: a collision needs both to collide.
    std::uint64_t a_ = 0xcbf29ce484222325ull;
    std::uint64_t b_ = 0x9e3779b97f4a7c15ull;
};

}  // namespace velmorant::service
