#pragma once

#include "Http.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace velmorant::service {

struct HttpLimits {
    std::size_t maxBodyBytes = 1u << 20;
    // Request-body bytes all connections together may hold at once: a body
    // that would pass it is answered 503 with Retry-After instead of read.
    std::size_t maxBodyBytesInFlight = 16u << 20;
    // A body refused while it arrives is answered at once and the rest of it
    // read and dropped, up to this many bytes for this long, so that the
    // client reads the answer instead of a reset; then the connection closes.
    std::size_t lingerBytes = 8u << 20;
    double lingerSeconds = 5;
    // Request line and headers of one request must fit in this much memory.
    std::size_t maxHeaderBytes = 16u << 10;
    std::size_t maxHeaderCount = 64;
    // A connection that sends or takes nothing for this long is closed: a
    // slow reader or writer costs a socket, never a worker.
    unsigned idleTimeoutSeconds = 10;
    unsigned maxConnections = 2048;
};

// The HTTP/1.1 transport: event-driven I/O threads (epoll, one per core, a
// few at most) read requests whole, within the limits, and hand each to the
// handler, which answers at once or later from another thread while the
// connection is parked. The handler may be called from several threads at once.
class HttpServer {
public:
    // Listens on `address`:`port` (0 picks a free port); throws
    // std::runtime_error naming what failed.
    HttpServer(const std::string& address, std::uint16_t port, const HttpLimits& limits, HttpHandler handler);
    ~HttpServer();
    HttpServer(const HttpServer&) = delete;
    HttpServer& operator=(const HttpServer&) = delete;

    std::uint16_t port() const;
    // Request-body bytes held now, across every connection.
    std::size_t requestBodyBytes() const;
    // Closes the listening socket and every connection; answers already handed out are dropped.
    void stop();

    struct Impl;

private:
    std::unique_ptr<Impl> impl_;
};

// Makes `response` ready to be sent many times at the cost of one: status,
// headers and body are set up once and shared by every client it goes to,
// never copied. Null when the transport cannot be loaded.
std::shared_ptr<const PreparedResponse> prepareResponse(HttpResponse response);

}  // namespace velmorant::service
