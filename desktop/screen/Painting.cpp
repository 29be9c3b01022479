#include "desktop/screen/Painting.h"

#include "desktop/text/PangoText.h"
#include "kit/CountDownLook.h"

#include <gtk/gtk.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <string>

namespace qoro
{

namespace
{

constexpr double FullTurn = 2 * std::numbers::pi;
constexpr UIColor White{1, 1, 1, 1, true};

float single(double number)
{
    return static_cast<float>(number);
}

graphene_rect_t rect_of(const CGRect& rect)
{
    return GRAPHENE_RECT_INIT(single(rect.x), single(rect.y), single(rect.width), single(rect.height));
}

GdkRGBA rgba(const UIColor& color)
{
    return {single(color.red), single(color.green), single(color.blue), single(color.alpha)};
}

void fill(GtkSnapshot* snapshot, const UIColor& color, const CGRect& rect)
{
    if (!color || color.alpha <= 0)
        return;
    const GdkRGBA paint_color = rgba(color);
    const graphene_rect_t area = rect_of(rect);
    gtk_snapshot_append_color(snapshot, &paint_color, &area);
}

void paint_background(GtkSnapshot* snapshot, const ViewNode& view, const CGRect& area)
{
    if (view.corner_radius <= 0)
        return fill(snapshot, view.background, area);
    const graphene_rect_t bounds = rect_of(area);
    GskRoundedRect rounded;
    gsk_rounded_rect_init_from_rect(&rounded, &bounds, single(view.corner_radius));
    gtk_snapshot_push_rounded_clip(snapshot, &rounded);
    fill(snapshot, view.background, area);
    gtk_snapshot_pop(snapshot);
}

// ------------------------------------------------------------------------------------------------------- Pictures

/// The largest centred rectangle that a picture fills without distortion.
CGRect aspect_fit(CGSize natural, const CGRect& area)
{
    const double scale = std::min(area.width / natural.width, area.height / natural.height);
    const CGSize size{natural.width * scale, natural.height * scale};
    return {area.x + (area.width - size.width) / 2, area.y + (area.height - size.height) / 2, size.width, size.height};
}

/// Draws a picture scaled to `place`, within `area`.
void append_picture(GtkSnapshot* snapshot, const Picture& picture, const CGRect& place, const CGRect& area)
{
    if (place.width <= 0 || place.height <= 0)
        return;
    const CGSize pixels = picture_size(picture);
    const graphene_rect_t bounds = rect_of(area);
    cairo_t* cairo = gtk_snapshot_append_cairo(snapshot, &bounds);
    cairo_translate(cairo, place.x, place.y);
    cairo_scale(cairo, place.width / pixels.width, place.height / pixels.height);
    cairo_set_source_surface(cairo, picture.get(), 0, 0);
    // Otherwise the edges of a scaled picture would blend with transparency.
    cairo_pattern_set_extend(cairo_get_source(cairo), CAIRO_EXTEND_PAD);
    cairo_rectangle(cairo, 0, 0, pixels.width, pixels.height);
    cairo_fill(cairo);
    cairo_destroy(cairo);
}

void paint_image(GtkSnapshot* snapshot, const ViewNode& view, const CGRect& area, const PaintState& state)
{
    if (!state.picture)
        return;
    const bool fits = view.kind == ViewNode::Kind::ImageView && view.content_mode == UIViewContentModeScaleAspectFit;
    append_picture(snapshot, state.picture, fits ? aspect_fit(picture_size(state.picture), area) : area, area);
}

void paint_video(GtkSnapshot* snapshot, const ViewNode& view, const CGRect& area, const PaintState& state)
{
    // An opaque video view without a background colour is black, as on the platform: before the first picture, and
    // beside a picture with another aspect ratio.
    if (view.opaque && !view.background)
        fill(snapshot, UIColor::blackColor(), area);
    if (!state.picture)
        return;
    const CGSize pixels = picture_size(state.picture);
    const graphene_rect_t bounds = rect_of(area);
    cairo_t* cairo = gtk_snapshot_append_cairo(snapshot, &bounds);
    // Whole points and the monitor's scale only, so that the picture's pixels map to device pixels. They replace what
    // lies beneath: when the video is rotated, that costs a third of blending.
    const CGPoint corner =
        picture_corner({area.width, area.height}, {pixels.width / state.resolution, pixels.height / state.resolution});
    cairo_translate(cairo, corner.x, corner.y);
    cairo_scale(cairo, 1 / state.resolution, 1 / state.resolution);
    cairo_set_source_surface(cairo, state.picture.get(), 0, 0);
    cairo_rectangle(cairo, 0, 0, pixels.width, pixels.height);
    cairo_clip(cairo);
    cairo_set_operator(cairo, CAIRO_OPERATOR_SOURCE);
    cairo_paint(cairo);
    cairo_destroy(cairo);
}

// ----------------------------------------------------------------------------------------------------------- Text

/// A single line without a width; set_breaking() may add one.
ObjectRef<PangoLayout> line_layout(PangoContext* context, const std::string& text, const FontSpec& font)
{
    ObjectRef<PangoLayout> layout = text_layout(context, text, font, 0);
    pango_layout_set_width(layout.get(), -1);
    return layout;
}

struct TextLook {
    UIColor color;
    UIColor shadow;
    CGSize shadow_offset;
};

/// Draws a layout with its top left corner at a point.
void append_text(GtkSnapshot* snapshot, PangoLayout* layout, CGPoint at, const TextLook& look)
{
    const auto append = [&](CGPoint corner, const UIColor& color) {
        const graphene_point_t point = GRAPHENE_POINT_INIT(single(corner.x), single(corner.y));
        const GdkRGBA paint_color = rgba(color);
        gtk_snapshot_save(snapshot);
        gtk_snapshot_translate(snapshot, &point);
        gtk_snapshot_append_layout(snapshot, layout, &paint_color);
        gtk_snapshot_restore(snapshot);
    };
    if (look.shadow && look.shadow.alpha > 0)
        append({at.x + look.shadow_offset.width, at.y + look.shadow_offset.height}, look.shadow);
    append(at, look.color ? look.color : UIColor::blackColor());
}

CGSize size_of(PangoLayout* layout)
{
    PangoRectangle extents;
    pango_layout_get_extents(layout, nullptr, &extents);
    return {extents.width / static_cast<double>(PANGO_SCALE), extents.height / static_cast<double>(PANGO_SCALE)};
}

void set_breaking(PangoLayout* layout, const ViewNode& label)
{
    constexpr int TruncatingHead = 3;
    constexpr int TruncatingTail = 4;
    constexpr int TruncatingMiddle = 5;
    // The exact width that the text was measured for: the widget's, in whole points, could wrap the last letter.
    const int width = static_cast<int>(std::ceil(std::max(label.bounds.width, 0.0) * PANGO_SCALE));
    switch (label.line_break_mode) {
    case TruncatingHead:
        pango_layout_set_ellipsize(layout, PANGO_ELLIPSIZE_START);
        break;
    case TruncatingTail:
        pango_layout_set_ellipsize(layout, PANGO_ELLIPSIZE_END);
        break;
    case TruncatingMiddle:
        pango_layout_set_ellipsize(layout, PANGO_ELLIPSIZE_MIDDLE);
        break;
    default:
        if (label.number_of_lines == 1)
            return; // one line, clipped at the edge
        pango_layout_set_wrap(layout, label.line_break_mode == NSLineBreakByCharWrapping ? PANGO_WRAP_CHAR
                                                                                         : PANGO_WRAP_WORD_CHAR);
    }
    pango_layout_set_width(layout, width);
}

void paint_label(GtkSnapshot* snapshot, PangoContext* context, const ViewNode& label, const CGRect& area)
{
    constexpr int Centered = 1;
    if (label.text.length() == 0)
        return;
    const auto line = line_layout(context, label.text.text(), label.font);
    PangoLayout* layout = line.get();
    set_breaking(layout, label);
    const PangoAlignment alignment = label.text_alignment == NSTextAlignmentRight ? PANGO_ALIGN_RIGHT
                                     : label.text_alignment == Centered           ? PANGO_ALIGN_CENTER
                                                                                  : PANGO_ALIGN_LEFT;
    pango_layout_set_alignment(layout, alignment);
    const CGSize size = size_of(layout);
    const double room = std::max(label.bounds.width - size.width, 0.0);
    const bool free_line = pango_layout_get_width(layout) < 0; // Pango does not align a line without a width
    const double x = !free_line || alignment == PANGO_ALIGN_LEFT ? 0 : alignment == PANGO_ALIGN_RIGHT ? room : room / 2;
    const graphene_rect_t box = rect_of(area);
    gtk_snapshot_push_clip(snapshot, &box);
    append_text(snapshot, layout, {x, (area.height - size.height) / 2},
                {label.text_color, label.text_shadow_color, label.text_shadow_offset});
    gtk_snapshot_pop(snapshot);
}

void paint_title(GtkSnapshot* snapshot, PangoContext* context, const ViewNode& button, const CGRect& area)
{
    if (button.text.length() == 0 || !button.title_label)
        return;
    const ViewNode& label = *button.title_label;
    const auto line = line_layout(context, button.text.text(), label.font);
    PangoLayout* layout = line.get();
    // A button centres its title whatever the label's alignment, because the label is as wide as its text.
    pango_layout_set_ellipsize(layout, PANGO_ELLIPSIZE_MIDDLE);
    pango_layout_set_alignment(layout, PANGO_ALIGN_CENTER);
    pango_layout_set_width(layout, static_cast<int>(area.width * PANGO_SCALE));
    append_text(snapshot, layout, {0, (area.height - size_of(layout).height) / 2},
                {label.text_color ? label.text_color : White, button.title_shadow_color, label.text_shadow_offset});
}

// -------------------------------------------------------------------------------------------------------- Symbols

/// Draws a symbol in a box of 24 by 24 points around the origin.
void trace_symbol(cairo_t* cairo, Symbol symbol)
{
    const auto line = [cairo](std::initializer_list<CGPoint> points) {
        cairo_new_sub_path(cairo);
        for (const CGPoint& point : points)
            cairo_line_to(cairo, point.x, point.y);
        cairo_stroke(cairo);
    };
    switch (symbol) {
    case Symbol::Close:
        line({{-7, -7}, {7, 7}});
        line({{7, -7}, {-7, 7}});
        break;
    case Symbol::CloseOnDisc:
        line({{-5, -5}, {5, 5}});
        line({{5, -5}, {-5, 5}});
        break;
    case Symbol::Back:
        line({{4, -8}, {-4, 0}, {4, 8}});
        break;
    case Symbol::Forward:
        line({{-4, -8}, {4, 0}, {-4, 8}});
        break;
    case Symbol::Reload:
        cairo_arc(cairo, 0, 0, 7.5, FullTurn * 0.02, FullTurn * 0.86);
        cairo_stroke(cairo);
        line({{6.5, -9.5}, {5.5, -4.5}, {0.5, -5.5}});
        break;
    case Symbol::Lock:
    case Symbol::OpenLock:
        cairo_rectangle(cairo, -5, -1, 10, 8);
        cairo_fill(cairo);
        cairo_arc(cairo, symbol == Symbol::Lock ? 0 : 5, -2.5, 3, FullTurn / 2, FullTurn);
        cairo_stroke(cairo);
        break;
    case Symbol::Blank:
        break;
    }
}

void paint_symbol(GtkSnapshot* snapshot, const ViewNode& view, const CGRect& area)
{
    constexpr double DiscRadius = 15;
    if (view.symbol == Symbol::Blank)
        return;
    const graphene_rect_t box = rect_of(area);
    const UIColor color = view.text_color ? view.text_color : UIColor::blackColor();
    cairo_t* cairo = gtk_snapshot_append_cairo(snapshot, &box);
    cairo_translate(cairo, area.width / 2, area.height / 2);
    if (view.symbol == Symbol::CloseOnDisc) {
        // Dark with a light rim: visible on any page.
        cairo_set_source_rgba(cairo, 0, 0, 0, 0.65);
        cairo_arc(cairo, 0, 0, DiscRadius, 0, FullTurn);
        cairo_fill_preserve(cairo);
        cairo_set_source_rgba(cairo, 1, 1, 1, 0.85);
        cairo_set_line_width(cairo, 1.5);
        cairo_stroke(cairo);
    }
    cairo_set_source_rgba(cairo, color.red, color.green, color.blue, color.alpha);
    cairo_set_line_width(cairo, 2);
    cairo_set_line_cap(cairo, CAIRO_LINE_CAP_ROUND);
    cairo_set_line_join(cairo, CAIRO_LINE_JOIN_ROUND);
    trace_symbol(cairo, view.symbol);
    cairo_destroy(cairo);
}

/// Highlight under a finger.
void paint_glow(GtkSnapshot* snapshot, const CGRect& area)
{
    const graphene_rect_t box = rect_of(area);
    const graphene_point_t middle = GRAPHENE_POINT_INIT(single(area.width / 2), single(area.height / 2));
    const float reach = single(std::max(area.width, area.height) / 2);
    const GskColorStop stops[] = {{0, {1, 1, 1, 0.6F}}, {1, {1, 1, 1, 0}}};
    gtk_snapshot_append_radial_gradient(snapshot, &box, &middle, reach, reach, 0, 1, stops, G_N_ELEMENTS(stops));
}

// ------------------------------------------------------------------------------------------- Countdown and spinner

void paint_countdown(GtkSnapshot* snapshot, PangoContext* context, const ViewNode& view, const CGRect& area)
{
    const CountDownLook look =
        count_down_look({area.width, area.height}, view.ring_width, view.seconds, view.seconds_full);
    if (look.disc_radius <= 0)
        return;
    const graphene_rect_t box = rect_of(area);
    cairo_t* cairo = gtk_snapshot_append_cairo(snapshot, &box);
    cairo_translate(cairo, area.width / 2, area.height / 2);
    // Dark enough for white text on any video: on a white one the contrast is nearly 8 to 1.
    cairo_set_source_rgba(cairo, 0, 0, 0, 0.68);
    cairo_arc(cairo, 0, 0, look.disc_radius, 0, FullTurn);
    cairo_fill(cairo);
    cairo_set_line_width(cairo, look.ring_width);
    cairo_set_source_rgba(cairo, 1, 1, 1, 0.22);
    cairo_arc(cairo, 0, 0, look.ring_radius, 0, FullTurn);
    cairo_stroke(cairo);
    cairo_set_source_rgb(cairo, 1, 1, 1);
    cairo_arc(cairo, 0, 0, look.ring_radius, look.arc_begin, look.arc_end);
    cairo_stroke(cairo);
    cairo_destroy(cairo);

    if (look.font_size <= 0)
        return;
    const auto line = line_layout(context, look.seconds, {"Arial", look.font_size});
    PangoLayout* layout = line.get();
    const double baseline = pango_layout_get_baseline(layout) / static_cast<double>(PANGO_SCALE);
    append_text(snapshot, layout,
                {(area.width - size_of(layout).width) / 2, area.height / 2 + look.baseline - baseline},
                {White, {}, {}});
}

void paint_spinner(GtkSnapshot* snapshot, const CGRect& area, int step)
{
    const graphene_rect_t box = rect_of(area);
    const double radius = std::min(area.width, area.height) / 2 - 2;
    if (radius <= 0)
        return;
    cairo_t* cairo = gtk_snapshot_append_cairo(snapshot, &box);
    cairo_translate(cairo, area.width / 2, area.height / 2);
    cairo_set_line_cap(cairo, CAIRO_LINE_CAP_ROUND);
    for (int spoke = 0; spoke < spinner_steps; ++spoke) {
        const double angle = FullTurn * spoke / spinner_steps;
        const int age = (step - spoke % spinner_steps + spinner_steps) % spinner_steps;
        const double strength = 1 - 0.8 * age / (spinner_steps - 1);
        // White with a dark rim: visible on bright pages and on dark video.
        for (const auto& [shade, width] : {std::pair{0.0, radius / 4 + 1.5}, std::pair{1.0, radius / 4}}) {
            cairo_set_source_rgba(cairo, shade, shade, shade, shade > 0 ? strength : strength * 0.4);
            cairo_set_line_width(cairo, width);
            cairo_move_to(cairo, std::sin(angle) * radius * 0.5, -std::cos(angle) * radius * 0.5);
            cairo_line_to(cairo, std::sin(angle) * radius * 0.9, -std::cos(angle) * radius * 0.9);
            cairo_stroke(cairo);
        }
    }
    cairo_destroy(cairo);
}

} // namespace

CGPoint picture_corner(CGSize area, CGSize picture)
{
    return {std::floor((area.width - picture.width) / 2), std::floor((area.height - picture.height) / 2)};
}

void paint(GtkSnapshot* snapshot, PangoContext* text, const ViewNode& view, CGSize size, const PaintState& state)
{
    const CGRect area{0, 0, size.width, size.height};
    paint_background(snapshot, view, area);
    switch (view.kind) {
    case ViewNode::Kind::Button:
        paint_image(snapshot, view, area, state);
        paint_title(snapshot, text, view, area);
        paint_symbol(snapshot, view, area);
        if (state.pressed && view.shows_touch)
            paint_glow(snapshot, area);
        break;
    case ViewNode::Kind::Label:
        paint_label(snapshot, text, view, area);
        break;
    case ViewNode::Kind::ImageView:
        paint_image(snapshot, view, area, state);
        paint_symbol(snapshot, view, area);
        break;
    case ViewNode::Kind::Video:
        paint_video(snapshot, view, area, state);
        break;
    case ViewNode::Kind::CountDown:
        paint_countdown(snapshot, text, view, area);
        break;
    case ViewNode::Kind::Spinner:
        paint_spinner(snapshot, area, state.spinner_step);
        break;
    case ViewNode::Kind::View:
    case ViewNode::Kind::Window:
    case ViewNode::Kind::WebView: // drawn by the page's own widget
    case ViewNode::Kind::Slider:  // the volume is controlled by the device's keys
    case ViewNode::Kind::VolumeView:
        break;
    }
}

} // namespace qoro
