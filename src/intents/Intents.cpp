#include "Intents.h"

namespace velmorant::intents {
namespace {

template <typename T>
bool is(std::string_view name) {
    return name == T::kTypeName;
}

}  // namespace

std::shared_ptr<Intent> makeIntent(std::string_view typeName) {
    if (is<LightsOffIntent>(typeName)) return std::make_shared<LightsOffIntent>();
    if (is<TimeAsleepIntent>(typeName)) return std::make_shared<TimeAsleepIntent>();
    if (is<ReadinessIntent>(typeName)) return std::make_shared<ReadinessIntent>();
    if (is<LatestBedtimeIntent>(typeName)) return std::make_shared<LatestBedtimeIntent>();
    if (is<SleepRingsIntent>(typeName)) return std::make_shared<SleepRingsIntent>();
    if (is<SleepSpO2Intent>(typeName)) return std::make_shared<SleepSpO2Intent>();
    if (is<RespirationIntent>(typeName)) return std::make_shared<RespirationIntent>();
    if (is<SleepFuelIntent>(typeName)) return std::make_shared<SleepFuelIntent>();
    if (is<WristTempIntent>(typeName)) return std::make_shared<WristTempIntent>();
    return std::make_shared<UnknownIntent>(std::string(typeName));
}

}  // namespace velmorant::intents
