#include "Metrics.h"

#include <iterator>
#include <sstream>

namespace velmorant::service {
const char* stageName(Stage stage) {
    static constexpr const char* kNames[] = {"store", "records", "drawing", "card", "encoding"};
    static_assert(std::size(kNames) == static_cast<std::size_t>(Stage::Count));
    return kNames[static_cast<std::size_t>(stage)];
}

void Metrics::countRequest(const std::string& route, int status) {
    std::lock_guard lock(mutex_);
    ++requests_[{route, status}];
}

void Metrics::timeStage(Stage stage, double seconds) {
    std::lock_guard lock(mutex_);
    Histogram& h = stages_[static_cast<std::size_t>(stage)];
    for (std::size_t i = 0; i < kBuckets.size(); ++i)
        if (seconds <= kBuckets[i]) ++h.counts[i];
    ++h.count;
    h.sum += seconds;
}

void Metrics::countCache(bool hit) {
    std::lock_guard lock(mutex_);
    ++(hit ? cacheHits_ : cacheMisses_);
}

std::string Metrics::text(const Gauges& now) const {
    std::ostringstream out;
    std::lock_guard lock(mutex_);
    out << "# HELP velmorant_requests_total Requests answered, by route and status.\n"
           "# TYPE velmorant_requests_total counter\n";
    for (const auto& [key, count] : requests_)
        out << "velmorant_requests_total{route=\"" << key.first << "\",status=\"" << key.second << "\"} " << count << '\n';
    out << "# HELP velmorant_render_stage_seconds Time spent in each stage of a render.\n"
           "# TYPE velmorant_render_stage_seconds histogram\n";
    for (std::size_t s = 0; s < stages_.size(); ++s) {
        const Histogram& h = stages_[s];
        const char* name = stageName(static_cast<Stage>(s));
        for (std::size_t i = 0; i < kBuckets.size(); ++i)
            out << "velmorant_render_stage_seconds_bucket{stage=\"" << name << "\",le=\"" << kBuckets[i]
                << "\"} " << h.counts[i] << '\n';
        out << "velmorant_render_stage_seconds_bucket{stage=\"" << name << "\",le=\"+Inf\"} " << h.count << '\n'
            << "velmorant_render_stage_seconds_sum{stage=\"" << name << "\"} " << h.sum << '\n'
            << "velmorant_render_stage_seconds_count{stage=\"" << name << "\"} " << h.count << '\n';
    }
    out << "# HELP velmorant_cache_lookups_total Result cache lookups.\n# TYPE velmorant_cache_lookups_total counter\n"
        << "velmorant_cache_lookups_total{result=\"hit\"} " << cacheHits_ << '\n'
        << "velmorant_cache_lookups_total{result=\"miss\"} " << cacheMisses_ << '\n'
        << "# HELP velmorant_cache_bytes Bytes of results held.\n# TYPE velmorant_cache_bytes gauge\n"
        << "velmorant_cache_bytes " << now.cacheBytes << '\n'
        << "# HELP velmorant_queue_depth Renders waiting for a worker.\n# TYPE velmorant_queue_depth gauge\n"
        << "velmorant_queue_depth " << now.queueDepth << '\n'
        << "# HELP velmorant_busy_workers Workers rendering now.\n# TYPE velmorant_busy_workers gauge\n"
        << "velmorant_busy_workers " << now.busyWorkers << '\n'
        << "# HELP velmorant_workers Render workers.\n# TYPE velmorant_workers gauge\n"
        << "velmorant_workers " << now.workers << '\n'
        << "# HELP velmorant_request_body_bytes Request-body bytes held for requests not yet answered.\n"
           "# TYPE velmorant_request_body_bytes gauge\n"
        << "velmorant_request_body_bytes " << now.requestBodyBytes << '\n';
    return out.str();
}

}  // namespace velmorant::service
