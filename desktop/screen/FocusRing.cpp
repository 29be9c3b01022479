#include "desktop/screen/FocusRing.h"

#include <gtk/gtk.h>

#include <algorithm>
#include <array>
#include <cmath>

namespace qoro
{

namespace
{

// Points.
constexpr float DarkLine = 1.5F;
constexpr float LightLine = 2;
constexpr double Width = 2.0 * 1.5 + 2;
constexpr float Corner = 7;

constexpr GdkRGBA Dark{0, 0, 0, 0.9F};
constexpr GdkRGBA Light{1, 1, 1, 1};

} // namespace

void draw_focus_ring(GtkSnapshot* snapshot, const CGRect& box, const CGRect& area)
{
    const double left = std::floor(std::max(box.x - Width, area.x));
    const double top = std::floor(std::max(box.y - Width, area.y));
    const double right = std::ceil(std::min(box.x + box.width + Width, area.x + area.width));
    const double bottom = std::ceil(std::min(CGRectGetMaxY(box) + Width, CGRectGetMaxY(area)));
    const graphene_rect_t outer =
        GRAPHENE_RECT_INIT(static_cast<float>(left), static_cast<float>(top), static_cast<float>(right - left),
                           static_cast<float>(bottom - top));
    GskRoundedRect outline;
    gsk_rounded_rect_init_from_rect(&outline, &outer, Corner);
    for (const auto& [line, color] : {std::pair{DarkLine, Dark}, {LightLine, Light}, {DarkLine, Dark}}) {
        const std::array<float, 4> lines{line, line, line, line};
        const std::array<GdkRGBA, 4> colors{color, color, color, color};
        gtk_snapshot_append_border(snapshot, &outline, lines.data(), colors.data());
        gsk_rounded_rect_shrink(&outline, line, line, line, line);
    }
}

} // namespace qoro
