#include "palette/Pallet.h"

#include <memory>

namespace velmorant::palette {

using platform::Colour;
using platform::ControlState;
using platform::SegmentedControl;
using platform::Stepper;

namespace {
constexpr const char* kGradientLayerName = "gradient";
}  // namespace

void Pallet::applyGradient(platform::View& view, const Colour& lightTop, const Colour& lightBottom) const {
    auto gradient = std::make_shared<platform::Layer>(kGradientLayerName);
    gradient->setFrame(view.bounds());
    if (darkTheme_) gradient->setColors({hsb(193, 0.8, 0.08), hsb(193, 0.8, 0.05)});
    else gradient->setColors({lightTop, lightBottom});

    // Styling runs again on every theme change: swap our own gradient rather
    // than piling a new one behind it.
    platform::Layer& layer = view.layer();
    const auto& sublayers = layer.sublayers();
    if (!sublayers.empty() && sublayers.front() && sublayers.front()->name() == kGradientLayerName) {
        layer.replaceSublayer(*sublayers.front(), std::move(gradient));
    } else {
        layer.insertSublayer(std::move(gradient), 0);
    }
}

void Pallet::applyGradientToView(platform::View& view) const {
    applyGradient(view, hsb(193, 0, 1), hsb(193, 0, 0.98));
}

void Pallet::applyChildGradientToView(platform::View& view) const {
    applyGradient(view, hsb(193, 0, 0.99), hsb(193, 0, 0.96));
}

void Pallet::applyTitleBackgroundToView(platform::View& view) const {
    view.setBackgroundColor(darkTheme_ ? hsb(193, 0.8, 0.08) : hsb(193, 0, 0.99));
}

void Pallet::applyLowerTitleBackgroundToView(platform::View& view) const {
    view.setBackgroundColor(darkTheme_ ? hsb(193, 0.8, 0.05) : hsb(193, 0, 0.9));
}

void Pallet::applyLowerTitleBackgroundToChildView(platform::View& view) const {
    view.setBackgroundColor(darkTheme_ ? hsb(193, 0.8, 0.05) : hsb(193, 0, 0.98));
}

void Pallet::applyTintToSegmentedControl(SegmentedControl& control) const {
    const SegmentedControl::TextAttributes titles{tintColour()};
    control.setTitleTextAttributes(titles, ControlState::Selected);
    control.setTitleTextAttributes(titles, ControlState::Normal);
    control.selectedSegmentTintColor = darkTheme_ ? darkModeSelectedTint() : Colour::whiteColor();
}

void Pallet::applyTintToStepperControl(Stepper& stepper) const {
    // Setting the images again is what makes them follow the tint.
    stepper.setDecrementImage(stepper.decrementImageForState(ControlState::Normal), ControlState::Normal);
    stepper.setIncrementImage(stepper.incrementImageForState(ControlState::Normal), ControlState::Normal);
    stepper.tintColor = tintColour();
}

Colour Pallet::innerShadeForType(float type) const {
    float step = 0.125f - 0.025f * type;
    return hsb(193, darkTheme_ ? 0.92 : 0.0, (darkTheme_ ? 0.05 : 0.9) + step);
}

}  // namespace velmorant::palette
