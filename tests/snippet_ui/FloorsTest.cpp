// Each drawing's floors: a figure at or below its floor draws exactly as the
// floor does, and one just above it draws differently. A floor moved either
// way by more than the step breaks one of the two.
#include "SnippetUiTestSupport.h"

#include "platform/graphics/detail/ImageSurface.h"

#include <cstring>
#include <functional>
#include <limits>

namespace velmorant::testing {
using snippet_ui::SleepMetricsUI;

namespace {

using platform::ImagePtr;

// Whether two pictures have the same size and the same bytes in every pixel.
bool samePixels(const platform::Image& a, const platform::Image& b) {
    if (a.pixelWidth() != b.pixelWidth() || a.pixelHeight() != b.pixelHeight()) return false;
    cairo_surface_flush(cairoSurface(a));
    cairo_surface_flush(cairoSurface(b));
    const int stride = cairo_image_surface_get_stride(cairoSurface(a));
    if (stride != cairo_image_surface_get_stride(cairoSurface(b))) return false;
    const unsigned char* pa = cairo_image_surface_get_data(cairoSurface(a));
    const unsigned char* pb = cairo_image_surface_get_data(cairoSurface(b));
    for (int y = 0; y < a.pixelHeight(); ++y)
        if (std::memcmp(pa + std::size_t(y) * stride, pb + std::size_t(y) * stride, std::size_t(a.pixelWidth()) * 4))
            return false;
    return true;
}

using Draw = std::function<ImagePtr(SleepMetricsUI&, float figure)>;

struct Floor {
    const char* name;
    Draw draw;
    float floor;
    float step;  // the smallest change of the figure the picture is sure to show
};

// The other figures of a drawing sit well clear of their own floors.
Draw sleepRing(int ring, float side) {
    return [=](SleepMetricsUI& ui, float f) {
        float v[4] = {0.8f, 0.6f, 0.45f, 0.3f};
        v[ring] = f;
        return ui.drawSleepRingsWithSize(side, v[0], v[1], v[2], v[3], 0.856f, false);
    };
}

std::vector<Floor> floors() {
    std::vector<Floor> rows;
    // The sleep rings outer to inner, in colour and in the white of the accessory side.
    const float ringFloors[] = {0.012f, 0.015f, 0.02f, 0.025f};
    for (float side : {280.0f, 260.0f})
        for (int ring = 0; ring < 4; ++ring)
            rows.push_back({side == 280 ? "sleep rings" : "accessory sleep rings", sleepRing(ring, side),
                            ringFloors[ring], 0.001f});
    rows.push_back({"recharge sleep", [](SleepMetricsUI& ui, float f) { return ui.drawTheRechargeWithSize(280, f, 0.6f); },
                    0.012f, 0.001f});
    rows.push_back({"recharge bank", [](SleepMetricsUI& ui, float f) { return ui.drawTheRechargeWithSize(280, 0.8f, f); },
                    0.015f, 0.001f});
    rows.push_back({"readiness", [](SleepMetricsUI& ui, float f) { return ui.drawReadiRingsWithSize(280, f); }, 0.01f,
                    0.003f});
    return rows;
}

class FloorsTest : public SnippetUiTest {};

TEST_F(FloorsTest, AtOrBelowTheFloorDrawsTheFloorJustAboveDrawsMore) {
    for (const Floor& row : floors()) {
        SCOPED_TRACE(::testing::Message() << row.name << ", floor " << row.floor);
        const ImagePtr atFloor = row.draw(*ui, row.floor);
        ASSERT_TRUE(atFloor);
        for (float below : {row.floor - row.step, 0.0f, -1.0f, -std::numeric_limits<float>::infinity()})
            EXPECT_TRUE(samePixels(*row.draw(*ui, below), *atFloor)) << below << " draws unlike the floor";
        EXPECT_FALSE(samePixels(*row.draw(*ui, row.floor + row.step), *atFloor))
            << row.floor + row.step << " draws as the floor";
    }
}

}  // namespace
}  // namespace velmorant::testing
