#pragma once

#include "format/FormatTools.h"
#include "metrics/GroupMetrics.h"
#include "palette/Pallet.h"
#include "platform/graphics/Canvas.h"
#include "platform/core/Colour.h"
#include "platform/core/Date.h"
#include "platform/core/Geometry.h"
#include "platform/services/Platform.h"
#include "platform/store/PreferencesStore.h"
#include "platform/core/Value.h"
#include "snippet_ui/DrawLater.h"

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace velmorant::snippet_ui {
namespace gauge {
struct StarDial;
}

// Turns the metric records of `GroupMetrics` into what snippets and widgets
// show: display labels, colour codes, and the gauge and ring pictures drawn in
// code. Members are made on first use and kept; one object serves one thread.
class SleepMetricsUI {
public:
    // A metric record; none when there is no data for the current day.
    using Record = std::optional<platform::Dictionary>;

    explicit SleepMetricsUI(platform::Platform& platform);
    ~SleepMetricsUI();
    SleepMetricsUI(const SleepMetricsUI&) = delete;
    SleepMetricsUI& operator=(const SleepMetricsUI&) = delete;

    // Widget flags: set by the widget-facing operations before their request;
    // they change image sizes and the readiness records' tints.
    bool widgetMode = false;
    bool widgetAccessoryMode = false;

    // The product setting under `key` in the shared store's "velmorantConfig";
    // 0 when the store has not been opened yet, or the dictionary or key is missing.
    float getVelmorantConfigValueForKey(std::string_view key);
    // The same setting, none in those cases (a stored 0 stays 0).
    [[nodiscard]] std::optional<float> configValueForKey(std::string_view key);

    // Colours shared by the gauges, rings and clock.
    platform::Colour gaugeBkg() const;
    platform::Colour ringBkg() const;
    platform::Colour needleBkg() const;
    platform::Colour textColour() const;
    platform::Colour subtleTextColour() const;
    platform::Colour verySubtleTextColour() const;

    // Gauges.
    platform::ImagePtr drawSpO2GaugeWithSize(float size, const platform::Dictionary& dict);
    platform::ImagePtr drawRespRateGaugeWithSize(float size, const platform::Dictionary& dict);
    platform::ImagePtr drawConsistencyGaugeWithSize(float size, const platform::Dictionary& dict);
    platform::ImagePtr drawWristTempGaugeWithSize(float size, const platform::Dictionary& dict);
    // Readiness gauge; the short form has no label and no icon.
    platform::ImagePtr drawReadiRingsWithSize(float size, float value);
    platform::ImagePtr drawReadiRingsWithSize(float size, float value, const std::optional<std::string>& label,
                                              std::int64_t legend);

    // Sleep rings and their helpers.
    platform::ImagePtr drawSleepRingsWithSize(float size, float sleepPercent, float qualityPercent, float deepPercent,
                                              float bpmPercent, float rating, bool forStages);
    // The offset of the shadow a ring's head casts at fraction `percent`.
    static platform::Size getShadowForPercent(float percent);
    static double radians(double degrees);

    // Recharge rings and bed clock.
    platform::ImagePtr drawTheRechargeWithSize(float size, float sleepPercent, float bankPercent);
    platform::ImagePtr drawTheBedClockWithSize(float size, const std::optional<platform::Date>& bedtime,
                                               const std::optional<platform::Date>& waketime);

    // Wellness requests.
    Record requestSpO2();
    Record requestRespRate();
    Record requestWristTemp();
    Record requestReadiness();
    Record requestOctane();

    // Sleep requests; the sleep-bank record is empty, never none, without data.
    Record requestQuality();
    platform::Dictionary requestSleepBankRings();
    Record requestLatestBedtime();
    Record requestConsistency();

    // Widget mirrors: write the record's fields to the shared store as "Swift-" keys.
    void requestSpO2ForSwift();
    void requestRespRateForSwift();
    void requestReadinessForSwift();
    void requestOctaneForSwift();
    void requestLatestBedtimeForSwift();
    void requestSleepBankForSwift();

    // Widget images: the record's picture, or "WidgetWait" without data.
    platform::ImagePtr swiftReadinessImage();
    platform::ImagePtr swiftOctaneImage();
    platform::ImagePtr swiftSpO2Image();
    platform::ImagePtr swiftRespRateImage();
    platform::ImagePtr swiftWristTempImage();
    platform::ImagePtr swiftSleepRingsImage();
    platform::ImagePtr swiftSleepRingsAccessoryImage();
    // These two have no "WidgetWait" fallback: none without data.
    platform::ImagePtr swiftSleepBankImage();
    platform::ImagePtr swiftSleepBankAccessoryImage();
    platform::ImagePtr swiftBedtimeImage();

private:
    // The image side of the wellness requests: 220 in widget mode, else 280.
    float wellnessImageSide() const;
    // Copies the keys `from` has, in the order given; absent keys stay absent.
    static void copyKeys(const platform::Dictionary& from, platform::Dictionary& to,
                         std::initializer_list<std::string_view> keys);
    // A figure as a float: NaN reads as 0 and beyond the float range it is held at the largest float.
    static float held(double value);
    // The readiness and sleep-fuel record (legend 2 and 1) made from their source.
    Record scoreRecord(const metrics::GroupMetrics::Record& source, std::int64_t legend);
    // Widget-facing operations say which widget is asking before their request.
    void setWidgetFlags(bool accessory);
    // A star-rated dial of `size` in this object's mode and colours, for the caller to complete.
    gauge::StarDial starDial(float size);
    // The record's picture, or the "WidgetWait" placeholder.
    platform::ImagePtr imageOrWait(const Record& record);

    // Members made on first use.
    platform::PreferencesStore& groupPrefs();
    format::FormatTools& formatTools();
    palette::Pallet& pallet();
    metrics::GroupMetrics& groupMetrics();

    // The drawings themselves, given all they show: the recharge rings on the
    // dark palette with the sleep goal in hours, the bed clock at `now`.
    platform::ImagePtr drawRechargeRings(palette::Pallet& darkPalette, float size, float sleepPercent,
                                         float bankPercent, float goalHours);
    static void drawHourMarks(platform::Canvas& canvas, platform::Point centre, float radius, float width,
                              float goal, const platform::Colour& colour);
    platform::ImagePtr drawBedClock(float size, const std::optional<platform::Date>& bedtime,
                                    const std::optional<platform::Date>& waketime, platform::Date now);
    // The bed clock's colours: dial track and rim, tick and number texts, hub.
    struct ClockColours {
        platform::Colour track, rim, text, subtleText, verySubtleText, hub;
    };
    // The bed clock's hour ticks, hour numbers and hub.
    static void drawClockHours(platform::Canvas& layer, float c, const ClockColours& colours);

    // Ring and clock geometry: the angle of a fraction of a turn (0 straight up),
    // a point at a radius and angle from the centre (c, c), and a text centred on a point.
    static double tipAngle(double fraction);
    static platform::Point pointAt(double c, double radius, double angle);
    static void drawTextCentredAt(platform::Canvas& canvas, std::string_view text, platform::Point centre,
                                  const platform::TextAttributes& attributes);

    platform::Platform& platform_;
    std::shared_ptr<platform::PreferencesStore> groupPrefs_;
    std::unique_ptr<format::FormatTools> formatTools_;
    std::unique_ptr<palette::Pallet> pallet_;
    std::unique_ptr<metrics::GroupMetrics> groupMetrics_;
};

}  // namespace velmorant::snippet_ui
