#pragma once

#include "platform/Platform.h"

#include <filesystem>
#include <memory>

namespace velmorant::testing {

// 2024-03-05 07:30 in New York: the demo night is the current one.
inline const platform::Date kMorning = platform::Date::fromUnix(1709641800);

// A platform whose stores are the files in `dir`, reporting problems to `sink`.
inline std::unique_ptr<platform::Platform> platformOn(const std::filesystem::path& dir,
                                                      platform::Diagnostics::Sink sink) {
    platform::PlatformOptions options;
    options.now = kMorning;
    options.timeZoneId = "America/New_York";
    options.localeId = "en_US";
    options.preferencesDir = dir;
    options.diagnostics = std::move(sink);
    return std::make_unique<platform::Platform>(std::move(options));
}

}  // namespace velmorant::testing
