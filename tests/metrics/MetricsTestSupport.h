#pragma once

#include "metrics/GroupMetrics.h"

#include <gtest/gtest.h>
#include <unicode/gregocal.h>

#include <memory>
#include <string>

namespace velmorant::testing {

using platform::Date;
using platform::Dictionary;
using platform::Value;

// An instant given by its wall-clock time in New York.
inline Date local(int year, int month, int day, int hour, int minute, double second = 0) {
    UErrorCode status = U_ZERO_ERROR;
    icu::GregorianCalendar cal(icu::TimeZone::createTimeZone("America/New_York"), status);
    cal.clear();
    cal.set(year, month - 1, day, hour, minute, 0);
    return Date::fromIcuMillis(cal.getTime(status)).dateByAddingTimeInterval(second);
}

// In-memory stores at a fixed instant, and the GroupMetrics `m` on them.
class MetricsTest : public ::testing::Test {
protected:
    void start(Date now, const char* localeId = "en_US") {
        m.reset();
        platform::PlatformOptions options;
        options.now = now;
        options.timeZoneId = "America/New_York";
        options.localeId = localeId;
        platform_ = std::make_unique<platform::Platform>(std::move(options));
        m = std::make_unique<metrics::GroupMetrics>(*platform_);
    }
    std::shared_ptr<platform::PreferencesStore> store() { return platform_->suiteNamed(platform::kAppGroupSuite); }
    void put(std::string_view key, Value value) { store()->setObject(value, key); }
    std::string dayTime(Date d) { return format::FormatTools(*platform_).dayTime(d); }

    static std::string text(const Dictionary& r, std::string_view key) {
        const Value* v = r.objectForKey(key);
        return v && v->string() ? *v->string() : "<absent>";
    }
    static Date date(const Dictionary& r, std::string_view key) { return r.objectForKey(key)->date().value_or(Date()); }
    // A record number that must be kept in single precision.
    static float single(const Dictionary& r, std::string_view key) {
        EXPECT_TRUE(r.objectForKey(key)->isSinglePrecision()) << key;
        return r.objectForKey(key)->floatValue();
    }
    static void expectTexts(const Dictionary& r, std::initializer_list<std::pair<const char*, std::string>> expected) {
        for (const auto& [key, value] : expected) EXPECT_EQ(text(r, key), value) << key;
    }

    std::unique_ptr<platform::Platform> platform_;
    std::unique_ptr<metrics::GroupMetrics> m;
};

}  // namespace velmorant::testing
