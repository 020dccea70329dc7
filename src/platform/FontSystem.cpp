#include "FontSystem.h"

#include <fontconfig/fontconfig.h>
#include <pango/pangofc-fontmap.h>

#include <stdexcept>

namespace velmorant::platform {
namespace {

PangoWeight pangoWeight(FontWeight weight) {
    switch (weight) {
        case FontWeight::UltraLight: return PANGO_WEIGHT_ULTRALIGHT;
        case FontWeight::Thin: return PANGO_WEIGHT_THIN;
        case FontWeight::Light: return PANGO_WEIGHT_LIGHT;
        case FontWeight::Regular: return PANGO_WEIGHT_NORMAL;
        case FontWeight::Medium: return PANGO_WEIGHT_MEDIUM;
        case FontWeight::Semibold: return PANGO_WEIGHT_SEMIBOLD;
        case FontWeight::Bold: return PANGO_WEIGHT_BOLD;
        case FontWeight::Heavy: return PANGO_WEIGHT_HEAVY;
        case FontWeight::Black: return PANGO_WEIGHT_ULTRAHEAVY;
    }
    return PANGO_WEIGHT_NORMAL;
}

}  // namespace

FontSystem::FontSystem(const std::filesystem::path& fontsConf) {
    FcConfig* config = FcConfigCreate();
    if (!FcConfigParseAndLoad(config, reinterpret_cast<const FcChar8*>(fontsConf.c_str()), FcTrue) ||
        !FcConfigBuildFonts(config)) {
        FcConfigDestroy(config);
        throw std::runtime_error("font configuration " + fontsConf.string() + " cannot be loaded");
    }
    fontMap_ = pango_cairo_font_map_new_for_font_type(CAIRO_FONT_TYPE_FT);
    pango_fc_font_map_set_config(PANGO_FC_FONT_MAP(fontMap_), config);
    FcConfigDestroy(config);  // the font map keeps its own reference
}

FontSystem::~FontSystem() {
    if (fontMap_) g_object_unref(fontMap_);
}

PangoLayout* FontSystem::createLayout(cairo_t* cr, const Font& font) const {
    PangoContext* context = pango_font_map_create_context(fontMap_);
    // Text is laid out in points; the caller's transform scales to pixels, and
    // metrics must not be hinted to the pixel grid of a different scale.
    cairo_font_options_t* options = cairo_font_options_create();
    cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_OFF);
    cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_NONE);
    pango_cairo_context_set_font_options(context, options);
    cairo_font_options_destroy(options);
    pango_cairo_update_context(cr, context);
    PangoLayout* layout = pango_layout_new(context);
    g_object_unref(context);
    PangoFontDescription* description = pango_font_description_new();
    pango_font_description_set_family(description, "Velmorant System");
    pango_font_description_set_weight(description, pangoWeight(font.weight));
    pango_font_description_set_absolute_size(description, font.size * PANGO_SCALE);
    pango_layout_set_font_description(layout, description);
    pango_font_description_free(description);
    return layout;
}

}  // namespace velmorant::platform
