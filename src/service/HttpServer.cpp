#include "HttpServer.h"

#include "BodyBudget.h"
#include "EventStream.h"

#include <arpa/inet.h>
#include <microhttpd.h>
#include <dlfcn.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <algorithm>
#include <cctype>
#include <chrono>
#include <cstring>
#include <mutex>
#include <optional>
#include <set>
#include <stdexcept>
#include <thread>

// GNU libmicrohttpd was chosen over a thread-per-connection library: a few epoll
// threads serve every socket, so idle keep-alive clients, slow senders and open
// event streams cost a file descriptor, not a thread, and the renderers are a
// pool of our own that the I/O thread hands work to (a parked connection is
// resumed when its answer is ready). It also bounds header memory, connections
// and idle time itself, and tells the body length before reading the body.

namespace velmorant::service {
namespace {

// libmicrohttpd and the TLS libraries it brings (GnuTLS, Nettle, GMP, p11-kit)
// would lengthen every symbol lookup of every run of the program at start-up;
// only `serve` needs them, so they are loaded when a server starts.
struct Mhd {
    decltype(&MHD_add_response_header) add_response_header = nullptr;
    decltype(&MHD_create_response_from_buffer_with_free_callback_cls) create_response_from_shared_buffer = nullptr;
    decltype(&MHD_create_response_from_callback) create_response_from_callback = nullptr;
    decltype(&MHD_destroy_response) destroy_response = nullptr;
    decltype(&MHD_get_connection_info) get_connection_info = nullptr;
    decltype(&MHD_get_connection_values) get_connection_values = nullptr;
    decltype(&MHD_get_daemon_info) get_daemon_info = nullptr;
    decltype(&MHD_queue_response) queue_response = nullptr;
    decltype(&MHD_resume_connection) resume_connection = nullptr;
    decltype(&MHD_start_daemon) start_daemon = nullptr;
    decltype(&MHD_stop_daemon) stop_daemon = nullptr;
    decltype(&MHD_suspend_connection) suspend_connection = nullptr;

    // Throws std::runtime_error when the library cannot be loaded.
    static const Mhd& load() {
        static const Mhd loaded;
        if (!loaded.complete()) throw std::runtime_error(loaded.error_);
        return loaded;
    }

private:
    Mhd() {
        void* library = ::dlopen("libmicrohttpd.so.12", RTLD_NOW | RTLD_LOCAL);
        if (!library) {
            const char* why = ::dlerror();
            error_ = std::string("libmicrohttpd cannot be loaded") + (why ? std::string(": ") + why : std::string());
            return;
        }
        add_response_header = reinterpret_cast<decltype(add_response_header)>(::dlsym(library, "MHD_add_response_header"));
        create_response_from_shared_buffer = reinterpret_cast<decltype(create_response_from_shared_buffer)>(
            ::dlsym(library, "MHD_create_response_from_buffer_with_free_callback_cls"));
        create_response_from_callback = reinterpret_cast<decltype(create_response_from_callback)>(::dlsym(library, "MHD_create_response_from_callback"));
        destroy_response = reinterpret_cast<decltype(destroy_response)>(::dlsym(library, "MHD_destroy_response"));
        get_connection_info = reinterpret_cast<decltype(get_connection_info)>(::dlsym(library, "MHD_get_connection_info"));
        get_connection_values = reinterpret_cast<decltype(get_connection_values)>(::dlsym(library, "MHD_get_connection_values"));
        get_daemon_info = reinterpret_cast<decltype(get_daemon_info)>(::dlsym(library, "MHD_get_daemon_info"));
        queue_response = reinterpret_cast<decltype(queue_response)>(::dlsym(library, "MHD_queue_response"));
        resume_connection = reinterpret_cast<decltype(resume_connection)>(::dlsym(library, "MHD_resume_connection"));
        start_daemon = reinterpret_cast<decltype(start_daemon)>(::dlsym(library, "MHD_start_daemon"));
        stop_daemon = reinterpret_cast<decltype(stop_daemon)>(::dlsym(library, "MHD_stop_daemon"));
        suspend_connection = reinterpret_cast<decltype(suspend_connection)>(::dlsym(library, "MHD_suspend_connection"));
        if (!complete()) error_ = "libmicrohttpd lacks a function this server uses";
    }
    bool complete() const { return add_response_header && create_response_from_shared_buffer && create_response_from_callback && destroy_response && get_connection_info && get_connection_values && get_daemon_info && queue_response && resume_connection && start_daemon && stop_daemon && suspend_connection; }
    std::string error_;
};

const Mhd& mhd() { return Mhd::load(); }

}  // namespace


HttpResponse jsonError(int status, const std::string& message) {
    HttpResponse response;
    response.status = status;
    response.headers.emplace_back("Cache-Control", "no-store");
    // A JSON string with the message escaped.
    std::string body = "{\"error\": \"";
    for (unsigned char c : message) {
        if (c == '"' || c == '\\') body += '\\', body += static_cast<char>(c);
        else if (c < 0x20) {
            char escaped[8];
            std::snprintf(escaped, sizeof escaped, "\\u%04x", c);
            body += escaped;
        } else body += static_cast<char>(c);
    }
    response.body = body + "\"}\n";
    return response;
}

namespace {

// Connections parked while their answer is made or their stream is idle; all
// are woken when the server stops, so none is left behind.
struct Parking {
    std::mutex mutex;
    std::set<MHD_Connection*> parked;
    bool stopped = false;

