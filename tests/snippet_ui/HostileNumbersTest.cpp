// Every drawing fed numbers no honest night produces: NaN, infinities, huge and
// negative values, texts and other kinds where numbers belong, dates far from
// now, and sides that are not drawable. Each must come back, without a crash or
// sanitizer report, with a picture no larger than the canvas allows; at a
// drawable side the picture must be whole, its last steps drawn, so a bad
// number cannot silently stop the drawing half way.
#include "SnippetUiTestSupport.h"

#include "platform/Canvas.h"

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <limits>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace velmorant::testing {
namespace {

using platform::Array;
using platform::Date;
using platform::ImagePtr;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kFloatMax = std::numeric_limits<float>::max();

// Numbers a store or a caller might hand over, as doubles and as the floats
// the drawing operations take.
const std::vector<std::pair<const char*, double>> kHostileNumbers = {
    {"NaN", kNaN},          {"+inf", kInf},         {"-inf", -kInf},          {"largest double", 1e308},
    {"-largest double", -1e308}, {"largest float", kFloatMax}, {"beyond float", 1e39}, {"-1e30", -1e30},
    {"1e30", 1e30},         {"-1", -1},             {"0", 0},                 {"smallest subnormal", 4.9e-324},
    {"9e15", 9e15},
};

// Values of kinds other than a number, and numbers in texts.
std::vector<std::pair<const char*, Value>> wrongKinds() {
    return {
        {"text", Value("95.4")},
        {"nonsense text", Value("abc")},
        {"empty text", Value("")},
        {"NaN text", Value("nan")},
        {"huge text", Value("1e400")},
        {"boolean", Value(true)},
        {"date", Value(Date::fromUnix(1e15))},
        {"array", Value(Array{Value(1.0), Value(kNaN)})},
        {"dictionary", Value(Dictionary{{"averageSpO2", Value(kInf)}})},
        {"data", Value(platform::Data{0xff, 0x00})},
        {"int64 min", Value(std::numeric_limits<std::int64_t>::min())},
        {"int64 max", Value(std::numeric_limits<std::int64_t>::max())},
    };
}

// The keys each gauge reads from its record.
const char* const kGaugeKeys[] = {"averageSpO2",     "minSpO2",         "maxSpO2",          "averageSpO27",
                                  "minSpO27",        "maxSpO27",        "averageRespRate",  "minRespRate",
                                  "maxRespRate",     "averageRespRate7", "minRespRate7",    "maxRespRate7",
                                  "bedTrend",        "wristTempScore",  "starsLabel",       "wristTempDifLabel"};

Dictionary everyKeyAs(const Value& value) {
    Dictionary dict;
    for (const char* key : kGaugeKeys) dict.setObject(value, key);
    return dict;
}

using Draw = std::function<ImagePtr(SleepMetricsUI&, float side)>;

struct Operation {
    const char* name;
    Draw draw;
    // Whether the picture's centre is the hub or a hand over it, drawn last.
    bool hubAtCentre;
};

std::vector<Operation> gauges(const Dictionary& dict) {
    return {
        {"drawSpO2GaugeWithSize", [=](SleepMetricsUI& ui, float s) { return ui.drawSpO2GaugeWithSize(s, dict); }, true},
        {"drawRespRateGaugeWithSize", [=](SleepMetricsUI& ui, float s) { return ui.drawRespRateGaugeWithSize(s, dict); },
         true},
        {"drawConsistencyGaugeWithSize",
         [=](SleepMetricsUI& ui, float s) { return ui.drawConsistencyGaugeWithSize(s, dict); }, true},
        {"drawWristTempGaugeWithSize",
         [=](SleepMetricsUI& ui, float s) { return ui.drawWristTempGaugeWithSize(s, dict); }, true},
    };
}

struct Case {
    std::string name;
    Operation operation;
    float side = 280;
};

// Ends the test program, naming the drawing, when one takes far longer than any
// drawing can (a loop that never ends); the suite's own timeout would not say which.
class Watchdog {
public:
    Watchdog() : thread_([this] { watch(); }) {}
    ~Watchdog() {
        {
            std::lock_guard lock(mutex_);
            stopping_ = true;
        }
        wake_.notify_all();
        thread_.join();
    }
    void start(const std::string& name) {
        std::lock_guard lock(mutex_);
        name_ = name;
        deadline_ = std::chrono::steady_clock::now() + kLimit;
        wake_.notify_all();
    }
    void stop() {
        std::lock_guard lock(mutex_);
        name_.clear();
    }

private:
    static constexpr std::chrono::seconds kLimit{120};
    void watch() {
        std::unique_lock lock(mutex_);
        while (!stopping_) {
            if (name_.empty()) {
                wake_.wait(lock);
                continue;
            }
            if (wake_.wait_until(lock, deadline_) == std::cv_status::timeout && !name_.empty() &&
                std::chrono::steady_clock::now() >= deadline_) {
                std::fprintf(stderr, "drawing never returned: %s\n", name_.c_str());
                std::abort();
            }
        }
    }
    std::mutex mutex_;
    std::condition_variable wake_;
    std::string name_;
    std::chrono::steady_clock::time_point deadline_;
    bool stopping_ = false;
    std::thread thread_;
};

class HostileNumbersTest : public SnippetUiTest {
protected:
    // Draws every case and checks what comes back.
    void drawAll(const std::vector<Case>& cases) {
        Watchdog watchdog;
        for (const Case& c : cases) {
            SCOPED_TRACE(c.name);
            watchdog.start(c.name);
            ImagePtr image = c.operation.draw(*ui, c.side);
            watchdog.stop();
            check(image, c);
        }
    }

    void check(const ImagePtr& image, const Case& c) {
        const double scale = platform_->screenScale();
        const bool drawable = std::isfinite(c.side) && c.side > 0;
        if (!image) {
            // Less than a pixel may give nothing, and so may a side past the canvas's limit.
            const double pixels = drawable ? c.side * scale : 0;
            EXPECT_FALSE(pixels >= 1 && pixels <= platform::Canvas::kMaxPixels) << "no picture at a drawable side";
            return;
        }
        EXPECT_LE(image->pixelWidth(), platform::Canvas::kMaxPixels);
        EXPECT_LE(image->pixelHeight(), platform::Canvas::kMaxPixels);
        EXPECT_TRUE(std::isfinite(image->size().width) && std::isfinite(image->size().height));
        if (!drawable) {
            EXPECT_EQ(image->pixelWidth() * image->pixelHeight(), 0) << "pixels at an undrawable side";
            return;
        }
        if (c.side != 280) return;
        EXPECT_EQ(image->pixelWidth(), static_cast<int>(std::ceil(280 * scale)));
        if (c.operation.hubAtCentre) {
            // The hub and the needle or hand over it come last; the dark face
            // showing through means the drawing stopped before them.
            Rgba centre = image->pixelAt({140, 140});
            EXPECT_GT(centre.r + centre.g + centre.b, 1.2) << describe(centre);
        }
    }
};

TEST_F(HostileNumbersTest, GaugesWithHostileRecords) {
    std::vector<Case> cases;
    auto add = [&](const std::string& what, const Dictionary& dict) {
        for (const Operation& op : gauges(dict)) cases.push_back({std::string(op.name) + " with " + what, op});
    };
    add("an empty record", Dictionary{});
    for (const auto& [name, number] : kHostileNumbers) add("every key " + std::string(name), everyKeyAs(Value(number)));
    for (const auto& [name, value] : wrongKinds()) add("every key a " + std::string(name), everyKeyAs(value));
    // A range the wrong way round, and one spanning every representable value.
    add("a reversed range", Dictionary{{"averageSpO2", Value(95.0)}, {"minSpO2", Value(99.0)}, {"maxSpO2", Value(85.0)},
                                       {"averageRespRate", Value(14.0)}, {"minRespRate", Value(20.0)},
                                       {"maxRespRate", Value(10.0)}, {"averageRespRate7", Value(14.0)},
                                       {"minRespRate7", Value(30.0)}, {"maxRespRate7", Value(2.0)}});
    add("an endless range", Dictionary{{"minSpO2", Value(-kInf)}, {"maxSpO2", Value(kInf)},
                                       {"minRespRate", Value(-1e308)}, {"maxRespRate", Value(1e308)},
                                       {"averageRespRate7", Value(14.0)}, {"maxRespRate7", Value(kInf)}});
    add("labels far too long", Dictionary{{"starsLabel", Value(std::string(200000, '*'))},
                                          {"wristTempDifLabel", Value(std::string(100000, 'W') + "\xe2\x98\xbe")}});
    drawAll(cases);
}

TEST_F(HostileNumbersTest, ReadinessBothForms) {
    std::vector<Case> cases;
    for (const auto& [name, number] : kHostileNumbers) {
        const float value = static_cast<float>(number);
        cases.push_back({"short form, value " + std::string(name),
                         {"drawReadiRingsWithSize", [=](SleepMetricsUI& ui, float s) {
                              return ui.drawReadiRingsWithSize(s, value);
                          }, true}});
        for (std::int64_t legend : {std::numeric_limits<std::int64_t>::min(), std::int64_t{1}, std::int64_t{2},
                                    std::numeric_limits<std::int64_t>::max()}) {
            cases.push_back({"value " + std::string(name) + ", legend " + std::to_string(legend),
                             {"drawReadiRingsWithSize", [=](SleepMetricsUI& ui, float s) {
                                  return ui.drawReadiRingsWithSize(s, value, std::string(50000, '7'), legend);
                              }, true}});
        }
    }
    drawAll(cases);
}

TEST_F(HostileNumbersTest, SleepRingsWithEachFractionHostile) {
    std::vector<Case> cases;
    for (const auto& [name, number] : kHostileNumbers) {
        const float bad = static_cast<float>(number);
        for (int which = 0; which < 6; ++which) {
            float f[5] = {0.9f, 0.7f, 0.6f, 0.8f, 0.85f};
            if (which < 5) f[which] = bad;
            else for (float& each : f) each = bad;
            // The stages form differs only in a glyph; it is drawn once, with every argument hostile.
            for (bool forStages : {false, true}) {
                if (forStages && which != 5) continue;
                cases.push_back({"sleep rings, argument " + std::to_string(which) + " " + name +
                                     (forStages ? ", stages" : ""),
                                 {"drawSleepRingsWithSize", [=](SleepMetricsUI& ui, float s) {
                                      return ui.drawSleepRingsWithSize(s, f[0], f[1], f[2], f[3], f[4], forStages);
                                  }, false}});
            }
        }
    }
    drawAll(cases);
}

TEST_F(HostileNumbersTest, RechargeWithHostileFractionsAndGoals) {
    std::vector<Case> cases;
    for (const auto& [name, number] : kHostileNumbers) {
        const float bad = static_cast<float>(number);
        cases.push_back({std::string("recharge, sleep ") + name,
                         {"drawTheRechargeWithSize",
                          [=](SleepMetricsUI& ui, float s) { return ui.drawTheRechargeWithSize(s, bad, 0.5f); }, false}});
        cases.push_back({std::string("recharge, bank ") + name,
                         {"drawTheRechargeWithSize",
                          [=](SleepMetricsUI& ui, float s) { return ui.drawTheRechargeWithSize(s, 0.5f, bad); }, false}});
    }
    drawAll(cases);

    // Through the request, which divides by the goal: a goal of no hours, a
    // tiny or an enormous one, with sleep figures at the float limit.
    for (const auto& [name, goal] : kHostileNumbers) {
        SCOPED_TRACE(std::string("sleep goal ") + name);
        put("velmorantConfig", Value(Dictionary{{"requiredHours", Value(goal)}}));
        put("watchTrackDict", Value(Dictionary{{"rawSleepTime", Value(kFloatMax)},
                                               {"rawSleepBankTime", Value(1e300)}}));
        Watchdog watchdog;
        watchdog.start(std::string("sleep-bank rings, goal ") + name);
        Dictionary record = ui->requestSleepBankRings();
        watchdog.stop();
        const Value* picture = record.objectForKey("ringsImage");
        ASSERT_NE(picture, nullptr);
        check(picture->image(), {"requestSleepBankRings", {"requestSleepBankRings", nullptr, false}, 280});
        // The goal is read afresh by a direct drawing too, now the store is open.
        check(ui->drawTheRechargeWithSize(280, 0.5f, 0.5f),
              {"drawTheRechargeWithSize", {"drawTheRechargeWithSize", nullptr, false}, 280});
    }
}

TEST_F(HostileNumbersTest, BedClockWithExtremeDates) {
    const std::vector<std::pair<const char*, std::optional<Date>>> dates = {
        {"none", std::nullopt},
        {"NaN", Date::fromUnix(kNaN)},
        {"+inf", Date::fromUnix(kInf)},
        {"-inf", Date::fromUnix(-kInf)},
        {"largest double", Date::fromUnix(1e308)},
        {"-largest double", Date::fromUnix(-1e308)},
        {"year 300000", Date::fromUnix(9.4e12)},
        {"before the calendar", Date::fromUnix(-6.3e13)},
        {"beyond ICU", Date::fromUnix(1.8e17)},
        {"epoch", Date::fromUnix(0)},
        {"a minute before the epoch", Date::fromUnix(-60)},
    };
    std::vector<Case> cases;
    for (const auto& [bedName, bedtime] : dates) {
        for (const auto& [wakeName, waketime] : dates) {
            cases.push_back({std::string("bed clock, bedtime ") + bedName + ", waketime " + wakeName,
                             {"drawTheBedClockWithSize", [bedtime, waketime](SleepMetricsUI& ui, float s) {
                                  return ui.drawTheBedClockWithSize(s, bedtime, waketime);
                              }, true}});
        }
    }
    drawAll(cases);
}

// Every drawing with plausible figures, for the side tests.
std::vector<Operation> everyDrawing() {
    const Dictionary record{{"averageSpO2", Value(95.4)}, {"minSpO2", Value(90.0)}, {"maxSpO2", Value(99.0)},
                            {"averageRespRate", Value(14.0)}, {"bedTrend", Value(600.0)},
                            {"wristTempScore", Value(3.0)}, {"starsLabel", Value("★★★")},
                            {"wristTempDifLabel", Value("+0.2°")}};
    std::vector<Operation> operations = gauges(record);
    operations.push_back({"drawReadiRingsWithSize", [](SleepMetricsUI& ui, float s) {
                              return ui.drawReadiRingsWithSize(s, 78, std::string("★★★★"), 2);
                          }, true});
    operations.push_back({"drawSleepRingsWithSize", [](SleepMetricsUI& ui, float s) {
                              return ui.drawSleepRingsWithSize(s, 0.9f, 0.7f, 0.6f, 1.3f, 0.86f, false);
                          }, false});
    operations.push_back({"drawTheRechargeWithSize",
                          [](SleepMetricsUI& ui, float s) { return ui.drawTheRechargeWithSize(s, 0.9f, 0.8f); }, false});
    operations.push_back({"drawTheBedClockWithSize", [](SleepMetricsUI& ui, float s) {
                              return ui.drawTheBedClockWithSize(s, kMorning.dateByAddingTimeInterval(14 * 3600),
                                                                kMorning.dateByAddingTimeInterval(23 * 3600));
                          }, true});
    return operations;
}

std::vector<Case> atSides(const std::vector<Operation>& operations, std::initializer_list<float> sides) {
    std::vector<Case> cases;
    for (const Operation& op : operations)
        for (float side : sides) cases.push_back({std::string(op.name) + " at side " + std::to_string(side), op, side});
    return cases;
}

TEST_F(HostileNumbersTest, EveryDrawingAtUndrawableAndTinySides) {
    drawAll(atSides(everyDrawing(), {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(),
                                     -std::numeric_limits<float>::infinity(), -1, 0, 1e-30f, 1, 100.5f}));
}

// Sides far past the canvas's limit get a canvas held to that limit; each of
// these draws the largest bitmap there is, so they are split to keep each test short.
TEST_F(HostileNumbersTest, GaugesAtHugeSides) {
    std::vector<Operation> operations = everyDrawing();
    operations.resize(5);
    drawAll(atSides(operations, {1e9f, 1e30f}));
}

TEST_F(HostileNumbersTest, RingsAndClockAtHugeSides) {
    std::vector<Operation> operations = everyDrawing();
    operations.erase(operations.begin(), operations.begin() + 5);
    drawAll(atSides(operations, {1e9f, 1e30f}));
}

}  // namespace
}  // namespace velmorant::testing
