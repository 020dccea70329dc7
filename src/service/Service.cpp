#include "Service.h"

#include "EventHub.h"
#include "Metrics.h"
#include "PreviewPage.h"
#include "RenderPool.h"
#include "Rendering.h"
#include "ResultCache.h"
#include "Routes.h"
#include "StoreReading.h"

#include <malloc.h>
#include <signal.h>
#include <sys/resource.h>

#include <algorithm>
#include <atomic>
#include <charconv>
#include <fstream>
#include <functional>
#include <iterator>
#include <optional>
#include <map>
#include <mutex>
#include <ctime>
#include <ostream>
#include <thread>

#ifndef VELMORANT_VERSION
#define VELMORANT_VERSION "dev"
#endif

namespace velmorant::service {
namespace {

using Clock = std::chrono::steady_clock;

// The current minute in UTC: the instant a request without `now` is drawn for,
// so that its ETag holds for the rest of the minute.
std::string currentMinute() {
    std::time_t t = std::time(nullptr);
    std::tm utc{};
    gmtime_r(&t, &utc);
    char text[32];
    std::strftime(text, sizeof text, "%Y-%m-%dT%H:%MZ", &utc);
    return text;
}

// The shortest text that reads back as the same double: cheap, and distinct for distinct values.
std::string shortest(double value) {
    char text[32];
    auto end = std::to_chars(text, text + sizeof text, value).ptr;
    return std::string(text, end);
}

std::string canonical(const RenderOptions& o) {
    return shortest(o.width) + '|' + shortest(o.scale) + '|' + o.locale + '|' + o.timeZone + '|' + o.now;
}

bool matchesAny(const std::string& ifNoneMatch, const std::string& etag) {
    // "*" or a list of quoted tags, any of them perhaps marked weak (W/"…").
    return ifNoneMatch.find('*') != std::string::npos || ifNoneMatch.find(etag) != std::string::npos;
}

// Hands pages freed by every thread's heap back to the system: renders free
// megabytes of scratch (bitmaps, encoder state) the heap would otherwise keep.
void releaseFreedMemory() { malloc_trim(0); }

HttpResponse withHeader(HttpResponse response, std::string name, std::string value) {
    response.headers.emplace_back(std::move(name), std::move(value));
    return response;
}

HttpResponse overloaded(long retryAfter, const std::string& why) {
    return withHeader(jsonError(503, why), "Retry-After", std::to_string(retryAfter));
}

HttpResponse prepared(std::shared_ptr<const PreparedResponse> ready) {
    HttpResponse response;
    response.prepared = std::move(ready);
    return response;
}

}  // namespace

struct Service::Impl {
    ServiceOptions options;
    Metrics metrics;
    ResultCache cache;
    // Program version, artwork and fonts: what every ETag starts from.
    Fingerprint dependencies;
    std::string page;
    // Found once: ICU reads the host's zone through a static buffer.
    std::string hostZone;
    RenderPool<WorkerTools> pool;
    EventHub events;
    std::atomic<bool> draining = false;
    // Requests waiting for a result another request is having drawn, by ETag.
    static constexpr std::size_t kMaxWaiters = 1024;
    std::mutex inFlightMutex;
    std::map<std::string, std::vector<std::function<void(HttpResponse)>>> inFlight;
    HttpServer server;

    explicit Impl(const ServiceOptions& o)
        : options(o),
          cache(o.cacheBytes),
          dependencies(Fingerprint().add(VELMORANT_VERSION).add(resourceDigest())),
          page(previewPage()),
          hostZone(platform::Platform().timeZoneId()),
          pool(workerCount(o), o.queueCapacity ? o.queueCapacity : 4 * workerCount(o), makeWorkerTools, releaseFreedMemory),
          events(o.prefs, o.maxEventStreams),
          server(o.bind, o.port, o.limits, [this](HttpRequest& request, Responder respond) { handle(request, std::move(respond)); }) {}

    static std::size_t workerCount(const ServiceOptions& o) {
        return o.workers ? o.workers : std::max(1u, std::thread::hardware_concurrency());
    }

    using Answer = std::function<void(HttpResponse)>;

    void handle(HttpRequest& request, Responder respond) {
        Route route = matchRoute(request);
        Answer answer = [this, name = std::string(routeName(route.kind)), respond = std::move(respond)](HttpResponse response) {
            metrics.countRequest(name, response.status);
            respond(std::move(response));
        };
        if (answeredWithoutRender(request, route, answer)) return;
        std::optional<RenderTask> task = renderTask(request, route, answer);
        if (!task) return;
        if (route.kind == RouteKind::Stores) return queueRender(std::move(*task), true, "", std::move(answer));
        renderOrReuse(request, std::move(*task), std::move(answer));
    }

