#include "ServiceClient.h"
#include "TempDir.h"
#include "demo/DemoData.h"
#include "service/ResultCache.h"
#include "platform/services/Platform.h"
#include "platform/store/PlistCodec.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <atomic>
#include <fstream>
#include <future>
#include <sstream>
#include <set>
#include <thread>
#include <vector>

namespace velmorant::service::testing {
namespace {

using json = nlohmann::json;
constexpr const char* kNow = "now=2024-03-05T07:30:00&tz=Europe/London";

bool isPng(const std::string& body) { return body.rfind("\x89PNG\r\n\x1a\n", 0) == 0; }

std::string demoPlist(platform::PlistFormat format) {
    platform::Platform platform({.now = platform::Date::fromUnix(1709623800), .timeZoneId = "Europe/London"});
    std::string error;
    auto bytes = platform::serialisePlist(demo::makeDemoStores(platform).shared, format, &error);
    return {bytes->begin(), bytes->end()};
}

struct Expected {
    const char* method;
    std::string path;
    std::string body;
    int status;
    // "png", "json" (a record), "error" (a JSON error), or a content type prefix.
    const char* kind;
};

TEST(Service, EveryRouteAnswersWithItsStatusAndKind) {
    const std::string now = kNow;
    const Expected cases[] = {
        {"GET", "/healthz", "", 200, "application/json"},
        {"GET", "/metrics", "", 200, "text/plain"},
        {"GET", "/", "", 200, "text/html"},
        {"GET", "/v1/stores.json", "", 200, "application/json"},
        {"GET", "/v1/snippets/SleepSpO2Intent.png?" + now, "", 200, "png"},
        {"GET", "/v1/snippets/ReadinessIntent.json?width=320&locale=de_DE&" + now, "", 200, "json"},
        {"GET", "/v1/widgets/swiftSpO2Image.png?" + now, "", 200, "png"},
        {"POST", "/v1/snippets/SleepSpO2Intent.png", demoPlist(platform::PlistFormat::Binary), 200, "png"},
        {"POST", "/v1/snippets/SleepSpO2Intent.json", demoPlist(platform::PlistFormat::Xml), 200, "json"},
        {"POST", "/v1/snippets/LightsOffIntent.json", R"({"shared": {"activeLightSwitch": {"date": "2024-03-05T06:00:00Z"}}, "standard": {}})", 200, "json"},
        // What the client got wrong.
        {"GET", "/v1/snippets/SleepSpO2Intent.png?width=9000", "", 400, "error"},
        {"GET", "/v1/snippets/SleepSpO2Intent.png?scale=0", "", 400, "error"},
        {"GET", "/v1/snippets/SleepSpO2Intent.png?locale=xx_YY", "", 400, "error"},
        {"GET", "/v1/snippets/SleepSpO2Intent.png?tz=Mars/Olympus", "", 400, "error"},
        {"GET", "/v1/snippets/SleepSpO2Intent.png?now=yesterday", "", 400, "error"},
        {"GET", "/v1/snippets/SleepSpO2Intent.png?colour=red", "", 400, "error"},
        {"POST", "/v1/snippets/SleepSpO2Intent.png", "not a store", 400, "error"},
        {"POST", "/v1/snippets/SleepSpO2Intent.png", "<plist><dict><key>a</key></plist>", 400, "error"},
        {"POST", "/v1/snippets/SleepSpO2Intent.png", R"({"shared": [1, 2]})", 400, "error"},
        {"POST", "/v1/snippets/SleepSpO2Intent.png", R"({"shared": {}, "extra": {}})", 400, "error"},
        {"POST", "/v1/snippets/SleepSpO2Intent.png", R"({"shared": {"a": null}})", 400, "error"},
        {"POST", "/v1/snippets/SleepSpO2Intent.png", R"({"shared": {"a": {"date": "soon"}}})", 400, "error"},
        {"POST", "/v1/snippets/SleepSpO2Intent.png", std::string(R"({"shared": {"a": )") + std::string(80, '[') + std::string(80, ']') + "}}", 400, "error"},
        {"POST", "/v1/widgets/swiftSleepBankImage.png", R"({"shared": {}})", 400, "error"},
        // Unknown names and path tricks: nothing matches, nothing is opened.
        {"GET", "/v1/snippets/NoSuchIntent.png", "", 404, "error"},
        {"GET", "/v1/snippets/SleepSpO2Intent.gif", "", 404, "error"},
        {"GET", "/v1/widgets/swiftNothing.png", "", 404, "error"},
        {"GET", "/v1/widgets/SleepSpO2Intent.png", "", 404, "error"},
        {"GET", "/v1/snippets/../healthz", "", 404, "error"},
        {"GET", "/v1/snippets/..%2F..%2Fetc%2Fpasswd.png", "", 404, "error"},
        {"GET", "/v1/snippets%2FSleepSpO2Intent.png", "", 404, "error"},
        {"GET", "/v1/snippets/SleepSpO2Intent.png%00.txt", "", 404, "error"},
        {"GET", "/v1/snippets/Sleep%53pO2Intent.png", "", 404, "error"},
        {"GET", "/v1//snippets/SleepSpO2Intent.png", "", 404, "error"},
        {"GET", "/v1/snippets/SleepSpO2Intent.png/", "", 404, "error"},
        {"GET", "/healthz/..", "", 404, "error"},
        {"POST", "/healthz", "{}", 405, "error"},
        {"DELETE", "/v1/snippets/SleepSpO2Intent.png", "", 405, "error"},
    };
    RunningService running;
    auto client = running.client();
    for (const Expected& c : cases) {
        SCOPED_TRACE(std::string(c.method) + " " + c.path + " " + c.body.substr(0, 60));
        httplib::Result result = std::string(c.method) == "GET"    ? client.Get(c.path.c_str())
                                 : std::string(c.method) == "POST" ? client.Post(c.path.c_str(), c.body, "application/octet-stream")
                                                                   : client.Delete(c.path.c_str());
        ASSERT_TRUE(result) << httplib::to_string(result.error());
        EXPECT_EQ(result->status, c.status) << result->body;
        std::string type = result->get_header_value("Content-Type");
        std::string kind = c.kind;
        if (kind == "png") {
            EXPECT_TRUE(isPng(result->body));
            EXPECT_EQ(type, "image/png");
        } else if (kind == "json") {
            json record = json::parse(result->body);
            EXPECT_TRUE(record["success"].get<bool>());
            EXPECT_FALSE(record["accessibility"].get<std::string>().empty());
        } else if (kind == "error") {
            EXPECT_EQ(type, "application/json");
            json error = json::parse(result->body, nullptr, false);
            ASSERT_TRUE(error.is_object()) << result->body;
            EXPECT_FALSE(error["error"].get<std::string>().empty());
            EXPECT_EQ(result->get_header_value("Cache-Control"), "no-store");
        } else {
            EXPECT_EQ(type.rfind(kind, 0), 0u) << type;
        }
    }
}

// A figure of one stage from /metrics ("count" or "sum"); -1 when missing.
double stageFigure(httplib::Client& client, const std::string& stage, const std::string& figure = "count") {
    std::string text = client.Get("/metrics")->body;
    const std::string line = "velmorant_render_stage_seconds_" + figure + "{stage=\"" + stage + "\"} ";
    auto at = text.find(line);
    return at == std::string::npos ? -1 : std::stod(text.substr(at + line.size()));
}

int renderCount(httplib::Client& client) { return static_cast<int>(stageFigure(client, "store")); }

TEST(Service, EtagNamesEverythingTheResultDependsOnAnd304SkipsTheRender) {
    RunningService running;
    auto client = running.client();
    const std::string base = std::string("/v1/snippets/SleepSpO2Intent.png?") + kNow;
    auto first = client.Get(base.c_str());
    std::string etag = first->get_header_value("ETag");
    ASSERT_EQ(etag.size(), 34u);
    EXPECT_EQ(etag.front(), '"');
    EXPECT_EQ(client.Get(base.c_str())->get_header_value("ETag"), etag);

    int renders = renderCount(client);
    for (std::string header : {etag, "W/" + etag, "\"other\", " + etag, std::string("*")}) {
        auto again = client.Get(base.c_str(), {{"If-None-Match", header}});
        EXPECT_EQ(again->status, 304) << header;
        EXPECT_TRUE(again->body.empty());
        EXPECT_EQ(again->get_header_value("ETag"), etag);
    }
    EXPECT_EQ(client.Get(base.c_str(), {{"If-None-Match", "\"other\""}})->status, 200);
    // Neither the 304s nor the cached 200s drew anything.
    EXPECT_EQ(renderCount(client), renders);

    std::vector<std::string> variants = {
        base + "&width=320", base + "&scale=2", base + "&locale=de_DE",
        "/v1/snippets/SleepSpO2Intent.json?" + std::string(kNow),
        "/v1/snippets/RespirationIntent.png?" + std::string(kNow),
        "/v1/snippets/SleepSpO2Intent.png?now=2024-03-06T07:30:00&tz=Europe/London",
    };
    for (const auto& path : variants) EXPECT_NE(client.Get(path.c_str())->get_header_value("ETag"), etag) << path;
    std::string a = client.Post(base.c_str(), R"({"shared": {"x": 1}})", "application/json")->get_header_value("ETag");
    std::string b = client.Post(base.c_str(), R"({"shared": {"x": 2}})", "application/json")->get_header_value("ETag");
    EXPECT_NE(a, b);
    EXPECT_NE(a, etag);
}

TEST(Service, CacheStaysWithinItsBytes) {
    ResultCache cache(100);
    auto result = [](std::size_t size) { return std::make_shared<CachedResult>(CachedResult{nullptr, size}); };
    cache.insert("a", result(40));
    cache.insert("b", result(40));
    ASSERT_TRUE(cache.find("a"));  // now the most recent
    cache.insert("c", result(40));
    EXPECT_TRUE(cache.find("a"));
    EXPECT_FALSE(cache.find("b"));
    EXPECT_TRUE(cache.find("c"));
    cache.insert("huge", result(101));
    EXPECT_FALSE(cache.find("huge"));
    EXPECT_LE(cache.bytes(), 100u);
}

TEST(Service, HostileRequestsAreRefusedWithoutBeingRead) {
    ServiceOptions options;
    options.limits.idleTimeoutSeconds = 2;
    RunningService running(options);
    struct Case {
        const char* what;
        std::string request;
        int status;
        // Whether the answer is this service's JSON error (the transport answers some itself).
        bool jsonError;
    };
    std::string manyHeaders = "GET /healthz HTTP/1.1\r\nHost: x\r\n";
    for (int i = 0; i < 100; ++i) manyHeaders += "X-H" + std::to_string(i) + ": 1\r\n";
    // 17 chunks of 64 KiB: over the limit long before the end, which is never sent.
    std::string chunked = "POST /v1/snippets/SleepSpO2Intent.png HTTP/1.1\r\nHost: x\r\nTransfer-Encoding: chunked\r\n\r\n";
    for (int i = 0; i < 17; ++i) chunked += "10000\r\n" + std::string(0x10000, 'a') + "\r\n";
    using namespace std::string_literals;
    const Case cases[] = {
        // The body is never sent: the answer must come from the stated length alone.
        {"body over the limit", "POST /v1/snippets/SleepSpO2Intent.png HTTP/1.1\r\nHost: x\r\nContent-Length: 1048577\r\n\r\n", 413, true},
        {"chunked body over the limit", chunked, 413, true},
        {"too many headers", manyHeaders + "\r\n", 431, true},
        {"header too large", "GET /healthz HTTP/1.1\r\nHost: x\r\nX-Big: " + std::string(20000, 'a') + "\r\n\r\n", 431, false},
        // The transport cuts the target at the NUL; what is left must not be served.
        {"NUL in the path", "GET /v1/snippets/SleepSpO2Intent.png\0.txt HTTP/1.1\r\nHost: x\r\n\r\n"s, 404, true},
        {"NUL at the end of the path", "GET /healthz\0 HTTP/1.1\r\nHost: x\r\n\r\n"s, 404, true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        RawConnection connection(running.port());
        ASSERT_TRUE(connection.connected());
        connection.send(c.request);
        std::string answer = connection.receiveUntil("}\n");
        int status = answer.rfind("HTTP/1.", 0) == 0 && answer.size() > 12 ? std::stoi(answer.substr(9, 3)) : 0;
        if (c.status == 431) EXPECT_TRUE(status == 431 || status == 413) << status;
        else EXPECT_EQ(status, c.status);
        if (c.jsonError) {
            EXPECT_NE(answer.find("\r\n\r\n{\"error\": "), std::string::npos) << answer;
        }
    }
}

int statusOf(const std::string& answer) {
    return answer.rfind("HTTP/1.", 0) == 0 && answer.size() > 12 ? std::stoi(answer.substr(9, 3)) : 0;
}

std::string chunked(const std::string& head, std::size_t chunks, std::size_t chunkBytes, bool ended) {
    std::ostringstream size;
    size << std::hex << chunkBytes;
    std::string request = head + "Transfer-Encoding: chunked\r\n\r\n";
    for (std::size_t i = 0; i < chunks; ++i) request += size.str() + "\r\n" + std::string(chunkBytes, ' ') + "\r\n";
    return ended ? request + "0\r\n\r\n" : request;
}

const std::string kPostHead = "POST /v1/snippets/SleepSpO2Intent.json HTTP/1.1\r\nHost: x\r\n";

// A refused body: the client that sends all of it still reads the whole
// answer and then a clean end, never a reset.
TEST(Service, RefusedBodyIsAnsweredInFullBeforeAQuietClose) {
    RunningService running;
    struct Case {
        const char* what;
        std::string request;
    };
    const Case cases[] = {
        {"2 MiB in 64 KiB chunks", chunked(kPostHead, 32, 0x10000, true)},
        {"2 MiB of stated length", kPostHead + "Content-Length: 2097152\r\n\r\n" + std::string(2 << 20, ' ')},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        RawConnection connection(running.port());
        ASSERT_TRUE(connection.connected());
        connection.limitSendBuffer(16 << 10);
        // Sent to the end before anything is read; most of it is still on its
        // way when the answer has been written.
        ASSERT_TRUE(connection.send(c.request));
        auto [answer, reset] = connection.receiveUntilClosed();
        EXPECT_FALSE(reset);
        EXPECT_EQ(statusOf(answer), 413) << answer.substr(0, 200);
        auto body = answer.find("\r\n\r\n");
        ASSERT_NE(body, std::string::npos);
        json error = json::parse(answer.substr(body + 4), nullptr, false);
        ASSERT_TRUE(error.is_object()) << answer;
        EXPECT_NE(error["error"].get<std::string>().find("over 1048576 bytes"), std::string::npos);
    }
}

TEST(Service, DroppingARefusedBodyStopsAtItsBound) {
    ServiceOptions options;
    options.limits.maxBodyBytes = 64 << 10;
    options.limits.lingerBytes = 256 << 10;
    RunningService running(options);
    RawConnection connection(running.port());
    connection.send(chunked(kPostHead, 0, 0, false));
    // A client that never stops sending is cut off, not read from for ever.
    auto start = std::chrono::steady_clock::now();
    const std::string chunk = chunked("", 1, 0x10000, false).substr(std::string("Transfer-Encoding: chunked\r\n\r\n").size());
    std::size_t sent = 0;
    while (sent < (64u << 20) && connection.send(chunk)) sent += chunk.size();
    EXPECT_LT(sent, 64u << 20);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
}

TEST(Service, BodiesArrivingTogetherShareOneBound) {
    ServiceOptions options;
    options.limits.maxBodyBytes = 64 << 10;
    options.limits.maxBodyBytesInFlight = 160 << 10;
    RunningService running(options);
    auto withLength = [](std::size_t bytes, std::size_t sent) {
        return kPostHead + "Content-Length: " + std::to_string(bytes) + "\r\n\r\n" + std::string(sent, ' ');
    };
    auto client = running.client();
    // Until the bodies sent are held: connections are read by several threads, in no set order.
    auto waitUntilHeld = [&](std::size_t bytes) {
        const std::string line = "velmorant_request_body_bytes " + std::to_string(bytes) + "\n";
        for (int i = 0; i < 500; ++i) {
            if (client.Get("/metrics")->body.find(line) != std::string::npos) return true;
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        return false;
    };
    // Two bodies, half sent, hold 128 KiB of the 160.
    RawConnection first(running.port()), second(running.port());
    ASSERT_TRUE(first.send(withLength(64 << 10, 32 << 10)));
    ASSERT_TRUE(second.send(withLength(64 << 10, 32 << 10)));
    ASSERT_TRUE(waitUntilHeld(128 << 10));
    struct Case {
        const char* what;
        std::string request;
        int status;
    };
    const Case cases[] = {
        {"a stated length beyond what is left", withLength(40 << 10, 0), 503},
        {"a chunked body outgrowing what is left", chunked(kPostHead, 4, 16 << 10, true), 503},
        // Not a store, but read: the bound let it in.
        {"a body that fits in what is left", withLength(16 << 10, 16 << 10), 400},
        {"a body over the limit of one", withLength((64 << 10) + 1, 0), 413},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        RawConnection connection(running.port());
        ASSERT_TRUE(connection.send(c.request));
        std::string answer = connection.receiveUntil("}\n");
        EXPECT_EQ(statusOf(answer), c.status) << answer.substr(0, 200);
        if (c.status == 503) {
            EXPECT_NE(answer.find("\r\nRetry-After: 1\r\n"), std::string::npos) << answer;
        }
    }
    // Once every body is done, refused or answered, its room is free again.
    for (RawConnection* connection : {&first, &second}) {
        ASSERT_TRUE(connection->send(std::string(32 << 10, ' ')));
        EXPECT_EQ(statusOf(connection->receiveUntil("}\n")), 400);
    }
    EXPECT_TRUE(waitUntilHeld(0));
}

TEST(Service, SlowClientsHoldSocketsNotWorkers) {
    ServiceOptions options;
    options.workers = 1;
    options.limits.idleTimeoutSeconds = 2;
    RunningService running(options);
    std::vector<std::unique_ptr<RawConnection>> slow;
    for (int i = 0; i < 200; ++i) {
        slow.push_back(std::make_unique<RawConnection>(running.port()));
        slow.back()->send("GET /v1/snippets/SleepSpO2Intent.png HTTP/1.1\r\nHo");
    }
    auto client = running.client();
    auto start = std::chrono::steady_clock::now();
    auto answer = client.Get((std::string("/v1/snippets/ReadinessIntent.png?") + kNow).c_str());
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->status, 200);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
    // A client that stops sending is cut off after the idle timeout.
    RawConnection stalled(running.port());
    stalled.send("GET /healthz HTTP/1.1\r\n");
    auto waitStart = std::chrono::steady_clock::now();
    EXPECT_EQ(stalled.receiveUntil("never"), "");
    EXPECT_LT(std::chrono::steady_clock::now() - waitStart, std::chrono::seconds(8));
}

TEST(Service, FullQueueAnswers503WithRetryAfterWhileHealthStaysUp) {
    ServiceOptions options;
    options.workers = 1;
    options.queueCapacity = 1;
    RunningService running(options);
    // Large, distinct ring cards keep the one worker busy.
    auto heavy = [&](int i) {
        auto client = running.client();
        std::string body = R"({"shared": {"n": )" + std::to_string(i) + "}}";
        return client.Post("/v1/snippets/SleepRingsIntent.png?width=600&scale=8", body, "application/json");
    };
    std::vector<std::future<httplib::Result>> answers;
    for (int i = 0; i < 8; ++i) answers.push_back(std::async(std::launch::async, heavy, i));
    // While every worker is busy, health answers at once.
    auto client = running.client();
    for (int i = 0; i < 5; ++i) {
        auto start = std::chrono::steady_clock::now();
        auto health = client.Get("/healthz");
        ASSERT_TRUE(health);
        EXPECT_EQ(health->status, 200);
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(1000));
    }
    int ok = 0, refused = 0;
    for (auto& answer : answers) {
        httplib::Result result = answer.get();
        ASSERT_TRUE(result) << "a request went unanswered";
        if (result->status == 200) ++ok;
        if (result->status == 503) {
            ++refused;
            std::string retry = result->get_header_value("Retry-After");
            ASSERT_FALSE(retry.empty());
            EXPECT_GE(std::stoi(retry), 1);
        }
    }
    EXPECT_EQ(ok + refused, 8);
    EXPECT_GE(ok, 1);
    EXPECT_GE(refused, 1);
}

TEST(Service, RenderPastItsDeadlineStopsAtTheNextStageAndFreesTheWorker) {
    std::atomic<Stage> lateAfter = Stage::Count;
    ServiceOptions options;
    options.workers = 1;
    options.deadlinePassedAfter = [&](Stage done) { return done == lateAfter.load(); };
    RunningService running(options);
    auto client = running.client();
    struct Case {
        Stage lateAfter;
        std::string path;
        // The stage that must not have been reached.
        const char* skipped;
    };
    const std::string now = kNow;
    const Case cases[] = {
        {Stage::Store, "/v1/snippets/SleepRingsIntent.png?" + now, "drawing"},
        {Stage::Drawing, "/v1/snippets/SleepSpO2Intent.png?" + now, "card"},
        {Stage::Drawing, "/v1/widgets/swiftSpO2Image.png?" + now, "encoding"},
        {Stage::Drawing, "/v1/snippets/ReadinessIntent.json?" + now, "encoding"},
        {Stage::Card, "/v1/snippets/RespirationIntent.png?" + now, "encoding"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.path);
        double skippedBefore = stageFigure(client, c.skipped);
        lateAfter = c.lateAfter;
        auto late = client.Get(c.path.c_str());
        ASSERT_TRUE(late);
        EXPECT_EQ(late->status, 503);
        EXPECT_NE(late->body.find(stageName(c.lateAfter)), std::string::npos) << late->body;
        EXPECT_FALSE(late->get_header_value("Retry-After").empty());
        EXPECT_EQ(late->get_header_value("Cache-Control"), "no-store");
        EXPECT_EQ(stageFigure(client, c.skipped), skippedBefore);
        // The one worker is free again, and the late answer was not kept.
        lateAfter = Stage::Count;
        auto inTime = client.Get(c.path.c_str());
        ASSERT_TRUE(inTime);
        EXPECT_EQ(inTime->status, 200);
    }
    // Drawing is timed apart from filling the records.
    EXPECT_GT(stageFigure(client, "drawing", "sum"), 0);
    EXPECT_GT(stageFigure(client, "records", "sum"), 0);
    // A card drawn and encoded band by band still has the two timed apart.
    const double cardBefore = stageFigure(client, "card", "sum"), encodingBefore = stageFigure(client, "encoding", "sum");
    auto banded = client.Get(("/v1/snippets/SleepRingsIntent.png?width=300&" + now).c_str());
    ASSERT_TRUE(banded);
    EXPECT_EQ(banded->status, 200);
    EXPECT_GT(stageFigure(client, "card", "sum"), cardBefore);
    EXPECT_GT(stageFigure(client, "encoding", "sum"), encodingBefore);

    // The clock itself: a deadline that has always passed never yields a picture.
    ServiceOptions hurried;
    hurried.renderDeadlineSeconds = 1e-9;
    RunningService rushed(hurried);
    auto answer = rushed.client().Get(cases[0].path.c_str());
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->status, 503);
}

TEST(Service, IdenticalRequestsShareOneRenderInsteadOfFillingTheQueue) {
    ServiceOptions options;
    options.workers = 1;
    options.queueCapacity = 1;
    RunningService running(options);
    std::vector<std::future<httplib::Result>> answers;
    for (int i = 0; i < 12; ++i)
        answers.push_back(std::async(std::launch::async, [&] {
            return running.client().Get("/v1/snippets/SleepRingsIntent.png?width=600&scale=6&now=2024-03-05T07:30:00");
        }));
    std::set<std::string> etags;
    for (auto& answer : answers) {
        httplib::Result result = answer.get();
        ASSERT_TRUE(result);
        EXPECT_EQ(result->status, 200);
        etags.insert(result->get_header_value("ETag"));
    }
    EXPECT_EQ(etags.size(), 1u);
    auto client = running.client();
    EXPECT_EQ(renderCount(client), 1);
}

TEST(Service, StopFinishesRendersUnderWayAndRefusesNewOnes) {
    ServiceOptions options;
    options.workers = 1;
    RunningService running(options);
    auto inFlight = std::async(std::launch::async, [&] {
        return running.client().Post("/v1/snippets/SleepRingsIntent.png?width=600&scale=4", R"({"shared": {}})",
                                     "application/json");
    });
    // Until the render has started: on a loaded machine the request may take a while to arrive.
    auto client = running.client();
    auto busy = [&] { return client.Get("/metrics")->body.find("velmorant_busy_workers 1") != std::string::npos; };
    bool renderStarted = busy();
    for (int i = 0; i < 2000 && !renderStarted; ++i, renderStarted = busy()) std::this_thread::sleep_for(std::chrono::milliseconds(5));
    ASSERT_TRUE(renderStarted) << "the render never started";
    auto started = std::chrono::steady_clock::now();
    std::thread stopper([&] { running.service().stop(); });
    // Until the stop has begun (a route that never renders turns 503), or the listener has already closed.
    for (int i = 0; i < 2000; ++i) {
        auto probe = running.client().Get("/metrics");
        if (!probe || probe->status == 503) break;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    auto late = running.client().Get("/v1/snippets/SleepSpO2Intent.png");
    if (late) {
        EXPECT_EQ(late->status, 503);
    }
    httplib::Result finished = inFlight.get();
    stopper.join();
    ASSERT_TRUE(finished);
    EXPECT_EQ(finished->status, 200);
    EXPECT_TRUE(isPng(finished->body));
    // The render's own time (long under the sanitizers) plus a moment.
    EXPECT_LT(std::chrono::steady_clock::now() - started, std::chrono::seconds(15));
}

void writeDemoStores(const std::filesystem::path& dir) {
    platform::Platform platform({.now = platform::Date::fromUnix(1709623800), .timeZoneId = "Europe/London",
                                 .preferencesDir = dir, .diagnostics = [](std::string_view) {}});
    demo::installDemoStores(platform);
}

TEST(Service, StoreFolderIsDrawnFromReadOnlyAndWatched) {
    TempDir prefs;
    writeDemoStores(prefs.path());
    auto listing = [&] {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(prefs.path())) names.push_back(entry.path().filename());
        std::sort(names.begin(), names.end());
        return names;
    };
    auto before = listing();
    ServiceOptions options;
    options.prefs = prefs.path();
    RunningService running(options);
    auto client = running.client();
    const std::string path = std::string("/v1/snippets/SleepSpO2Intent.json?") + kNow;
    auto first = client.Get(path.c_str());
    ASSERT_EQ(first->status, 200);

    RawConnection events(running.port());
    events.send("GET /v1/events HTTP/1.1\r\nHost: x\r\n\r\n");
    EXPECT_NE(events.receiveUntil(": open").find("text/event-stream"), std::string::npos);

    // Another program replaces the shared store, as writers do: a new file renamed over it.
    {
        platform::Platform platform({.now = platform::Date::fromUnix(1709623800), .timeZoneId = "Europe/London"});
        platform::Dictionary shared = demo::makeDemoStores(platform).shared;
        shared.removeObjectForKey("bankDict");
        std::string error;
        auto bytes = platform::serialisePlist(shared, platform::PlistFormat::Binary, &error);
        std::ofstream(prefs.path() / "new.tmp", std::ios::binary).write(reinterpret_cast<const char*>(bytes->data()), bytes->size());
        std::filesystem::rename(prefs.path() / "new.tmp", prefs.path() / "group.brumelkai.Velmorant.plist");
    }
    EXPECT_NE(events.receiveUntil("event: stores").find("event: stores"), std::string::npos);
    auto second = client.Get(path.c_str());
    EXPECT_NE(second->get_header_value("ETag"), first->get_header_value("ETag"));
    EXPECT_NE(second->body, first->body);
    // Drawing wrote nothing beside the stores (no mirrors, no caches, no lock files).
    client.Get((std::string("/v1/snippets/TimeAsleepIntent.png?") + kNow).c_str());
    client.Get((std::string("/v1/widgets/swiftSleepBankImage.png?") + kNow).c_str());
    EXPECT_EQ(listing(), before);
}

TEST(Service, ManyClientsRenderDifferentCardsAtOnce) {
    ServiceOptions options;
    options.workers = 4;
    options.queueCapacity = 64;
    RunningService running(options);
    const char* intents[] = {"SleepSpO2Intent", "ReadinessIntent", "SleepRingsIntent", "TimeAsleepIntent",
                             "RespirationIntent", "WristTempIntent", "LatestBedtimeIntent", "SleepFuelIntent"};
    const char* locales[] = {"en_US", "de_DE"};
    std::atomic<int> ok = 0;
    std::vector<std::thread> clients;
    for (int c = 0; c < 8; ++c) {
        clients.emplace_back([&, c] {
            auto client = running.client();
            for (int i = 0; i < 3; ++i) {
                std::string path = std::string("/v1/snippets/") + intents[(c + i) % 8] + ".png?scale=1&locale=" +
                                   locales[(c + i) % 2] + "&" + kNow;
                auto result = client.Post(path.c_str(), R"({"shared": {"client": )" + std::to_string(c * 10 + i) + "}}",
                                          "application/json");
                if (result && result->status == 200 && isPng(result->body)) ++ok;
            }
            auto widget = client.Get((std::string("/v1/widgets/swiftSleepRingsImage.png?scale=1&") + kNow).c_str());
            if (widget && widget->status == 200) ++ok;
        });
    }
    for (auto& thread : clients) thread.join();
    EXPECT_EQ(ok, 8 * 4);
}

}  // namespace
}  // namespace velmorant::service::testing
