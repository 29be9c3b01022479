#pragma once

#include "platform/Foundation.h"
#include "platform/UIKit.h"

#include <string>
#include <vector>

namespace qoro
{

/// The kit's log levels; the misspelling is the kit's own.
enum ZulixLogTag : int {
    ZulixLogTagOfDebug = 0,
    ZulixLogTagOfInfo = 1,
    ZulixLogTagOfWarnning = 2,
    ZulixLogTagOfError = 3,
    ZulixLogTagOfNote = 4,
};

/// The answer to a request of the manager.
struct QoroAdRequest {
    /// The response's body; null when the request failed.
    NSData respData;
    /// The final address of what was fetched.
    NSString strTargetURL;
    /// Why it failed; null text when it did not.
    NSError error;
};

/// The kit's shared manager: requests, the log, facts of the device. One per platform.
class QoroAdManager
{
public:
    static QoroAdManager& sharedInstance();
    /// Writes a line to the kit's log.
    static void showLog(std::string_view message, ZulixLogTag level);
    /// Whether the device is a phone.
    static bool bIsiPhone();
    /// The device identifier; null for none.
    NSString imei() const;

    /// Fetches an address without waiting, and calls exactly one of the two actions, as an event of its own, with the
    /// request as its argument. An unanswered request keeps the target. A null address fails.
    /// @param isBannerGetAdRequest whether this asks for a banner ad; always false here
    void connectToServerWithRequest(const NSString& address, const Action& action, const Action& failAction,
                                    bool isBannerGetAdRequest);

    /// Keeps an auxiliary screen alive and known to the kit. Told to the witness.
    void addExtraView(const std::shared_ptr<UIViewController>& controller);
    /// Told to the witness, also for a controller that was never added.
    void removeExtraView(const UIViewController* controller);
    /// The kit's own way out, for a screen that has closed itself: as removeExtraView, untold.
    void forget_extra_view(const UIViewController* controller);
    std::size_t extra_view_count() const { return extra_views_.size(); }

private:
    std::vector<std::shared_ptr<UIViewController>> extra_views_;
};

} // namespace qoro
