#include "desktop/text/PangoText.h"

#include <pango/pangocairo.h>

#include <algorithm>

namespace qoro
{

namespace
{
/// Points; beyond any screen, and within the range of Pango's integer units.
constexpr double WidestLine = 1e6;

ObjectRef<PangoContext> make_context()
{
    const auto fonts = adopt(pango_cairo_font_map_new());
    // At 72 dpi one point is one pixel, whatever the monitor.
    pango_cairo_font_map_set_resolution(PANGO_CAIRO_FONT_MAP(fonts.get()), 72);
    auto context = adopt(pango_font_map_create_context(fonts.get()));
    const Owned<cairo_font_options_t, cairo_font_options_destroy> exact(cairo_font_options_create());
    cairo_font_options_set_hint_metrics(exact.get(), CAIRO_HINT_METRICS_OFF);
    cairo_font_options_set_hint_style(exact.get(), CAIRO_HINT_STYLE_NONE);
    pango_cairo_context_set_font_options(context.get(), exact.get());
    pango_context_set_round_glyph_positions(context.get(), FALSE);
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

CGSize PangoText::measure(const NSString& text, const FontSpec& font, CGSize box)
{
    if (!text)
        return {};
    const auto layout = text_layout(context_.get(), text.text(), font, box.width);
    PangoRectangle extents;
    pango_layout_get_extents(layout.get(), nullptr, &extents);
    const CGSize size{extents.width / static_cast<double>(PANGO_SCALE),
                      extents.height / static_cast<double>(PANGO_SCALE)};
    return {std::min(size.width, std::max(0.0, box.width)), std::min(size.height, std::max(0.0, box.height))};
}

ObjectRef<PangoLayout> text_layout(PangoContext* context, const std::string& text, const FontSpec& font, double width)
{
    auto owned = adopt(pango_layout_new(context));
    PangoLayout* layout = owned.get();
    const Owned<PangoFontDescription, pango_font_description_free> description(pango_font_description_new());
    pango_font_description_set_family(description.get(),
                                      font.family == "Arial" ? "Liberation Sans" : font.family.c_str());
    pango_font_description_set_absolute_size(description.get(), font.size * PANGO_SCALE);
    pango_layout_set_font_description(layout, description.get());

    const Owned<PangoAttrList, pango_attr_list_unref> attributes(pango_attr_list_new());
    pango_attr_list_insert(attributes.get(), pango_attr_insert_hyphens_new(FALSE));
    pango_layout_set_attributes(layout, attributes.get());

    pango_layout_set_wrap(layout, PANGO_WRAP_CHAR);
    pango_layout_set_width(layout, width < WidestLine ? units(std::max(0.0, width)) : -1);
    pango_layout_set_text(layout, text.data(), static_cast<int>(text.size()));
    return owned;
}

} // namespace qoro
