#pragma once

#include "platform/Ports.h"
#include "platform/SafeArea.h"

#include <functional>
#include <memory>
#include <string>

typedef struct _GtkWindow GtkWindow;

namespace qoro
{

class Connections;
class Platform;

/// The device's screen in a desktop window, displayed as the device is held. Main thread only.
class Screen : public Display
{
public:
    /// GTK must have been started (start_toolkit).
    /// @param platform its device supplies screen size and orientation; must outlive the screen
    /// @param covered the window that the screen covers while it is shown, which may be destroyed at any time; null:
    /// the
    ///        screen has a window of its own, of the device's size
    explicit Screen(Platform& platform, GtkWindow* covered = nullptr);
    ~Screen() override;
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;

    /// Sets the window's title. No effect while there is no window(). A covered window has its own again after hide().
    void set_title(const std::string& title);
    /// Sets a small line of text below the screen; empty hides it.
    void set_help(const std::string& line);
    /// Size of the content of the window to cover, in points; zero when it has none yet, and without such a window.
    CGSize room() const;
    /// Opens the window, or covers it: its content is out of reach of the pointer, the keyboard and assistive
    /// technology until hide(). No effect once the viewer has closed the window.
    void show();
    /// Closes the screen's own window, which cannot be opened again; or gives a covered window its content, focus and
    /// title back.
    void hide();

    /// Marks the insets of the device as it is held: these in portrait, those in landscape. Zero marks nothing.
    void mark_safe_areas(const SafeAreaInsets& portrait, const SafeAreaInsets& landscape);

    /// Schedules a redraw. To be called for every change of the view tree, and for every rotation of the device.
    void needs_display() override;

    /// Writes a picture of the whole screen as a PNG file, one pixel per point. Fails while the window is not open.
    /// @return the reason of a failure, one line; empty on success
    std::string snapshot_png(const std::string& path);

    /// Receives each key press before anything else in the window. Returns whether it has handled the key. May be
    /// empty.
    /// @param keyval GDK key value
    /// @param state GDK modifiers
    std::function<bool(unsigned keyval, unsigned state)> on_key;
    /// Whether a text field of a page has the focus. Keyboard shortcuts should be inactive then.
    bool is_written_into() const;
    /// Called when the viewer closes the screen's own window, which then stays open until hide() or the screen's
    /// destruction. If empty, the window closes. A covered window is its owner's to close.
    std::function<void()> on_close;
    /// Called when a covered window has become wider than high, or the reverse; as an event of the loop. May be empty.
    /// @param wide whether it is wider than high
    std::function<void(bool wide)> on_turned;
    /// Called when the window was minimised (true) or restored (false). May be empty.
    std::function<void(bool iconified)> on_iconified;

    /// Null once the viewer has closed the window, and while nothing is covered.
    GtkWindow* window() const;

private:
    class Window;

    Platform& platform_;
    /// The window to cover; null when there is none, or once it has been destroyed.
    GtkWindow* covered_;
    std::unique_ptr<Connections> connections_;
    SafeAreaInsets portrait_insets_;
    SafeAreaInsets landscape_insets_;
    /// Null as window().
    std::unique_ptr<Window> open_;
};

} // namespace qoro
