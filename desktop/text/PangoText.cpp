#include "desktop/text/PangoText.h"

#include <pango/pangocairo.h>

#include <algorithm>

namespace qoro
{

namespace
{
/// Points; beyond any screen, and within the range of Pango's integer units.
constexpr double WidestLine = 1e6;

PangoContext* make_context()
{
    PangoFontMap* fonts = pango_cairo_font_map_new();
    // At 72 dpi one point is one pixel, whatever the monitor.
    pango_cairo_font_map_set_resolution(PANGO_CAIRO_FONT_MAP(fonts), 72);
    PangoContext* context = pango_font_map_create_context(fonts);
    g_object_unref(fonts);
    cairo_font_options_t* exact = cairo_font_options_create();
    cairo_font_options_set_hint_metrics(exact, CAIRO_HINT_METRICS_OFF);
    cairo_font_options_set_hint_style(exact, CAIRO_HINT_STYLE_NONE);
    pango_cairo_context_set_font_options(context, exact);
    cairo_font_options_destroy(exact);
    pango_context_set_round_glyph_positions(context, FALSE);
    return context;
}

int units(double points)
{
    return static_cast<int>(points * PANGO_SCALE);
}
} // namespace

PangoText::PangoText() : context_(make_context())
{
}

PangoText::~PangoText()
{
    g_object_unref(context_);
}

CGSize PangoText::measure(const NSString& text, const FontSpec& font, CGSize box)
{
    if (!text)
        return {};
    PangoLayout* layout = text_layout(context_, text.text(), font, box.width);
    PangoRectangle extents;
    pango_layout_get_extents(layout, nullptr, &extents);
    g_object_unref(layout);
    const CGSize size{extents.width / static_cast<double>(PANGO_SCALE),
                      extents.height / static_cast<double>(PANGO_SCALE)};
    return {std::min(size.width, std::max(0.0, box.width)), std::min(size.height, std::max(0.0, box.height))};
}

PangoLayout* text_layout(PangoContext* context, const std::string& text, const FontSpec& font, double width)
{
    PangoLayout* layout = pango_layout_new(context);
    PangoFontDescription* description = pango_font_description_new();
    pango_font_description_set_family(description, font.family == "Arial" ? "Liberation Sans" : font.family.c_str());
    pango_font_description_set_absolute_size(description, font.size * PANGO_SCALE);
    pango_layout_set_font_description(layout, description);
    pango_font_description_free(description);

    PangoAttrList* attributes = pango_attr_list_new();
    pango_attr_list_insert(attributes, pango_attr_insert_hyphens_new(FALSE));
    pango_layout_set_attributes(layout, attributes);
    pango_attr_list_unref(attributes);

    pango_layout_set_wrap(layout, PANGO_WRAP_CHAR);
    pango_layout_set_width(layout, width < WidestLine ? units(std::max(0.0, width)) : -1);
    pango_layout_set_text(layout, text.data(), static_cast<int>(text.size()));
    return layout;
}

} // namespace qoro
