#include "platform/graphics/FontSystem.h"

#include "platform/graphics/detail/FontLayout.h"

#include <pango/pangocairo.h>
#include <pango/pangofc-fontmap.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <stdexcept>
#include <vector>

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

// Pango sizes are whole 1/1024ths held in an int; keep them in a range
// its arithmetic survives.
constexpr double kMaxFontPixels = 10000;

FontDescriptionPtr describe(const Font& font, double pixelsPerPoint) {
    double pixels = font.size * pixelsPerPoint;
    if (!std::isfinite(pixels) || pixels < 0) pixels = 0;
    pixels = std::min(pixels, kMaxFontPixels);
    FontDescriptionPtr description(pango_font_description_new());
    pango_font_description_set_family(description.get(), "Velmorant System");
    pango_font_description_set_weight(description.get(), pangoWeight(font.weight));
    pango_font_description_set_absolute_size(description.get(), pixels * PANGO_SCALE);
    return description;
}

// Empties the font map's caches, which hold it in a cycle, then lets it go.
struct FontMapRelease {
    void operator()(PangoFontMap* fontMap) const noexcept {
        if (!fontMap) return;
        pango_fc_font_map_shutdown(PANGO_FC_FONT_MAP(fontMap));
        g_object_unref(fontMap);
    }
};

}  // namespace

struct FontSystem::Impl {
    GObjectPtr<PangoContext> makeContext() const;

    std::unique_ptr<PangoFontMap, FontMapRelease> fontMap;
    // Line heights already measured, by size and weight: measuring shapes sample text.
    mutable std::map<std::pair<double, FontWeight>, double> lineHeights;
};

FontSystem::FontSystem(const std::filesystem::path& fontsConf) : impl_(std::make_unique<Impl>()) {
    FcConfigPtr config(FcConfigCreate());
    if (!FcConfigParseAndLoad(config.get(), reinterpret_cast<const FcChar8*>(fontsConf.c_str()), FcTrue) ||
        !FcConfigBuildFonts(config.get())) {
        throw std::runtime_error("font configuration " + fontsConf.string() + " cannot be loaded");
    }
    // Made the process's current configuration before the font map exists:
    // the font map otherwise loads the machine's whole default configuration
    // and font caches on a helper thread (a quarter of the font set-up time
    // and its memory), only to never use them.
    FcConfigSetCurrent(config.get());
    impl_->fontMap.reset(pango_cairo_font_map_new_for_font_type(CAIRO_FONT_TYPE_FT));
    pango_fc_font_map_set_config(PANGO_FC_FONT_MAP(impl_->fontMap.get()), config.get());  // takes its own reference
}

FontSystem::~FontSystem() = default;

GObjectPtr<PangoContext> FontSystem::Impl::makeContext() const {
    GObjectPtr<PangoContext> context(pango_font_map_create_context(fontMap.get()));
    // Metrics are not hinted to a pixel grid, so a run's size scales with the font.
    FontOptionsPtr options(cairo_font_options_create());
    cairo_font_options_set_hint_metrics(options.get(), CAIRO_HINT_METRICS_OFF);
    cairo_font_options_set_hint_style(options.get(), CAIRO_HINT_STYLE_NONE);
    pango_cairo_context_set_font_options(context.get(), options.get());
    return context;
}

GObjectPtr<PangoLayout> layoutInPixels(const FontSystem& fonts, const Font& font, double pixelsPerPoint) {
    GObjectPtr<PangoContext> context = fonts.impl().makeContext();
    GObjectPtr<PangoLayout> layout(pango_layout_new(context.get()));
    pango_layout_set_font_description(layout.get(), describe(font, pixelsPerPoint).get());
    return layout;
}

double FontSystem::lineHeight(const Font& font) const {
    auto key = std::make_pair(font.size, font.weight);
    if (auto it = impl_->lineHeights.find(key); it != impl_->lineHeights.end()) return it->second;
    // The ascent and descent Pango's own metrics give, straight from the font
    // that sets the text: Pango's metrics would first lay out a sample sentence
    // (twice) for widths never used here.
    GObjectPtr<PangoContext> context = impl_->makeContext();
    GObjectPtr<PangoFont> loaded(pango_context_load_font(context.get(), describe(font, 1).get()));
    double height = 0;
    if (loaded) {
        hb_font_extents_t extents{};
        hb_font_get_h_extents(pango_font_get_hb_font(loaded.get()), &extents);
        height = static_cast<double>(extents.ascender - extents.descender) / PANGO_SCALE;
    }
    impl_->lineHeights.emplace(key, height);
    return height;
}

std::string FontSystem::fontFiles() const {
    std::vector<std::string> files;
    FcFontSet* fonts = FcConfigGetFonts(pango_fc_font_map_get_config(PANGO_FC_FONT_MAP(impl_->fontMap.get())), FcSetSystem);
    for (int i = 0; fonts && i < fonts->nfont; ++i) {
        FcChar8* file = nullptr;
        if (FcPatternGetString(fonts->fonts[i], FC_FILE, 0, &file) == FcResultMatch)
            files.emplace_back(reinterpret_cast<const char*>(file));
    }
    std::sort(files.begin(), files.end());
    files.erase(std::unique(files.begin(), files.end()), files.end());
    std::string lines;
    for (const std::string& file : files) {
        std::error_code ec;
        auto size = std::filesystem::file_size(file, ec);
        auto time = std::filesystem::last_write_time(file, ec).time_since_epoch().count();
        lines += file + "\n" + std::to_string(size) + "\n" + std::to_string(time) + "\n";
    }
    return lines;
}

}  // namespace velmorant::platform