    void park(MHD_Connection* connection) {
        std::lock_guard lock(mutex);
        mhd().suspend_connection(connection);
        parked.insert(connection);
    }
    void wake(MHD_Connection* connection) {
        std::lock_guard lock(mutex);
        if (parked.erase(connection)) mhd().resume_connection(connection);
    }
    void wakeAll() {
        std::lock_guard lock(mutex);
        stopped = true;
        for (MHD_Connection* connection : parked) mhd().resume_connection(connection);
        parked.clear();
    }
};

struct RequestState {
    using Clock = std::chrono::steady_clock;

    ~RequestState() { release(); }

    std::shared_ptr<Parking> parking;
    std::shared_ptr<BodyBudget> budget;
    // Body bytes reserved in the budget for this request, given back when it is done.
    std::size_t reserved = 0;
    std::string rawTarget;
    // Where the target ended as a C string in the library's copy of the request
    // line: the version follows it directly unless the target held a raw NUL.
    std::uintptr_t rawTargetEnd = 0;
    HttpRequest request;
    MHD_Connection* connection = nullptr;
    bool started = false;
    bool handed = false;
    // Answered ahead of its body: what still arrives is dropped.
    bool refused = false;
    Clock::time_point refusedAt;
    std::size_t dropped = 0;
    std::mutex mutex;
    std::optional<HttpResponse> ready;

    // Holds `total` body bytes in the budget in all; false when the budget has no room.
    bool hold(std::size_t total) {
        if (total <= reserved) return true;
        if (!budget->reserve(total - reserved)) return false;
        reserved = total;
        return true;
    }
    void release() {
        if (budget) budget->release(std::exchange(reserved, 0));
    }
};

struct StreamReader {
    std::shared_ptr<EventStream> stream;
    std::shared_ptr<Parking> parking;
    MHD_Connection* connection;
    std::string pending;
    std::size_t offset = 0;
};

bool suspiciousPath(std::string_view target) {
    std::string_view path = target.substr(0, target.find('?'));
    return std::any_of(path.begin(), path.end(), [](unsigned char c) {
        return !(std::isalnum(c) || c == '/' || c == '.' || c == '-' || c == '_');
    });
}

ssize_t readEvents(void* cls, std::uint64_t, char* buffer, std::size_t max) {
    auto& reader = *static_cast<StreamReader*>(cls);
    if (reader.offset == reader.pending.size()) {
        reader.pending.clear();
        reader.offset = 0;
        {
            std::lock_guard lock(reader.parking->mutex);
            if (reader.parking->stopped) return MHD_CONTENT_READER_END_OF_STREAM;
        }
        MHD_Connection* connection = reader.connection;
        auto parking = reader.parking;
        auto taken = reader.stream->take(
            reader.pending, [&] { parking->park(connection); }, [parking, connection] { parking->wake(connection); });
        if (taken == EventStream::Take::Ended) return MHD_CONTENT_READER_END_OF_STREAM;
        if (taken == EventStream::Take::Parked) return 0;
    }
    std::size_t n = std::min(max, reader.pending.size() - reader.offset);
    std::memcpy(buffer, reader.pending.data() + reader.offset, n);
    reader.offset += n;
    return static_cast<ssize_t>(n);
}

void freeEvents(void* cls) {
    auto* reader = static_cast<StreamReader*>(cls);
    reader->stream->close();
    delete reader;
}

void addHeaders(MHD_Response* response, const HttpResponse& answer) {
    mhd().add_response_header(response, MHD_HTTP_HEADER_CONTENT_TYPE, answer.contentType.c_str());
    for (const auto& [name, value] : answer.headers) mhd().add_response_header(response, name.c_str(), value.c_str());
}

void releaseBody(void* held) { delete static_cast<std::string*>(held); }

// One epoll thread per core (a few at most): a cached answer of a large card
// costs the network thread more in the kernel, copying it into the socket,
// than everything else, and one such thread left the second core idle.
unsigned ioThreadCount() { return std::clamp(std::thread::hardware_concurrency(), 1u, 4u); }

}  // namespace

class PreparedResponse {
public:
    PreparedResponse(MHD_Response* response, int status) : response_(response), status_(status) {}
    ~PreparedResponse() { mhd().destroy_response(response_); }
    PreparedResponse(const PreparedResponse&) = delete;
    PreparedResponse& operator=(const PreparedResponse&) = delete;

