#pragma once

#include "Base/VideoPlayer/QoroVideoAd.h"
#include "formats/HostSetup.h"
#include "host/AdOutcome.h"
#include "platform/Platform.h"
#include "platform/Purposes.h"

#include <functional>
#include <memory>

namespace qoro
{

struct Rehearsal;

/// An ad that a host application has opened, on any platform. Reports its end (AdEnd) to the host once. At most one at
/// a time on a platform; the platform outlives it. Main thread only.
///
/// While it exists, it is the platform's event sink and forwards every event to the previous one.
class OpenedAd
{
public:
    /// Receives the outcome of an ad that has ended.
    using OnEnd = std::function<void(const AdOutcome& outcome)>;

    /// Opens the ad.
    /// @param platform the platform that shows it
    /// @param ad the description; null fails
    /// @param on_end called once when the ad has ended, as a separate event of the platform's loop; may destroy this
    ///        object
    /// @param host the ad's surroundings; the delegate that is notified of a page's failure is always set
    /// @throws std::logic_error while the platform has another opened ad
    OpenedAd(Platform& platform, std::shared_ptr<QoroVideoAd> ad, OnEnd on_end, HostSetup host = {});
    /// Opens the ad and performs steps on it, for programs that test ads. Its delegates are those of the setup. An ad
    /// whose controller a step releases ends when the controller is destroyed.
    /// @throws std::logic_error while the platform has another opened ad
    OpenedAd(Platform& platform, std::shared_ptr<QoroVideoAd> ad, OnEnd on_end, HostSetup host, Rehearsal rehearsal);
    /// Takes an ad that has not ended off the screen, as close() does. No end is reported afterwards.
    ~OpenedAd();
    OpenedAd(const OpenedAd&) = delete;
    OpenedAd& operator=(const OpenedAd&) = delete;

    /// Ends the ad; no effect for one that has ended.
    /// @param closer on whose behalf: the host's own, or its viewer's, as when the viewer closes the ad's window
    void close(ClosedBy closer = ClosedBy::Host);
    /// Leaves the topmost screen that the ad has opened, the browser or a store page, as the viewer's back key does.
    /// @return false when no such screen is shown
    bool leave_screen();
    /// Whether the ad has ended. The end may not have been reported yet.
    bool has_ended() const;

private:
    class Watch;

    const std::shared_ptr<Watch> watch_;
};

} // namespace qoro
