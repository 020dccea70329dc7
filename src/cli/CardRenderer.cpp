#include "CardRenderer.h"

#include "platform/Image.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace velmorant::cli {
namespace {

constexpr double kDesignWidth = 390;

void setColour(cairo_t* cr, const platform::Colour& colour) {
    platform::Rgba c = colour.rgba();
    cairo_set_source_rgba(cr, c.r, c.g, c.b, c.a);
}

void roundedRect(cairo_t* cr, const platform::Rect& r, double radius) {
    radius = std::min({radius, r.width / 2, r.height / 2});
    if (radius <= 0) {
        cairo_rectangle(cr, r.x, r.y, r.width, r.height);
        return;
    }
    double x = r.x, y = r.y, w = r.width, h = r.height;
    cairo_new_sub_path(cr);
    cairo_arc(cr, x + w - radius, y + radius, radius, -M_PI / 2, 0);
    cairo_arc(cr, x + w - radius, y + h - radius, radius, 0, M_PI / 2);
    cairo_arc(cr, x + radius, y + h - radius, radius, M_PI / 2, M_PI);
    cairo_arc(cr, x + radius, y + radius, radius, M_PI, 3 * M_PI / 2);
    cairo_close_path(cr);
}

void drawGradient(cairo_t* cr, const platform::Layer& layer, const platform::Rect& r) {
    const auto& colours = layer.colors();
    if (colours.size() < 2) return;
    cairo_pattern_t* pattern = cairo_pattern_create_linear(r.x, r.y, r.x, r.y + r.height);
    for (std::size_t i = 0; i < colours.size(); ++i) {
        platform::Rgba c = colours[i].rgba();
        cairo_pattern_add_color_stop_rgba(pattern, static_cast<double>(i) / (colours.size() - 1), c.r, c.g, c.b, c.a);
    }
    cairo_set_source(cr, pattern);
    cairo_rectangle(cr, r.x, r.y, r.width, r.height);
    cairo_fill(cr);
    cairo_pattern_destroy(pattern);
}

void drawImage(cairo_t* cr, const platform::Image& image, const platform::Rect& r) {
    // Aspect fit, centred, as an image view shows it.
    double fit = std::min(r.width / image.size().width, r.height / image.size().height);
    double w = image.size().width * fit, h = image.size().height * fit;
    cairo_save(cr);
    cairo_translate(cr, r.x + (r.width - w) / 2, r.y + (r.height - h) / 2);
    cairo_scale(cr, w / image.pixelWidth(), h / image.pixelHeight());
    cairo_set_source_surface(cr, image.surface(), 0, 0);
    cairo_pattern_set_filter(cairo_get_source(cr), CAIRO_FILTER_GOOD);
    cairo_paint(cr);
    cairo_restore(cr);
}

void drawText(cairo_t* cr, const platform::View& view, const platform::Rect& r, const platform::FontSystem& fonts) {
    if (!view.text() || view.text()->empty()) return;
    PangoLayout* layout = fonts.createLayout(cr, view.font().value_or(platform::Font::systemFontOfSize(17)));
    pango_layout_set_text(layout, view.text()->c_str(), -1);
    pango_layout_set_width(layout, static_cast<int>(r.width * PANGO_SCALE));
    pango_layout_set_wrap(layout, PANGO_WRAP_WORD_CHAR);
    pango_layout_set_ellipsize(layout, PANGO_ELLIPSIZE_END);
    pango_layout_set_height(layout, static_cast<int>(r.height * PANGO_SCALE));
    pango_layout_set_alignment(layout, view.alignment() == platform::TextAlignment::Centre  ? PANGO_ALIGN_CENTER
                                       : view.alignment() == platform::TextAlignment::Right ? PANGO_ALIGN_RIGHT
                                                                                            : PANGO_ALIGN_LEFT);
    int width = 0, height = 0;
    pango_layout_get_size(layout, &width, &height);
    double textHeight = static_cast<double>(height) / PANGO_SCALE;
    setColour(cr, view.textColor().value_or(platform::Colour::blackColor()));
    cairo_move_to(cr, r.x, r.y + (r.height - textHeight) / 2);  // labels centre their text vertically
    pango_cairo_show_layout(cr, layout);
    g_object_unref(layout);
}

}  // namespace

bool renderCard(const platform::ViewTree& views, platform::Size size, double scale,
                const platform::FontSystem& fonts, const std::filesystem::path& file, std::string* error) {
    auto card = platform::Image::create(size, scale);
    cairo_t* cr = cairo_create(card->surface());
    cairo_scale(cr, scale, scale);
    double shift = (size.width - kDesignWidth) / 2;

    std::map<std::string, platform::Point, std::less<>> origin;  // absolute origin of each drawn view
    for (const auto& view : views.views()) {
        bool topLevel = view->parent().empty();
        if (view->isHidden() || (!topLevel && !origin.contains(view->parent()))) continue;
        platform::Rect frame = view->frame();
        platform::Rect r;
        if (topLevel) {
            r = {0, 0, size.width, size.height};  // a shown group fills the card
        } else {
            platform::Point o = origin.at(view->parent());
            r = {o.x + frame.x, o.y + frame.y, frame.width, frame.height};
        }
        origin[view->name()] = topLevel ? platform::Point{shift, 0} : platform::Point{r.x, r.y};

        cairo_save(cr);
        roundedRect(cr, r, view->layer().cornerRadius());
        cairo_clip(cr);
        for (const auto& sublayer : view->layer().sublayers()) drawGradient(cr, *sublayer, r);
        if (view->backgroundColor()) {
            setColour(cr, *view->backgroundColor());
            cairo_paint(cr);
        }
        if (view->image()) drawImage(cr, *view->image(), r);
        drawText(cr, *view, r, fonts);
        cairo_restore(cr);
    }
    cairo_destroy(cr);
    return card->writePng(file, error);
}

}  // namespace velmorant::cli
