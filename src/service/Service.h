#pragma once

#include "HttpServer.h"
#include "Metrics.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

namespace velmorant::service {

struct ServiceOptions {
    std::string bind = "127.0.0.1";
    // 0 picks a free port.
    std::uint16_t port = 8080;
    // Store files to draw from on GET; empty draws the built-in demo data.
    std::filesystem::path prefs;
    // Render threads; 0 uses the number of cores.
    std::size_t workers = 0;
    // Renders that may wait for a worker; 0 uses four per worker.
    std::size_t queueCapacity = 0;
    // A request's render must be done this long after it was read: one still
    // waiting, or still drawing when a stage ends, is answered 503 instead.
    double renderDeadlineSeconds = 10;
    // For tests: when set, decides instead of the clock whether a render's
    // deadline has passed once a stage is done.
    std::function<bool(Stage)> deadlinePassedAfter;
    std::size_t cacheBytes = 32u << 20;
    std::size_t maxEventStreams = 64;
    HttpLimits limits;
};

// The rendering service: cards, widget pictures, the preview page and its
// event stream, health and metrics, over HTTP.
class Service {
public:
    // Listens at once; throws std::runtime_error when it cannot.
    explicit Service(const ServiceOptions& options);
    ~Service();
    Service(const Service&) = delete;
    Service& operator=(const Service&) = delete;

    std::uint16_t port() const;
    // Graceful stop: new requests get 503, renders already taken finish and
    // are answered, event streams end, then the listener closes.
    void stop();

    struct Impl;

private:
    std::unique_ptr<Impl> impl_;
};

// Runs the service until SIGTERM or SIGINT, then stops it gracefully.
// Prints the address to open on `out`.
void runUntilSignalled(const ServiceOptions& options, std::ostream& out);

}  // namespace velmorant::service