    // Methods, health, stopping, unknown paths, metrics, the page and event streams.
    bool answeredWithoutRender(const HttpRequest& request, const Route& route, const Answer& answer) {
        if (route.kind != RouteKind::NotFound && !route.allows(request.method)) {
            auto response = jsonError(405, "method " + request.method + " not allowed here");
            answer(withHeader(std::move(response), "Allow", route.allowHeader()));
            return true;
        }
        if (route.kind == RouteKind::Health) {
            // Answered on the network thread, never behind a render.
            answer(withHeader(HttpResponse{200, "application/json", {{"Cache-Control", "no-store"}}, "{\"status\": \"ok\"}\n"},
                              "X-Queue-Depth", std::to_string(pool.queued())));
            return true;
        }
        if (draining) {
            answer(withHeader(overloaded(1, "the service is stopping"), "Connection", "close"));
            return true;
        }
        switch (route.kind) {
            case RouteKind::NotFound: answer(jsonError(404, "no such resource: " + route.why)); return true;
            case RouteKind::Metrics:
                answer(HttpResponse{200, "text/plain; version=0.0.4", {{"Cache-Control", "no-store"}},
                                    metrics.text({pool.queued(), pool.busy(), pool.workers(), cache.bytes(), server.requestBodyBytes()})});
                return true;
            case RouteKind::Preview:
                answer(HttpResponse{200, "text/html; charset=utf-8", {{"Cache-Control", "no-cache"}}, page});
                return true;
            case RouteKind::Events: {
                auto stream = events.open();
                if (!stream) {
                    answer(overloaded(5, "too many open event streams"));
                    return true;
                }
                HttpResponse response{200, "text/event-stream", {{"Cache-Control", "no-store"}}, ""};
                response.events = std::move(stream);
                answer(std::move(response));
                return true;
            }
            default: return false;
        }
    }

    // What to draw, from the query and the store; none when the request was refused.
    std::optional<RenderTask> renderTask(HttpRequest& request, const Route& route, const Answer& answer) {
        RenderTask task;
        try {
            task.options = readRenderOptions(request.query);
        } catch (const BadRequest& e) {
            answer(jsonError(400, e.what()));
            return std::nullopt;
        }
        if (task.options.now.empty()) task.options.now = currentMinute();
        if (task.options.timeZone.empty()) task.options.timeZone = hostZone;
        task.name = route.name;
        task.product = route.product;
        if (request.method == "POST") {
            if (request.body.empty()) {
                answer(jsonError(400, "POST needs a store in the body (property list or JSON)"));
                return std::nullopt;
            }
            task.stores = {StoreInput::Kind::Body, std::move(request.body), {}};
        } else if (!options.prefs.empty()) {
            task.stores = readStoreFiles(options.prefs);
        }
        return task;
    }

    // 304 when the client has it, the cached result, the render under way, or a new render.
    void renderOrReuse(const HttpRequest& request, RenderTask task, Answer answer) {
        std::string etag = Fingerprint(dependencies)
                               .add(std::to_string(static_cast<int>(task.product)))
                               .add(task.name)
                               .add(canonical(task.options))
                               .add(std::to_string(static_cast<int>(task.stores.kind)))
                               .add(task.stores.shared)
                               .add(task.stores.standard)
                               .etag();
        if (matchesAny(request.header("if-none-match"), etag))
            return answer(HttpResponse{304, "", {{"ETag", etag}, {"Cache-Control", "no-cache"}}, ""});
        if (auto cached = cache.find(etag)) {
            metrics.countCache(true);
            return answer(prepared(cached->response));
        }
        metrics.countCache(false);
        // The same result already being drawn: this request waits for it
        // instead of taking a second place in the queue.
        {
            std::lock_guard lock(inFlightMutex);
            auto it = inFlight.find(etag);
            if (it != inFlight.end()) {
                if (it->second.size() < kMaxWaiters) return it->second.push_back(std::move(answer));
                return answer(overloaded(pool.retryAfterSeconds(), "too many requests wait for the same result"));
            }
            inFlight[etag];
        }
        queueRender(std::move(task), false, etag, [this, etag, answer = std::move(answer)](HttpResponse response) {
            std::vector<Answer> waiting;
            {
                std::lock_guard lock(inFlightMutex);
                auto it = inFlight.find(etag);
                if (it != inFlight.end()) {
                    waiting = std::move(it->second);
                    inFlight.erase(it);
                }
            }
            for (auto& other : waiting) other(response);
            answer(std::move(response));
        });
    }

