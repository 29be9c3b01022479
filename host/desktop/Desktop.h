#pragma once

#include "kit/OriginHeaders.h"
#include "platform/Export.h"
#include "platform/Ports.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

typedef struct _GtkWindow GtkWindow;

namespace QORO_EXPORT qoro
{

class DesktopPlatform;
class DisplayWatch;
class Platform;

/// Settings of a Desktop.
struct DesktopOptions {
    /// The application's own window, which ads cover while the desktop is shown. Its size becomes the device's, which
    /// is a tablet if the shorter side has at least 600 points, and is in landscape if the window is wider than high.
    /// It may be destroyed at any time. Null: the device has a window of its own.
    GtkWindow* over = nullptr;
    /// Properties of the device that the window shows. Made-up values by default, so that trackers carry no information
    /// about this machine.
    DeviceFacts device = {};
    /// How the device is held at first. Over an application's window, the window decides.
    UIDeviceOrientation orientation = UIDeviceOrientationPortrait;
    /// Values of UIInterfaceOrientation to which the host application rotates automatically.
    std::vector<std::int64_t> autorotates{1, 3, 4};
    /// Whether the output volume is the machine's; if false, it is that of this program's own sound streams.
    bool system_volume = false;
    /// Discards the sound. The volume is still maintained.
    bool silent = false;
    /// Initial output volume, 0 to 1. Absent: the current volume is used as found.
    std::optional<float> volume = {};
    /// Shows pages outside the web engine's sandbox, for trusted pages only. If false, pages are refused where the
    /// sandbox does not work; the ad continues without its page.
    bool unsandboxed_pages = false;
    /// Whether ads and their pages may reach private networks, such as a studio's own servers. If false, they reach
    /// public addresses only, apart from the hosts that a ServedAd names itself. If true, requests of the ad reach this
    /// machine as well; those of its pages do not.
    bool allow_private_network = false;
    /// Private memory, in megabytes of 1024 × 1024 bytes, above which a page's process, or the process for the pages'
    /// requests, is ended. The ad continues.
    double page_memory = 512;
    /// Seconds for which a page's process may use more than one processor while the video drops frames, before it is
    /// ended. Absent: no limit.
    std::optional<double> page_processor_seconds = {};
    /// Folder of the cached copies of videos (bIsUseVideoCache), created with the first copy. Empty: "qoro-ad/videos"
    /// in the user's cache directory.
    std::string video_cache_folder = {};
    /// Maximum size of all copies together, in bytes; the least recently used are removed first.
    std::uint64_t video_cache_bytes = 256'000'000;
    /// Calls prepare_program() (qoro/Toolkit.h) before GTK starts. If false, the desktop sets neither the locale, nor
    /// the environment, nor the allocator's parameters.
    bool prepare_program = false;
    /// Whether ads may hand events to the viewer's calendar.
    bool calendar = true;
    /// Receives one line, once, if the folder of the copies cannot be used. May be empty.
    std::function<void(const std::string&)> warn = {};
    /// Seconds that the destructor waits at most for pending requests, such as trackers of an ad that has just closed.
    double last_requests_seconds = 2;
};

/// This machine as the platform of ads, with a device that a window shows: one of its own, or the application's
/// (DesktopOptions::over). It belongs to the thread that created it, whose GLib main context it uses. One per program.
class Desktop
{
public:
    /// Starts GTK, if the program has not.
    /// @throws std::runtime_error if there is no display
    explicit Desktop(const DesktopOptions& options = {});
    /// Ends all events and waits for pending requests (last_requests_seconds). No ad may be open.
    ~Desktop();
    Desktop(const Desktop&) = delete;
    Desktop& operator=(const Desktop&) = delete;

    /// The platform to open ads on.
    Platform& platform();

    /// Opens the device's window, or covers the application's: the ad takes its place, and its content is out of reach
    /// of the pointer, the keyboard and assistive technology. A covered window may be resized: the device is scaled to
    /// fit, and turned when the window becomes wider than high, or the reverse. No ad may be open.
    void show();
    /// Closes the device's window, which cannot be opened again, or gives the application's window its content, focus
    /// and title back, until the next show(). An open ad continues out of sight; close it first.
    void hide();
    /// Sets the window's title; over an application's window until hide().
    void set_title(const std::string& title);
    /// Sets the function to call when the viewer closes the device's window, which then stays open until hide() or the
    /// destruction of the desktop. If empty, the window closes and cannot be opened again. The application closes its
    /// own window itself.
    void on_close(std::function<void()> closed);
    /// Sets the function to call when the display is lost: its X server or Wayland compositor has ended. Without one,
    /// GTK ends the program at once.
    /// @param lost called once, as an event of the main loop, which then runs nothing else: it must close the ad and
    ///        call quit(). Empty: removes the function
    void on_display_lost(std::function<void()> lost);
    /// Writes a picture of the device as a PNG file, one pixel per point. Fails while the window is not open.
    /// @return the reason of a failure, one line; empty on success
    std::string snapshot_png(const std::string& path);

    /// Runs the main loop until quit(). A program with a main loop of its own in GLib's default context does not need
    /// it.
    void run();
    /// Makes run() return.
    void quit();

    /// The viewer leaves the application: the video pauses.
    void leave_app();
    /// The viewer returns to it.
    void return_to_app();
    /// Rotates the device, as the viewer does.
    void turn(UIDeviceOrientation orientation);

    /// Registers a video file that the host already has. It takes precedence over a cached copy.
    /// @param address of the video, compared exactly
    /// @param path of the file
    void add_video_copy(const std::string& address, const std::string& path);

    /// Sets the headers and cookies that the ads' own requests to some origins carry from now on: for pages, videos,
    /// pictures and trackers. Requests that pages and browsed pages send carry none. Replaces the former ones.
    /// @throws std::invalid_argument if they cannot be sent (fault_of); the former ones stay
    void set_origin_headers(const std::vector<OriginHeaders>& origins);

private:
    friend class Preload;

    const std::unique_ptr<DesktopPlatform> platform_;
    std::unique_ptr<DisplayWatch> display_watch_;
};

} // namespace qoro
