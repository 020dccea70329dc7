#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace velmorant::service {

class EventStream;
// An answer made ready once by the transport and sent as it is to any number of clients.
class PreparedResponse;

// One request as the transport read it. The path is checked against the raw
// target, so an escaped character never reaches a route.
struct HttpRequest {
    std::string method;
    std::string path;
    // True when the raw target's path held an escape, a NUL or any byte a route never uses.
    bool rawPathSuspicious = false;
    std::map<std::string, std::string> query;
    // Names in lower case.
    std::map<std::string, std::string> headers;
    std::string body;

    std::string header(const std::string& lowerName) const {
        auto it = headers.find(lowerName);
        return it == headers.end() ? std::string() : it->second;
    }
};

struct HttpResponse {
    int status = 200;
    std::string contentType = "application/json";
    std::vector<std::pair<std::string, std::string>> headers;
    std::string body;
    // When set, everything above is ignored and this is sent instead.
    std::shared_ptr<const PreparedResponse> prepared;
    // When set, the body is this endless stream of server-sent events instead.
    std::shared_ptr<EventStream> events;
};

// Answers a request exactly once, from any thread.
using Responder = std::function<void(HttpResponse)>;
using HttpHandler = std::function<void(HttpRequest&, Responder)>;

HttpResponse jsonError(int status, const std::string& message);

}  // namespace velmorant::service
