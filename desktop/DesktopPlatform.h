#pragma once

#include "desktop/GlibLoop.h"
#include "desktop/cache/VideoCache.h"
#include "desktop/calendar/DesktopCalendar.h"
#include "desktop/device/DesktopDevice.h"
#include "desktop/images/GdkImages.h"
#include "desktop/media/GstPlayer.h"
#include "desktop/media/PulseVolume.h"
#include "desktop/net/Reach.h"
#include "desktop/net/SoupFetcher.h"
#include "desktop/screen/Screen.h"
#include "desktop/text/GettextTranslation.h"
#include "desktop/text/PangoText.h"
#include "desktop/web/WebKitEngineFactory.h"
#include "platform/Platform.h"

#include <map>
#include <optional>
#include <string>
#include <utility>

namespace qoro
{

/// The machine's own platform, on the thread that made it, with one window that shows the device. GTK must have been
/// started (start_toolkit).
class DesktopPlatform final : public Platform
{
public:
    struct Options {
        DesktopDeviceOptions device = {};
        /// Whether the output volume is the machine's; else it is this program's own sound's.
        bool system_volume = false;
        /// Whether sound is thrown away; the volume is kept all the same.
        bool silent = false;
        /// Whether a volume view holds a slider.
        bool volume_slider = true;
        /// The output volume to begin with, 0 to 1; absent for the one that is found.
        std::optional<float> volume = {};
        /// Seconds that the platform's end waits at most for requests under way: trackers of an ad that closed just
        /// before. Their answers come to nobody any more.
        double last_requests_seconds = 2;
        /// Whether ads and their pages reach private networks, such as a studio's own servers. Without it they reach
        /// public addresses alone, but for what an ad of this machine names itself (ServedAd). Requests of the ad reach
        /// this machine too then, those of its pages do not.
        bool allow_private_network = false;
        VideoCache::Options video_cache = {};
        DesktopCalendar::Options calendar = {};
        PageLimits pages = {};
    };

    explicit DesktopPlatform(const Options& options);
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

    /// The user leaves the application: what plays pauses, and the kit alone is told.
    void leave_app();
    /// The user comes back: will-enter-foreground, then did-become-active, each as an event of its own. The players
    /// stay paused until they are told to play.
    void return_to_app();
    /// The user changes the output volume.
    /// @param step what is added, within 0 and 1
    void change_volume(float step);

    /// The host has a copy of a video of its own.
    /// @param path of a file
    void add_video_copy(const std::string& address, const std::string& path) { video_cache_.add(address, path); }

private:
    /// The output volume of a device that may have no slider.
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

    /// Copies that the host has, before those of the cache.
    class VideoCopies final : public VideoCacheStore
    {
    public:
        explicit VideoCopies(VideoCache::Options options) : cache_(std::move(options)) {}
        void add(const std::string& address, const std::string& path) { named_.insert_or_assign(address, path); }
        NSString path_for(const NSString& address) override;

    private:
        std::map<std::string, std::string> named_;
        VideoCache cache_;
    };

    /// What an ad has taken goes back to the kernel, some time after its player has gone.
    void return_memory_later();

    const double last_requests_seconds_;
    bool returns_memory_ = false;
    bool has_more_to_return_ = false;
    const ReachRule reach_;
    GlibLoop loop_{this};
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
    Screen screen_{*this};
};

} // namespace qoro
