#include "review/detail/RecordJson.h"
#include "review/Review.h"

#include <gtest/gtest.h>

namespace review = velmorant::review;
using json = nlohmann::json;

namespace {

std::vector<std::string> words(const std::vector<review::FieldChange>& changes) {
    std::vector<std::string> out;
    for (const auto& c : changes) out.push_back(c.words());
    return out;
}

json card(json views, double height = 420) {
    return {{"success", true}, {"size", {{"width", 390}, {"height", height}}}, {"views", views}, {"accessibility", "said"}};
}

TEST(RecordCompare, EachKindOfFieldInWords) {
    const json red = {{"colour", {{"h", 0.0}, {"s", 1.0}, {"b", 1.0}, {"a", 1.0}}}};
    const json green = {{"colour", {{"h", 1.0 / 3}, {"s", 1.0}, {"b", 0.5}, {"a", 0.5}}}};
    struct Case {
        const char* what;
        json before, after;
        std::vector<std::string> said;
    };
    const Case cases[] = {
        {"text", card({{"a", {{"text", "7h 36m"}}}}), card({{"a", {{"text", "7h 40m"}}}}), {"a text \"7h 36m\" → \"7h 40m\""}},
        {"colour as RGB with its opacity", card({{"dot", {{"backgroundColor", red}}}}),
         card({{"dot", {{"backgroundColor", green}}}}), {"dot colour #FF0000 → #008000 at 50 %"}},
        {"font", card({{"a", {{"font", {{"font", {{"size", 17}, {"weight", "semibold"}}}}}}}}),
         card({{"a", {{"font", {{"font", {{"size", 15}, {"weight", "regular"}}}}}}}}), {"a font 17 pt semibold → 15 pt regular"}},
        {"hidden and image", card({{"i", {{"hidden", false}, {"image", {{"image", {{"width", 40}, {"height", 40}, {"name", "SpO2Icon"}}}}}}}}),
         card({{"i", {{"hidden", true}, {"image", nullptr}}}}), {"i hidden no → yes", "i image SpO2Icon 40 × 40 pt → none"}},
        {"card frame", card({}, 420), card({}, 180), {"card frame 390 × 420 pt → 390 × 180 pt"}},
        {"a view only one side has", card({{"new", {{"text", "x"}}}}), card({}), {"new text \"x\" → none"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        EXPECT_EQ(words(review::compareViewRecords(c.before, c.after)), c.said);
        EXPECT_TRUE(review::compareViewRecords(c.after, c.after).empty());
    }
}

TEST(RecordCompare, MirrorsKeyByKeyInBothTables) {
    json before = {{"order", {"a"}}, {"night", {{"Swift-x", "95%"}, {"Swift-gone", "1"}}}, {"empty", {{"Swift-x", "--"}}}};
    json after = {{"order", {"a"}}, {"night", {{"Swift-x", "97%"}}}, {"empty", {{"Swift-x", "--"}, {"Swift-new", 2}}}};
    EXPECT_EQ(words(review::compareMirrors(before, after)),
              (std::vector<std::string>{"with the night's results, Swift-gone value \"1\" → none",
                                        "with the night's results, Swift-x value \"95%\" → \"97%\"",
                                        "with an empty store, Swift-new value none → 2"}));
}

// What a reviewer and CI are told for a mix of items.
TEST(ReviewVerdict, ExitStatusAndSummary) {
    using S = review::ItemStatus;
    struct Case {
        std::vector<S> statuses;
        std::vector<std::string> differingInputs;
        int exit;
        const char* summary;
    };
    const Case cases[] = {
        {{S::Unchanged, S::AntiAliasingOnly}, {}, 0, "review: 0 changed, 0 added, 0 removed, 1 unchanged, 1 anti-aliasing only"},
        {{S::WithinAllowance}, {"program"}, 0, "review: 0 changed, 0 added, 0 removed, 0 unchanged, 1 within the allowed pixels"},
        {{S::Changed, S::Added, S::Unchanged}, {"store", "fonts"}, 1,
         "review: 1 changed, 1 added, 0 removed, 1 unchanged; inputs differ: store, fonts"},
        {{S::Removed}, {}, 3, "review: not reproducible (same inputs, different results): 0 changed, 0 added, 1 removed, 0 unchanged"},
    };
    for (const Case& c : cases) {
        review::Review r;
        for (S s : c.statuses) r.items.push_back({.status = s});
        r.differingInputs = c.differingInputs;
        EXPECT_EQ(r.exitStatus(), c.exit) << c.summary;
        EXPECT_EQ(r.summary(), c.summary);
    }
}

}  // namespace
