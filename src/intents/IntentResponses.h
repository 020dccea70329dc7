#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace velmorant::intents {

// The platform's codes for custom intent responses; this system only makes Success.
enum class IntentResponseCode : std::int64_t {
    Unspecified = 0,
    Ready = 1,
    ContinueInApp = 2,
    InProgress = 3,
    Success = 4,
    Failure = 5,
    FailureRequiringAppLaunch = 6,
};

// The activity a response may carry for continuing in the app.
struct UserActivity {
    std::string activityType;
};

// One response type of the family: all nine are this template with their own
// name; every one but the lights-off response also carries `dictionary`.
template <typename Name, bool HasDictionary>
class CustomIntentResponse {
public:
    static constexpr std::string_view kTypeName = Name::kTypeName;

    static std::shared_ptr<CustomIntentResponse> initWithCode(std::int64_t code,
                                                              std::shared_ptr<UserActivity> userActivity) {
        auto response = std::shared_ptr<CustomIntentResponse>(new CustomIntentResponse());
        response->_code = code;
        response->userActivity_ = std::move(userActivity);
        return response;
    }

    static std::shared_ptr<CustomIntentResponse> successIntentResponseWithResponse(std::string response) {
        auto made = initWithCode(static_cast<std::int64_t>(IntentResponseCode::Success), nullptr);
        made->setResponse(std::move(response));
        return made;
    }

    std::int64_t code() const { return _code; }
    void setCode(std::int64_t code) { _code = code; }
    const std::shared_ptr<UserActivity>& userActivity() const { return userActivity_; }
    void setUserActivity(std::shared_ptr<UserActivity> activity) { userActivity_ = std::move(activity); }
    const std::optional<std::string>& response() const { return response_; }
    void setResponse(std::optional<std::string> response) { response_ = std::move(response); }

    const std::optional<std::string>& dictionary() const
        requires HasDictionary
    {
        return dictionary_;
    }
    void setDictionary(std::optional<std::string> dictionary)
        requires HasDictionary
    {
        dictionary_ = std::move(dictionary);
    }

private:
    CustomIntentResponse() = default;
    std::int64_t _code = 0;
    std::shared_ptr<UserActivity> userActivity_;
    std::optional<std::string> response_;
    std::optional<std::string> dictionary_;
};

namespace response_names {
struct LightsOff { static constexpr std::string_view kTypeName = "LightsOffIntentResponse"; };
struct TimeAsleep { static constexpr std::string_view kTypeName = "TimeAsleepIntentResponse"; };
struct Readiness { static constexpr std::string_view kTypeName = "ReadinessIntentResponse"; };
struct LatestBedtime { static constexpr std::string_view kTypeName = "LatestBedtimeIntentResponse"; };
struct SleepRings { static constexpr std::string_view kTypeName = "SleepRingsIntentResponse"; };
struct SleepSpO2 { static constexpr std::string_view kTypeName = "SleepSpO2IntentResponse"; };
struct Respiration { static constexpr std::string_view kTypeName = "RespirationIntentResponse"; };
struct SleepFuel { static constexpr std::string_view kTypeName = "SleepFuelIntentResponse"; };
struct WristTemp { static constexpr std::string_view kTypeName = "WristTempIntentResponse"; };
}  // namespace response_names

using LightsOffIntentResponse = CustomIntentResponse<response_names::LightsOff, false>;
using TimeAsleepIntentResponse = CustomIntentResponse<response_names::TimeAsleep, true>;
using ReadinessIntentResponse = CustomIntentResponse<response_names::Readiness, true>;
using LatestBedtimeIntentResponse = CustomIntentResponse<response_names::LatestBedtime, true>;
using SleepRingsIntentResponse = CustomIntentResponse<response_names::SleepRings, true>;
using SleepSpO2IntentResponse = CustomIntentResponse<response_names::SleepSpO2, true>;
using RespirationIntentResponse = CustomIntentResponse<response_names::Respiration, true>;
using SleepFuelIntentResponse = CustomIntentResponse<response_names::SleepFuel, true>;
using WristTempIntentResponse = CustomIntentResponse<response_names::WristTemp, true>;

}  // namespace velmorant::intents
