#pragma once

#include "platform/services/Platform.h"
#include "platform/core/Value.h"

#include <memory>

namespace velmorant::format {
class FormatTools;
}  // namespace velmorant::format

namespace velmorant::intents {

// Records in the shared store that the user turned the lights off, and gives the texts that confirm it.
class HandleLightsOff {
public:
    // `platform` must outlive this object.
    explicit HandleLightsOff(platform::Platform& platform);
    ~HandleLightsOff();
    HandleLightsOff(const HandleLightsOff&) = delete;
    HandleLightsOff& operator=(const HandleLightsOff&) = delete;

    // Writes now under "activeLightSwitch", flushes, and returns "statusLabel" and "response".
    platform::Dictionary turnLightsOff();

private:
    platform::Platform& platform_;
    std::shared_ptr<platform::PreferencesStore> groupPrefs_;
    std::unique_ptr<format::FormatTools> formatTools_;
};

}  // namespace velmorant::intents
