#include "platform/Colour.h"
#include "platform/StringTable.h"
#include "platform/Text.h"

#include <gtest/gtest.h>

using namespace velmorant::platform;

namespace {

TEST(Text, CaseOperations) {
    EXPECT_EQ(capitalizedString("today's readiness"), "Today's Readiness");
    EXPECT_EQ(capitalizedString("time until bed"), "Time Until Bed");
    EXPECT_EQ(capitalizedString("sLEEP fuel RATING"), "Sleep Fuel Rating");
    EXPECT_EQ(uppercaseString("avg. straße"), "AVG. STRASSE");
    EXPECT_EQ(lowercaseString("PREMIUM"), "premium");
    EXPECT_EQ(stringByReplacing("Tonight's Bedtime", " ", ""), "Tonight'sBedtime");
    EXPECT_EQ(stringByReplacing("95% - 99%", "%", ""), "95 - 99");
}

TEST(StringTable, ParsesStringsFilesAndSaysWhereTheyBreak) {
    std::string error;
    auto table = StringTable::parse(R"(/* Wellness */
"Avg." = "Mittel";   // heading
"Line\nbreak" = "A \"quoted\" \U2605";
bare_key = "bare";
)",
                                    &error);
    ASSERT_TRUE(table) << error;
    EXPECT_EQ(table->at("Avg."), "Mittel");
    EXPECT_EQ(table->at("Line\nbreak"), "A \"quoted\" ★");
    EXPECT_EQ(table->at("bare_key"), "bare");

    EXPECT_FALSE(StringTable::parse("\"a\" = \"b\";\n\"c\" \"d\";", &error));
    EXPECT_EQ(error, "line 2: expected '=' after a key");
    EXPECT_FALSE(StringTable::parse("\"open = ", &error));
}

TEST(StringTable, LookupFallsBackToValueThenKey) {
    StringTable none;
    EXPECT_EQ(none.localizedStringForKey("Sleep Rating"), "Sleep Rating");
    EXPECT_EQ(none.localizedStringForKey("Sleep Rating", "Rating"), "Rating");
}

TEST(Colour, HsbConversionAndClamping) {
    struct Case {
        Colour colour;
        Rgba rgba;
    };
    const Case cases[] = {
        {Colour::colorWithHue(0, 1, 1, 1), {1, 0, 0, 1}},
        {Colour::colorWithHue(120 / 360.0, 1, 1, 1), {0, 1, 0, 1}},
        {Colour::colorWithHue(240 / 360.0, 1, 0.5, 1), {0, 0, 0.5, 1}},
        {Colour::colorWithHue(0.5, 0, 0.98, 1), {0.98, 0.98, 0.98, 1}},
        {Colour::colorWithHue(1.0, 1, 1, 1), {1, 0, 0, 1}},         // a full turn is red again
        {Colour::colorWithHue(0.2, 0.5, 1.025, 1), {0.9, 1, 0.5, 1}},  // brightness clamps to 1
        {Colour::darkGrayColor(), {1 / 3.0, 1 / 3.0, 1 / 3.0, 1}},
        {Colour::clearColor(), {0, 0, 0, 0}},
    };
    for (const auto& c : cases) {
        Rgba got = c.colour.rgba();
        EXPECT_NEAR(got.r, c.rgba.r, 1e-9);
        EXPECT_NEAR(got.g, c.rgba.g, 1e-9);
        EXPECT_NEAR(got.b, c.rgba.b, 1e-9);
        EXPECT_NEAR(got.a, c.rgba.a, 1e-9);
    }
    EXPECT_EQ(Colour::colorWithHue(0.2, 0.5, -0.3, 1).brightness(), 0.0);
    EXPECT_EQ(Colour::systemRedColor().name(), "systemRed");
}

}  // namespace
