#pragma once

#include "platform/Foundation.h"
#include "platform/UIKit.h"

#include <memory>
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

/// Shows an item by its AppStream identifier, where the host has no store of its own.
inline constexpr const char* DefaultStorePage = "https://flathub.org/apps/{id}";

/// A store's item, and what the store is to be told. Any of them may be null.
struct StoreItem {
    NSString id;
    NSString campaign;
    NSString provider;
    NSString ad_provider;
};

class RequestLimit;

/// The kit's shared manager: requests, the log, facts of the device. One per platform.
class QoroAdManager
{
public:
    QoroAdManager();
    ~QoroAdManager();
    QoroAdManager(const QoroAdManager&) = delete;
    QoroAdManager& operator=(const QoroAdManager&) = delete;

    static QoroAdManager& sharedInstance();
    /// Writes a line to the kit's log.
    static void showLog(std::string_view message, ZulixLogTag level);
    /// Whether the device is a phone.
    static bool bIsiPhone();
    /// The device identifier; null for none.
    NSString imei() const;

    /// Fetches an address without waiting, and calls exactly one of the two actions, as an event of its own, with the
    /// request as its argument. An unanswered request keeps the target. A null address fails, and so does a request
    /// above the limit, which is reported as refused instead.
    /// @param isBannerGetAdRequest whether this asks for a banner ad; always false here
    void connectToServerWithRequest(const NSString& address, const Action& action, const Action& failAction,
                                    bool isBannerGetAdRequest);

    /// A new ad begins, whose requests are counted from none.
    /// @param limited whether they are bounded (kit/RequestLimit.h); those of a new manager are not
    void begin_ad(bool limited);

    /// Keeps an auxiliary screen alive and known to the kit. Told to the witness.
    void addExtraView(const std::shared_ptr<UIViewController>& controller);
    /// Told to the witness, also for a controller that was never added.
    void removeExtraView(const UIViewController* controller);
    /// The kit's own way out, for a screen that has closed itself: as removeExtraView, untold.
    void forget_extra_view(const UIViewController* controller);
    std::size_t extra_view_count() const { return extra_views_.size(); }

    /// Says which address shows a store's item: {id}, {campaign}, {provider} and {adProvider} stand for an item's own,
    /// as parts of an address; what an item lacks is empty.
    void set_store_page(std::string pattern) { store_page_ = std::move(pattern); }
    /// The address that shows an item; null for an item without an id.
    NSURL store_page(const StoreItem& item) const;

private:
    std::vector<std::shared_ptr<UIViewController>> extra_views_;
    std::string store_page_ = DefaultStorePage;
    /// Null without a limit.
    std::unique_ptr<RequestLimit> limit_;
};

} // namespace qoro
