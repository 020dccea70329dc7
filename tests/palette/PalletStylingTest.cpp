#include "PalletTesting.h"

#include "platform/graphics/Image.h"

namespace velmorant {
using palette::Pallet;

namespace {

using palette_test::expectHsb;
using palette_test::Hsb;
using palette_test::makePlatform;
using platform::Colour;
using platform::ControlState;
using platform::SegmentedControl;
using platform::Stepper;
using platform::View;

TEST(PalletStyling, GradientIsReplacedNotStacked) {
    const struct {
        bool dark, child;
        Hsb top, bottom;
    } cases[] = {
        {true, false, {193, 0.8, 0.08}, {193, 0.8, 0.05}}, {true, true, {193, 0.8, 0.08}, {193, 0.8, 0.05}},
        {false, false, {193, 0, 1}, {193, 0, 0.98}},       {false, true, {193, 0, 0.99}, {193, 0, 0.96}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message() << "dark " << c.dark << " child " << c.child);
        auto p = makePlatform(!c.dark);
        Pallet pallet(*p);
        View view("panel", platform::ViewKind::Container);
        view.setFrame({10, 20, 300, 120});
        auto content = std::make_shared<platform::Layer>("content");
        view.layer().addSublayer(content);
        for (bool dark : {!c.dark, c.dark}) {  // restyled after a theme change
            pallet.setDarkTheme(dark);
            c.child ? pallet.applyChildGradientToView(view) : pallet.applyGradientToView(view);
        }
        const auto& layers = view.layer().sublayers();
        ASSERT_EQ(layers.size(), 2u);
        EXPECT_EQ(layers[1], content);
        EXPECT_EQ(layers[0]->name(), "gradient");
        EXPECT_EQ(layers[0]->frame(), (platform::Rect{0, 0, 300, 120}));
        ASSERT_EQ(layers[0]->colors().size(), 2u);
        expectHsb(layers[0]->colors()[0], c.top);
        expectHsb(layers[0]->colors()[1], c.bottom);
    }
}

TEST(PalletStyling, ControlTints) {
    auto p = makePlatform(true);
    Pallet pallet(*p);
    SegmentedControl segmented;
    pallet.applyTintToSegmentedControl(segmented);
    for (auto state : {ControlState::Normal, ControlState::Selected})
        EXPECT_EQ(segmented.titleTextAttributes[state].foregroundColor, pallet.tintColour());
    EXPECT_EQ(segmented.selectedSegmentTintColor, pallet.darkModeSelectedTint());
    pallet.setDarkTheme(false);
    pallet.applyTintToSegmentedControl(segmented);
    EXPECT_EQ(segmented.selectedSegmentTintColor, Colour::whiteColor());
    EXPECT_EQ(segmented.titleTextAttributes[ControlState::Normal].foregroundColor, pallet.tintColour());

    Stepper stepper;
    auto minus = platform::Image::create({10, 10}, 1);
    stepper.decrementImages[ControlState::Normal] = {minus, false};
    pallet.applyTintToStepperControl(stepper);
    EXPECT_EQ(stepper.decrementImageForState(ControlState::Normal), minus);
    EXPECT_TRUE(stepper.decrementImages[ControlState::Normal].tinted);
    EXPECT_EQ(stepper.tintColor, pallet.tintColour());
}

template <void (Pallet::*Apply)(View&) const>
Colour title(const Pallet& pallet) {
    View view("title", platform::ViewKind::Label);
    (pallet.*Apply)(view);
    return view.backgroundColor().value_or(Colour::clearColor());
}
template <int Type>
Colour shade(const Pallet& pallet) { return pallet.innerShadeForType(Type); }
template <Colour (Pallet::*Op)() const>
Colour base(const Pallet& pallet) { return (pallet.*Op)(); }

TEST(PalletStyling, ThemeDependentColours) {
    const struct {
        Colour (*op)(const Pallet&);
        Hsb dark, light;
    } cases[] = {
        {title<&Pallet::applyTitleBackgroundToView>, {193, 0.8, 0.08}, {193, 0, 0.99}},
        {title<&Pallet::applyLowerTitleBackgroundToView>, {193, 0.8, 0.05}, {193, 0, 0.9}},
        {title<&Pallet::applyLowerTitleBackgroundToChildView>, {193, 0.8, 0.05}, {193, 0, 0.98}},
        {shade<0>, {193, 0.92, 0.175}, {193, 0, 1.0}},  // light is clamped
        {shade<5>, {193, 0.92, 0.05}, {193, 0, 0.9}},
        {shade<9>, {193, 0.92, 0}, {193, 0, 0.8}},
        {base<&Pallet::backgroundColour>, {193, 0.92, 0.08}, {193, 0, 0.98}},
        {base<&Pallet::colourForRespRateLineGood>, {128, 1, 0.9}, {128, 1, 0.75}},
        {base<&Pallet::colourForRestfulSleep>, {256, 0.75, 0.82}, {256, 0.75, 0.7}},
    };
    for (bool dark : {true, false}) {
        auto p = makePlatform(dark);
        Pallet pallet(*p);
        for (std::size_t i = 0; i < std::size(cases); ++i) {
            SCOPED_TRACE(::testing::Message() << "case " << i << " dark " << dark);
            expectHsb(cases[i].op(pallet), dark ? cases[i].dark : cases[i].light, 1e-7);
        }
        EXPECT_EQ(pallet.colourForSectionHeaderLine(), dark ? Colour::blackColor() : pallet.sectionLineColour());
        pallet.loadCustomHuesFromArray(platform::Array{10, 20, 30, 40, 50});
        expectHsb(pallet.colourForRespRateLineBad(), {10, 1, 1});
        EXPECT_NEAR(pallet.colourForBatteryChargePercent(1.2f).hue() * 360, 40, 1e-4);
    }
}

}  // namespace
}  // namespace velmorant
