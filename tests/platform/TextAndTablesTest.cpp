#include "platform/Colour.h"
#include "platform/StringTable.h"
#include "platform/Text.h"

#include "../TempDir.h"

#include <gtest/gtest.h>

#include <fstream>
#include <optional>
#include <vector>

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

// Each entry is `"k" = TEXT;` followed by a good entry, which must survive
// whatever went wrong before it.
TEST(StringTable, EscapesAndEncodingEitherReadExactlyOrLeaveTheEntryOut) {
    struct Case {
        const char* name;
        std::string value;                // as written between the quotes
        std::optional<std::string> read;  // none: the entry is left out
        const char* problem;              // what the note says
    };
    const Case cases[] = {
        {"BMP escape", R"(a\u2605b)", "a\u2605b", nullptr},
        {"surrogate pair", R"(\UD83D\UDE34!)", "\U0001F634!", nullptr},
        {"lower-case hex", R"(\ud83d\ude34)", "\U0001F634", nullptr},
        {"not hexadecimal", R"(\UZZZZ)", std::nullopt, "line 1: bad escape \"\\UZZZZ\": \\U needs four hexadecimal digits"},
        {"short escape", R"(\U26)", std::nullopt, "\\U needs four hexadecimal digits"},
        {"short escape at the end", R"(x\U)", std::nullopt, "\\U needs four hexadecimal digits"},
        {"low surrogate alone", R"(\UDE34)", std::nullopt, "a low surrogate without a high one"},
        {"high surrogate alone", R"(\UD83D x)", std::nullopt, "a high surrogate needs a low surrogate"},
        {"high surrogate then a letter", R"(\UD83D\U0041)", std::nullopt, "a high surrogate needs a low surrogate"},
        {"NUL", R"(\U0000)", std::nullopt, "cannot hold U+0000"},
        {"stray continuation byte", "ab\x80" "cd", std::nullopt, "line 1: the text is not valid UTF-8"},
        {"Latin-1 umlaut", "Schlafqualit\xE4t", std::nullopt, "not valid UTF-8"},
        {"encoded surrogate", "\xED\xA0\xBD", std::nullopt, "not valid UTF-8"},
        {"cut-off sequence", "\xF0\x9F\x98", std::nullopt, "not valid UTF-8"},
        {"overlong slash", "\xC0\xAF", std::nullopt, "not valid UTF-8"},
        {"above U+10FFFF", "\xF4\x90\x80\x80", std::nullopt, "not valid UTF-8"},
        {"real UTF-8", "M\xC3\xBC" "de \xF0\x9F\x98\xB4", "M\xC3\xBC" "de \xF0\x9F\x98\xB4", nullptr},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        std::string error;
        std::vector<std::string> problems;
        auto table = StringTable::parse("\"k\" = \"" + c.value + "\";\n\"next\" = \"ok\";\n", &error, &problems);
        ASSERT_TRUE(table) << error;
        EXPECT_EQ(table->at("next"), "ok");
        if (c.read) {
            EXPECT_EQ(table->count("k") ? table->at("k") : "(left out)", *c.read);
            EXPECT_TRUE(problems.empty()) << problems.front();
        } else {
            EXPECT_FALSE(table->count("k"));
            ASSERT_EQ(problems.size(), 1u);
            EXPECT_NE(problems[0].find(c.problem), std::string::npos) << problems[0];
        }
    }
}

TEST(StringTable, LoadingReportsEachBadEntryWithFileAndLineAndKeepsTheRest) {
    TempDir dir;
    std::filesystem::create_directories(dir.path() / "de.lproj");
    const auto file = dir.path() / "de.lproj" / "Localizable.strings";
    std::ofstream(file, std::ios::binary) << "\"Avg.\" = \"Mittel\";\n"
                                             "\"Sleep\" = \"Schlaf \\UZZZZ\";\n"
                                             "\"Bad\xFF\" = \"x\";\n"
                                             "\"Rings\" = \"Ringe \\UD83D\\UDE34\";\n";
    // The same table as UTF-16 big-endian, the byte order the phone's tools may write.
    std::ofstream(dir.path() / "de.lproj" / "Wide.strings", std::ios::binary)
        << std::string("\xFE\xFF\0\"\0k\0\"\0=\0\"\x00\xFC\0\"\0;", 18);

    std::vector<std::string> reports;
    Diagnostics diagnostics([&](std::string_view m) { reports.emplace_back(m); });
    StringTable table = StringTable::load(dir.path(), "de_DE", diagnostics);

    EXPECT_EQ(table.localizedStringForKey("Avg."), "Mittel");
    EXPECT_EQ(table.localizedStringForKey("Sleep"), "Sleep");  // left out: shown in English
    EXPECT_EQ(table.localizedStringForKey("Rings"), "Ringe \U0001F634");
    EXPECT_EQ(table.localizedStringForKey("k", "", "Wide"), "\u00FC");
    ASSERT_EQ(reports.size(), 2u);
    const std::pair<const char*, const char*> expected[] = {{"line 2: bad escape", "\\UZZZZ"},
                                                            {"line 3: the text is not valid UTF-8", ""}};
    for (std::size_t i = 0; i < reports.size(); ++i) {
        EXPECT_NE(reports[i].find(file.string()), std::string::npos) << reports[i];
        EXPECT_NE(reports[i].find(expected[i].first), std::string::npos) << reports[i];
        EXPECT_NE(reports[i].find(expected[i].second), std::string::npos) << reports[i];
        EXPECT_NE(reports[i].find("shown in English"), std::string::npos) << reports[i];
    }
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
