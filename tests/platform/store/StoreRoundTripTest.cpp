// What this system writes back must read as what it read: a store rewritten
// again and again keeps every value, and its dates to the microsecond.
#include "platform/store/PlistCodec.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using namespace velmorant::platform;

Dictionary rewritten(const Dictionary& root, PlistFormat format, int times) {
    Dictionary current = root;
    for (int i = 0; i < times; ++i) {
        std::string error;
        auto bytes = serialisePlist(current, format, &error);
        EXPECT_TRUE(bytes) << error;
        if (!bytes) break;
        auto document = parsePlist(*bytes, &error);
        EXPECT_TRUE(document) << error;
        if (!document) break;
        current = document->root;
    }
    return current;
}

TEST(StoreRoundTrip, DatesSurviveRewritesToTheMicrosecond) {
    // Seconds since 2001, as the binary format keeps them.
    const double cases[] = {
        0, 1, 731460600,                // whole seconds
        12817330.045702,                // read back a microsecond short without care
        731334600.000001,               // no double at this size reads back as this microsecond
        731460600.999999, 731460600.5,  // fractions near and at the half
        -1.5, -86400.25,                // before 2001
        2147483646.000001,              // near the end of what the format holds
    };
    for (double seconds : cases) {
        const Dictionary root{{"rawSynchTime", Value(Date::fromReference(seconds))}};
        // At most a microsecond later once, then never moved again.
        const Dictionary once = rewritten(root, PlistFormat::Binary, 1);
        const Value* date = once.objectForKey("rawSynchTime");
        ASSERT_TRUE(date && date->date()) << seconds;
        const long long moved =
            std::llround(date->date()->timeIntervalSinceReferenceDate() * 1e6) - std::llround(seconds * 1e6);
        EXPECT_TRUE(moved == 0 || moved == (seconds < 0 ? -1 : 1)) << std::fixed << seconds << " moved " << moved;
        EXPECT_TRUE(rewritten(once, PlistFormat::Binary, 5) == once) << std::fixed << seconds;
    }
}

TEST(StoreRoundTrip, DatesTheFormatCannotHoldAreRefusedByName) {
    for (double seconds : {3e9, -3e9, 1e300}) {
        std::string error;
        const Dictionary root{{"cachedSleepBank", Dictionary{{"wakeTime", Value(Date::fromReference(seconds))}}}};
        EXPECT_FALSE(serialisePlist(root, PlistFormat::Binary, &error)) << seconds;
        EXPECT_NE(error.find("cachedSleepBank.wakeTime"), std::string::npos) << error;
    }
}

}  // namespace
