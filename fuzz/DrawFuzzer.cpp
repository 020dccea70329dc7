// libFuzzer entry: any bytes as the arguments of every drawing. The first byte
// picks the drawing, the rest are read in turn as its numbers (raw float or
// double bits, so NaNs, infinities and subnormals come up as often as plain
// values), dates, label texts and record values. Sides are held to the
// snippet's range here, since a huge side only makes the canvas's largest
// bitmap, which the table test covers. It fails on a crash, a sanitizer report,
// a slow input, or a picture larger than its side allows.
#include "platform/graphics/Image.h"
#include "snippet_ui/SleepMetricsUI.h"

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>
#include <string>

using namespace velmorant;
using snippet_ui::SleepMetricsUI;

namespace {

// Reads the input front to back; past its end every read gives zeros.
class Reader {
public:
    Reader(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}

    template <typename T>
    T raw() {
        T value{};
        unsigned char bytes[sizeof(T)] = {};
        for (unsigned char& b : bytes) b = at_ < size_ ? data_[at_++] : 0;
        std::memcpy(&value, bytes, sizeof(T));
        return value;
    }
    float side() {
        // 0 to 400 points, with the odd ones (0, tiny, between pixels) included.
        float s = std::fabs(raw<float>());
        return std::isfinite(s) ? std::fmod(s, 400.0f) : s;
    }
    std::string text() {
        std::size_t length = raw<std::uint8_t>();
        std::string out;
        while (length-- > 0 && at_ < size_) out.push_back(static_cast<char>(data_[at_++]));
        return out;
    }
    platform::Value value() {
        switch (raw<std::uint8_t>() % 5) {
            case 0: return platform::Value(raw<double>());
            case 1: return platform::Value(raw<float>());
            case 2: return platform::Value(static_cast<std::int64_t>(raw<std::int64_t>()));
            case 3: return platform::Value(text());
            default: return platform::Value();
        }
    }
    std::optional<platform::Date> date() {
        if (raw<std::uint8_t>() % 4 == 0) return std::nullopt;
        return platform::Date::fromUnix(raw<double>());
    }

private:
    const std::uint8_t* data_;
    std::size_t size_;
    std::size_t at_ = 0;
};

const char* const kRecordKeys[] = {"averageSpO2",      "minSpO2",      "maxSpO2",      "averageSpO27",
                                   "minSpO27",         "maxSpO27",     "averageRespRate", "minRespRate",
                                   "maxRespRate",      "averageRespRate7", "minRespRate7", "maxRespRate7",
                                   "bedTrend",         "wristTempScore", "starsLabel",  "wristTempDifLabel"};

platform::Dictionary record(Reader& in) {
    platform::Dictionary dict;
    for (const char* key : kRecordKeys) dict.setObject(in.value(), key);
    return dict;
}

platform::ImagePtr draw(SleepMetricsUI& ui, Reader& in) {
    const int which = in.raw<std::uint8_t>() % 10;
    ui.widgetMode = which % 2 == 1;
    const float side = in.side();
    switch (which) {
        case 0: return ui.drawSpO2GaugeWithSize(side, record(in));
        case 1: return ui.drawRespRateGaugeWithSize(side, record(in));
        case 2: return ui.drawConsistencyGaugeWithSize(side, record(in));
        case 3: return ui.drawWristTempGaugeWithSize(side, record(in));
        case 4: return ui.drawReadiRingsWithSize(side, in.raw<float>());
        case 5: {
            const float value = in.raw<float>();
            std::optional<std::string> label;
            if (in.raw<std::uint8_t>() % 2) label = in.text();
            return ui.drawReadiRingsWithSize(side, value, label, in.raw<std::int64_t>());
        }
        case 6: {
            const float a = in.raw<float>(), b = in.raw<float>(), c = in.raw<float>(), d = in.raw<float>();
            return ui.drawSleepRingsWithSize(side, a, b, c, d, in.raw<float>(), in.raw<std::uint8_t>() % 2);
        }
        case 7: return ui.drawTheRechargeWithSize(side, in.raw<float>(), in.raw<float>());
        default: {
            const auto bedtime = in.date();
            return ui.drawTheBedClockWithSize(side, bedtime, in.date());
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static platform::Platform platform{[] {
        platform::PlatformOptions options;
        options.now = platform::Date::fromUnix(1709641800);
        options.timeZoneId = "UTC";
        options.scale = 2;
        return options;
    }()};
    SleepMetricsUI ui(platform);
    Reader in(data, size);
    const float side = [&] {
        Reader peek(data, size);
        peek.raw<std::uint8_t>();
        return peek.side();
    }();
    platform::ImagePtr image = draw(ui, in);
    if (image && (image->pixelWidth() > std::ceil(side * 2) + 1 || image->pixelHeight() > std::ceil(side * 2) + 1)) {
        std::fprintf(stderr, "draw fuzzer: a %d x %d pixel picture for side %g\n", image->pixelWidth(),
                     image->pixelHeight(), static_cast<double>(side));
        std::abort();
    }
    return 0;
}
