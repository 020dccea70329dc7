#include "cli/Arguments.h"
#include "cli/CallRegistry.h"
#include "platform/graphics/Canvas.h"
#include "snippet_ui/SleepMetricsUI.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <sstream>
#include <utility>

namespace velmorant::cli {
using snippet_ui::SleepMetricsUI;

namespace {

using platform::Colour;
using platform::ImagePtr;
using platform::Platform;
using P = ParamType;

constexpr const char* kClass = "SleepMetricsUI";
// An image side in points; nothing that would give an empty bitmap or one
// wider than the canvas draws (side x --scale pixels) is bad input.
float imageSide(const Platform& p, const CallArgs& a, std::size_t i) {
    const double side = a.number(i);
    const double largest = platform::Canvas::kMaxPixels / p.screenScale();
    if (!a.isNil(i) && side > 0 && side <= largest) return static_cast<float>(side);
    std::ostringstream text;
    text << "the size must be a number above 0 and at most " << largest << " at --scale " << p.screenScale()
         << " (" << platform::Canvas::kMaxPixels << " pixels), not ";
    if (a.isNil(i)) text << "nil";
    else text << side;
    throw UsageError(text.str());
}

// A number argument as the float the operation takes; nil and NaN are 0, and
// a number beyond the float range is held at the largest float.
float floatArg(const CallArgs& a, std::size_t i) {
    double v = a.isNil(i) ? 0.0 : a.number(i);
    if (std::isnan(v)) return 0.0f;
    constexpr double kLargest = std::numeric_limits<float>::max();
    return static_cast<float>(std::clamp(v, -kLargest, kLargest));
}

// Every call works on a fresh object, as a snippet or widget would make its own.
template <typename Result>
void addNoArgument(CallRegistry& registry, const char* selector, Result (SleepMetricsUI::*operation)()) {
    registry.add(kClass, selector, {}, [operation](Platform& p, const CallArgs&) -> CallResult {
        SleepMetricsUI ui(p);
        return CallResult((ui.*operation)());
    });
}

void addMirror(CallRegistry& registry, const char* selector, void (SleepMetricsUI::*mirror)()) {
    registry.add(kClass, selector, {}, [mirror](Platform& p, const CallArgs&) -> CallResult {
        SleepMetricsUI ui(p);
        (ui.*mirror)();
        return CallResult();
    });
}

void addGauge(CallRegistry& registry, const char* selector,
              ImagePtr (SleepMetricsUI::*draw)(float, const platform::Dictionary&)) {
    registry.add(kClass, selector, {P::Number, P::Dictionary}, [draw](Platform& p, const CallArgs& a) -> CallResult {
        SleepMetricsUI ui(p);
        return CallResult((ui.*draw)(imageSide(p, a, 0), a.dictionary(1).value_or(platform::Dictionary())));
    });
}

void addDrawings(CallRegistry& registry) {
    addGauge(registry, "drawSpO2GaugeWithSize:withDict:", &SleepMetricsUI::drawSpO2GaugeWithSize);
    addGauge(registry, "drawRespRateGaugeWithSize:withDict:", &SleepMetricsUI::drawRespRateGaugeWithSize);
    addGauge(registry, "drawConsistencyGaugeWithSize:withDict:", &SleepMetricsUI::drawConsistencyGaugeWithSize);
    addGauge(registry, "drawWristTempGaugeWithSize:withDict:", &SleepMetricsUI::drawWristTempGaugeWithSize);

    registry.add(kClass, "drawReadiRingsWithSize:withValue:", {P::Number, P::Number},
                 [](Platform& p, const CallArgs& a) -> CallResult {
                     SleepMetricsUI ui(p);
                     return CallResult(ui.drawReadiRingsWithSize(imageSide(p, a, 0), floatArg(a, 1)));
                 });
    registry.add(kClass, "drawReadiRingsWithSize:withValue:withLabel:withLegend:",
                 {P::Number, P::Number, P::String, P::Integer}, [](Platform& p, const CallArgs& a) -> CallResult {
                     SleepMetricsUI ui(p);
                     return CallResult(ui.drawReadiRingsWithSize(imageSide(p, a, 0), floatArg(a, 1), a.string(2),
                                                                 a.isNil(3) ? 0 : a.integer(3)));
                 });
    registry.add(kClass,
                 "drawSleepRingsWithSize:withSleepPercent:withQualityPercent:withDeepPercent:withBPMPercent:"
                 "withRating:forStages:",
                 {P::Number, P::Number, P::Number, P::Number, P::Number, P::Number, P::Bool},
                 [](Platform& p, const CallArgs& a) -> CallResult {
                     SleepMetricsUI ui(p);
                     return CallResult(ui.drawSleepRingsWithSize(imageSide(p, a, 0), floatArg(a, 1), floatArg(a, 2),
                                                                 floatArg(a, 3), floatArg(a, 4), floatArg(a, 5),
                                                                 !a.isNil(6) && a.boolean(6)));
                 });
    registry.add(kClass, "drawTheRechargeWithSize:withSleepPercent:withBankPercent:", {P::Number, P::Number, P::Number},
                 [](Platform& p, const CallArgs& a) -> CallResult {
                     SleepMetricsUI ui(p);
                     return CallResult(ui.drawTheRechargeWithSize(imageSide(p, a, 0), floatArg(a, 1), floatArg(a, 2)));
                 });
    registry.add(kClass, "drawTheBedClockWithSize:withBedtime:withWaketime:", {P::Number, P::Date, P::Date},
                 [](Platform& p, const CallArgs& a) -> CallResult {
                     SleepMetricsUI ui(p);
                     return CallResult(ui.drawTheBedClockWithSize(imageSide(p, a, 0), a.date(1), a.date(2)));
                 });

    registry.add(kClass, "getShadowForPercent:", {P::Number}, [](Platform& p, const CallArgs& a) -> CallResult {
        SleepMetricsUI ui(p);
        platform::Size offset = ui.getShadowForPercent(floatArg(a, 0));
        return CallResult(platform::Dictionary{{"width", offset.width}, {"height", offset.height}});
    });
    registry.add(kClass, "radians:", {P::Number}, [](Platform& p, const CallArgs& a) -> CallResult {
        if (a.isNil(0)) return CallResult();
        SleepMetricsUI ui(p);
        return CallResult(ui.radians(a.number(0)));
    });

    const std::pair<const char*, Colour (SleepMetricsUI::*)() const> colours[] = {
        {"gaugeBkg", &SleepMetricsUI::gaugeBkg},
        {"ringBkg", &SleepMetricsUI::ringBkg},
        {"needleBkg", &SleepMetricsUI::needleBkg},
        {"textColour", &SleepMetricsUI::textColour},
        {"subtleTextColour", &SleepMetricsUI::subtleTextColour},
        {"verySubtleTextColour", &SleepMetricsUI::verySubtleTextColour},
    };
    for (const auto& [selector, colour] : colours) {
        registry.add(kClass, selector, {}, [colour](Platform& p, const CallArgs&) -> CallResult {
            SleepMetricsUI ui(p);
            return CallResult((ui.*colour)());
        });
    }
}

void addRequests(CallRegistry& registry) {
    const std::pair<const char*, SleepMetricsUI::Record (SleepMetricsUI::*)()> records[] = {
        {"requestSpO2", &SleepMetricsUI::requestSpO2},
        {"requestRespRate", &SleepMetricsUI::requestRespRate},
        {"requestWristTemp", &SleepMetricsUI::requestWristTemp},
        {"requestReadiness", &SleepMetricsUI::requestReadiness},
        {"requestOctane", &SleepMetricsUI::requestOctane},
        {"requestQuality", &SleepMetricsUI::requestQuality},
        {"requestLatestBedtime", &SleepMetricsUI::requestLatestBedtime},
        {"requestConsistency", &SleepMetricsUI::requestConsistency},
    };
    for (const auto& [selector, request] : records) addNoArgument(registry, selector, request);
    addNoArgument(registry, "requestSleepBankRings", &SleepMetricsUI::requestSleepBankRings);

    const std::pair<const char*, void (SleepMetricsUI::*)()> mirrors[] = {
        {"requestSpO2ForSwift", &SleepMetricsUI::requestSpO2ForSwift},
        {"requestRespRateForSwift", &SleepMetricsUI::requestRespRateForSwift},
        {"requestReadinessForSwift", &SleepMetricsUI::requestReadinessForSwift},
        {"requestOctaneForSwift", &SleepMetricsUI::requestOctaneForSwift},
        {"requestLatestBedtimeForSwift", &SleepMetricsUI::requestLatestBedtimeForSwift},
        {"requestSleepBankForSwift", &SleepMetricsUI::requestSleepBankForSwift},
    };
    for (const auto& [selector, mirror] : mirrors) addMirror(registry, selector, mirror);

    const std::pair<const char*, ImagePtr (SleepMetricsUI::*)()> images[] = {
        {"swiftReadinessImage", &SleepMetricsUI::swiftReadinessImage},
        {"swiftOctaneImage", &SleepMetricsUI::swiftOctaneImage},
        {"swiftSpO2Image", &SleepMetricsUI::swiftSpO2Image},
        {"swiftRespRateImage", &SleepMetricsUI::swiftRespRateImage},
        {"swiftWristTempImage", &SleepMetricsUI::swiftWristTempImage},
        {"swiftSleepRingsImage", &SleepMetricsUI::swiftSleepRingsImage},
        {"swiftSleepRingsAccessoryImage", &SleepMetricsUI::swiftSleepRingsAccessoryImage},
        {"swiftSleepBankImage", &SleepMetricsUI::swiftSleepBankImage},
        {"swiftSleepBankAccessoryImage", &SleepMetricsUI::swiftSleepBankAccessoryImage},
        {"swiftBedtimeImage", &SleepMetricsUI::swiftBedtimeImage},
    };
    for (const auto& [selector, image] : images) addNoArgument(registry, selector, image);

    // The setting is read from the store a request has opened, so the call
    // opens it first (the sleep-bank request reads the store and nothing else).
    registry.add(kClass, "getVelmorantConfigValueForKey:", {P::String},
                 [](Platform& p, const CallArgs& a) -> CallResult {
                     SleepMetricsUI ui(p);
                     ui.requestSleepBankRings();
                     return CallResult(ui.getVelmorantConfigValueForKey(a.string(0).value_or("")));
                 });
}

}  // namespace

void registerSleepMetricsUICalls(CallRegistry& registry) {
    addDrawings(registry);
    addRequests(registry);
}

}  // namespace velmorant::cli
