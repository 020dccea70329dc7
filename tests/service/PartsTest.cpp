#include "platform/services/Platform.h"
#include "service/EventStream.h"
#include "service/RenderPool.h"
#include "service/StoreReading.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <string>
#include <thread>
#include <vector>

namespace velmorant::service {
namespace {

using namespace std::chrono_literals;
struct NoTools {};

RenderPool<NoTools>::Job job(std::function<void()> run, std::function<void()> expire,
                             RenderPool<NoTools>::Clock::duration deadline = 10s) {
    return {[run](NoTools&) { run(); }, std::move(expire), RenderPool<NoTools>::Clock::now() + deadline};
}

TEST(RenderPool, RefusesBeyondItsQueueExpiresLateJobsAndFinishesTheRestOnStop) {
    RenderPool<NoTools> pool(1, 2, [] { return std::make_unique<NoTools>(); });
    std::promise<void> release;
    std::shared_future<void> gate = release.get_future().share();
    std::promise<void> started;
    std::vector<std::string> log;
    std::mutex logMutex;
    auto note = [&](std::string what) {
        std::lock_guard lock(logMutex);
        log.push_back(std::move(what));
    };
    ASSERT_TRUE(pool.submit(job([&] { started.set_value(); gate.wait(); note("first ran"); }, [&] { note("first expired"); })));
    started.get_future().wait();
    EXPECT_EQ(pool.busy(), 1u);
    ASSERT_TRUE(pool.submit(job([&] { note("late ran"); }, [&] { note("late expired"); }, 1ms)));
    ASSERT_TRUE(pool.submit(job([&] { note("third ran"); }, [&] { note("third expired"); })));
    EXPECT_FALSE(pool.submit(job([&] { note("fourth ran"); }, [&] { note("fourth expired"); })));
    EXPECT_EQ(pool.queued(), 2u);
    // Two jobs wait behind one on a single worker.
    EXPECT_GE(pool.retryAfterSeconds(), 1);
    std::this_thread::sleep_for(5ms);
    release.set_value();
    pool.stop();
    EXPECT_EQ(log, (std::vector<std::string>{"first ran", "late expired", "third ran"}));
    EXPECT_FALSE(pool.submit(job([] {}, [] {})));
}

TEST(RenderPool, RunsTheIdleHookOnceAfterEachSpellOfWork) {
    std::atomic<int> idles = 0;
    RenderPool<NoTools> pool(2, 4, [] { return std::make_unique<NoTools>(); }, [&] { ++idles; }, 5ms);
    std::this_thread::sleep_for(100ms);
    EXPECT_EQ(idles, 0) << "nothing was done, so there is nothing to free";
    for (int spell = 1; spell <= 2; ++spell) {
        for (int i = 0; i < 3; ++i) ASSERT_TRUE(pool.submit(job([] {}, [] {})));
        for (int wait = 0; wait < 1000 && idles < spell; ++wait) std::this_thread::sleep_for(10ms);
        // Many idle spans follow, but only the first after the work counts.
        std::this_thread::sleep_for(100ms);
        EXPECT_EQ(idles, spell);
    }
}

TEST(EventStream, ParkedReaderIsWokenAndNothingIsLost) {
    EventStream stream;
    std::string out;
    int parks = 0, wakes = 0;
    auto park = [&] { ++parks; };
    EXPECT_EQ(stream.take(out, park, [&] { ++wakes; }), EventStream::Take::Parked);
    stream.publish("a");
    EXPECT_EQ(wakes, 1);
    stream.publish("b");  // nobody parked now: no second wake
    EXPECT_EQ(wakes, 1);
    EXPECT_EQ(stream.take(out, park, {}), EventStream::Take::Message);
    EXPECT_EQ(out, "a");
    EXPECT_EQ(stream.take(out, park, {}), EventStream::Take::Message);
    EXPECT_EQ(out, "b");
    EXPECT_EQ(parks, 1);
    // A client far behind keeps the newest messages; a closed stream drains, then ends.
    for (int i = 0; i < 100; ++i) stream.publish(std::to_string(i));
    stream.close();
    EXPECT_EQ(stream.take(out, park, {}), EventStream::Take::Message);
    EXPECT_EQ(out, "36");
    while (stream.take(out, park, {}) == EventStream::Take::Message) {}
    EXPECT_EQ(out, "99");
    EXPECT_EQ(stream.take(out, park, {}), EventStream::Take::Ended);
}

TEST(StoreReading, JsonStoresReadAsTheProgramPrintsValues) {
    platform::Platform platform({.timeZoneId = "UTC"});
    StoreInput input{StoreInput::Kind::Body,
                     R"({"shared": {"count": 3, "ratio": 0.5, "huge": 18446744073709551615, "on": true, "name": "x",
                                     "when": {"date": "2024-03-05T07:30:00Z"}, "bytes": {"data": [1, 255]},
                                     "list": [1, "two"], "nested": {"date": "not a date", "other": 1}},
                         "standard": {"darkTheme6": false}})",
                     {}};
    demo::DemoStores stores = parseStores(input, platform);
    using Kind = platform::Value::Kind;
    const struct {
        const char* key;
        Kind kind;
    } expected[] = {{"count", Kind::Integer}, {"ratio", Kind::Real},   {"huge", Kind::Real},
                    {"on", Kind::Boolean},    {"name", Kind::String},  {"when", Kind::Date},
                    {"bytes", Kind::Data},    {"list", Kind::Array},   {"nested", Kind::Dictionary}};
    for (const auto& e : expected) {
        const platform::Value* value = stores.shared.objectForKey(e.key);
        ASSERT_NE(value, nullptr) << e.key;
        EXPECT_EQ(value->kind(), e.kind) << e.key;
    }
    EXPECT_EQ(stores.shared.objectForKey("when")->date()->timeIntervalSince1970(), 1709623800);
    EXPECT_EQ(*stores.shared.objectForKey("bytes")->data(), (platform::Data{1, 255}));
    EXPECT_EQ(stores.standard.objectForKey("darkTheme6")->kind(), Kind::Boolean);

    auto nested = [](int depth) {
        return StoreInput{StoreInput::Kind::Body,
                          R"({"shared": {"a": )" + std::string(depth, '[') + std::string(depth, ']') + "}}", {}};
    };
    EXPECT_NO_THROW(parseStores(nested(62), platform));
    EXPECT_THROW(parseStores(nested(64), platform), BadRequest);
}

}  // namespace
}  // namespace velmorant::service
