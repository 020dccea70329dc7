#include "cli/IsoDate.h"

#include <gtest/gtest.h>

#include <optional>
#include <thread>

using velmorant::cli::parseIsoDate;
using velmorant::platform::Date;
using velmorant::platform::TimeZone;

namespace {

struct Case {
    const char* text;
    const char* zone;
    std::optional<double> unixSeconds;
};

// 2024-03-05T10:00:00Z is 1709632800; Berlin is an hour ahead of UTC then, New York five behind.
constexpr Case kCases[] = {
    {"2024-03-05T10:00:00", "UTC", 1709632800},
    {"2024-03-05T10:00:00", "Europe/Berlin", 1709632800 - 3600},
    {"2024-03-05T10:00:00", "America/New_York", 1709632800 + 5 * 3600},
    {"2024-03-05T10:00:00Z", "Europe/Berlin", 1709632800},
    {"2024-03-05T10:00:00+02:00", "UTC", 1709632800 - 7200},
    {"2024-03-05T10:00:00.250Z", "America/New_York", 1709632800.25},
    {"2024-03-05T10:00", "Europe/Berlin", 1709632800 - 3600},
    {"2024-03-05", "UTC", 1709596800},
    {"2024-03-05", "America/New_York", 1709596800 + 5 * 3600},
    {"2024-03-05T25:00:00", "UTC", std::nullopt},
    {"2024-02-30", "UTC", std::nullopt},
    {"5 March 2024", "UTC", std::nullopt},
    {"", "UTC", std::nullopt},
};

void expectEveryCase() {
    for (const Case& c : kCases) {
        SCOPED_TRACE(std::string(c.text) + " in " + c.zone);
        auto date = parseIsoDate(c.text, *TimeZone::named(c.zone));
        ASSERT_EQ(date.has_value(), c.unixSeconds.has_value());
        if (date) EXPECT_DOUBLE_EQ(date->timeIntervalSince1970(), *c.unixSeconds);
    }
}

}  // namespace

// The zone changes from one date to the next, and the same text reads
// differently in each: nothing of an earlier zone may stick.
TEST(IsoDate, ReadsEachDateInTheZoneGivenWithIt) {
    expectEveryCase();
    expectEveryCase();
    std::thread other(expectEveryCase);
    other.join();
}
