#pragma once

#include "desktop/GlibLoop.h"
#include "desktop/cache/VideoCache.h"
#include "desktop/calendar/DesktopCalendar.h"
#include "desktop/device/DesktopDevice.h"
#include "desktop/images/GdkImages.h"
#include "desktop/media/GstPlayer.h"
#include "desktop/media/PulseVolume.h"
#include "desktop/net/AddedHeaders.h"
#include "desktop/net/Reach.h"
#include "desktop/net/SoupFetcher.h"
#include "desktop/screen/Screen.h"
#include "desktop/text/GettextTranslation.h"
#include "desktop/text/PangoText.h"
#include "desktop/web/WebKitEngineFactory.h"
#include "platform/Platform.h"

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace qoro
{

/// The platform of this machine, with one window that shows the device. It belongs to the thread that created it. GTK
/// must have been started (start_toolkit).
class DesktopPlatform final : public Platform
{
public:
    /// Settings of the platform.
    struct Options {
        DesktopDeviceOptions device = {};
        /// The host's window that the screen covers while it is shown; the window's size and orientation become the
        /// device's. Null: the screen has a window of its own.
        GtkWindow* covered = nullptr;
        /// Whether the output volume is the machine's; if false, it is that of this program's own sound streams.
        bool system_volume = false;
        /// Discards the sound. The volume is still maintained.
        bool silent = false;
        /// Whether a volume view contains a slider.
        bool volume_slider = true;
        /// Initial output volume, 0 to 1. Absent: the current volume is used as found.
        std::optional<float> volume = {};
        /// Seconds that the destructor waits at most for pending requests, such as trackers of an ad that has just
        /// closed. Their answers are discarded.
        double last_requests_seconds = 2;
        /// Whether ads and their pages may reach private networks, such as a studio's own servers. If false, they reach
        /// public addresses only, apart from the hosts that an ad of this machine names itself (ServedAd). If true,
        /// requests of the ad reach this machine as well; those of its pages do not.
        bool allow_private_network = false;
        VideoCache::Options video_cache = {};
        DesktopCalendar::Options calendar = {};
        PageLimits pages = {};
        /// Whether each creative opens WebKit's inspector, in a window of its own.
        bool inspect_pages = false;
    };

    /// @param front the platform that sessions use in this one's place, such as one that records them; outlives this
    ///        object. Null for this
    explicit DesktopPlatform(const Options& options, Platform* front = nullptr);
    /// Ends all events, destroys shared objects, and waits for pending requests (last_requests_seconds).
    ~DesktopPlatform() override;

    GlibLoop& loop() override { return loop_; }
    GstPlayerFactory& players() override { return players_; }
    WebKitEngineFactory& web_engines() override { return web_engines_; }
    OutputVolume& volume() override { return volume_; }
    SoupFetcher& fetcher() override { return fetcher_; }
    PangoText& text() override { return text_; }
    GdkImages& images() override { return images_; }
    DesktopDevice& device() override { return device_; }
    VideoCacheStore& video_cache() override { return video_cache_; }
    DesktopCalendar& calendar() override { return calendar_; }
    Screen& display() override { return screen_; }
    Translation& translation() override { return translation_; }

    /// Shows the screen. A device that covers a window becomes as large as the window, and is held as it is. No ad may
    /// be open.
    void show();

    /// Notifies the kit as a separate event.
    void leave_app() override;
    /// Reports that the viewer has returned: will-enter-foreground, then did-become-active, then viewDidAppear to the
    /// root controllers of the visible windows, each as a separate event. The players stay paused until play() is
    /// called.
    void return_to_app();
    /// Changes the output volume on behalf of the viewer.
    /// @param step added to the volume; the result is clamped to 0 to 1
    void change_volume(float step);

    /// Folder and size of the video cache, for a download that fills it.
    const VideoCache& cached_videos() const { return video_cache_.cache(); }

    /// Replaces the headers and cookies that the ads' requests to some origins carry.
    /// @throws std::invalid_argument if they cannot be sent (fault_of); the former ones stay
    void set_origin_headers(const std::vector<OriginHeaders>& origins);

    /// Registers a video file that the host already has. It takes precedence over the cache.
    /// @param address of the video, compared exactly
    /// @param path of the file
    void add_video_copy(const std::string& address, const std::string& path) { video_cache_.add(address, path); }

private:
    /// Hides the slider of the output volume on a device without one.
    class Volume final : public OutputVolume
    {
    public:
        Volume(PulseVolume& output, bool has_slider) : output_(output), has_slider_(has_slider) {}
        float value() const override { return output_.value(); }
        void set_value(float volume) override { output_.set_value(volume); }
        bool has_slider() const override { return has_slider_; }

    private:
        PulseVolume& output_;
        const bool has_slider_;
    };

    /// Looks up the host's own copies first, then the cache.
    class VideoCopies final : public VideoCacheStore
    {
    public:
        explicit VideoCopies(VideoCache::Options options) : cache_(std::move(options)) {}
        void add(const std::string& address, const std::string& path) { named_.insert_or_assign(address, path); }
        NSString path_for(const NSString& address) override;
        const VideoCache& cache() const { return cache_; }

    private:
        std::map<std::string, std::string> named_;
        VideoCache cache_;
    };

    /// Reports an audio interruption when the sound server asks the first stream to pause, and its end when it asks the
    /// last of them to go on.
    void sound_requested(const GstPlayer& player, SoundRequest request);
    /// Returns freed memory to the kernel some seconds after a player was destroyed.
    void return_memory_later();

    Platform& front_;
    const double last_requests_seconds_;
    bool returns_memory_ = false;
    bool has_more_to_return_ = false;
    /// The players whose sound the server has asked to pause.
    std::set<const GstPlayer*> interrupted_;
    const ReachRule reach_;
    std::unique_ptr<AddedHeaders> added_headers_;
    GlibLoop loop_{&front_};
    DesktopDevice device_;
    PulseVolume output_volume_;
    Volume volume_;
    GstPlayerFactory players_{loop_};
    WebKitEngineFactory web_engines_;
    SoupFetcher fetcher_{loop_};
    PangoText text_;
    GettextTranslation translation_;
    GdkImages images_;
    VideoCopies video_cache_;
    DesktopCalendar calendar_;
    Screen screen_;
};

} // namespace qoro
