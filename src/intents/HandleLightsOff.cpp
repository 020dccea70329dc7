#include "HandleLightsOff.h"

#include "format/FormatTools.h"
#include "platform/text/StringFormat.h"

namespace velmorant::intents {
using format::FormatTools;

HandleLightsOff::HandleLightsOff(platform::Platform& platform) : platform_(platform) {}

HandleLightsOff::~HandleLightsOff() = default;

platform::Dictionary HandleLightsOff::turnLightsOff() {
    if (!groupPrefs_) groupPrefs_ = platform_.suiteNamed(platform::kAppGroupSuite);
    if (!formatTools_) formatTools_ = std::make_unique<FormatTools>(platform_);
    const platform::Date now = platform_.now();
    // A store write that fails is reported by the store; the texts are still given.
    groupPrefs_->setObject(platform::Value(now), "activeLightSwitch");
    groupPrefs_->synchronize();
    std::string status = platform::stringWithFormat(
        "%@ %@.\n%@", {platform_.localizedString("\U0001F4A4 In bed at"), formatTools_->dayTime(now),
                       platform_.localizedString("Open app to cancel.")});
    return platform::Dictionary{{"statusLabel", platform::Value(status)},
                                {"response", platform::Value(platform_.localizedString("Good Night"))}};
}

}  // namespace velmorant::intents