    // The library counts its own references, so the response outlives this
    // object for as long as a connection is still sending it.
    MHD_Result queueOn(MHD_Connection* connection) const {
        return mhd().queue_response(connection, static_cast<unsigned>(status_), response_);
    }

private:
    MHD_Response* response_;
    int status_;
};

std::shared_ptr<const PreparedResponse> prepareResponse(HttpResponse answer) {
    // The response owns the body from here and frees it when the last client is done.
    auto* body = new std::string(std::move(answer.body));
    MHD_Response* response = mhd().create_response_from_shared_buffer(body->size(), body->data(), releaseBody, body);
    if (!response) {
        releaseBody(body);
        return nullptr;
    }
    addHeaders(response, answer);
    return std::make_shared<const PreparedResponse>(response, answer.status);
}

namespace {

MHD_Result queue(MHD_Connection* connection, const std::shared_ptr<Parking>& parking, HttpResponse&& answer) {
    if (answer.prepared) return answer.prepared->queueOn(connection);
    MHD_Response* response;
    if (answer.events) {
        auto* reader = new StreamReader{answer.events, parking, connection};
        response = mhd().create_response_from_callback(MHD_SIZE_UNKNOWN, 4096, readEvents, reader, freeEvents);
        if (!response) {
            freeEvents(reader);
            return MHD_NO;
        }
    } else {
        // The library holds the body, moved here, until the last byte has left.
        auto* body = new std::string(std::move(answer.body));
        response = mhd().create_response_from_shared_buffer(body->size(), body->data(), releaseBody, body);
        if (!response) {
            releaseBody(body);
            return MHD_NO;
        }
    }
    addHeaders(response, answer);
    MHD_Result result = mhd().queue_response(connection, static_cast<unsigned>(answer.status), response);
    mhd().destroy_response(response);
    return result;
}

// The library cannot queue an answer while a body is arriving, only close
// the connection; so the answer is written to the socket directly, and the
// write side shut. It is small and the only thing ever sent on the connection
// at this point (earlier answers have left).
void answerAhead(MHD_Connection* connection, const HttpResponse& answer) {
    const MHD_ConnectionInfo* info = mhd().get_connection_info(connection, MHD_CONNECTION_INFO_CONNECTION_FD);
    if (!info) return;
    std::string reason = answer.status == 413 ? "Content Too Large" : answer.status == 503 ? "Service Unavailable" : "Error";
    std::string text = "HTTP/1.1 " + std::to_string(answer.status) + ' ' + reason + "\r\nContent-Type: " + answer.contentType +
                       "\r\nContent-Length: " + std::to_string(answer.body.size()) + "\r\nConnection: close\r\n";
    for (const auto& [name, value] : answer.headers) text += name + ": " + value + "\r\n";
    text += "\r\n" + answer.body;
    if (::send(info->connect_fd, text.data(), text.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(text.size()))
        ::shutdown(info->connect_fd, SHUT_WR);
}

MHD_Result collect(void* cls, MHD_ValueKind, const char* key, const char* value) {
    auto& into = *static_cast<std::map<std::string, std::string>*>(cls);
    into[key] = value ? value : "";
    return MHD_YES;
}

}  // namespace

struct HttpServer::Impl {
    HttpLimits limits;
    HttpHandler handler;
    std::shared_ptr<Parking> parking = std::make_shared<Parking>();
    std::shared_ptr<BodyBudget> budget;
    MHD_Daemon* daemon = nullptr;

