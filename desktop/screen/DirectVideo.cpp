#include "desktop/screen/DirectVideo.h"

#include "desktop/screen/DisplayWatch.h"

#include <cairo-xlib.h>
#include <gdk/x11/gdkx.h>
#include <gtk/gtk.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

namespace qoro
{

namespace
{

using Drawing = Owned<cairo_t, cairo_destroy>;

/// Pixels between which no picture has to be resampled.
bool is_whole(double pixels)
{
    return std::abs(pixels - std::round(pixels)) < 1e-3;
}

/// The X window of a widget; null if it has none, or none that Cairo draws into.
GdkSurface* x_window_of(GtkWidget* widget)
{
    GtkNative* native = gtk_widget_get_native(widget);
    GdkSurface* window = native ? gtk_native_get_surface(native) : nullptr;
    return window && GDK_IS_X11_SURFACE(window) && gdk_surface_get_mapped(window) &&
                   GSK_IS_CAIRO_RENDERER(gtk_native_get_renderer(native))
               ? window
               : nullptr;
}

/// The corner of a widget in its window.
CGPoint origin_of(GtkWidget* widget)
{
    GtkNative* native = gtk_widget_get_native(widget);
    double frame_x = 0;
    double frame_y = 0;
    gtk_native_get_surface_transform(native, &frame_x, &frame_y);
    double x = 0;
    double y = 0;
    gtk_widget_translate_coordinates(widget, GTK_WIDGET(native), 0, 0, &x, &y);
    return {frame_x + x, frame_y + y};
}

} // namespace

/// What the window shows may be lost. GTK restores it from what GTK has drawn last, which is an older picture.
struct DirectVideo::Watch {
    static gboolean event(GdkX11Display*, void* event, DirectVideo* self)
    {
        const auto* x_event = static_cast<const XEvent*>(event);
        if (x_event->type == Expose && x_event->xexpose.window == self->window_id_)
            gtk_widget_queue_draw(self->surface_);
        return FALSE;
    }
};

DirectVideo::DirectVideo(GtkWidget* surface) : surface_(surface)
{
    GdkDisplay* display = gtk_widget_get_display(surface);
    if (GDK_IS_X11_DISPLAY(display))
        connections_.add(display, "xevent", Watch::event, this);
}

DirectVideo::~DirectVideo() = default;

void DirectVideo::screen_drawn(std::vector<DrawnNode> layers)
{
    layers_ = std::move(layers);
    prepared_for_ = {};
}

bool DirectVideo::put(const VideoFrame& frame, std::size_t layer, CGPoint corner)
{
    GdkSurface* window = x_window_of(surface_);
    if (!window)
        return false;
    if (const Spot spot{layer, corner}; prepared_for_ != spot || gdk_x11_surface_get_xid(window) != window_id_) {
        if (!layers_)
            return false;
        if (!prepare(frame, spot))
            image_ = nullptr;
        prepared_for_ = spot;
    }
    if (!image_ || picture_size(image_) != CGSize{static_cast<double>(frame.width), static_cast<double>(frame.height)})
        return false;

    if (!wait_for_server())
        return false;
    cairo_surface_flush(image_.get());
    const auto* from = static_cast<const unsigned char*>(g_bytes_get_data(frame.pixels.get(), nullptr));
    unsigned char* to = cairo_image_surface_get_data(image_.get());
    const auto stride = static_cast<std::size_t>(cairo_image_surface_get_stride(image_.get()));
    for (std::size_t y = 0; y < static_cast<std::size_t>(frame.height); ++y)
        std::memcpy(to + y * stride, from + y * frame.stride, static_cast<std::size_t>(frame.width) * 4);
    cairo_surface_mark_dirty(image_.get());
    if (!covers_.empty()) {
        const Drawing drawing(cairo_create(image_.get()));
        for (const Cover& cover : covers_) {
            cairo_set_source_surface(drawing.get(), cover.image.get(), cover.x, cover.y);
            cairo_paint(drawing.get());
        }
    }
    const Drawing drawing(cairo_create(window_.get()));
    cairo_set_source_surface(drawing.get(), image_.get(), place_.x, place_.y);
    cairo_set_operator(drawing.get(), CAIRO_OPERATOR_SOURCE);
    cairo_rectangle(drawing.get(), place_.x, place_.y, frame.width, frame.height);
    cairo_fill(drawing.get());
    cairo_surface_flush(window_.get());
    ::Display* connection = gdk_x11_display_get_xdisplay(gdk_surface_get_display(window));
    last_put_ = NextRequest(connection) - 1;
    XFlush(connection);
    return true;
}

/// Cairo waits, too, but does not notice that the server is gone.
bool DirectVideo::wait_for_server() const
{
    ::Display* connection = gdk_x11_display_get_xdisplay(gtk_widget_get_display(surface_));
    if (LastKnownRequestProcessed(connection) < last_put_)
        XSync(connection, False);
    return !display_is_gone();
}

bool DirectVideo::prepare(const VideoFrame& frame, const Spot& spot)
{
    const CGPoint corner = spot.corner;
    covers_.clear();
    if (!open_window())
        return false;
    const double scale = gtk_widget_get_scale_factor(surface_);
    const CGPoint origin = origin_of(surface_);
    place_ = {(origin.x + corner.x) * scale, (origin.y + corner.y) * scale};
    const bool lies_within = corner.x >= 0 && corner.y >= 0 &&
                             corner.x * scale + frame.width <= gtk_widget_get_width(surface_) * scale &&
                             corner.y * scale + frame.height <= gtk_widget_get_height(surface_) * scale;
    if (!lies_within || !is_whole(place_.x) || !is_whole(place_.y))
        return false;
    place_ = {std::round(place_.x), std::round(place_.y)};

    if (picture_size(image_) != CGSize{static_cast<double>(frame.width), static_cast<double>(frame.height)})
        image_.reset(cairo_surface_create_similar_image(
            window_.get(),
            cairo_surface_get_content(window_.get()) == CAIRO_CONTENT_COLOR ? CAIRO_FORMAT_RGB24 : CAIRO_FORMAT_ARGB32,
            frame.width, frame.height));
    if (cairo_surface_status(image_.get()) != CAIRO_STATUS_SUCCESS)
        return false;
    for (std::size_t above = spot.layer + 1; above < layers_->size(); ++above)
        add_cover((*layers_)[above], corner, scale);
    return true;
}

bool DirectVideo::open_window()
{
    GdkSurface* window = x_window_of(surface_);
    ::Display* connection = gdk_x11_display_get_xdisplay(gdk_surface_get_display(window));
    const int scale = gdk_surface_get_scale_factor(window);
    const int width = gdk_surface_get_width(window) * scale;
    const int height = gdk_surface_get_height(window) * scale;
    if (const unsigned long id = gdk_x11_surface_get_xid(window); std::exchange(window_id_, id) != id) {
        image_ = nullptr;
        XWindowAttributes attributes;
        const bool is_suitable = XGetWindowAttributes(connection, id, &attributes) != 0 && attributes.depth >= 24;
        window_.reset(is_suitable ? cairo_xlib_surface_create(connection, id, attributes.visual, width, height)
                                  : nullptr);
    } else if (window_) {
        cairo_xlib_surface_set_size(window_.get(), width, height);
    }
    return window_ != nullptr;
}

void DirectVideo::add_cover(const DrawnNode& node, CGPoint corner, double scale)
{
    if (!node)
        return;
    graphene_rect_t bounds;
    gsk_render_node_get_bounds(node.get(), &bounds);
    const CGSize size = picture_size(image_);
    const double left = std::max(std::floor((bounds.origin.x - corner.x) * scale), 0.0);
    const double top = std::max(std::floor((bounds.origin.y - corner.y) * scale), 0.0);
    const double right = std::min(std::ceil((bounds.origin.x + bounds.size.width - corner.x) * scale), size.width);
    const double bottom = std::min(std::ceil((bounds.origin.y + bounds.size.height - corner.y) * scale), size.height);
    if (left >= right || top >= bottom)
        return;
    Cover cover{Picture(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, static_cast<int>(right - left),
                                                   static_cast<int>(bottom - top))),
                left, top};
    const Drawing drawing(cairo_create(cover.image.get()));
    cairo_translate(drawing.get(), -left, -top);
    cairo_scale(drawing.get(), scale, scale);
    cairo_translate(drawing.get(), -corner.x, -corner.y);
    gsk_render_node_draw(node.get(), drawing.get());
    covers_.push_back(std::move(cover));
}

} // namespace qoro
