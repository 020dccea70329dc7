#pragma once

#include "palette/Pallet.h"
#include "platform/services/Platform.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>

namespace velmorant::palette_test {

// A platform with in-memory stores; the theme is stored before a palette is made.
inline std::unique_ptr<platform::Platform> makePlatform(std::optional<bool> darkTheme = true) {
    auto p = std::make_unique<platform::Platform>();
    if (darkTheme) p->standardUserDefaults()->setObject(platform::Value(*darkTheme), "darkTheme6");
    return p;
}

struct Hsb {
    double hueDegrees, saturation, brightness;
};

inline void expectHsb(const platform::Colour& c, Hsb want, double tolerance = 1e-5) {
    EXPECT_NEAR(c.hue() * 360.0, want.hueDegrees, tolerance * 360.0);
    EXPECT_NEAR(c.saturation(), want.saturation, tolerance);
    EXPECT_NEAR(c.brightness(), want.brightness, tolerance);
    EXPECT_EQ(c.alpha(), 1.0);
}

}  // namespace velmorant::palette_test
