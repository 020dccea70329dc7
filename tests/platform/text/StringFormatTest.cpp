#include "platform/text/StringFormat.h"

#include <gtest/gtest.h>

using namespace velmorant::platform;

namespace {

struct FormatCase {
    const char* locale;  // "" for the plain formatter
    const char* format;
    std::vector<FormatArg> args;
    const char* expected;
};

TEST(StringFormat, FormatsLikeThePhone) {
    const FormatCase cases[] = {
        {"", "%.1f%%", {95.44}, "95.4%"},
        {"", "%@ %@.", {"Sleep", std::nullopt}, "Sleep (null)."},
        {"", "%@ %@", {"only one"}, "only one (null)"},
        {"", "%ld weeks ", {3L}, "3 weeks "},
        {"", "%d %@", {2, "Sleep Rings Closed"}, "2 Sleep Rings Closed"},
        {"", "%.1f", {1234.5}, "1234.5"},
        {"", "+%.2f°", {0.31f}, "+0.31°"},
        {"", "%2$@ %1$@", {"world", "hello"}, "hello world"},
        {"", "100%", {}, "100%"},
        {"", "%.0f", {static_cast<double>(87.5f)}, "88"},
        {"en_US", "%.1f", {1234.5}, "1,234.5"},
        {"de_DE", "%.1f", {1234.5}, "1.234,5"},
        {"de_DE", "%.1f%%", {95.4f}, "95,4%"},
        {"fr_FR", "%.2f", {0.31}, "0,31"},
        {"en_US", "%.0f", {0.5}, "0"},  // half-even
        {"en_US", "%.0f", {1.5}, "2"},
        {"en_US", "%.2f", {2.675}, "2.68"},  // decimal reading of the double, then half-even
        {"en_US", "%d", {12345}, "12,345"},
        {"en_US", "{\"%@\":\"%.2f\"}", {"Stars", 4.6f}, "{\"Stars\":\"4.60\"}"},
        {"en_US", "%+.1f", {1.25}, "+1.2"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.locale) + " " + c.format);
        std::string got = *c.locale ? localizedStringWithFormat(c.locale, c.format, c.args)
                                    : stringWithFormat(c.format, c.args);
        EXPECT_EQ(got, c.expected);
    }
}

}  // namespace
