#pragma once

#include "Base/VideoPlayer/QoroVideoAd.h"
#include "formats/HostSetup.h"
#include "host/AdObserver.h"
#include "host/AdOutcome.h"
#include "platform/Export.h"
#include "platform/Platform.h"
#include "platform/Purposes.h"

#include <functional>
#include <memory>

namespace QORO_EXPORT qoro
{

struct Rehearsal;

/// An ad that a host application has opened, on any platform. Reports its end (AdEnd) to the host once. At most one at
/// a time on a platform; the platform outlives it. Only the platform's thread may use it.
///
/// A callback of the host may throw: the exception is caught where the callback was called. OnEnd is reported as a
/// fault and as an error of the ad's log; a log or an event sink that has thrown is reported on standard error and not
/// called again.
///
/// While it exists, it is the platform's event sink and forwards every event to the previous one, if any. The previous
/// sink must outlive it; the platform's sink must not be replaced meanwhile.
class OpenedAd
{
public:
    /// Receives the outcome of an ad that has ended.
    using OnEnd = std::function<void(const AdOutcome& outcome)>;

    /// Opens the ad.
    /// @param platform the platform that shows it
    /// @param ad the description, which the controller changes: each opening needs a fresh one. Null, and a description
    ///        that names no video, end as AdEnd::Failed
    /// @param on_end called once when the ad has ended, as a separate event of the platform's loop; may destroy this
    ///        object, and may open the next ad on the platform while this object exists; may be empty
    /// @param host the ad's surroundings; its member delegate is ignored: the delegate is always set
    /// @throws std::logic_error while another ad is open on the platform whose end has not been reported, or a tag
    OpenedAd(Platform& platform, const std::shared_ptr<QoroVideoAd>& ad, OnEnd on_end, HostSetup host = {});
    /// Opens the ad and performs steps on it, for programs that test ads. Its delegates are those that the setup names.
    /// An ad whose controller a step releases ends as AdEnd::Host when the controller is destroyed.
    /// @throws std::logic_error while another ad is open on the platform whose end has not been reported
    OpenedAd(Platform& platform, const std::shared_ptr<QoroVideoAd>& ad, OnEnd on_end, const HostSetup& host,
             Rehearsal rehearsal);
    /// Closes an ad that has not ended, as close() does. on_end is not called afterwards.
    ~OpenedAd();
    OpenedAd(const OpenedAd&) = delete;
    OpenedAd& operator=(const OpenedAd&) = delete;

    /// Ends the ad and takes it off the screen. No effect on an ad that has ended.
    /// @param closer on whose behalf, which decides AdOutcome::end: the host's own, or the viewer's, as when the viewer
    ///        closes the ad's window
    void close(ClosedBy closer = ClosedBy::Host);
    /// Leaves the topmost screen that the ad has opened, the browser or a store page, as the viewer's back key does.
    /// @return false when no such screen is shown
    bool leave_screen();
    /// Whether the ad has ended. The end may not have been reported yet.
    bool has_ended() const;

    /// Takes an ad whose end has been reported off a platform that the next ad or tag is about to use.
    /// @throws std::logic_error while an ad is open on the platform whose end has not been reported
    static void leave_platform(Platform& platform);

private:
    class Watch;

    const std::shared_ptr<Watch> watch_;
};

} // namespace qoro
