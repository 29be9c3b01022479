#include "platform/QoroAppStoreMockViewController.h"

#include "kit/StandIn.h"
#include "views/ViewNode.h"

namespace qoro
{

std::shared_ptr<QoroAppStoreMockViewController>
QoroAppStoreMockViewController::initWithStoreId(const NSString& storeId, const NSString& CampaignId,
                                                const NSString& ProviderId, const NSString& AdProviderId)
{
    const Value ids(NSArray{Value(storeId), Value(CampaignId), Value(ProviderId), Value(AdProviderId)});
    Platform::current().emit(event::StorePageCreated{&ids});
    auto page = std::make_shared<QoroAppStoreMockViewController>();
    page->loadView();
    page->view().setBackgroundColor(UIColor::whiteColor());
    page->view().node()->fills_parent = true;
    page->screen_ =
        store_screen(page->view(), {storeId, CampaignId, ProviderId, AdProviderId}, [weak = std::weak_ptr(page)] {
            if (const auto left = weak.lock())
                left->dismissed_by_viewer();
        });
    return page;
}

QoroAppStoreMockViewController::~QoroAppStoreMockViewController()
{
    // The window may stay in use and must not retain the view.
    view().removeFromSuperview();
}

void QoroAppStoreMockViewController::dismissViewController(bool animated, std::function<void()> completion)
{
    Platform::current().emit(event::StorePageDismissed{});
    UIViewController::dismissViewController(animated, std::move(completion));
    screen_ = nullptr;
}

void QoroAppStoreMockViewController::dismissed_by_viewer()
{
    const auto self = std::static_pointer_cast<QoroAppStoreMockViewController>(shared_from_this());
    if (const auto delegate = delegate_.lock())
        delegate->didDismissStoreViewController(self);
}

} // namespace qoro
