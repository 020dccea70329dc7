#pragma once

#include "StoreChecks.h"
#include "TempDir.h"

#include "demo/DemoData.h"
#include "platform/services/Platform.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace velmorant::testing {

// 2024-03-05 07:30 and 22:30 in New York: in the morning the night's results
// are the current day's; in the evening the cached sleep bank is shown.
inline const platform::Date kMorning = platform::Date::fromUnix(1709641800);
inline const platform::Date kEvening = platform::Date::fromUnix(1709695800);

// A platform in New York at `now`: on the store files in `dir` when one is
// given, else on stores in memory; problems go to `sink`.
inline std::unique_ptr<platform::Platform> platformAt(platform::Date now, std::optional<std::filesystem::path> dir,
                                                      platform::Diagnostics::Sink sink) {
    platform::PlatformOptions options;
    options.now = now;
    options.timeZoneId = "America/New_York";
    options.localeId = "en_US";
    if (dir) options.preferencesDir = *dir;
    options.diagnostics = std::move(sink);
    return std::make_unique<platform::Platform>(std::move(options));
}

// A fresh folder with the demo stores written as files, and what was reported.
class ReliabilityTest : public ::testing::Test {
protected:
    TempDir dir;
    std::vector<std::string> reports;

    std::filesystem::path sharedFile() const { return dir.path() / "group.brumelkai.Velmorant.plist"; }

    // A platform on the folder's files whose reports are collected here.
    std::unique_ptr<platform::Platform> platformOnFiles() {
        return platformAt(kMorning, dir.path(), [this](std::string_view m) { reports.emplace_back(m); });
    }
    void writeDemoStores() { demo::installDemoStores(*platformOnFiles()); }

    std::vector<std::string> folderContents() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(dir.path())) names.push_back(entry.path().filename());
        std::sort(names.begin(), names.end());
        return names;
    }
};

}  // namespace velmorant::testing
