// SPDX-License-Identifier: Apache-2.0
#include "Captions.h"

#include <pango/pangocairo.h>

#include <limits>

namespace fi {

namespace {

constexpr double kFontPart = 0.73;  // of a line's height; the rest is for what hangs below and stands out

template <auto release>
struct Releaser {
    template <typename T>
    void operator()(T* object) const {
        release(object);
    }
};

template <typename T, auto release>
using Handle = std::unique_ptr<T, Releaser<release>>;

// A machine without fonts is no reason for messages: the captions then show boxes.
void ignoreMessage(const gchar*, GLogLevelFlags, const gchar*, gpointer) {}

}  // namespace

struct Captions::Canvas {
    Canvas(uint32_t width, uint32_t height)
        : fonts(pango_cairo_font_map_new()),
          surface(cairo_image_surface_create(CAIRO_FORMAT_A8, static_cast<int>(width),
                                             static_cast<int>(height))),
          drawing(cairo_create(surface.get())),
          context(pango_font_map_create_context(fonts.get())),
          layout(pango_layout_new(context.get())) {}

    void useFont(double size) {
        const Handle<PangoFontDescription, pango_font_description_free> font(pango_font_description_new());
        pango_font_description_set_family_static(font.get(), "sans-serif");
        pango_font_description_set_absolute_size(font.get(), size * PANGO_SCALE);
        pango_layout_set_font_description(layout.get(), font.get());
    }

    Handle<PangoFontMap, g_object_unref> fonts;
    Handle<cairo_surface_t, cairo_surface_destroy> surface;
    Handle<cairo_t, cairo_destroy> drawing;
    Handle<PangoContext, g_object_unref> context;
    Handle<PangoLayout, g_object_unref> layout;
};

Captions::Captions(uint32_t width, uint32_t height) {
    g_log_set_default_handler(ignoreMessage, nullptr);
    m_canvas = std::make_unique<Canvas>(width, height);
    m_canvas->useFont(kFontPart * height);
    PangoLayout* const layout = m_canvas->layout.get();
    pango_layout_set_width(layout, static_cast<int>(width) * PANGO_SCALE);
    pango_layout_set_alignment(layout, PANGO_ALIGN_CENTER);
    pango_layout_set_single_paragraph_mode(layout, TRUE);
}

Captions::~Captions() = default;

Captions::Coverage Captions::draw(std::string_view text, Shorten shorten) {
    if (text.size() > static_cast<size_t>(std::numeric_limits<int>::max())) return {};
    cairo_surface_t* const surface = m_canvas->surface.get();
    cairo_t* const drawing = m_canvas->drawing.get();
    PangoLayout* const layout = m_canvas->layout.get();
    cairo_set_operator(drawing, CAIRO_OPERATOR_CLEAR);
    cairo_paint(drawing);
    cairo_set_operator(drawing, CAIRO_OPERATOR_OVER);
    pango_layout_set_ellipsize(layout,
                               shorten == Shorten::Middle ? PANGO_ELLIPSIZE_MIDDLE : PANGO_ELLIPSIZE_END);
    pango_layout_set_text(layout, text.data(), static_cast<int>(text.size()));
    cairo_move_to(drawing, 0, 0);
    pango_cairo_show_layout(drawing, layout);
    cairo_surface_flush(surface);
    const uint8_t* const bytes = cairo_image_surface_get_data(surface);
    if (bytes == nullptr) return {};
    const auto rowBytes = static_cast<size_t>(cairo_image_surface_get_stride(surface));
    const auto width = static_cast<uint32_t>(cairo_image_surface_get_width(surface));
    const auto height = static_cast<uint32_t>(cairo_image_surface_get_height(surface));
    return {{bytes, rowBytes * height}, rowBytes, width, height};
}

}  // namespace fi
