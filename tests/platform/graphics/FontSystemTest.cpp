// Line heights are worked out from the one font that sets the text; they must
// be what Pango's own metrics for the whole font description say, to the unit.
#include "platform/graphics/FontSystem.h"

#include "platform/graphics/detail/FontLayout.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace velmorant {
namespace {

using platform::Font;
using platform::FontWeight;

TEST(FontSystem, LineHeightIsPangosAscentPlusDescentAtEverySizeAndWeight) {
    const platform::FontSystem fonts(std::filesystem::path(VELMORANT_TEST_RESOURCE_DIR) / "fonts" / "fonts.conf");
    const double sizes[] = {1, 8, 11, 12.5, 13, 15, 17, 20, 24, 34, 64, 200};
    const FontWeight weights[] = {FontWeight::UltraLight, FontWeight::Thin,     FontWeight::Light,
                                  FontWeight::Regular,    FontWeight::Medium,   FontWeight::Semibold,
                                  FontWeight::Bold,       FontWeight::Heavy,    FontWeight::Black};
    for (double size : sizes) {
        for (FontWeight weight : weights) {
            const Font font{size, weight};
            // What Pango says, asked through a layout of the same font at one pixel a point.
            platform::GObjectPtr<PangoLayout> layout = platform::layoutInPixels(fonts, font, 1);
            platform::FontMetricsPtr metrics(pango_context_get_metrics(
                pango_layout_get_context(layout.get()), pango_layout_get_font_description(layout.get()), nullptr));
            const double expected = static_cast<double>(pango_font_metrics_get_ascent(metrics.get()) +
                                                        pango_font_metrics_get_descent(metrics.get())) /
                                    PANGO_SCALE;
            EXPECT_EQ(fonts.lineHeight(font), expected) << size << " pt, " << platform::fontWeightName(weight);
        }
    }
    EXPECT_EQ(fonts.lineHeight({0, FontWeight::Regular}), 0);
}

}  // namespace
}  // namespace velmorant
