// A screen of one's own: draws the view tree of an ad with Cairo, and passes touches to it. Here the ad runs in the
// simulator, in virtual time; any other platform has the same view tree.
//     screen AD.json PICTURE.png [SECONDS [X Y]]
// plays the ad for SECONDS (default 2), touches the point (X, Y), and writes what the device's screen then shows.
#include <qoro/AdFile.h>
#include <qoro/InputError.h>
#include <qoro/OpenedAd.h>
#include <qoro/Simulator.h>
#include <qoro/views/ViewNode.h>

#include <cairo.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <numbers>
#include <string_view>

namespace
{

void set_color(cairo_t* out, const qoro::UIColor& color)
{
    cairo_set_source_rgba(out, color.red, color.green, color.blue, color.alpha);
}

/// A PNG picture, stretched to a size. Cairo reads no other format.
void draw_png(cairo_t* out, std::string_view bytes, qoro::CGSize size)
{
    struct Rest {
        std::string_view bytes;
        std::size_t read = 0;
    } rest{bytes};
    const auto read = [](void* from, unsigned char* to, unsigned length) -> cairo_status_t {
        auto& [all, done] = *static_cast<Rest*>(from);
        if (all.size() - done < length)
            return CAIRO_STATUS_READ_ERROR;
        std::memcpy(to, all.data() + done, length);
        done += length;
        return CAIRO_STATUS_SUCCESS;
    };
    cairo_surface_t* picture = cairo_image_surface_create_from_png_stream(read, &rest);
    if (cairo_surface_status(picture) == CAIRO_STATUS_SUCCESS) {
        cairo_scale(out, size.width / cairo_image_surface_get_width(picture),
                    size.height / cairo_image_surface_get_height(picture));
        cairo_set_source_surface(out, picture, 0, 0);
        cairo_paint(out);
    }
    cairo_surface_destroy(picture);
}

void draw_text(cairo_t* out, const qoro::ViewNode& view)
{
    // A button's title is drawn as its title label says.
    const qoro::ViewNode& style = view.title_label ? *view.title_label : view;
    cairo_select_font_face(out, style.font.family.c_str(), CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_NORMAL);
    cairo_set_font_size(out, style.font.size);
    cairo_text_extents_t extents;
    cairo_text_extents(out, view.text.text().c_str(), &extents);
    const bool centred = view.kind == qoro::ViewNode::Kind::Button || view.text_alignment == 1;
    const double left = centred ? std::max((view.bounds.width - extents.width) / 2, 0.0) : 0;
    const double base = (view.bounds.height - extents.height) / 2 - extents.y_bearing;
    set_color(out, style.text_color              ? style.text_color
                   : view.title_label != nullptr ? qoro::UIColor::whiteColor()
                                                 : qoro::UIColor::blackColor());
    cairo_move_to(out, left, base);
    cairo_show_text(out, view.text.text().c_str());
}

/// What a view itself shows, in its own coordinates.
void draw_content(cairo_t* out, const qoro::ViewNode& view)
{
    using Kind = qoro::ViewNode::Kind;
    const auto [width, height] = view.bounds;
    cairo_rectangle(out, 0, 0, width, height);
    if (view.background)
        set_color(out, view.background);
    else if (view.kind == Kind::Video) // a player's picture: PlayerEngine::pictures() on the desktop
        cairo_set_source_rgb(out, 0.2, 0.3, 0.4);
    else if (view.kind == Kind::WebView) // an engine's own widget or texture
        cairo_set_source_rgb(out, 0.95, 0.95, 0.95);
    else
        cairo_set_source_rgba(out, 0, 0, 0, 0);
    cairo_fill(out);

    if (view.image && view.image.data()) {
        cairo_save(out);
        draw_png(out, view.image.data().view(), view.bounds);
        cairo_restore(out);
    }
    if (view.text)
        draw_text(out, view);
    if (view.symbol == qoro::Symbol::Close || view.symbol == qoro::Symbol::CloseOnDisc) {
        const double arm = std::min(width, height) / 6;
        cairo_set_source_rgb(out, 1, 1, 1);
        cairo_set_line_width(out, 2);
        for (const double way : {-1, 1}) {
            cairo_move_to(out, width / 2 - arm, height / 2 - way * arm);
            cairo_line_to(out, width / 2 + arm, height / 2 + way * arm);
        }
        cairo_stroke(out);
    }
    if (view.kind == Kind::CountDown && view.seconds_full > 0) {
        const double turn = 2 * std::numbers::pi * view.seconds / view.seconds_full;
        cairo_set_source_rgb(out, 1, 1, 1);
        cairo_set_line_width(out, view.ring_width);
        cairo_arc(out, width / 2, height / 2, (width - view.ring_width) / 2, -std::numbers::pi / 2,
                  turn - std::numbers::pi / 2);
        cairo_stroke(out);
    }
}

/// A view with its subviews, in the coordinates of its parent.
void draw(cairo_t* out, const qoro::ViewNode& view, qoro::CGSize screen)
{
    if (view.hidden)
        return;
    cairo_save(out);
    if (!fills_screen(view)) {
        cairo_translate(out, view.center.x, view.center.y);
        cairo_rotate(out, view.angle);
        cairo_translate(out, -view.bounds.width / 2, -view.bounds.height / 2);
        cairo_rectangle(out, 0, 0, view.bounds.width, view.bounds.height);
    } else {
        cairo_rectangle(out, 0, 0, screen.width, screen.height);
    }
    // Only windows clip their subviews.
    if (view.kind == qoro::ViewNode::Kind::Window)
        cairo_clip(out);
    cairo_new_path(out);
    cairo_push_group(out);
    draw_content(out, view);
    for (const auto& subview : view.subviews)
        draw(out, *subview, screen);
    cairo_pop_group_to_source(out);
    cairo_paint_with_alpha(out, view.alpha);
    cairo_restore(out);
}

bool write_picture(qoro::Platform& platform, const char* path)
{
    const qoro::CGSize screen = *platform.device().facts().screen;
    cairo_surface_t* picture = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, static_cast<int>(screen.width),
                                                          static_cast<int>(screen.height));
    cairo_t* out = cairo_create(picture);
    cairo_paint(out); // black
    for (const auto& window : platform.shared<qoro::WindowList>().visible_from_below())
        draw(out, *window, screen);
    const bool written = cairo_surface_write_to_png(picture, path) == CAIRO_STATUS_SUCCESS;
    cairo_destroy(out);
    cairo_surface_destroy(picture);
    return written;
}

} // namespace

int main(int count, char** words)
{
    if (count < 3 || count == 5) {
        std::cerr << "usage: screen AD.json PICTURE.png [SECONDS [X Y]]\n";
        return 2;
    }
    try {
        qoro::World world;
        world.video.duration = 10;
        qoro::Simulator simulator(world);
        const qoro::OpenedAd ad(simulator.platform(), qoro::read_ad_file(words[1]), nullptr);
        simulator.run_until(count > 3 ? std::atof(words[3]) : 2);
        if (count > 5)
            touch(simulator.platform(), {std::atof(words[4]), std::atof(words[5])});
        simulator.run_until(simulator.now() + 0.5);
        return write_picture(simulator.platform(), words[2]) ? 0 : 1;
    } catch (const qoro::InputError& error) {
        std::cerr << "screen: " << error.what() << '\n';
        return 2;
    }
}
