#include "PalletTesting.h"

#include <gmock/gmock.h>

namespace velmorant {
using palette::Pallet;

namespace {

using palette_test::makePlatform;
using ::testing::ElementsAre;
using platform::Value;

// Stored theme (none: a fresh install starts dark), then dark and temporary after setDarkTheme.
TEST(PalletTheme, SwitchingAndRestoring) {
    const struct {
        std::optional<bool> stored;
        bool set, dark, temporary;  // any call while light marks the theme temporary
    } cases[] = {{std::nullopt, false, false, false}, {false, true, true, true},
                 {false, false, false, true},         {true, true, true, false}};
    for (const auto& c : cases) {
        auto p = makePlatform(c.stored);
        Pallet pallet(*p);
        EXPECT_EQ(pallet.isDarkTheme(), c.stored.value_or(true));
        EXPECT_EQ(p->standardUserDefaults()->objectForKey("darkTheme6"), Value(c.stored.value_or(true)));
        pallet.setDarkTheme(c.set);
        EXPECT_EQ(pallet.isDarkTheme(), c.dark) << c.set;
        EXPECT_EQ(pallet.isTemporaryDark(), c.temporary) << c.set;
        pallet.restoreTheme();
        EXPECT_EQ(pallet.isDarkTheme(), c.stored.value_or(true));
        EXPECT_FALSE(pallet.isTemporaryDark());
    }
}

TEST(PalletHues, OwnPreferenceThenAppGroupThenDefault) {
    const std::optional<Value> none;
    const struct {
        int n;
        std::optional<Value> own, shared;
        float want;
    } cases[] = {
        {3, none, Value(50), 50}, {3, none, none, 44},          {3, Value(12.5), Value(50), 12.5f},
        {1, none, none, 357},     {1, Value("300"), none, 300}, {5, Value(0), Value(99), 0},  // 0 is a hue
        {2, none, none, 34},      {4, none, none, 128},         {5, none, none, 207},
    };
    for (const auto& c : cases) {
        auto p = makePlatform();
        const std::string key = "Hue" + std::to_string(c.n);
        if (c.own) p->standardUserDefaults()->setObject(*c.own, key);
        if (c.shared) p->suiteNamed(platform::kAppGroupSuite)->setObject(*c.shared, key);
        Pallet pallet(*p);
        const float hues[] = {pallet.hue1(), pallet.hue2(), pallet.hue3(), pallet.hue4(), pallet.hue5()};
        EXPECT_FLOAT_EQ(hues[c.n - 1], c.want) << key;
    }
}

TEST(PalletHues, FromArrayNeedsFiveEntries) {
    auto p = makePlatform();
    Pallet pallet(*p);
    pallet.loadCustomHuesFromArray(platform::Array{1, 2, 3, 4});
    pallet.loadCustomHuesFromArray(std::nullopt);
    EXPECT_FLOAT_EQ(pallet.hue1(), 357);
    pallet.loadCustomHuesFromArray(platform::Array{1, 2.5, 3, 4, "5", 6});
    EXPECT_THAT((std::vector{pallet.hue1(), pallet.hue2(), pallet.hue3(), pallet.hue4(), pallet.hue5()}),
                ElementsAre(1, 2.5f, 3, 4, 5));
}

TEST(PalletPrefs, ThresholdsAreZeroUntilLoadedThenStoredOrDefault) {
    auto p = makePlatform();
    p->standardUserDefaults()->setObject(Value(170), "maxHeartRate");
    p->standardUserDefaults()->setObject(Value(-3.5), "restingLow");  // taken as it is
    p->standardUserDefaults()->setObject(Value(true), "miles");
    Pallet pallet(*p);
    EXPECT_EQ(pallet.maxHeartRate(), 0);
    pallet.loadPrefs();
    EXPECT_THAT(
        (std::vector{pallet.maxHeartRate(), pallet.restingLow(), pallet.restingVeryLow(), pallet.workoutPercent5()}),
        ElementsAre(170, -3.5f, 40, 50));
    EXPECT_TRUE(pallet.miles());
}

}  // namespace
}  // namespace velmorant
