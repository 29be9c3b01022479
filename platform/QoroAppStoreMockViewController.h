#pragma once

#include "platform/UIKit.h"

namespace qoro
{

class PageScreen;
class QoroAppStoreMockViewController;

/// Delegate of a store page.
class QoroAppStoreMockViewControllerDelegate
{
public:
    virtual ~QoroAppStoreMockViewControllerDelegate() = default;
    /// The viewer has dismissed the store page.
    virtual void didDismissStoreViewController(const std::shared_ptr<QoroAppStoreMockViewController>& page) = 0;
};

/// The kit's store product page, with a bar to dismiss it. The host sets the address of an item's page with
/// QoroAdManager::set_store_page.
class QoroAppStoreMockViewController : public UIViewController
{
public:
    /// Creates the page and loads it; emits an event. Any of the ids may be null.
    static std::shared_ptr<QoroAppStoreMockViewController> initWithStoreId(const NSString& storeId,
                                                                           const NSString& CampaignId,
                                                                           const NSString& ProviderId,
                                                                           const NSString& AdProviderId);

    ~QoroAppStoreMockViewController() override;

    /// Held weakly; null clears it.
    void setDelegate(const std::weak_ptr<QoroAppStoreMockViewControllerDelegate>& delegate) { delegate_ = delegate; }
    /// Emits an event.
    void dismissViewController(bool animated, std::function<void()> completion) override;
    /// Handles the viewer's tap on the close button: notifies the delegate.
    void dismissed_by_viewer();

private:
    std::weak_ptr<QoroAppStoreMockViewControllerDelegate> delegate_;
    std::shared_ptr<PageScreen> screen_;
};

} // namespace qoro
