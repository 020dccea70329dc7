#include "platform/core/Colour.h"
#include "platform/text/StringTable.h"
#include "platform/text/Text.h"

#include "TempDir.h"

#include <gtest/gtest.h>

#include <fstream>
#include <optional>
#include <vector>

using namespace velmorant::platform;

namespace {

TEST(Text, CaseOperations) {
    EXPECT_EQ(capitalizedString("sLEEP fuel RATING"), "Sleep Fuel Rating");
    EXPECT_EQ(uppercaseString("avg. straße"), "AVG. STRASSE");
    EXPECT_EQ(stringByReplacing("95% - 99%", "%", ""), "95 - 99");
}

// A store's text lands in pages' attributes: a quote of either kind must not end one.
TEST(Text, HtmlEscapingCoversTextAndBothQuotes) {
    EXPECT_EQ(escapeHtml(R"(<b a="1" b='2'>&amp;</b>)"), "&lt;b a=&quot;1&quot; b=&#39;2&#39;&gt;&amp;amp;&lt;/b&gt;");
    EXPECT_EQ(escapeHtml("Zeit · 7 h"), "Zeit · 7 h");
}

TEST(StringTable, ParsesStringsFilesAndSaysWhereTheyBreak) {
    std::string error;
    auto table = StringTable::parse("/* Wellness */\n\"Avg.\" = \"Mittel\";   // heading\n"
                                    "\"Line\\nbreak\" = \"A \\\"quoted\\\"\";\nbare_key = \"bare\";\n", &error);
    ASSERT_TRUE(table) << error;
    EXPECT_EQ(*table, (std::map<std::string, std::string, std::less<>>{
                          {"Avg.", "Mittel"}, {"Line\nbreak", "A \"quoted\""}, {"bare_key", "bare"}}));
    EXPECT_FALSE(StringTable::parse("\"a\" = \"b\";\n\"c\" \"d\";", &error));
    EXPECT_EQ(error, "line 2: expected '=' after a key");
    EXPECT_EQ(StringTable().localizedStringForKey("Sleep Rating", "Rating"), "Rating");
}

// Each entry is `"k" = TEXT;` followed by a good entry, which must survive
// whatever went wrong before it.
TEST(StringTable, EscapesAndEncodingEitherReadExactlyOrLeaveTheEntryOut) {
    const struct { std::string value; std::optional<std::string> read; const char* problem; } cases[] = {
        {R"(\UD83D\UDE34!)", "\U0001F634!", nullptr},
        {R"(\UZZZZ)", std::nullopt, "line 1: bad escape \"\\UZZZZ\": \\U needs four hexadecimal digits"},
        {R"(\U26)", std::nullopt, "\\U needs four hexadecimal digits"},
        {R"(x\U)", std::nullopt, "\\U needs four hexadecimal digits"},
        {R"(\UDE34)", std::nullopt, "a low surrogate without a high one"},
        {R"(\UD83D\U0041)", std::nullopt, "a high surrogate needs a low surrogate"},
        {R"(\U0000)", std::nullopt, "cannot hold U+0000"},
        {"ab\x80" "cd", std::nullopt, "line 1: the text is not valid UTF-8"},
        {"\xED\xA0\xBD", std::nullopt, "not valid UTF-8"},
        {"\xC0\xAF", std::nullopt, "not valid UTF-8"},
        {"M\xC3\xBC" "de \xF0\x9F\x98\xB4", "M\xC3\xBC" "de \xF0\x9F\x98\xB4", nullptr},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.value);
        std::string error;
        std::vector<std::string> problems;
        auto table = StringTable::parse("\"k\" = \"" + c.value + "\";\n\"next\" = \"ok\";\n", &error, &problems);
        ASSERT_TRUE(table) << error;
        EXPECT_EQ(table->at("next"), "ok");
        EXPECT_EQ(table->count("k") ? std::optional(table->at("k")) : std::nullopt, c.read);
        ASSERT_EQ(problems.size(), c.problem ? 1u : 0u);
        if (c.problem) {
            EXPECT_NE(problems[0].find(c.problem), std::string::npos) << problems[0];
        }
    }
}

TEST(StringTable, LoadingReportsEachBadEntryWithFileAndLineAndKeepsTheRest) {
    TempDir dir;
    std::filesystem::create_directories(dir.path() / "de.lproj");
    const auto file = dir.path() / "de.lproj" / "Localizable.strings";
    std::ofstream(file, std::ios::binary) << "\"Avg.\" = \"Mittel\";\n\"Sleep\" = \"Schlaf \\UZZZZ\";\n"
                                             "\"Bad\xFF\" = \"x\";\n";
    // The same table as UTF-16 big-endian, the byte order the phone's tools may write.
    std::ofstream(dir.path() / "de.lproj" / "Wide.strings", std::ios::binary)
        << std::string("\xFE\xFF\0\"\0k\0\"\0=\0\"\x00\xFC\0\"\0;", 18);
    std::vector<std::string> reports;
    Diagnostics diagnostics([&](std::string_view m) { reports.emplace_back(m); });
    StringTable table = StringTable::load(dir.path(), "de_DE", diagnostics);
    EXPECT_EQ(table.localizedStringForKey("Avg."), "Mittel");
    EXPECT_EQ(table.localizedStringForKey("Sleep"), "Sleep");  // left out: shown in English
    EXPECT_EQ(table.localizedStringForKey("k", "", "Wide"), "\u00FC");
    ASSERT_EQ(reports.size(), 2u);
    const char* const lines[] = {"line 2: bad escape", "line 3: the text is not valid UTF-8"};
    for (std::size_t i = 0; i < reports.size(); ++i)
        for (const std::string& part : {file.string(), std::string(lines[i]), std::string("shown in English")})
            EXPECT_NE(reports[i].find(part), std::string::npos) << reports[i];
}

TEST(Colour, HsbConversionAndClamping) {
    const Rgba navy = Colour::colorWithHue(240 / 360.0, 1, 0.5, 1).rgba();
    EXPECT_NEAR(navy.b, 0.5, 1e-9);
    EXPECT_NEAR(navy.r + navy.g, 0, 1e-9);
    EXPECT_NEAR(Colour::colorWithHue(1.0, 1, 1, 1).rgba().r, 1, 1e-9);        // a full turn is red again
    EXPECT_NEAR(Colour::colorWithHue(0.2, 0.5, 1.025, 1).rgba().g, 1, 1e-9);  // brightness clamps to 1
    EXPECT_NEAR(Colour::colorWithHue(0.2, 0.5, 1.025, 1).rgba().r, 0.9, 1e-9);
    EXPECT_EQ(Colour::colorWithHue(0.2, 0.5, -0.3, 1).brightness(), 0.0);
}

}  // namespace
