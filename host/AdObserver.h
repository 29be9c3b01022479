#pragma once

#include "host/AdOutcome.h"
#include "platform/Export.h"

#include <string>

namespace QORO_EXPORT qoro
{

/// Follows an ad while it runs (HostSetup::observer). A host overrides what it needs. Every call is a separate event of
/// the platform's loop, on the platform's thread, shortly after the fact; it may close the ad and destroy the OpenedAd,
/// after which no call follows. Texts are valid during the call.
class AdObserver
{
public:
    virtual ~AdObserver() = default;

    /// The ad is on the screen; its video and its page are still loading. At most once.
    virtual void shown() {}
    /// The first picture of a video is on the screen, whether it plays yet or not. Once per video.
    virtual void first_frame() {}
    /// The video plays: at its start, and after each pause or stall.
    virtual void playing() {}
    /// A touch leads elsewhere: to a page, a program, a message, a store or a calendar entry. Once per touch.
    /// @param address where to; empty for a calendar entry, and for a store's item
    virtual void clicked_through(const std::string& address) { static_cast<void>(address); }
    /// The ad has sent the viewer out of the application.
    virtual void departed() {}
    /// The viewer is back in the application.
    virtual void returned() {}
    /// The video cannot be played. The ad stays open (HostSetup::close_when_video_fails).
    /// @param reason one line; empty if the player gives none
    virtual void video_failed(const std::string& reason) { static_cast<void>(reason); }
    /// The page did not load, or has stopped. The ad stays open.
    /// @param reason one line
    virtual void page_failed(const std::string& reason) { static_cast<void>(reason); }
    /// Something that the ad or its page wanted was refused, such as a request to a private network.
    /// @param what "request", or what was denied to the page, such as "navigation" or "window"
    /// @param detail the address or the mistake, one line
    virtual void refused(const std::string& what, const std::string& detail)
    {
        static_cast<void>(what);
        static_cast<void>(detail);
    }
    /// The ad has ended. Precedes OpenedAd::OnEnd in the same event; after it, no call follows.
    virtual void closed(const AdOutcome& outcome) { static_cast<void>(outcome); }
};

} // namespace qoro
