#pragma once

#include "desktop/glib/Owned.h"
#include "desktop/screen/LayerStack.h"

#include <functional>
#include <memory>
#include <optional>
#include <vector>

typedef struct _GdkEvent GdkEvent;
typedef struct _GdkSnapshot GtkSnapshot;
typedef struct _GtkEventController GtkEventController;
typedef struct _GtkWidget GtkWidget;
typedef struct _GtkWindow GtkWindow;

namespace qoro
{

/// The viewer's input on the screen: touches, keys, and the keyboard focus with its ring. Only the view tree decides
/// which view receives a touch. Main thread only.
class ScreenInput
{
public:
    /// Receives each key press before anything else in the window: GDK's key value and modifiers. Returns whether it
    /// has handled the key.
    using OnKey = std::function<bool(unsigned keyval, unsigned state)>;

    /// Adds its event controllers to window and surface. Window, surface and layers must outlive the object.
    ScreenInput(Platform& platform, GtkWindow* window, GtkWidget* surface, LayerStack& layers, OnKey on_key);
    ScreenInput(const ScreenInput&) = delete;
    ScreenInput& operator=(const ScreenInput&) = delete;

    /// Ignores all further input. To be called before the layers' widgets are released.
    void disconnect() { connections_.clear(); }
    /// Removes its event controllers from a window that goes on without the screen.
    void leave_window();
    /// The view tree has changed: another view may receive a touch.
    void views_changed() { hit_.reset(); }

    /// Whether the surface itself handles input at a point; if not, the page at that point does.
    /// @param in_surface in surface points
    bool keeps(CGPoint in_surface);
    /// Whether a text field of a page has the focus.
    bool is_written_into() const;
    /// Acts on a control as a touch does. No effect unless a touch can reach the view. The view may be null.
    void activate(const std::shared_ptr<ViewNode>& view);

    /// Sets whether move_focus() leaves the focus unchanged; initially false.
    void hold_focus(bool held) { focus_held_ = held; }
    /// Moves the focus to the next or the previous control, from the last one to the first and back. Returns false if
    /// no control can have the focus, and while the focus is held.
    bool move_focus(bool forward);
    /// Restores the focus after a walk of the layers that may have hidden, covered or removed its view. If the chosen
    /// view is out of reach, the focused view keeps the focus if it can; otherwise the view at the same place receives
    /// it, if it accepts it.
    void restore_focus();
    /// Draws the focus ring if the last input was a key.
    void draw_focus(GtkSnapshot* snapshot) const;

private:
    struct Signals;
    /// The result of a hit test: one event asks several times, and a tap begins and ends at one point.
    struct Hit {
        /// In screen coordinates.
        CGPoint point;
        std::weak_ptr<ViewNode> view;
    };

    void observe_keys();
    void observe_touches();

    std::shared_ptr<ViewNode> touched_at(CGPoint in_surface);
    void note_touch(GdkEvent* event);
    void note_key(GdkEvent* event);
    bool press(CGPoint in_surface);
    void drag(CGPoint in_surface);
    void release(CGPoint in_surface);
    void cancel();
    void set_pressed(bool pressed);

    std::shared_ptr<ViewNode> focused_view() const;
    Layer* focused_layer() const;
    bool give_focus(const Layer* layer);
    bool give_focus(const ViewNode* view) { return give_focus(view ? layers_.find(*view) : nullptr); }
    bool capture_key(unsigned keyval, unsigned state);
    bool take_key(unsigned keyval);
    void let_key_go(unsigned keyval);

    Platform& platform_;
    GtkWindow* const window_;
    GtkWidget* const surface_;
    /// Those that the window owns.
    std::vector<GtkEventController*> window_controllers_;
    LayerStack& layers_;
    const OnKey on_key_;

    /// The last hit test; absent once the view tree has changed.
    std::optional<Hit> hit_;
    std::weak_ptr<ViewNode> touched_;
    /// Where the last touch began, in surface points.
    CGPoint touch_began_;
    /// Hardware code of the last key pressed and not yet released.
    std::optional<unsigned> held_key_;

    /// The view that the viewer focused last. While it is out of reach, the view in its place has the focus.
    std::weak_ptr<ViewNode> chosen_;
    /// Last known centre of the focused view, in screen coordinates.
    CGPoint focus_place_;
    /// Whether to draw the focus ring: the last input was a key.
    bool shows_focus_ = false;
    bool focus_held_ = false;
    /// The control that a key holds down.
    std::weak_ptr<ViewNode> key_held_;

    Connections connections_;
};

} // namespace qoro
