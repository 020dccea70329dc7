#include "platform/views/Accessibility.h"
#include "platform/core/Diagnostics.h"
#include "platform/text/StringTable.h"
#include "platform/views/ViewTree.h"

#include <gtest/gtest.h>

#include <string>

using namespace velmorant::platform;

namespace {

SpeechLanguage english() { return {[](std::string_view key) { return std::string(key); }, "en_US"}; }

SpeechLanguage german() {
    static const StringTable table = [] {
        Diagnostics quiet([](std::string_view) {});
        return StringTable::load(std::filesystem::path(VELMORANT_TEST_RESOURCE_DIR) / "strings", "de_DE", quiet);
    }();
    return {[](std::string_view key) { return table.localizedStringForKey(key); }, "de_DE"};
}

TEST(SpokenText, SaysGlyphsAsWordsInTheLocaleAndDropsWhatHasNoWord) {
    struct Case {
        bool inGerman;
        const char *shown, *said;
    };
    const Case cases[] = {
        {false, "⑦ 89% - 99%", "7-day 89% – 99%"}, {false, "1.0%↗", "1.0% rising"},
        {false, "0.25°↘", "0.25 degrees falling"}, {false, "0.00°=", "0.00 degrees unchanged"},
        {false, "★★★⭒⭒", "3 of 5 stars"},         {false, "--", "no data"},
        {false, "BED TIME", "Bed Time"},           {false, "HRV", "HRV"},
        {false, "💤 In bed at 10:45 PM.", "In bed at 10:45 PM."}, {false, "🛌", ""},
        {true, "⑦ 95,3 %", "7 Tage 95,3 %"},       {true, "1,0 %↗", "1,0 % steigend"},
        {true, "0,25°↘", "0,25 Grad fallend"},     {true, "★★★★⭒", "4 von 5 Sternen"},
        {true, "--", "keine Daten"},               {true, "QUALITÄT", "Qualität"},
    };
    for (const auto& c : cases) EXPECT_EQ(spokenText(c.shown, c.inGerman ? german() : english()), c.said) << c.shown;
}

// A panel of two rows as the snippet lays them out, with a hidden group and a decorative glyph.
constexpr const char* kPanel = R"({"views": [
  {"name": "card", "kind": "container", "frame": [0, 0, 390, 420]},
  {"name": "title", "kind": "label", "parent": "card", "frame": [16, 284, 358, 24]},
  {"name": "panel", "kind": "container", "parent": "card", "frame": [12, 310, 366, 102]},
  {"name": "glyph", "kind": "label", "parent": "panel", "frame": [14, 11, 30, 30], "accessible": false},
  {"name": "upperSecond", "kind": "label", "parent": "panel", "frame": [214, 23, 138, 28]},
  {"name": "upperMain", "kind": "label", "parent": "panel", "frame": [56, 23, 150, 26]},
  {"name": "upperHeading", "kind": "label", "parent": "panel", "frame": [56, 9, 296, 15], "header": true},
  {"name": "lowerHeading", "kind": "label", "parent": "panel", "frame": [56, 59, 296, 15], "header": true},
  {"name": "lowerMain", "kind": "label", "parent": "panel", "frame": [56, 73, 150, 26]},
  {"name": "lowerSecond", "kind": "label", "parent": "panel", "frame": [214, 73, 138, 28]},
  {"name": "other", "kind": "container", "parent": "card", "frame": [0, 0, 390, 420], "hidden": true},
  {"name": "stale", "kind": "label", "parent": "other", "frame": [0, 0, 100, 20], "text": "Old text"}
]})";

ViewTree panel(std::initializer_list<std::pair<const char*, const char*>> texts) {
    ViewTree tree = ViewTree::parseInterface(kPanel);
    for (auto [name, text] : texts) tree.view(name)->setText(std::string(text));
    return tree;
}

TEST(AccessibilityText, ReadsTheShownTextsRowByRowWithTheirHeadings) {
    ViewTree full = panel({{"glyph", "O₂"}, {"upperHeading", "AVG."}, {"upperMain", "95.4%"},
                           {"upperSecond", "⑦ 95.3%"}, {"lowerHeading", "RANGE"}, {"lowerMain", "90% - 99%"},
                           {"lowerSecond", "⑦ 89% - 99%"}});
    EXPECT_EQ(accessibilityText(full, english()), "Avg. 95.4%, 7-day 95.3%. Range 90% – 99%, 7-day 89% – 99%.");
    // A value missing on one side only; a text of its own ends its own sentence once.
    ViewTree oneSided = panel({{"title", "★★★★⭒"}, {"upperHeading", "BASELINE"}, {"upperSecond", "35.61°"}});
    EXPECT_EQ(accessibilityText(oneSided, english()), "4 of 5 stars. Baseline 35.61 degrees.");
    EXPECT_EQ(accessibilityText(panel({}), english()), "");
    // Hidden views are not read; shown again, they are.
    full.view("panel")->setHidden(true);
    full.view("title")->setText("Good Night");
    EXPECT_EQ(accessibilityText(full, english()), "Good Night.");
    full.view("other")->setHidden(false);
    EXPECT_EQ(accessibilityText(full, english()), "Old text. Good Night.");
}

}  // namespace
