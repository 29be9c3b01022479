#pragma once

#include "formats/Steps.h"
#include "platform/MediaPlayer.h"

namespace qoro
{

/// What a session's steps can change around the ad, beyond the platform's ports. Called on the platform's thread.
class SessionControls
{
public:
    virtual ~SessionControls() = default;
    /// Delivers a player's news inside the call. No effect for a null player, and where players are real.
    virtual void bring_news(const MPMoviePlayerController& player, const PlayerNews& news) = 0;
    /// Sets all values before posting any change; a value equal to the current one posts nothing.
    virtual void change_device(const DeviceChange& change) = 0;
    /// Ends a page's process, or hangs its script, inside the call. No effect for a null page, and where pages are
    /// real.
    virtual void break_page(const UIWebView& page, PageFault fault)
    {
        static_cast<void>(page);
        static_cast<void>(fault);
    }
    /// Makes a server fail, or answer again, as ServersStep describes it. No effect where servers are real.
    virtual void change_server(const ServersStep::Change& change) { static_cast<void>(change); }
    /// Whether a page's script runs, so that a step may issue commands on its behalf; true where pages are real.
    virtual bool page_runs(const UIWebView& page) const
    {
        static_cast<void>(page);
        return true;
    }
};

} // namespace qoro
