#pragma once

#include "platform/core/Colour.h"
#include "platform/core/Value.h"

#include <map>
#include <optional>

namespace velmorant::platform {

// The control states that can be styled separately.
enum class ControlState { Normal, Highlighted, Disabled, Selected };

// The parts of a segmented control that the palette styles.
struct SegmentedControl {
    // A title's text attributes; the palette only ever sets the colour.
    struct TextAttributes {
        std::optional<Colour> foregroundColor;
        bool operator==(const TextAttributes&) const = default;
    };

    std::map<ControlState, TextAttributes> titleTextAttributes;
    std::optional<Colour> selectedSegmentTintColor;

    void setTitleTextAttributes(TextAttributes attributes, ControlState state) {
        titleTextAttributes[state] = std::move(attributes);
    }
    // nullptr when the state has none of its own.
    const TextAttributes* titleTextAttributesForState(ControlState state) const {
        auto it = titleTextAttributes.find(state);
        return it == titleTextAttributes.end() ? nullptr : &it->second;
    }
};

// The parts of a stepper that the palette styles. An image is drawn in the
// tint colour once it has been set through the setter (`tinted`), which is why
// the palette sets the images it finds again.
struct Stepper {
    struct StateImage {
        ImagePtr image;
        bool tinted = false;
    };
    std::map<ControlState, StateImage> decrementImages;
    std::map<ControlState, StateImage> incrementImages;
    std::optional<Colour> tintColor;

    ImagePtr decrementImageForState(ControlState state) const { return imageIn(decrementImages, state); }
    ImagePtr incrementImageForState(ControlState state) const { return imageIn(incrementImages, state); }
    // Setting none goes back to the control's own artwork.
    void setDecrementImage(ImagePtr image, ControlState state) { put(decrementImages, std::move(image), state); }
    void setIncrementImage(ImagePtr image, ControlState state) { put(incrementImages, std::move(image), state); }

private:
    static ImagePtr imageIn(const std::map<ControlState, StateImage>& images, ControlState state) {
        auto it = images.find(state);
        return it == images.end() ? nullptr : it->second.image;
    }
    static void put(std::map<ControlState, StateImage>& images, ImagePtr image, ControlState state) {
        if (image) images[state] = {std::move(image), true};
        else images.erase(state);
    }
};

}  // namespace velmorant::platform