    static void* onTarget(void* cls, const char* uri, MHD_Connection*) {
        auto& impl = *static_cast<Impl*>(cls);
        auto* state = new std::shared_ptr<RequestState>(std::make_shared<RequestState>());
        (*state)->parking = impl.parking;
        (*state)->budget = impl.budget;
        (*state)->rawTarget = uri ? uri : "";
        (*state)->rawTargetEnd = reinterpret_cast<std::uintptr_t>(uri) + (*state)->rawTarget.size();
        return state;
    }

    static void onCompleted(void*, MHD_Connection*, void** context, MHD_RequestTerminationCode) {
        delete static_cast<std::shared_ptr<RequestState>*>(*context);
        *context = nullptr;
    }

    static MHD_Result onRequest(void* cls, MHD_Connection* connection, const char* url, const char* method,
                                const char* version, const char* upload, std::size_t* uploadSize, void** context) {
        auto& impl = *static_cast<Impl*>(cls);
        std::shared_ptr<RequestState> state = *static_cast<std::shared_ptr<RequestState>*>(*context);
        if (!state->started) return impl.begin(*state, connection, url, method, version);
        if (*uploadSize) {
            if (!state->refused) {
                // A body without a stated length that outgrows a limit.
                if (auto refusal = impl.admit(*state, *uploadSize)) refuseAhead(*state, connection, *refusal);
            }
            if (state->refused) return impl.drop(*state, uploadSize);
            state->request.body.append(upload, *uploadSize);
            *uploadSize = 0;
            return MHD_YES;
        }
        // Answered already; the whole body has been read, so the close is clean.
        if (state->refused) return MHD_NO;
        if (!state->handed) {
            state->handed = true;
            std::weak_ptr<RequestState> weak = state;
            impl.handler(state->request, [weak](HttpResponse response) {
                auto held = weak.lock();
                if (!held) return;
                std::lock_guard lock(held->mutex);
                held->ready = std::move(response);
                held->parking->wake(held->connection);
            });
        }
        std::lock_guard lock(state->mutex);
        if (state->ready) return queue(connection, impl.parking, std::move(*state->ready));
        {
            std::lock_guard stopLock(impl.parking->mutex);
            if (impl.parking->stopped) return MHD_NO;
        }
        impl.parking->park(connection);
        return MHD_YES;
    }

    HttpResponse bodyTooLarge() const {
        return jsonError(413, "request body over " + std::to_string(limits.maxBodyBytes) + " bytes");
    }

    static HttpResponse bodyBudgetSpent() {
        HttpResponse response = jsonError(503, "too many request bodies arriving at once");
        response.headers.emplace_back("Retry-After", "1");
        return response;
    }

    // Makes room for `more` body bytes: none when they fit, else the refusal.
    // Room is held as the body's storage grows, so the budget counts what is allocated.
    std::optional<HttpResponse> admit(RequestState& state, std::size_t more) const {
        std::string& body = state.request.body;
        std::size_t needed = body.size() + more;
        if (needed > limits.maxBodyBytes) return bodyTooLarge();
        if (needed > body.capacity()) {
            std::size_t grown = std::min(std::max(needed, 2 * body.capacity()), limits.maxBodyBytes);
            if (!state.hold(grown)) return bodyBudgetSpent();
            body.reserve(grown);
        }
        return std::nullopt;
    }

    // Answers at once, ahead of the body, whose bytes are dropped from here on.
    static void refuseAhead(RequestState& state, MHD_Connection* connection, const HttpResponse& answer) {
        answerAhead(connection, answer);
        state.refused = true;
        state.refusedAt = RequestState::Clock::now();
        state.request.body = std::string();
        state.release();
    }

    // Refuses a body from its stated length. A client waiting for "100 Continue"
    // sends none, so the answer is queued as usual; any other may be sending it
    // already, so the answer goes out ahead and the body is dropped as it arrives.
    MHD_Result refuseBeforeBody(RequestState& state, MHD_Connection* connection, HttpResponse answer) {
        if (!state.request.header("expect").empty()) return queue(connection, parking, std::move(answer));
        refuseAhead(state, connection, answer);
        return MHD_YES;
    }

    // Reads and drops what arrives after an early answer, within the linger
    // bounds; past them the connection is closed, a reset or not.
    MHD_Result drop(RequestState& state, std::size_t* uploadSize) const {
        state.dropped += std::exchange(*uploadSize, 0);
        auto lingered = std::chrono::duration<double>(RequestState::Clock::now() - state.refusedAt).count();
        return state.dropped > limits.lingerBytes || lingered > limits.lingerSeconds ? MHD_NO : MHD_YES;
    }

