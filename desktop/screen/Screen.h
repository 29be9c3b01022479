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

/// A desktop window that represents the device's screen, displayed as the device is held. Every view has one widget.
/// All widgets are children of one container, each with its complete placement: rotations that cancel each other cause
/// no resampling, and moving a view in the tree does not reparent its widget. Only the view tree decides which view
/// receives a touch. Main thread only.
class Screen : public Display, private SurfaceOwner
{
public:
    /// GTK must have been started (start_toolkit).
    /// @param platform its device supplies screen size and orientation; must outlive the screen
    explicit Screen(Platform& platform);
    ~Screen() override;
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;

    void set_title(const std::string& title);
    /// Sets a small line of text below the screen; empty hides it.
    void set_help(const std::string& line);
    /// Opens the window.
    void show();

    /// Schedules a redraw. Called for every change of the view tree; must also be called when the device was rotated.
    void needs_display() override;

    /// Writes a picture of the whole screen as a PNG file, one pixel per point. The window must be open.
    /// @return the reason of a failure, in words; empty on success
    std::string snapshot_png(const std::string& path);

    /// Receives each key press before anything else in the window. Returns whether it has handled the key. May be
    /// empty.
    /// @param keyval GDK key value
    /// @param state GDK modifiers
    std::function<bool(unsigned keyval, unsigned state)> on_key;
    /// Whether a text field of a page has the focus. Keyboard shortcuts should be inactive then.
    bool is_written_into() const;
    /// The viewer requests to close the window, which stays open until the screen is destroyed. If empty, the window
    /// closes.
    std::function<void()> on_close;
    /// The window was minimised (true) or restored (false). May be empty.
    std::function<void(bool iconified)> on_iconified;

    /// Null once the viewer has closed the window.
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
        /// Stacking position of its window, and its own among all views.
        std::size_t window = 0;
        std::size_t height = 0;
        /// Clip rectangle of its window in window points; only used if it does not cover the screen.
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

    /// Tick callback of the pending update, 0 if there is none.
    unsigned tick_ = 0;
    /// Timer of a change that waits for the video's next picture, 0 if there is none.
    unsigned patience_ = 0;
    std::int64_t last_picture_ = 0;                   // GLib's monotonic time in µs; 0 before the first
    std::unordered_map<std::uint64_t, Layer> layers_; // keyed by ViewNode::serial
    std::vector<Layer*> from_below_;                  // the shown ones, bottom first

    // The device's top left corner in the surface, and window points per point of the screen.
    CGPoint origin_;
    double scale_ = 1;

    std::weak_ptr<ViewNode> touched_;
    CGPoint touch_began_; // in surface coordinates
    /// Hardware code of the last key pressed and not yet released.
    std::optional<unsigned> held_key_;

    /// The view that the viewer focused last. While it is out of reach, the view in its place has the focus.
    std::weak_ptr<ViewNode> chosen_;
    /// Last known centre of the focused view, in screen coordinates.
    CGPoint focus_place_;
    /// Draw the focus ring: the last input was a key.
    bool shows_focus_ = false;
    /// The control that a key holds down.
    std::weak_ptr<ViewNode> key_held_;
    bool iconified_ = false;
    bool opening_ = false;
};

} // namespace qoro
