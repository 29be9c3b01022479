#pragma once

#include "desktop/screen/HeldScreen.h"
#include "desktop/screen/NodeWidget.h"
#include "desktop/screen/Surface.h"
#include "desktop/screen/UploadMemory.h"
#include "platform/Platform.h"
#include "views/ViewNode.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

typedef struct _GdkEvent GdkEvent;
typedef struct _GtkWindow GtkWindow;

namespace qoro
{

/// One desktop window that is the device's screen, shown as the device is held. Every view has one widget, all side by
/// side in one container, each with its whole placement: turns that cancel each other leave nothing to turn, and a view
/// that moves in the tree does not move among widgets. The view tree alone decides who is touched.
class Screen : public Display, private SurfaceOwner
{
public:
    /// GTK must have been started (start_toolkit). The platform outlives the screen, whose facts and orientation it
    /// asks for when it draws.
    explicit Screen(Platform& platform);
    ~Screen() override;
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;

    void set_title(const std::string& title);
    /// A small line under the screen; empty for none.
    void set_help(const std::string& line);
    /// Opens the window.
    void show();

    /// Called for every change of the view tree; to be called too when the device was turned.
    void needs_display() override;

    /// A picture of the whole screen as it is shown, one pixel a point, as a PNG file. The window must be open.
    /// @return why the file could not be written, in words; empty when it was
    std::string snapshot_png(const std::string& path);

    /// A key was pressed, before anything in the window hears of it. Answers whether it was taken.
    /// @param keyval GDK's key value
    /// @param state GDK's modifiers
    std::function<bool(unsigned keyval, unsigned state)> on_key;
    /// Whether the viewer writes into a page: whatever else keys mean, they mean it elsewhere.
    bool is_written_into() const;
    /// The viewer closes the window; it stays open until the screen goes. Without a function it closes.
    std::function<void()> on_close;
    /// The window was iconified (true) or came back (false).
    std::function<void(bool iconified)> on_iconified;

    GtkWindow* window() const { return window_; }

private:
    struct Signals;

    /// A view on the screen.
    struct Layer {
        std::weak_ptr<ViewNode> view;
        GtkWidget* widget = nullptr;
        bool shown = false;
        WidgetPlace place;
        double opacity = 1;
        /// How high its window lies, and it in there.
        std::size_t window = 0;
        std::size_t height = 0;
        /// What its window lets be seen, in window points, where that is not everything.
        bool clipped = false;
        CGRect clip;
    };

    int natural_width() const override;
    int natural_height() const override;
    void allocate(int width, int height) override;
    void draw(GtkSnapshot* snapshot) override;
    bool keeps(double x, double y) const override;
    bool move_focus(bool forward) override;

    void walk_with_next_frame();
    void stop_waiting();
    void picture_arrived();
    void update();
    void add_layers(const std::shared_ptr<ViewNode>& view, double opacity, const ViewNode& in_window,
                    std::size_t window_number);
    void retire_layers();
    void order_widgets();
    void find_reach();
    NodeReach reach_of(const Layer& layer);
    void place_layers();
    void place_layer(Layer& layer);
    void draw_layers(GtkSnapshot* snapshot);
    void draw_focus(GtkSnapshot* snapshot);
    double monitor_scale() const;
    CGPoint screen_point(double x, double y) const;
    std::shared_ptr<ViewNode> touched_at(double x, double y) const;

    void note_touch(GdkEvent* event);
    void note_key(GdkEvent* event);
    bool press(double x, double y);
    void drag(double x, double y);
    void release(double x, double y);
    void set_pressed(bool pressed);

    std::shared_ptr<ViewNode> focused_view() const;
    Layer* layer_of(const ViewNode& view);
    Layer* focused_layer() const;
    bool give_focus(Layer* layer);
    void keep_focus();
    bool capture_key(unsigned keyval, unsigned state);
    bool take_key(unsigned keyval);
    void let_key_go(unsigned keyval);
    void activate(const std::shared_ptr<ViewNode>& view);

    Platform& platform_;
    GtkWindow* window_ = nullptr;
    GtkWidget* surface_ = nullptr;
    GtkWidget* help_ = nullptr;
    std::unique_ptr<UploadMemory> upload_memory_; // while the window is open
    HeldScreen held_{{375, 812}, 0};

    /// A walk over the tree is due with the next frame.
    unsigned tick_ = 0;
    /// A change waits for the next picture of the video, for so long.
    unsigned patience_ = 0;
    std::int64_t last_picture_ = 0;                   // GLib's monotonic time, µs; 0 before the first
    std::unordered_map<std::uint64_t, Layer> layers_; // by the view's serial
    std::vector<Layer*> from_below_;                  // those that are shown

    // The device's place in the surface: its top left corner, and window points to a point of the screen.
    CGPoint origin_;
    double scale_ = 1;

    std::weak_ptr<ViewNode> touched_;
    CGPoint touch_began_; // in the surface
    /// The key that went down last and is not up yet, by its place on the keyboard.
    std::optional<unsigned> held_key_;

    /// Who the viewer gave the keyboard to. While that is out of reach, what lies in its place has it.
    std::weak_ptr<ViewNode> chosen_;
    /// Where the one that has the keyboard was last seen, on the device's screen.
    CGPoint focus_place_;
    /// The viewer goes by keyboard, and is to see where.
    bool shows_focus_ = false;
    /// The control that is held down by a key.
    std::weak_ptr<ViewNode> key_held_;
    bool iconified_ = false;
    bool opening_ = false;
};

} // namespace qoro
