#pragma once

#include "platform/MediaPlayer.h"
#include "session/Steps.h"

namespace qoro
{

/// What a session's steps ask of the world around the ad, beyond the platform's ports.
class SessionControls
{
public:
    virtual ~SessionControls() = default;
    /// Brings a player its news, inside the call. Nothing for a null player, or where players drive themselves.
    virtual void bring_news(const MPMoviePlayerController& player, const PlayerNews& news) = 0;
    /// Everything is set before anything is posted; a value equal to the present one posts nothing.
    virtual void change_device(const DeviceChange& change) = 0;
    /// The user leaves the app.
    virtual void leave_app() = 0;
    /// A page's process dies, or its script hangs, inside the call. Nothing for a null page, or where pages are real.
    virtual void break_page(const UIWebView& page, PageFault fault)
    {
        static_cast<void>(page);
        static_cast<void>(fault);
    }
    /// Whether a page's script runs, so that a step can speak for it.
    virtual bool page_runs(const UIWebView& page) const
    {
        static_cast<void>(page);
        return true;
    }
};

} // namespace qoro
