#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace velmorant::intents {

// An intent handed over by the voice assistant. The dispatcher looks only at
// its type (dynamic_cast stands in for isKindOfClass:).
class Intent {
public:
    virtual ~Intent() = default;
    virtual std::string_view typeName() const = 0;
};

template <typename Derived>
class IntentOf : public Intent {
public:
    std::string_view typeName() const override { return Derived::kTypeName; }
};

class LightsOffIntent final : public IntentOf<LightsOffIntent> {
public:
    static constexpr std::string_view kTypeName = "LightsOffIntent";
    std::optional<std::string> title;
};
class TimeAsleepIntent final : public IntentOf<TimeAsleepIntent> {
public:
    static constexpr std::string_view kTypeName = "TimeAsleepIntent";
};
class ReadinessIntent final : public IntentOf<ReadinessIntent> {
public:
    static constexpr std::string_view kTypeName = "ReadinessIntent";
};
class LatestBedtimeIntent final : public IntentOf<LatestBedtimeIntent> {
public:
    static constexpr std::string_view kTypeName = "LatestBedtimeIntent";
};
class SleepRingsIntent final : public IntentOf<SleepRingsIntent> {
public:
    static constexpr std::string_view kTypeName = "SleepRingsIntent";
};
class SleepSpO2Intent final : public IntentOf<SleepSpO2Intent> {
public:
    static constexpr std::string_view kTypeName = "SleepSpO2Intent";
};
class RespirationIntent final : public IntentOf<RespirationIntent> {
public:
    static constexpr std::string_view kTypeName = "RespirationIntent";
};
class SleepFuelIntent final : public IntentOf<SleepFuelIntent> {
public:
    static constexpr std::string_view kTypeName = "SleepFuelIntent";
};
class WristTempIntent final : public IntentOf<WristTempIntent> {
public:
    static constexpr std::string_view kTypeName = "WristTempIntent";
};

// Any intent this extension does not know; it keeps the name it was given.
class UnknownIntent final : public Intent {
public:
    explicit UnknownIntent(std::string name) : name_(std::move(name)) {}
    std::string_view typeName() const override { return name_; }

private:
    std::string name_;
};

// The nine intent type names, in the dispatcher's order.
inline constexpr std::string_view kIntentTypeNames[] = {
    LightsOffIntent::kTypeName,   TimeAsleepIntent::kTypeName, ReadinessIntent::kTypeName,
    WristTempIntent::kTypeName,   SleepFuelIntent::kTypeName,  SleepSpO2Intent::kTypeName,
    RespirationIntent::kTypeName, LatestBedtimeIntent::kTypeName, SleepRingsIntent::kTypeName,
};

// The intent of the given type name; any other name gives an UnknownIntent.
std::shared_ptr<Intent> makeIntent(std::string_view typeName);

// What the platform hands the snippet controller: the intent being shown.
struct Interaction {
    std::shared_ptr<Intent> intent;
};

}  // namespace velmorant::intents
