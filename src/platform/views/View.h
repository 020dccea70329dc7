#pragma once

#include "platform/core/Colour.h"
#include "platform/graphics/Font.h"
#include "platform/core/Geometry.h"
#include "platform/graphics/TextStyle.h"
#include "platform/core/Value.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace velmorant::platform {

// A view's backing layer: corner radius and named sublayers (the styling code
// puts a gradient layer named "gradient" at the back).
class Layer {
public:
    Layer() = default;
    explicit Layer(std::string name) : name_(std::move(name)) {}
    // A copy owns copies of the sublayers: restyling it leaves the original as it was.
    Layer(const Layer& other);
    Layer& operator=(const Layer& other);
    Layer(Layer&&) = default;
    Layer& operator=(Layer&&) = default;

    const std::string& name() const { return name_; }
    void setName(std::string name) { name_ = std::move(name); }
    Rect frame() const { return frame_; }
    void setFrame(Rect frame) { frame_ = frame; }
    double cornerRadius() const { return cornerRadius_; }
    void setCornerRadius(double radius) { cornerRadius_ = radius; }
    // Gradient colours, top to bottom; empty for a plain layer.
    const std::vector<Colour>& colors() const { return colors_; }
    void setColors(std::vector<Colour> colors) { colors_ = std::move(colors); }

    const std::vector<std::shared_ptr<Layer>>& sublayers() const { return sublayers_; }
    void insertSublayer(std::shared_ptr<Layer> layer, std::size_t index);
    void replaceSublayer(const Layer& old, std::shared_ptr<Layer> replacement);
    void addSublayer(std::shared_ptr<Layer> layer) { sublayers_.push_back(std::move(layer)); }

private:
    std::string name_;
    Rect frame_;
    double cornerRadius_ = 0;
    std::vector<Colour> colors_;
    std::vector<std::shared_ptr<Layer>> sublayers_;
};

enum class ViewKind { Container, Label, ImageView, Indicator };

// Which parts of a view's frame take up a change in its parent's size, as the
// phone's autoresizing mask marks them; unmarked parts keep their length.
struct Autoresizing {
    bool flexibleLeftMargin = false;
    bool flexibleWidth = false;
    bool flexibleRightMargin = false;
    bool flexibleTopMargin = false;
    bool flexibleHeight = false;
    bool flexibleBottomMargin = false;
    bool operator==(const Autoresizing&) const = default;
};

// How a label fits a text that is too long: at most `numberOfLines` lines
// (0 for any number), one step down to `minimumScaleFactor` of the font size,
// then cut at the end with an ellipsis.
struct TextFitting {
    int numberOfLines = 1;
    double minimumScaleFactor = 1;
    bool operator==(const TextFitting&) const = default;
};

// One view of the snippet. The code sets only hidden, text, font, image,
// background colour and the layer's corner radius; the rest is fixed by the
// interface description.
class View {
public:
    View(std::string name, ViewKind kind) : name_(std::move(name)), kind_(kind) {}

    const std::string& name() const { return name_; }
    ViewKind kind() const { return kind_; }

    bool isHidden() const { return hidden_; }
    void setHidden(bool hidden) { hidden_ = hidden; }
    const std::optional<std::string>& text() const { return text_; }
    // None clears the label, as setting nil does.
    void setText(std::optional<std::string> text) { text_ = std::move(text); }
    const std::optional<Font>& font() const { return font_; }
    void setFont(Font font) { font_ = font; }
    const ImagePtr& image() const { return image_; }
    void setImage(ImagePtr image) { image_ = std::move(image); }
    const std::optional<Colour>& backgroundColor() const { return backgroundColor_; }
    void setBackgroundColor(std::optional<Colour> colour) { backgroundColor_ = std::move(colour); }
    Layer& layer() { return layer_; }
    const Layer& layer() const { return layer_; }

    // Layout and look as first loaded.
    Rect frame() const { return frame_; }
    void setFrame(Rect frame);
    Rect bounds() const { return {0, 0, frame_.width, frame_.height}; }
    const std::string& parent() const { return parent_; }
    void setParent(std::string parent) { parent_ = std::move(parent); }
    const std::optional<Colour>& textColor() const { return textColor_; }
    void setTextColor(std::optional<Colour> colour) { textColor_ = std::move(colour); }
    TextAlignment alignment() const { return alignment_; }
    void setAlignment(TextAlignment alignment) { alignment_ = alignment; }
    const Autoresizing& autoresizing() const { return autoresizing_; }
    void setAutoresizing(Autoresizing mask) { autoresizing_ = mask; }
    const TextFitting& textFitting() const { return textFitting_; }
    void setTextFitting(TextFitting fitting) { textFitting_ = fitting; }
    // The artwork an image view shows while the code has set no image.
    const std::string& imageName() const { return imageName_; }
    void setImageName(std::string name) { imageName_ = std::move(name); }
    // False for views a screen reader skips (decorative glyphs and pictures).
    bool isAccessibilityElement() const { return accessibilityElement_; }
    void setIsAccessibilityElement(bool element) { accessibilityElement_ = element; }
    // A heading opens a sentence that the values after it complete.
    bool isHeader() const { return header_; }
    void setIsHeader(bool header) { header_ = header; }

private:
    std::string name_;
    ViewKind kind_;
    bool hidden_ = false;
    std::optional<std::string> text_;
    std::optional<Font> font_;
    ImagePtr image_;
    std::optional<Colour> backgroundColor_;
    Layer layer_;
    Rect frame_;
    std::string parent_;
    std::optional<Colour> textColor_;
    TextAlignment alignment_ = TextAlignment::Left;
    Autoresizing autoresizing_;
    TextFitting textFitting_;
    std::string imageName_;
    bool accessibilityElement_ = true;
    bool header_ = false;
};

}  // namespace velmorant::platform
