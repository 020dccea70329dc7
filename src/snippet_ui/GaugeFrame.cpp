#include "snippet_ui/GaugeFrame.h"

#include <cmath>
#include <numbers>

namespace velmorant::gauge {

using platform::Colour;
using platform::LineCap;

namespace {

constexpr double kTwoPi = 2 * std::numbers::pi;
constexpr double kTrackWidth = 25;
constexpr double kSevenDayWidth = 12.5;
constexpr float kCentreToTextBase = 90;

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

GaugeFrame::GaugeFrame(float side, bool widgetMode, platform::Platform& platform)
    : canvas_({side, side}, platform.screenScale(), platform.fonts()),
      c_(side * 0.5f),
      radius_(c_ - 25),
      k_(side / 280),
      rangeWidth_(widgetMode ? 78.0f : 85 * k_) {}

void GaugeFrame::drawDisc(const Colour& colour) {
    canvas_.setFillColour(colour);
    canvas_.addArc(centre(), radius_, 0, kTwoPi);
    canvas_.addLineTo(centre());
    canvas_.closePath();
    canvas_.fillPath();
}

void GaugeFrame::drawTrack(const Colour& colour) {
    canvas_.setLineCap(LineCap::Round);
    canvas_.setLineWidth(kTrackWidth);
    canvas_.setStrokeColour(colour);
    strokeArc(radius_ + 1, -std::numbers::pi / 2, kTwoPi);
}

void GaugeFrame::drawScaleBand(const ScaleBand& band, const Colour& colour) {
    canvas_.setLineCap(band.cap);
    canvas_.setLineWidth(kTrackWidth);
    canvas_.setStrokeColour(colour);
    strokeArc(radius_ + 1, band.startAngle, band.endAngle);
}

void GaugeFrame::drawRangeBand(float fromFraction, float toFraction) {
    canvas_.setLineCap(LineCap::Butt);
    canvas_.setLineWidth(rangeWidth_);
    canvas_.setStrokeColour(rangeBlue(1));
    strokeArc(c_ - rangeWidth_, scaleAngle(fromFraction), scaleAngle(toFraction));
}

void GaugeFrame::drawSevenDayRange(float fromFraction, float toFraction) {
    canvas_.setLineCap(LineCap::Butt);
    canvas_.setLineWidth(kSevenDayWidth);
    canvas_.setStrokeColour(rangeBlue(0.5));
    strokeArc(radius_ + 1, scaleAngle(fromFraction), scaleAngle(toFraction));
}

void GaugeFrame::drawSevenDayMarker(double fromFraction, double toFraction) {
    canvas_.setLineCap(LineCap::Butt);
    canvas_.setLineWidth(kSevenDayWidth);
    canvas_.setStrokeColour(Colour::colorWithHue(193.0 / 360, 0.92, 0.1, 0.8));
    strokeArc(radius_ + 1, scaleAngle(fromFraction), scaleAngle(toFraction));
}

void GaugeFrame::drawHub(const Colour& colour) {
    canvas_.setShadow({0, 0}, 2);
    canvas_.setFillColour(colour);
    canvas_.addArc(centre(), 8, 0, kTwoPi);
    canvas_.addLineTo(centre());
    canvas_.closePath();
    canvas_.fillPath();
}

void GaugeFrame::drawIcon(const platform::ImagePtr& icon, float offset, float drop, float side) {
    auto saved = canvas_.saveGState();
    canvas_.drawImage(icon, {c_ - offset * k_, c_ + drop * k_, side * k_, side * k_});
}

void GaugeFrame::drawText(std::string_view text, TextPlacement placement, const Colour& colour) {
    auto saved = canvas_.saveGState();
    platform::TextAttributes attributes{
        platform::Font::systemFontOfSize(placement.fontSize, platform::FontWeight::Bold), colour, Colour::clearColor()};
    platform::Size measured = canvas_.sizeWithAttributes(text, attributes);
    canvas_.setNoShadow();
    canvas_.drawAtPoint(text,
                        {c_ - 0.5 * measured.width, (c_ + kCentreToTextBase) + measured.height * placement.lineOffset},
                        attributes);
}

void GaugeFrame::drawNeedle(double fraction) {
    canvas_.setLineCap(LineCap::Round);
    canvas_.setShadowWithColour({0, 0}, 15, Colour::blackColor());
    canvas_.setLineWidth(6);
    canvas_.setStrokeColour(Colour::whiteColor());
    canvas_.setFillColour(Colour::whiteColor());
    const float length = static_cast<float>(0.95 * radius_);
    const double angle = scaleAngle(fraction);
    if (!std::isfinite(angle)) return;
    canvas_.moveTo(centre());
    canvas_.addLineTo({c_ + length * std::cos(angle), c_ + length * std::sin(angle)});
    canvas_.strokePath();
}

platform::ImagePtr GaugeFrame::finish() { return canvas_.makeImage(); }

void GaugeFrame::strokeArc(double radius, double startAngle, double endAngle) {
    // A value that is not a number has no place on the dial; its arc is left out.
    if (!std::isfinite(startAngle) || !std::isfinite(endAngle)) return;
    canvas_.addArc(centre(), radius, startAngle, endAngle);
    canvas_.strokePath();
}

}  // namespace velmorant::gauge