    MHD_Result begin(RequestState& state, MHD_Connection* connection, const char* url, const char* method,
                     const char* version) {
        state.started = true;
        state.connection = connection;
        HttpRequest& request = state.request;
        request.method = method;
        request.path = url;
        // The library cuts the target at a raw NUL and passes the rest on: such a
        // target is told by the gap between where it ended and the version.
        bool rawNul = version && reinterpret_cast<std::uintptr_t>(version) != state.rawTargetEnd + 1;
        request.rawPathSuspicious = rawNul || suspiciousPath(state.rawTarget);
        int count = mhd().get_connection_values(connection, MHD_HEADER_KIND, collect, &request.headers);
        std::map<std::string, std::string> headers;
        for (auto& [name, value] : request.headers) {
            std::string lower = name;
            std::transform(lower.begin(), lower.end(), lower.begin(), [](unsigned char c) { return std::tolower(c); });
            headers[lower] = value;
        }
        request.headers = std::move(headers);
        mhd().get_connection_values(connection, MHD_GET_ARGUMENT_KIND, collect, &request.query);
        if (count < 0 || static_cast<std::size_t>(count) > limits.maxHeaderCount)
            return queue(connection, parking, jsonError(431, "too many header fields (at most " +
                                                                 std::to_string(limits.maxHeaderCount) + ")"));
        std::string length = request.header("content-length");
        if (!length.empty()) {
            char* end = nullptr;
            unsigned long long declared = std::strtoull(length.c_str(), &end, 10);
            if (declared > limits.maxBodyBytes) return refuseBeforeBody(state, connection, bodyTooLarge());
            if (!state.hold(declared)) return refuseBeforeBody(state, connection, bodyBudgetSpent());
            request.body.reserve(declared);
        }
        return MHD_YES;
    }
};

HttpServer::HttpServer(const std::string& address, std::uint16_t port, const HttpLimits& limits, HttpHandler handler)
    : impl_(std::make_unique<Impl>()) {
    impl_->limits = limits;
    impl_->budget = std::make_shared<BodyBudget>(limits.maxBodyBytesInFlight);
    impl_->handler = std::move(handler);
    sockaddr_storage storage{};
    auto* v4 = reinterpret_cast<sockaddr_in*>(&storage);
    auto* v6 = reinterpret_cast<sockaddr_in6*>(&storage);
    unsigned flags = MHD_USE_INTERNAL_POLLING_THREAD | MHD_USE_EPOLL | MHD_ALLOW_SUSPEND_RESUME;
    if (inet_pton(AF_INET, address.c_str(), &v4->sin_addr) == 1) {
        v4->sin_family = AF_INET;
        v4->sin_port = htons(port);
    } else if (inet_pton(AF_INET6, address.c_str(), &v6->sin6_addr) == 1) {
        v6->sin6_family = AF_INET6;
        v6->sin6_port = htons(port);
        flags |= MHD_USE_IPv6;
    } else {
        throw std::runtime_error("--bind " + address + ": not an IPv4 or IPv6 address");
    }
    impl_->daemon = mhd().start_daemon(
        flags, port, nullptr, nullptr, &Impl::onRequest, impl_.get(), MHD_OPTION_SOCK_ADDR, &storage,
        MHD_OPTION_URI_LOG_CALLBACK, &Impl::onTarget, impl_.get(), MHD_OPTION_NOTIFY_COMPLETED, &Impl::onCompleted,
        nullptr, MHD_OPTION_CONNECTION_MEMORY_LIMIT, static_cast<std::size_t>(limits.maxHeaderBytes),
        MHD_OPTION_CONNECTION_TIMEOUT, limits.idleTimeoutSeconds, MHD_OPTION_CONNECTION_LIMIT,
        limits.maxConnections, MHD_OPTION_THREAD_POOL_SIZE, ioThreadCount(), MHD_OPTION_END);
    if (!impl_->daemon)
        throw std::runtime_error("cannot listen on " + address + " port " + std::to_string(port) +
                                 " (in use, or not an address of this machine)");
}

HttpServer::~HttpServer() { stop(); }

std::uint16_t HttpServer::port() const {
    const MHD_DaemonInfo* info = mhd().get_daemon_info(impl_->daemon, MHD_DAEMON_INFO_BIND_PORT);
    return info ? info->port : 0;
}

std::size_t HttpServer::requestBodyBytes() const { return impl_->budget->held(); }

void HttpServer::stop() {
    if (!impl_->daemon) return;
    impl_->parking->wakeAll();
    mhd().stop_daemon(impl_->daemon);
    impl_->daemon = nullptr;
}

}  // namespace velmorant::service
