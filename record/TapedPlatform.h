#pragma once

#include "host/SessionControls.h"
#include "platform/Platform.h"
#include "record/Tape.h"

#include <functional>
#include <memory>

namespace qoro
{

/// The platform of a session that is recorded or replayed: each port passes through a tape. When a session is recorded,
/// the machine's platform does the work; its parts must use this platform in place of their own, so that views, shared
/// objects and events are this one's.
class TapedPlatform final : public Platform
{
public:
    TapedPlatform();
    ~TapedPlatform() override;

    /// To be called before anything else.
    /// @param tape outlives this object
    /// @param facts of the device
    void replay_from(Tape& tape, const DeviceFacts& facts);
    /// To be called before anything else.
    /// @param tape outlives this object
    /// @param machine outlives every object of the session, but not this object
    /// @param leave_app what the machine does when a step leaves the application
    void record_to(Tape& tape, Platform& machine, std::function<void()> leave_app);

    MainLoop& loop() override;
    PlayerFactory& players() override;
    WebEngineFactory& web_engines() override;
    OutputVolume& volume() override;
    Fetcher& fetcher() override;
    TextMeasurer& text() override;
    ImageDecoder& images() override;
    Device& device() override;
    VideoCacheStore& video_cache() override;
    Calendar& calendar() override;
    Display& display() override;
    Translation& translation() override;
    void leave_app() override;

private:
    struct Ports;
    std::unique_ptr<Ports> ports_;
};

/// What a session's steps change around the ad, past a tape.
class TapedControls final : public SessionControls
{
public:
    /// @param real null on a replay
    TapedControls(Tape& tape, SessionControls* real) : tape_(tape), real_(real) {}

    void bring_news(const MPMoviePlayerController& player, const PlayerNews& news) override;
    void change_device(const DeviceChange& change) override;
    void break_page(const UIWebView& page, PageFault fault) override;
    bool page_runs(const UIWebView& page) const override;

private:
    Tape& tape_;
    SessionControls* const real_;
};

} // namespace qoro
