#pragma once

#include "snippet_ui/DrawLater.h"
#include "platform/graphics/LayerCache.h"

#include "platform/graphics/Canvas.h"
#include "platform/core/Colour.h"
#include "platform/core/Geometry.h"
#include "platform/core/Value.h"

#include <array>
#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace velmorant::snippet_ui::gauge {

// Where a dial value v in 0...1 points: the scale covers 0.8 of a turn from
// down-left (0) over the top (0.5) to down-right (1), leaving the bottom open.
// Not clamped; each gauge clamps its own value.
double scaleAngle(double fraction);

// One coloured arc of a dial's scale, at fixed angles.
struct ScaleBand {
    platform::LineCap cap;
    double startAngle;
    double endAngle;
};

// The blood-oxygen scale, 80 to 100 %: two round-capped ends, a black
// underlay, then the three rating bands whose gaps leave black separators.
inline constexpr std::array<ScaleBand, 6> kSpO2Bands{{
    {platform::LineCap::Round, -4.084070449666731, -1.5707963267948966},
    {platform::LineCap::Round, 0.6911503837897544, 0.942477796076938},
    {platform::LineCap::Butt, -2.8525661054910825, 0.6911503837897544},
    {platform::LineCap::Butt, -2.827433388230814, -1.595929044055165},
    {platform::LineCap::Butt, -1.5707963267948966, -0.3392919826192478},
    {platform::LineCap::Butt, -0.31415926535897926, 0.942477796076938},
}};

// The seven-star scale shared by the star-rated dials: two round-capped ends,
// a black underlay, then one band per star from 1 to 7.
inline constexpr std::array<ScaleBand, 9> kStarBands{{
    {platform::LineCap::Round, -4.084070449666731, -1.5707963267948966},
    {platform::LineCap::Round, 0.6911503837897544, 0.942477796076938},
    {platform::LineCap::Butt, -3.380353692266562, 0.6911503837897544},
    {platform::LineCap::Butt, -3.3659920967456047, -2.6622753393454346},
    {platform::LineCap::Butt, -2.647913743824478, -1.9441970613257138},
    {platform::LineCap::Butt, -1.929835465804757, -1.2261186335031815},
    {platform::LineCap::Butt, -1.211757037982225, -0.5080403554834605},
    {platform::LineCap::Butt, -0.4936787599625038, 0.21003792253626044},
    {platform::LineCap::Butt, 0.2243995180572171, 0.942477796076938},
}};

// The star-scale bands' colours: the round low and high ends, the black
// underlay, then the six star bands from 1 star on.
std::array<platform::Colour, 9> starBandColours(const platform::Colour& lowEnd, const platform::Colour& highEnd,
                                                const std::array<platform::Colour, 6>& starBands);

// A star value as a dial fraction, held to the scale.
float starFraction(float stars);

// Size and vertical place of a dial's value text: font size and how many
// line heights it stands above the point 90 below the centre.
struct TextPlacement {
    float fontSize;
    double lineOffset;
};

// The placement most dials use: larger in a widget, where the dial is smaller.
TextPlacement valueTextPlacement(bool widgetMode);

// A star-rated dial as shown (readiness, bedtime consistency, wrist
// temperature), every input a copy: disc, track, star bands and hub, an icon
// below the hub, the label and the needle.
struct StarDial {
    float side;
    bool widgetMode;
    platform::Colour disc;
    platform::Colour hub;
    platform::Colour tint;
    std::array<platform::Colour, 9> bands;
    // No icon when empty; its place as `GaugeFrame::drawIcon` takes it.
    std::string icon;
    std::array<float, 3> iconPlace{23, 25, 46};
    std::optional<std::string> label;
    TextPlacement placement;
    double needle;
};

// One dial picture being drawn: its canvas, the geometry derived from the
// side, and the frame's steps (disc, track, scale, hub, icon, text, needle)
// and overlays, each one drawing call.
class GaugeFrame {
public:
    GaugeFrame(float side, bool widgetMode, PictureTools& tools);

    // Runs steps that do not depend on the reading (the dial, the hub, an
    // icon) once per size, scale and their arguments, and afterwards draws
    // what they drew from a kept layer.
    void keep(const std::function<void()>& steps);

    // The dark disc.
    void drawDisc(const platform::Colour& colour);
    // The round track behind the scale.
    void drawTrack(const platform::Colour& colour);
    // The scale bands in order, each over the ones before it.
    template <std::size_t N>
    void drawScaleBands(const std::array<ScaleBand, N>& bands, const std::array<platform::Colour, N>& colours) {
        for (std::size_t i = 0; i < N; ++i) drawScaleBand(bands[i], colours[i]);
    }
    // The 24-hour range: a wide band inside the track between two fractions.
    void drawRangeBand(float fromFraction, float toFraction);
    // The seven-day range: a thin translucent band on the track.
    void drawSevenDayRange(float fromFraction, float toFraction);
    // The seven-day average: a short dark mark on the track between two fractions.
    void drawSevenDayMarker(double fromFraction, double toFraction);
    // The hub; its soft shadow stays in force for what follows.
    void drawHub(const platform::Colour& colour);
    // The named icon below the hub: `offset` left of and `drop` below the centre, `side` wide, all times k.
    void drawIcon(std::string_view name, float offset = 23, float drop = 25, float side = 46);
    // The value text centred above the hub, without shadow.
    void drawText(std::string_view text, TextPlacement placement, const platform::Colour& colour);
    // The white needle at a dial fraction; nothing when the fraction is not a number.
    void drawNeedle(double fraction);
    // Ends the drawing: the picture.
    platform::ImagePtr finish();

private:
    void drawScaleBand(const ScaleBand& band, const platform::Colour& colour);
    // An arc round the centre, under the shadow in force.
    void strokeArc(double radius, double startAngle, double endAngle, double width, platform::LineCap cap,
                   const platform::Colour& colour);
    platform::Point centre() const { return {c_, c_}; }
    // While `keep` works out its key, steps add their arguments to it instead of drawing.
    bool describing(std::initializer_list<double> numbers, std::initializer_list<platform::Colour> colours = {});

    PictureTools& tools_;
    platform::Canvas canvas_;
    platform::Canvas* target_;  // the canvas, or the layer being drawn for `keep`
    platform::LayerKey* key_ = nullptr;  // set while `keep` describes its steps
    // The shadow under what is drawn: none until the hub sets its own.
    std::optional<platform::Shadow> shadow_;
    bool widgetMode_;
    float c_;           // the centre's x and y
    float radius_;      // the disc's
    float k_;           // the icon's scale
    float rangeWidth_;  // the 24-hour band's width
};

// Draws `dial`; the parts that do not depend on the reading from kept layers.
platform::ImagePtr drawStarDial(const StarDial& dial, PictureTools& tools);

}  // namespace velmorant::snippet_ui::gauge
