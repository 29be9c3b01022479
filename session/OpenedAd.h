#pragma once

#include "Base/VideoPlayer/QoroVideoAd.h"
#include "platform/Platform.h"
#include "session/AdOutcome.h"
#include "session/Host.h"

#include <functional>
#include <memory>

namespace qoro
{

/// An ad that a host application has opened, on any platform. The ad ends in one of the ways of AdEnd, and the host is
/// told once. One at a time on a platform, which outlives it; main thread only.
///
/// It stands before the platform's witness as long as it lives, and passes everything on.
class OpenedAd
{
public:
    using OnEnd = std::function<void(const AdOutcome& outcome)>;

    /// Opens the ad.
    /// @param ad the description; null fails
    /// @param on_end called once, as an event of its own of the platform's loop, when the ad has ended; it may destroy
    ///        this object
    /// @param host what the ad finds around it; the delegate that hears of a page's failure is always set
    /// @throws std::logic_error while the platform has another opened ad
    OpenedAd(Platform& platform, std::shared_ptr<QoroVideoAd> ad, OnEnd on_end, HostSetup host = {});
    /// Takes an ad that has not ended off the screen, as close() does. From here on the host is told nothing.
    ~OpenedAd();
    OpenedAd(const OpenedAd&) = delete;
    OpenedAd& operator=(const OpenedAd&) = delete;

    /// Ends the ad for the host; nothing for one that has ended.
    void close();
    /// Whether the ad has ended. The host may not have been told yet.
    bool has_ended() const;

private:
    class Watch;

    const std::shared_ptr<Watch> watch_;
};

} // namespace qoro