    template <typename Answer>
    void queueRender(RenderTask task, bool storesOnly, std::string etag, Answer answer) {
        auto shared = std::make_shared<Answer>(std::move(answer));
        auto taskHeld = std::make_shared<RenderTask>(std::move(task));
        typename RenderPool<WorkerTools>::Job job;
        job.deadline = Clock::now() + std::chrono::duration_cast<Clock::duration>(
                                          std::chrono::duration<double>(options.renderDeadlineSeconds));
        job.expire = [this, shared] { (*shared)(overloaded(pool.retryAfterSeconds(), "the render waited past its deadline")); };
        job.run = [this, shared, taskHeld, storesOnly, etag, deadline = job.deadline](WorkerTools& tools) {
            try {
                if (storesOnly) {
                    (*shared)(HttpResponse{200, "application/json", {{"Cache-Control", "no-store"}},
                                           storesAsJson(taskHeld->stores, taskHeld->options)});
                    return;
                }
                RenderOutput output = render(*taskHeld, tools, metrics, {deadline, options.deadlinePassedAfter});
                std::size_t bytes = output.body.size();
                // Made ready once, the answer goes to this client, to those
                // waiting for the same result, and from the cache to later ones.
                auto ready = prepareResponse(
                    {200, output.contentType, {{"ETag", etag}, {"Cache-Control", "no-cache"}}, std::move(output.body)});
                if (!ready) throw std::runtime_error("the transport cannot hold the answer");
                cache.insert(etag, std::make_shared<const CachedResult>(CachedResult{ready, bytes}));
                (*shared)(prepared(std::move(ready)));
            } catch (const BadRequest& e) {
                (*shared)(jsonError(400, e.what()));
            } catch (const DeadlinePassed& e) {
                // 503, not 504: this server is the origin, not a gateway
                // waiting on another, and it is too busy to finish in time.
                (*shared)(overloaded(pool.retryAfterSeconds(), e.what()));
            } catch (const std::exception& e) {
                (*shared)(jsonError(500, e.what()));
            }
        };
        if (!pool.submit(std::move(job)))
            (*shared)(overloaded(pool.retryAfterSeconds(), "every worker is busy and the queue is full"));
    }

    static std::string resourceDigest();
};

std::string Service::Impl::resourceDigest() {
    namespace fs = std::filesystem;
    Fingerprint print;
    platform::Platform platform;
    std::error_code ec;
    std::vector<fs::path> files;
    for (auto it = fs::recursive_directory_iterator(platform.resourceDir(), ec); !ec && it != fs::recursive_directory_iterator();
         it.increment(ec))
        if (it->is_regular_file(ec)) files.push_back(it->path());
    // The font folders the pinned configuration reads: by name, size and time.
    for (const char* dir : {"/usr/share/fonts/opentype/inter", "/usr/share/fonts/truetype/noto", "/usr/share/fonts/truetype/dejavu"})
        for (auto it = fs::directory_iterator(dir, ec); !ec && it != fs::directory_iterator(); it.increment(ec))
            if (it->is_regular_file(ec)) {
                auto time = fs::last_write_time(it->path(), ec).time_since_epoch().count();
                print.add(it->path().string()).add(std::to_string(it->file_size(ec))).add(std::to_string(time));
            }
    std::sort(files.begin(), files.end());
    for (const auto& file : files) {
        std::ifstream in(file, std::ios::binary);
        print.add(file.lexically_relative(platform.resourceDir()).string())
            .add(std::string(std::istreambuf_iterator<char>(in), {}));
    }
    return print.etag();
}

Service::Service(const ServiceOptions& options) : impl_(std::make_unique<Impl>(options)) {}

Service::~Service() { stop(); }

std::uint16_t Service::port() const { return impl_->server.port(); }

void Service::stop() {
    if (impl_->draining.exchange(true)) return;
    impl_->events.stop();
    impl_->pool.stop();
    // Lets the answers just handed over leave before the sockets close.
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    impl_->server.stop();
}

void runUntilSignalled(const ServiceOptions& options, std::ostream& out) {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    // Blocked before any thread starts, so every thread inherits it and only sigwait sees them.
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    signal(SIGPIPE, SIG_IGN);
    // Every connection is a descriptor: allow as many as the system lets us.
    rlimit files{};
    if (getrlimit(RLIMIT_NOFILE, &files) == 0 && files.rlim_cur < files.rlim_max) {
        files.rlim_cur = files.rlim_max;
        setrlimit(RLIMIT_NOFILE, &files);
    }
    Service service(options);
    std::string host = options.bind.find(':') != std::string::npos ? "[" + options.bind + "]" : options.bind;
    out << "serving on http://" << host << ':' << service.port() << "/" << std::endl;
    int received = 0;
    sigwait(&signals, &received);
    out << "stopping: finishing the renders under way" << std::endl;
    service.stop();
}

}  // namespace velmorant::service
