#pragma once

#include "platform/Ports.h"

#include <functional>
#include <memory>
#include <string>

typedef struct _GtkWindow GtkWindow;

namespace qoro
{

class Platform;

/// A desktop window that represents the device's screen, displayed as the device is held. Main thread only.
class Screen : public Display
{
public:
    /// GTK must have been started (start_toolkit).
    /// @param platform its device supplies screen size and orientation; must outlive the screen
    explicit Screen(Platform& platform);
    ~Screen() override;
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;

    /// Sets the window's title. No effect once the viewer has closed the window.
    void set_title(const std::string& title);
    /// Sets a small line of text below the screen; empty hides it.
    void set_help(const std::string& line);
    /// Opens the window. No effect once the viewer has closed it.
    void show();

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
    /// Called when the viewer closes the window, which then stays open until the screen is destroyed. If empty, the
    /// window closes.
    std::function<void()> on_close;
    /// Called when the window was minimised (true) or restored (false). May be empty.
    std::function<void(bool iconified)> on_iconified;

    /// Null once the viewer has closed the window.
    GtkWindow* window() const;

private:
    class Window;

    /// Null once the viewer has closed the window.
    std::unique_ptr<Window> open_;
};

} // namespace qoro
