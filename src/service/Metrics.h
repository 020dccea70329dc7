#pragma once

#include <array>
#include <cstddef>
#include <map>
#include <mutex>
#include <string>
#include <utility>

namespace velmorant::service {

// The stages of one render, timed separately: reading the stores, filling the
// records, drawing their pictures (gauges, rings), laying out and rasterising
// the card, encoding the PNG.
enum class Stage { Store, Records, Drawing, Card, Encoding, Count };

// The stage's name in the metrics and in messages.
const char* stageName(Stage stage);

// What the service holds now, read when the metrics are asked for.
struct Gauges {
    std::size_t queueDepth = 0;
    std::size_t busyWorkers = 0;
    std::size_t workers = 0;
    std::size_t cacheBytes = 0;
    std::size_t requestBodyBytes = 0;
};

// Counters and timings, written as Prometheus text. Safe from any thread.
class Metrics {
public:
    void countRequest(const std::string& route, int status);
    void timeStage(Stage stage, double seconds);
    void countCache(bool hit);

    // The text for GET /metrics, with the gauges as they are now.
    std::string text(const Gauges& now) const;

private:
    static constexpr std::array<double, 10> kBuckets = {0.001, 0.0025, 0.005, 0.01, 0.025, 0.05, 0.1, 0.25, 1, 5};
    struct Histogram {
        std::array<unsigned long long, kBuckets.size()> counts{};
        unsigned long long count = 0;
        double sum = 0;
    };
    mutable std::mutex mutex_;
    std::map<std::pair<std::string, int>, unsigned long long> requests_;
    std::array<Histogram, static_cast<std::size_t>(Stage::Count)> stages_{};
    unsigned long long cacheHits_ = 0, cacheMisses_ = 0;
};

}  // namespace velmorant::service
