#include "desktop/screen/Screen.h"

#include "desktop/glib/Owned.h"
#include "desktop/screen/DirectVideo.h"
#include "desktop/screen/FramePacer.h"
#include "desktop/screen/LayerStack.h"
#include "desktop/screen/Painting.h"
#include "desktop/screen/ScreenInput.h"
#include "desktop/screen/Surface.h"
#include "desktop/screen/UploadMemory.h"

#include <gtk/gtk.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <utility>
#include <vector>

namespace qoro
{

namespace
{

/// Points of the monitor that are reserved for window frames and panels.
constexpr int monitor_margin = 48;
/// Over what a device's camera, corners and bars may cover: translucent magenta.
constexpr GdkRGBA CoveredColor{1, 0, 1, 0.35F};

graphene_rect_t rect_of(const CGRect& rect)
{
    return GRAPHENE_RECT_INIT(static_cast<float>(rect.x), static_cast<float>(rect.y), static_cast<float>(rect.width),
                              static_cast<float>(rect.height));
}

std::string write_png(GdkTexture* picture, const std::string& path)
{
    const Owned<GBytes, g_bytes_unref> png(gdk_texture_save_to_png_bytes(picture));
    gsize length = 0;
    const auto* bytes = static_cast<const char*>(g_bytes_get_data(png.get(), &length));
    Error error;
    g_file_set_contents(path.c_str(), bytes, static_cast<gssize>(length), error.out());
    return error.message();
}

} // namespace

/// What a covered window shows otherwise.
class HostContent
{
public:
    explicit HostContent(GtkWindow* window)
        : content_(new_ref(gtk_window_get_child(window))), focus_(new_ref(gtk_window_get_focus(window)))
    {
        if (const char* title = gtk_window_get_title(window))
            title_ = title;
    }

    void give_back(GtkWindow* window) const
    {
        gtk_window_set_child(window, content_.get());
        gtk_window_set_title(window, title_ ? title_->c_str() : nullptr);
        if (focus_ && gtk_widget_get_root(focus_.get()) == GTK_ROOT(window))
            gtk_window_set_focus(window, focus_.get());
    }

private:
    ObjectRef<GtkWidget> content_; // null: none
    ObjectRef<GtkWidget> focus_;   // null: none
    std::optional<std::string> title_;
};

/// The window of the screen with the parts that share it.
class Screen::Window : private SurfaceOwner
{
public:
    /// @param covered null: a window of its own
    Window(Screen& screen, Platform& platform, GtkWindow* covered);
    ~Window() override;
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;

    void set_help(const std::string& line);
    void show();
    void update();
    std::string snapshot_png(const std::string& path);

    GtkWindow* window() const { return window_; }
    void views_changed();
    void marks_changed() { gtk_widget_queue_draw(surface_.get()); }
    const ScreenInput& input() const { return input_; }

private:
    struct Signals;

    int natural_width() const override;
    int natural_height() const override;
    void allocate(int width, int height) override;
    void draw(GtkSnapshot* snapshot) override;
    bool keeps(double x, double y) override { return input_.keeps({x, y}); }
    bool move_focus(bool forward) override { return input_.move_focus(forward); }

    bool is_wide() const;
    double monitor_scale() const;
    std::vector<DrawnNode> draw_layers(GtkSnapshot* snapshot);
    void mark_safe_areas(GtkSnapshot* snapshot);
    bool show_picture(const Layer& video);
    void follow_state();
    void reserve_upload_memory();

    Screen& screen_;
    Platform& platform_;
    /// Absent for a window of its own, and once a covered window has been destroyed.
    std::optional<HostContent> covered_;
    /// A toplevel belongs to GTK. A reference would delay the destruction of a window that the viewer closes.
    GtkWindow* const window_;
    const ObjectRef<GtkWidget> surface_;
    GtkWidget* const help_; // belongs to the window
    std::unique_ptr<UploadMemory> upload_memory_;
    FramePacer pacer_;
    LayerStack layers_;
    ScreenInput input_;
    DirectVideo direct_;
    bool iconified_ = false;
    /// Whether the covered window is wider than high.
    bool wide_ = false;
    Connections connections_;
};

struct Screen::Window::Signals {
    static gboolean close_requested(GtkWindow*, Window* self)
    {
        const Screen& screen = self->screen_;
        if (!screen.on_close)
            return FALSE;
        screen.on_close();
        return TRUE;
    }

