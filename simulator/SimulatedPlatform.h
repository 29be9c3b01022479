#pragma once

#include "formats/World.h"
#include "host/SessionControls.h"
#include "platform/Platform.h"
#include "simulator/SimulatedDevice.h"
#include "simulator/SimulatedNet.h"
#include "simulator/SimulatedPlayer.h"
#include "simulator/SimulatedText.h"
#include "simulator/SimulatedWebEngine.h"
#include "simulator/VirtualLoop.h"

#include <functional>
#include <utility>

namespace qoro
{

/// A platform in virtual time. Deterministic: the same world gives the same trace, byte for byte. Events run only
/// inside run_until().
class SimulatedPlatform final : public Platform, public SessionControls
{
public:
    /// Copies the world, whose state is that at the session's start.
    /// @param front the platform that sessions use in this one's place, such as one that records them; null for this
    explicit SimulatedPlatform(World world = {}, Platform* front = nullptr);
    ~SimulatedPlatform() override;

    VirtualLoop& loop() override { return loop_; }
    SimulatedPlayers& players() override { return players_; }
    SimulatedWebEngines& web_engines() override { return web_engines_; }
    SimulatedVolume& volume() override { return volume_; }
    SimulatedNet& fetcher() override { return net_; }
    TextMeasurer& text() override { return text_; }
    ImageDecoder& images() override { return images_; }
    SimulatedDevice& device() override { return device_; }
    VideoCacheStore& video_cache() override { return video_cache_; }
    Calendar& calendar() override { return calendar_; }
    Display& display() override { return display_; }

    /// Runs every event due at or before a time.
    /// @param seconds since the start
    void run_until(double seconds) { loop_.run_until(to_microseconds(seconds)); }

    /// Sets a callback for visible changes, called inside the event that causes them; null removes it.
    void on_display_change(std::function<void()> changed) { display_.changed = std::move(changed); }

    void bring_news(const MPMoviePlayerController& player, const PlayerNews& news) override;
    void change_device(const DeviceChange& change) override;
    void break_page(const UIWebView& page, PageFault fault) override;
    void change_server(const ServersStep::Change& change) override;
    bool page_runs(const UIWebView& page) const override;

private:
    friend class StateReader; // workbench/explore/StateHash.cpp
    /// Draws nothing.
    struct NoDisplay final : Display {
        std::function<void()> changed;
        void needs_display() override
        {
            if (changed)
                changed();
        }
    };

    const World world_;
    Platform& front_;
    VirtualLoop loop_{front_};
    SimulatedPlayers players_;
    SimulatedWebEngines web_engines_;
    SimulatedDevice device_;
    SimulatedVolume volume_;
    SimulatedNet net_;
    SimulatedText text_;
    SimulatedImages images_;
    SimulatedVideoCache video_cache_;
    SimulatedCalendar calendar_;
    NoDisplay display_;
};

} // namespace qoro
