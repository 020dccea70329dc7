#pragma once

// Owners for the C libraries' handles: each releases its handle exactly once,
// with the library's own function, when it goes out of scope.

#include <cairo.h>
#include <fontconfig/fontconfig.h>
#include <glib-object.h>
#include <pango/pango.h>

#include <memory>
#include <string>

namespace velmorant::platform {

// Calls `Release` on a non-null handle.
template <auto Release>
struct CRelease {
    template <typename T>
    void operator()(T* handle) const noexcept {
        if (handle) Release(handle);
    }
};

using CairoPtr = std::unique_ptr<cairo_t, CRelease<cairo_destroy>>;
using SurfacePtr = std::unique_ptr<cairo_surface_t, CRelease<cairo_surface_destroy>>;
using PatternPtr = std::unique_ptr<cairo_pattern_t, CRelease<cairo_pattern_destroy>>;
using PathPtr = std::unique_ptr<cairo_path_t, CRelease<cairo_path_destroy>>;
using RectangleListPtr = std::unique_ptr<cairo_rectangle_list_t, CRelease<cairo_rectangle_list_destroy>>;
using FontOptionsPtr = std::unique_ptr<cairo_font_options_t, CRelease<cairo_font_options_destroy>>;
using FontDescriptionPtr = std::unique_ptr<PangoFontDescription, CRelease<pango_font_description_free>>;
using FontMetricsPtr = std::unique_ptr<PangoFontMetrics, CRelease<pango_font_metrics_unref>>;
using GCharPtr = std::unique_ptr<char, CRelease<g_free>>;
using FcConfigPtr = std::unique_ptr<FcConfig, CRelease<FcConfigDestroy>>;

// One reference to a GObject (PangoLayout, PangoContext, PangoFontMap, RsvgHandle, ...).
template <typename T>
using GObjectPtr = std::unique_ptr<T, CRelease<g_object_unref>>;

// A GError filled in through `out()` by a GLib-style call.
class GErrorPtr {
public:
    GErrorPtr() = default;
    ~GErrorPtr() { reset(); }
    GErrorPtr(const GErrorPtr&) = delete;
    GErrorPtr& operator=(const GErrorPtr&) = delete;

    // Where the call stores its error; an earlier error is released first.
    GError** out() {
        reset();
        return &error_;
    }
    explicit operator bool() const { return error_ != nullptr; }
    // The error's message, or `fallback` when there is none.
    std::string message(const char* fallback = "unknown error") const {
        return error_ && error_->message ? error_->message : fallback;
    }

private:
    void reset() {
        if (error_) g_error_free(error_);
        error_ = nullptr;
    }
    GError* error_ = nullptr;
};

// Pairs cairo_save with cairo_restore for one scope.
class [[nodiscard]] CairoSaved {
public:
    explicit CairoSaved(cairo_t* cr) : cr_(cr) { cairo_save(cr_); }
    ~CairoSaved() { cairo_restore(cr_); }
    CairoSaved(const CairoSaved&) = delete;
    CairoSaved& operator=(const CairoSaved&) = delete;

private:
    cairo_t* cr_;
};

}  // namespace velmorant::platform
