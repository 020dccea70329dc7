#include "snippet_ui/GaugeFrame.h"

#include <cmath>
#include <numbers>

namespace velmorant::snippet_ui::gauge {

using platform::Colour;
using platform::LineCap;
using platform::Shadow;

namespace {

constexpr double kTwoPi = 2 * std::numbers::pi;
constexpr double kTrackWidth = 25;
constexpr double kSevenDayWidth = 12.5;
constexpr float kCentreToTextBase = 90;
// Tells the dials' layers from other pictures' in a shared cache.
constexpr double kLayerId = 1;

Colour rangeBlue(double alpha) { return Colour::colorWithHue(193.0 / 360, 0.92, 0.5, alpha); }

}  // namespace

double scaleAngle(double fraction) { return (0.8 * fraction - 0.65) * kTwoPi; }

std::array<Colour, 9> starBandColours(const Colour& lowEnd, const Colour& highEnd,
                                      const std::array<Colour, 6>& starBands) {
    return {lowEnd,       highEnd,      Colour::blackColor(), starBands[0], starBands[1],
            starBands[2], starBands[3], starBands[4],         starBands[5]};
}

float starFraction(float stars) {
    float fraction = stars / 7;
    if (fraction < 0) return 0;
    if (fraction > 1) return 1;
    return fraction;
}

TextPlacement valueTextPlacement(bool widgetMode) {
    return widgetMode ? TextPlacement{26, -4.3} : TextPlacement{24, -5.1};
}

GaugeFrame::GaugeFrame(float side, bool widgetMode, PictureTools& tools)
    : tools_(tools),
      canvas_({side, side}, tools.resources.scale(), tools.resources.fonts()),
      target_(&canvas_),
      widgetMode_(widgetMode),
      c_(side * 0.5f),
      radius_(c_ - 25),
      k_(side / 280),
      rangeWidth_(widgetMode ? 78.0f : 85 * k_) {}

void GaugeFrame::keep(const std::function<void()>& steps) {
    // The key: what the steps draw with, the shadow in force before them included.
    platform::LayerKey key;
    key.add(kLayerId).add(widgetMode_).add(shadow_.has_value());
    if (shadow_) key.add(shadow_->offset.width).add(shadow_->offset.height).add(shadow_->blur).add(shadow_->colour);
    const std::optional<Shadow> before = shadow_;
    key_ = &key;
    steps();
    key_ = nullptr;
    const std::optional<Shadow> after = shadow_;
    tools_.layers.draw(canvas_, key, tools_.resources.fonts(), [&](platform::Canvas& layer) {
        shadow_ = before;
        target_ = &layer;
        steps();
        target_ = &canvas_;
    });
    shadow_ = after;
}

bool GaugeFrame::describing(std::initializer_list<double> numbers, std::initializer_list<Colour> colours) {
    if (!key_) return false;
    for (double number : numbers) key_->add(number);
    for (const Colour& colour : colours) key_->add(colour);
    return true;
}

void GaugeFrame::drawDisc(const Colour& colour) {
    if (describing({1}, {colour})) return;
    target_->setShadow(shadow_);
    target_->setFillColour(colour);
    target_->addArc(centre(), radius_, 0, kTwoPi);
    target_->addLineTo(centre());
    target_->closePath();
    target_->fillPath();
}

void GaugeFrame::drawTrack(const Colour& colour) {
    if (describing({2}, {colour})) return;
    strokeArc(radius_ + 1, -std::numbers::pi / 2, kTwoPi, kTrackWidth, LineCap::Round, colour);
}

void GaugeFrame::drawScaleBand(const ScaleBand& band, const Colour& colour) {
    if (describing({3, static_cast<double>(band.cap), band.startAngle, band.endAngle}, {colour})) return;
    strokeArc(radius_ + 1, band.startAngle, band.endAngle, kTrackWidth, band.cap, colour);
}

void GaugeFrame::drawRangeBand(float fromFraction, float toFraction) {
    if (describing({4, fromFraction, toFraction})) return;
    strokeArc(c_ - rangeWidth_, scaleAngle(fromFraction), scaleAngle(toFraction), rangeWidth_, LineCap::Butt,
              rangeBlue(1));
}

void GaugeFrame::drawSevenDayRange(float fromFraction, float toFraction) {
    if (describing({5, fromFraction, toFraction})) return;
    strokeArc(radius_ + 1, scaleAngle(fromFraction), scaleAngle(toFraction), kSevenDayWidth, LineCap::Butt,
              rangeBlue(0.5));
}

void GaugeFrame::drawSevenDayMarker(double fromFraction, double toFraction) {
    if (describing({6, fromFraction, toFraction})) return;
    strokeArc(radius_ + 1, scaleAngle(fromFraction), scaleAngle(toFraction), kSevenDayWidth, LineCap::Butt,
              Colour::colorWithHue(193.0 / 360, 0.92, 0.1, 0.8));
}

void GaugeFrame::drawHub(const Colour& colour) {
    shadow_ = Shadow::soft(2);
    if (describing({7}, {colour})) return;
    target_->setShadow(shadow_);
    target_->setFillColour(colour);
    target_->addArc(centre(), 8, 0, kTwoPi);
    target_->addLineTo(centre());
    target_->closePath();
    target_->fillPath();
}

void GaugeFrame::drawIcon(std::string_view name, float offset, float drop, float side) {
    if (describing({8, offset, drop, side})) {
        key_->add(name);
        return;
    }
    target_->setShadow(shadow_);
    target_->drawImage(tools_.resources.imageNamed(name), {c_ - offset * k_, c_ + drop * k_, side * k_, side * k_});
}

void GaugeFrame::drawText(std::string_view text, TextPlacement placement, const Colour& colour) {
    platform::TextAttributes attributes{
        platform::Font::systemFontOfSize(placement.fontSize, platform::FontWeight::Bold), colour, Colour::clearColor()};
    platform::Size measured = target_->sizeWithAttributes(text, attributes);
    target_->setNoShadow();
    target_->drawAtPoint(text,
                         {c_ - 0.5 * measured.width, (c_ + kCentreToTextBase) + measured.height * placement.lineOffset},
                         attributes);
}

void GaugeFrame::drawNeedle(double fraction) {
    const double angle = scaleAngle(fraction);
    if (!std::isfinite(angle)) return;
    const float length = static_cast<float>(0.95 * radius_);
    target_->setShadow(Shadow{{0, 0}, 15, Colour::blackColor()});
    target_->setLineCap(LineCap::Round);
    target_->setLineWidth(6);
    target_->setStrokeColour(Colour::whiteColor());
    target_->moveTo(centre());
    target_->addLineTo({c_ + length * std::cos(angle), c_ + length * std::sin(angle)});
    target_->strokePath();
}

platform::ImagePtr GaugeFrame::finish() { return canvas_.makeImage(); }

void GaugeFrame::strokeArc(double radius, double startAngle, double endAngle, double width, LineCap cap,
                           const Colour& colour) {
    // A value that is not a number has no place on the dial; its arc is left out.
    if (!std::isfinite(startAngle) || !std::isfinite(endAngle)) return;
    target_->strokeArc(centre(), radius, startAngle, endAngle, {width, cap, colour, shadow_});
}

platform::ImagePtr drawStarDial(const StarDial& dial, PictureTools& tools) {
    GaugeFrame gauge(dial.side, dial.widgetMode, tools);
    // The dial, the hub and the icon are the same for every reading.
    gauge.keep([&] {
        gauge.drawDisc(dial.disc);
        gauge.drawTrack(dial.disc);
        gauge.drawScaleBands(kStarBands, dial.bands);
        gauge.drawHub(dial.hub);
        if (!dial.icon.empty()) gauge.drawIcon(dial.icon, dial.iconPlace[0], dial.iconPlace[1], dial.iconPlace[2]);
    });
    if (dial.label) gauge.drawText(*dial.label, dial.placement, dial.tint);
    gauge.drawNeedle(dial.needle);
    return gauge.finish();
}

}  // namespace velmorant::snippet_ui::gauge
