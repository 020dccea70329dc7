// Every drawing fed numbers no honest night produces: NaN, infinities, huge and
// negative values, other kinds where numbers belong, far dates and sides that
// are not drawable. Each must return a picture within the canvas's limit; at
// the usual side it must be whole, so a bad number cannot stop it half way.
#include "SnippetUiTestSupport.h"

#include "platform/graphics/Canvas.h"

#include <cstdint>
#include <functional>
#include <limits>
#include <string>
#include <vector>

namespace velmorant::testing {
using snippet_ui::SleepMetricsUI;

namespace {

using platform::Date;
using platform::ImagePtr;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr std::int64_t kMinInt = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t kMaxInt = std::numeric_limits<std::int64_t>::max();

const double kHostile[] = {kNaN, kInf, -kInf, 1e308, -1e308, std::numeric_limits<float>::max(), 1e39, -1e30,
                           -1, 0, 4.9e-324, 9e15};

std::vector<Value> hostileValues() {
    std::vector<Value> values(std::begin(kHostile), std::end(kHostile));
    for (Value v : {Value("95.4"), Value("abc"), Value(""), Value("1e400"), Value(true), Value(Date::fromUnix(1e15)),
                    Value(platform::Array{Value(1.0), Value(kNaN)}), Value(Dictionary{{"averageSpO2", Value(kInf)}}),
                    Value(platform::Data{0xff, 0x00}), Value(kMinInt), Value(kMaxInt)})
        values.push_back(v);
    return values;
}

using Draw = std::function<ImagePtr(SleepMetricsUI&, float side)>;

struct Case {
    std::string name;
    Draw draw;
    bool hubAtCentre;  // the hub, or a needle or hand over it, is drawn last
    float side = 280;
};

void addGauges(std::vector<Case>& cases, const std::string& what, const Dictionary& d) {
    using Gauge = ImagePtr (SleepMetricsUI::*)(float, const Dictionary&);
    int n = 0;  // spO2, respiration, consistency, wrist
    for (Gauge gauge : {&SleepMetricsUI::drawSpO2GaugeWithSize, &SleepMetricsUI::drawRespRateGaugeWithSize,
                        &SleepMetricsUI::drawConsistencyGaugeWithSize, &SleepMetricsUI::drawWristTempGaugeWithSize})
        cases.push_back({"gauge " + std::to_string(n++) + " " + what, [=](SleepMetricsUI& ui, float s) { return (ui.*gauge)(s, d); }, true});
}

class HostileNumbersTest : public SnippetUiTest {
protected:
    void check(const ImagePtr& image, float side, bool hubAtCentre) {
        const double scale = platform_->screenScale();
        const bool drawable = std::isfinite(side) && side > 0;
        if (!image) {
            // Less than a pixel may give nothing, and so may a side past the canvas's limit.
            const double pixels = drawable ? side * scale : 0;
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
        if (side != 280) return;
        EXPECT_EQ(image->pixelWidth(), static_cast<int>(std::ceil(280 * scale)));
        EXPECT_TRUE(pixelIs(*image, {0.5, 0.5}, {0, 0, 0, 0}));
        if (hubAtCentre) {
            // The dark face showing through means the drawing stopped before its last steps.
            Rgba centre = image->pixelAt({140, 140});
            EXPECT_GT(centre.r + centre.g + centre.b, 1.2) << describe(centre);
        }
    }
};

TEST_F(HostileNumbersTest, EveryDrawingWithHostileInputs) {
    std::vector<Case> cases;
    addGauges(cases, "empty record", {});
    const char* const keys[] = {"averageSpO2", "minSpO2", "maxSpO2", "averageSpO27", "minSpO27", "maxSpO27",
                                "averageRespRate", "minRespRate", "maxRespRate", "averageRespRate7", "minRespRate7",
                                "maxRespRate7", "bedTrend", "wristTempScore", "starsLabel", "wristTempDifLabel"};
    const std::vector<Value> values = hostileValues();
    for (std::size_t i = 0; i < values.size(); ++i) {
        Dictionary d;
        for (const char* key : keys) d.setObject(values[i], key);
        addGauges(cases, "every key value #" + std::to_string(i), d);
    }
    // Ranges the wrong way round and spanning every value, and labels far too long.
    addGauges(cases, "odd ranges", {{"minSpO2", 99.0}, {"maxSpO2", 85.0}, {"minRespRate", -1e308},
                                    {"maxRespRate", 1e308}, {"averageRespRate7", 14.0}, {"minRespRate7", 30.0},
                                    {"maxRespRate7", kInf}, {"starsLabel", std::string(200000, '*')},
                                    {"wristTempDifLabel", std::string(100000, 'W') + "\xe2\x98\xbe"}});

    for (double number : kHostile) {
        const float bad = static_cast<float>(number);
        const std::string name = std::to_string(number);
        cases.push_back({"readiness " + name, [=](SleepMetricsUI& ui, float s) { return ui.drawReadiRingsWithSize(s, bad); },
                         true});
        for (std::int64_t legend : {kMinInt, std::int64_t{1}, std::int64_t{2}, kMaxInt})
            cases.push_back({"readiness " + name + " legend " + std::to_string(legend), [=](SleepMetricsUI& ui, float s) {
                                 return ui.drawReadiRingsWithSize(s, bad, std::string(50000, '7'), legend);
                             }, true});
        // One argument hostile at a time, then all of them; the stages form differs only in a glyph.
        for (int which = 0; which <= 5; ++which) {
            float f[5] = {0.9f, 0.7f, 0.6f, 0.8f, 0.85f};
            for (int i = 0; i < 5; ++i)
                if (i == which || which == 5) f[i] = bad;
            cases.push_back({"sleep rings " + std::to_string(which) + " " + name, [=](SleepMetricsUI& ui, float s) {
                                 return ui.drawSleepRingsWithSize(s, f[0], f[1], f[2], f[3], f[4], which == 5);
                             }, false});
        }
        cases.push_back({"recharge sleep " + name,
                         [=](SleepMetricsUI& ui, float s) { return ui.drawTheRechargeWithSize(s, bad, 0.5f); }, false});
        cases.push_back({"recharge bank " + name,
                         [=](SleepMetricsUI& ui, float s) { return ui.drawTheRechargeWithSize(s, 0.5f, bad); }, false});
    }

    const std::optional<Date> dates[] = {std::nullopt,           Date::fromUnix(kNaN),   Date::fromUnix(kInf),
                                         Date::fromUnix(-kInf),  Date::fromUnix(1e308),  Date::fromUnix(-1e308),
                                         Date::fromUnix(9.4e12), Date::fromUnix(-6.3e13), Date::fromUnix(1.8e17),
                                         Date::fromUnix(-60)};
    for (std::size_t b = 0; b < std::size(dates); ++b)
        for (std::size_t w = 0; w < std::size(dates); ++w)
            cases.push_back({"bed clock " + std::to_string(b) + "," + std::to_string(w),
                             [bed = dates[b], wake = dates[w]](SleepMetricsUI& ui, float s) {
                                 return ui.drawTheBedClockWithSize(s, bed, wake);
                             }, true});

    // Every drawing with plausible figures at sides that are undrawable, tiny, or past the canvas's limit.
    std::vector<Case> plausible;
    addGauges(plausible, "", {{"averageSpO2", 95.4}, {"averageRespRate", 14.0}, {"wristTempScore", 3.0}});
    plausible.push_back({"readiness", [](SleepMetricsUI& ui, float s) { return ui.drawReadiRingsWithSize(s, 78, "★", 2); },
                         true});
    plausible.push_back({"sleep rings", [](SleepMetricsUI& ui, float s) {
                             return ui.drawSleepRingsWithSize(s, 0.9f, 0.7f, 0.6f, 1.3f, 0.86f, false);
                         }, false});
    plausible.push_back(
        {"recharge", [](SleepMetricsUI& ui, float s) { return ui.drawTheRechargeWithSize(s, 0.9f, 0.8f); }, false});
    plausible.push_back({"bed clock", [](SleepMetricsUI& ui, float s) {
                             return ui.drawTheBedClockWithSize(s, kMorning.dateByAddingTimeInterval(14 * 3600),
                                                               kMorning.dateByAddingTimeInterval(23 * 3600));
                         }, true});
    for (const Case& c : plausible)
        for (float side : {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(),
                           -std::numeric_limits<float>::infinity(), -1.0f, 0.0f, 1e-30f, 1.0f, 100.5f, 1e9f, 1e30f})
            cases.push_back({c.name + " at side " + std::to_string(side), c.draw, c.hubAtCentre, side});

    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        check(c.draw(*ui, c.side), c.side, c.hubAtCentre);
    }
}

// The sleep-bank request divides by the goal: no hours, tiny or enormous ones, with
// hostile sleep figures. Its picture stays whole and its texts and numbers show no
// garbage; a direct drawing then reads the goal afresh.
TEST_F(HostileNumbersTest, SleepBankWithHostileGoalsAndFigures) {
    for (double goal : kHostile) {
        for (const Value& figure : {Value(std::numeric_limits<float>::max()), Value(1e300), Value(kNaN), Value(-kInf),
                                    Value("1e999")}) {
            SCOPED_TRACE(::testing::Message() << "goal " << goal << ", figure " << figure.doubleValue());
            put("velmorantConfig", Dictionary{{"requiredHours", goal}});
            put("watchTrackDict", Dictionary{{"rawSleepTime", figure}, {"rawSleepBankTime", figure}});
            const Dictionary record = ui->requestSleepBankRings();
            ASSERT_TRUE(record.contains("ringsImage"));
            check(record.objectForKey("ringsImage")->image(), 280, false);
            for (const auto& [key, value] : record) {
                for (const char* bad : {"nan", "inf", "\u221E", "(null)"})
                    EXPECT_EQ(value.string() ? value.string()->find(bad) : std::string::npos, std::string::npos) << key;
                EXPECT_FALSE(value.isNumber() && !std::isfinite(value.doubleValue())) << key;
            }
        }
        check(ui->drawTheRechargeWithSize(280, 0.5f, 0.5f), 280, false);
    }
}

}  // namespace
}  // namespace velmorant::testing