    static void state_changed(GdkToplevel* toplevel, GParamSpec*, Window* self)
    {
        const bool iconified = (gdk_toplevel_get_state(toplevel) & GDK_TOPLEVEL_STATE_MINIMIZED) != 0;
        if (std::exchange(self->iconified_, iconified) != iconified && self->screen_.on_iconified)
            self->screen_.on_iconified(iconified);
    }

    static void realized(GtkWidget*, Window* self) { self->follow_state(); }

    /// The window is closed without an on_close, or a covered window by its owner.
    static void destroyed(GtkWidget*, Window* self)
    {
        self->covered_.reset();
        self->screen_.open_.reset();
    }
};

Screen::Window::Window(Screen& screen, Platform& platform, GtkWindow* covered)
    : screen_(screen), platform_(platform), covered_(covered ? std::optional<HostContent>(covered) : std::nullopt),
      window_(covered ? covered : GTK_WINDOW(gtk_window_new())), surface_(sink_ref(surface_new(*this))),
      help_(gtk_label_new(nullptr)), pacer_(surface_.get(), [this] { update(); }),
      layers_(platform, surface_.get(), covered ? std::numeric_limits<double>::infinity() : 1,
              {.picture =
                   [this](const Layer& video) {
                       // Before an update, whose changes GTK has not drawn yet.
                       const bool is_shown = show_picture(video);
                       pacer_.picture_arrived();
                       return is_shown;
                   },
               .activated = [this](const std::shared_ptr<ViewNode>& view) { input_.activate(view); }}),
      input_(platform, window(), surface_.get(), layers_,
             [this](unsigned keyval, unsigned state) { return screen_.on_key && screen_.on_key(keyval, state); }),
      direct_(surface_.get())
{
    GtkWidget* column = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
    gtk_box_append(GTK_BOX(column), surface_.get());
    gtk_box_append(GTK_BOX(column), help_);
    gtk_label_set_wrap(GTK_LABEL(help_), TRUE);
    // A natural width of one letter: the text wraps at the width of the screen and never widens the window.
    gtk_label_set_width_chars(GTK_LABEL(help_), 1);
    gtk_label_set_max_width_chars(GTK_LABEL(help_), 1);
    gtk_widget_set_visible(help_, FALSE);
    gtk_window_set_child(window(), column);
    connections_.add(window(), "destroy", Signals::destroyed, this);
    if (covered) {
        gtk_widget_set_hexpand(surface_.get(), TRUE);
        gtk_widget_set_vexpand(surface_.get(), TRUE);
        layers_.walk();
        wide_ = is_wide();
    } else {
        // The window has the size of the device, also after a rotation.
        gtk_window_set_resizable(window(), FALSE);
        connections_.add(window(), "close-request", Signals::close_requested, this);
    }
    if (gtk_widget_get_realized(GTK_WIDGET(window())))
        follow_state();
    else
        connections_.add(window(), "realize", Signals::realized, this);
}

Screen::Window::~Window()
{
    connections_.clear();
    input_.disconnect();
    surface_release(surface_.get());
    if (covered_) {
        input_.leave_window();
        covered_->give_back(window());
    } else {
        gtk_window_destroy(window()); // no effect if it is being destroyed
    }
}

void Screen::Window::set_help(const std::string& line)
{
    gtk_label_set_text(GTK_LABEL(help_), line.c_str());
    gtk_widget_set_visible(help_, !line.empty());
}

void Screen::Window::show()
{
    update();
    // Suppresses the focus that GTK would set when the window opens.
    input_.hold_focus(true);
    gtk_window_present(window());
    input_.hold_focus(false);
}

void Screen::Window::update()
{
    const bool moved = layers_.walk();
    input_.restore_focus();
    // A layout costs several questions to the X server.
    if (!moved)
        return;
    direct_.screen_moved();
    gtk_widget_queue_allocate(surface_.get());
    gtk_widget_queue_draw(surface_.get());
}

void Screen::Window::views_changed()
{
    input_.views_changed();
    pacer_.schedule();
}

bool Screen::Window::is_wide() const
{
    const CGSize device = layers_.viewport().held.extents();
    return device.width > device.height;
}

void Screen::Window::allocate(int width, int height)
{
    layers_.allocate(width, height);
    const bool wide = width > height;
    if (!covered_ || std::exchange(wide_, wide) == wide)
        return;
    // Not within GTK's layout, which a rotation would change.
    platform_.loop().post([screen = &screen_, wide] {
        if (screen->on_turned)
            screen->on_turned(wide);
    });
}

void Screen::Window::follow_state()
{
    connections_.add(gtk_native_get_surface(GTK_NATIVE(window())), "notify::state", Signals::state_changed, this);
    reserve_upload_memory();
}

double Screen::Window::monitor_scale() const
{
    // A point of the device is a point of the monitor, unless the device is larger than the monitor.
    GListModel* monitors = gdk_display_get_monitors(gtk_widget_get_display(surface_.get()));
    const auto monitor = adopt(GDK_MONITOR(g_list_model_get_item(monitors, 0)));
    if (!monitor)
        return 1;
    GdkRectangle room;
    gdk_monitor_get_geometry(monitor.get(), &room);
    const CGSize device = layers_.viewport().held.extents();
    return std::min({1.0, room.width / device.width, (room.height - monitor_margin) / device.height});
}

int Screen::Window::natural_width() const
{
    return static_cast<int>(std::lround(layers_.viewport().held.extents().width * monitor_scale()));
}

int Screen::Window::natural_height() const
{
    return static_cast<int>(std::lround(layers_.viewport().held.extents().height * monitor_scale()));
}

void Screen::Window::reserve_upload_memory()
{
    const DeviceFacts& facts = platform_.device().facts();
    const CGSize size = facts.screen.value_or(layers_.viewport().held.screen);
    const int scale = gtk_widget_get_scale_factor(GTK_WIDGET(window()));
    upload_memory_ =
        std::make_unique<UploadMemory>(gtk_widget_get_display(GTK_WIDGET(window())),
                                       static_cast<int>(size.width) * scale, static_cast<int>(size.height) * scale);
}

void Screen::Window::draw(GtkSnapshot* snapshot)
{
    direct_.screen_drawn(draw_layers(snapshot));
}

/// Draws the device's screen with its layers, on black.
/// @return what lies on the black, from below: the layers, as they are numbered, and what marks some of them
std::vector<DrawnNode> Screen::Window::draw_layers(GtkSnapshot* snapshot)
{
    const GdkRGBA black{0, 0, 0, 1};
    const graphene_rect_t device = rect_of(layers_.viewport().area());
    gtk_snapshot_append_color(snapshot, &black, &device);
    if (covered_) {
        const graphene_rect_t whole = GRAPHENE_RECT_INIT(0, 0, static_cast<float>(gtk_widget_get_width(surface_.get())),
                                                         static_cast<float>(gtk_widget_get_height(surface_.get())));
        gtk_snapshot_append_color(snapshot, &black, &whole);
    }

    std::vector<DrawnNode> drawn = layers_.draw();
    GtkSnapshot* marks = gtk_snapshot_new();
    mark_safe_areas(marks);
    drawn.push_back(drawn_node(marks));
    GtkSnapshot* focus = gtk_snapshot_new();
    input_.draw_focus(focus);
    drawn.push_back(drawn_node(focus));
    for (const DrawnNode& each : drawn)
        if (each)
            gtk_snapshot_append_node(snapshot, each.get());
    return drawn;
}

bool Screen::Window::show_picture(const Layer& video)
{
    const VideoFrame frame = node_widget_next_picture(video.widget);
    const WidgetPlace& at = video.place;
    // Another video over this one would be shown with the picture that was drawn last.
    const bool is_below_another = std::ranges::any_of(layers_.from_below(), [&](const Layer* layer) {
        const std::shared_ptr<ViewNode> view = layer->view.lock();
        return layer->height > video.height && view && view->kind == ViewNode::Kind::Video;
    });
    if (!frame || at.angle != 0 || video.opacity < 1 || video.clipped || is_below_another)
        return false;
    const auto& [held, origin, scale, max_scale] = layers_.viewport();
    const double pixels_per_point = scale * gtk_widget_get_scale_factor(surface_.get());
    const CGPoint corner = picture_corner({static_cast<double>(at.width), static_cast<double>(at.height)},
                                          {frame.width / pixels_per_point, frame.height / pixels_per_point});
    return direct_.put(frame, video.height,
                       {origin.x + scale * (at.center.x - at.width / 2.0 + corner.x),
                        origin.y + scale * (at.center.y - at.height / 2.0 + corner.y)});
}

void Screen::Window::mark_safe_areas(GtkSnapshot* snapshot)
{
    const auto [top, left, bottom, right] = is_wide() ? screen_.landscape_insets_ : screen_.portrait_insets_;
    const Viewport& viewport = layers_.viewport();
    const auto [width, height] = viewport.held.extents();
    for (const CGRect& band :
         {CGRect{0, 0, width, top}, CGRect{0, height - bottom, width, bottom},
          CGRect{0, top, left, height - top - bottom}, CGRect{width - right, top, right, height - top - bottom}}) {
        if (band.width <= 0 || band.height <= 0)
            continue;
        const CGRect place = viewport.to_surface(band);
        const graphene_rect_t box = rect_of(place);
        gtk_snapshot_append_color(snapshot, &CoveredColor, &box);
    }
}

std::string Screen::Window::snapshot_png(const std::string& path)
{
    if (!gtk_widget_get_mapped(surface_.get()))
        return "nothing is shown";
    update();
    ObjectRef<GdkTexture> picture;
    layers_.unscaled([&] {
        GtkSnapshot* snapshot = gtk_snapshot_new();
        draw_layers(snapshot);
        const DrawnNode node = drawn_node(snapshot);
        const CGSize size = layers_.viewport().held.extents();
        const graphene_rect_t device =
            GRAPHENE_RECT_INIT(0, 0, static_cast<float>(size.width), static_cast<float>(size.height));
        GskRenderer* renderer = gtk_native_get_renderer(GTK_NATIVE(window()));
        picture = adopt(gsk_renderer_render_texture(renderer, node.get(), &device));
    });
    return write_png(picture.get(), path);
}

// ---------------------------------------------------------------------------------------------------------- Screen

Screen::Screen(Platform& platform, GtkWindow* covered)
    : platform_(platform), covered_(covered), connections_(std::make_unique<Connections>())
{
    if (covered_)
        connections_->add(
            covered_, "destroy", +[](GtkWidget*, Screen* self) { self->covered_ = nullptr; }, this);
    else
        open_ = std::make_unique<Window>(*this, platform_, nullptr);
}

Screen::~Screen()
{
    hide();
}

void Screen::set_title(const std::string& title)
{
    if (open_)
        gtk_window_set_title(open_->window(), title.c_str());
}

void Screen::set_help(const std::string& line)
{
    if (open_)
        open_->set_help(line);
}

CGSize Screen::room() const
{
    if (!covered_)
        return {};
    GtkWidget* const window = GTK_WIDGET(covered_);
    GtkWidget* const content = gtk_window_get_child(covered_);
    int width = gtk_widget_get_width(window);
    // A window's own title bar is part of its height.
    int height = content ? gtk_widget_get_height(content) : gtk_widget_get_height(window);
    if (width <= 0 || height <= 0)
        gtk_window_get_default_size(covered_, &width, &height);
    return width > 0 && height > 0 ? CGSize{static_cast<double>(width), static_cast<double>(height)} : CGSize{};
}

void Screen::show()
{
    if (!open_ && covered_)
        open_ = std::make_unique<Window>(*this, platform_, covered_);
    if (open_)
        open_->show();
}

void Screen::mark_safe_areas(const SafeAreaInsets& portrait, const SafeAreaInsets& landscape)
{
    portrait_insets_ = portrait;
    landscape_insets_ = landscape;
    if (open_)
        open_->marks_changed();
}

void Screen::hide()
{
    // Null before the window is destroyed: its destruction may call needs_display().
    open_.reset();
}

void Screen::needs_display()
{
    if (open_)
        open_->views_changed();
}

std::string Screen::snapshot_png(const std::string& path)
{
    return open_ ? open_->snapshot_png(path) : "nothing is shown";
}

bool Screen::is_written_into() const
{
    return open_ && open_->input().is_written_into();
}

GtkWindow* Screen::window() const
{
    return open_ ? open_->window() : nullptr;
}

} // namespace qoro
