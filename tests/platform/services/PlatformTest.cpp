#include "platform/graphics/detail/FontLayout.h"
#include "platform/graphics/Image.h"
#include "platform/services/Platform.h"

#include "TempDir.h"

#include <gtest/gtest.h>

#include <fstream>
#include <stdexcept>

using namespace velmorant::platform;

namespace {

PlatformOptions options(std::string zone = "Europe/London", std::string locale = "en_GB") {
    PlatformOptions o;
    o.timeZoneId = std::move(zone);
    o.localeId = std::move(locale);
    o.now = Date::fromUnix(1709676600);
    o.resourceDir = VELMORANT_TEST_RESOURCE_DIR;
    return o;
}

TEST(Platform, RefusesUnknownZonesAndLocalesByName) {
    EXPECT_THROW(Platform(options("Mars/Olympus")), std::invalid_argument);
    EXPECT_THROW(Platform(options("UTC", "zz_ZZ")), std::invalid_argument);
    Platform ok(options());
    EXPECT_EQ(ok.timeZoneId(), "Europe/London");
    EXPECT_EQ(ok.preferredLanguages(), std::vector<std::string>{"en-GB"});
    EXPECT_EQ(ok.now(), Date::fromUnix(1709676600));
}

TEST(Platform, InMemorySuitesAreSharedByName) {
    Platform platform(options());
    platform.suiteNamed(kAppGroupSuite)->setObject(Value("1"), "Swift-HasData");
    EXPECT_EQ(*platform.suiteNamed(kAppGroupSuite)->objectForKey("Swift-HasData").string(), "1");
    EXPECT_TRUE(platform.standardUserDefaults()->objectForKey("Swift-HasData").isNone());
}

TEST(Platform, FileStoresLiveInThePreferencesFolder) {
    TempDir dir;
    PlatformOptions o = options();
    o.preferencesDir = dir.path();
    Platform platform(std::move(o));
    platform.standardUserDefaults()->setObject(Value(true), "darkTheme6");
    platform.suiteNamed(kAppGroupSuite)->setObject(Value(1), "x");
    EXPECT_TRUE(std::filesystem::exists(dir.path() / "standard.plist"));
    EXPECT_TRUE(std::filesystem::exists(dir.path() / "group.brumelkai.Velmorant.plist"));
}

TEST(Platform, LooksUpTextsOfTheLocaleLanguage) {
    Platform german(options("Europe/Berlin", "de_DE"));
    EXPECT_EQ(german.localizedString("Good Night"), "Gute Nacht");
    EXPECT_EQ(german.localizedString("No such text"), "No such text");
    Platform english(options());
    EXPECT_EQ(english.localizedString("Good Night"), "Good Night");
}

TEST(Platform, NamedImagesAreDrawnAtTheScreenScale) {
    PlatformOptions o = options();
    o.scale = 2;
    Platform platform(std::move(o));
    auto lamp = platform.imageNamed("LightsOn");
    ASSERT_TRUE(lamp);
    EXPECT_EQ(lamp->size(), (Size{120, 120}));
    EXPECT_EQ(lamp->pixelWidth(), 240);
    EXPECT_EQ(lamp->name(), "LightsOn");
    // The phone's file name resolves to the same artwork.
    ASSERT_TRUE(platform.imageNamed("RechargeBkg.png"));
    EXPECT_EQ(platform.imageNamed("NoSuchArtwork"), nullptr);
}

TEST(Platform, NamedImagesAreSharedWhileHeldAndDrawnAgainAfterwards) {
    Platform platform(options());
    std::weak_ptr<const Image> first;
    Rgba centre;
    {
        ImagePtr held = platform.imageNamed("LightsOn");
        ASSERT_TRUE(held);
        EXPECT_EQ(platform.imageNamed("LightsOn"), held);
        first = held;
        centre = held->pixelAt({60, 60});
    }
    // Let go with its last holder; asked for again, the same picture comes back.
    EXPECT_TRUE(first.expired());
    ImagePtr again = platform.imageNamed("LightsOn");
    ASSERT_TRUE(again);
    EXPECT_EQ(again->size(), (Size{120, 120}));
    EXPECT_EQ(again->pixelAt({60, 60}), centre);
}

TEST(Platform, PinnedFontsLayOutText) {
    Platform platform(options());
    GObjectPtr<PangoLayout> layout = layoutInPixels(platform.fonts(), Font::boldSystemFontOfSize(20), 1);
    pango_layout_set_text(layout.get(), "O₂ ⑦ ⭤ 💤", -1);
    EXPECT_EQ(pango_layout_get_unknown_glyphs_count(layout.get()), 0);
    auto* first = static_cast<PangoGlyphItem*>(pango_layout_get_line_readonly(layout.get(), 0)->runs->data);
    ASSERT_NE(first, nullptr);
    FontDescriptionPtr used(pango_font_describe(first->item->analysis.font));
    EXPECT_STREQ(pango_font_description_get_family(used.get()), "Inter");
}

}  // namespace
