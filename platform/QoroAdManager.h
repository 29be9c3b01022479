#pragma once

#include "platform/Foundation.h"
#include "platform/KitEnumerations.h"
#include "platform/StoreItem.h"
#include "platform/UIKit.h"

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace qoro
{

/// The result of a request to the manager.
struct QoroAdRequest {
    /// The response body; null when the request failed.
    NSData respData;
    /// Address of the response after redirects.
    NSString strTargetURL;
    /// Why it failed; its text is null on success.
    NSError error;
};

class RequestLimit;

/// The kit's shared manager: requests, the log and device properties. One per platform.
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
    /// The device identifier; null when there is none.
    NSString imei() const;

    /// Fetches an address asynchronously and calls exactly one of the two actions with the result, as an event of its
    /// own. A pending request retains the targets. A null address fails. A request above the limit fails too and is
    /// reported as refused.
    /// @param isBannerGetAdRequest ignored
    /// @param purpose decides which limit applies, and whether the request may be retried
    void connectToServerWithRequest(const NSString& address, const Action& action, const Action& failAction,
                                    bool isBannerGetAdRequest, RequestPurpose purpose);

    /// Sends a tracker of a VAST ad; its answer is ignored. A request above the limit is reported as refused.
    /// @param event name of the event that is tracked
    void send_vast_tracker(const std::string& address, std::string_view event);
    /// Makes requests for a page at an address answer with this document, without the network. Replaces an earlier one.
    /// @param address should be one that no server has, as in the domain "invalid" (RFC 2606)
    void supply_page(const std::string& address, std::string html);

    /// Starts a new ad: its request count begins at 0.
    /// @param limited whether its requests are limited (kit/RequestLimit.h); a new manager has no limit
    void begin_ad(bool limited);

    /// Registers and retains an auxiliary screen; emits an event.
    void addExtraView(const std::shared_ptr<UIViewController>& controller);
    /// Unregisters a screen; emits an event even if the controller was never registered.
    void removeExtraView(const UIViewController* controller);
    /// As removeExtraView, but emits no event: for a screen of the kit that has closed itself.
    void forget_extra_view(const UIViewController* controller);
    std::size_t extra_view_count() const { return extra_views_.size(); }

    /// Sets the address pattern of store pages. {id}, {campaign}, {provider} and {adProvider} are replaced with the
    /// item's values, percent-encoded; a null value becomes empty. Without a pattern the store's screens show what a
    /// store would receive.
    void set_store_page(std::string pattern) { store_page_ = std::move(pattern); }
    /// The store page of an item; null for an item without an id, or when the pattern does not yield a valid address.
    NSURL store_page(const StoreItem& item) const;
    /// Whether items have pages: whether the pattern is not empty.
    bool has_store_pages() const { return !store_page_.empty(); }

private:
    friend class StateReader; // workbench/explore/StateHash.cpp
    std::vector<std::shared_ptr<UIViewController>> extra_views_;
    std::string store_page_ = DefaultStorePage;
    /// Null when requests are not limited.
    std::unique_ptr<RequestLimit> limit_;
    /// Documents of supply_page(), by address.
    std::map<std::string, std::string, std::less<>> pages_;
};

} // namespace qoro
