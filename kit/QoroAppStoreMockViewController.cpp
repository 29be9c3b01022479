#include "platform/QoroAppStoreMockViewController.h"

namespace qoro
{

std::shared_ptr<QoroAppStoreMockViewController>
QoroAppStoreMockViewController::initWithStoreId(const NSString& storeId, const NSString& CampaignId,
                                                const NSString& ProviderId, const NSString& AdProviderId)
{
    const Value ids(NSArray{Value(storeId), Value(CampaignId), Value(ProviderId), Value(AdProviderId)});
    Platform::current().tell("kit", {{"do", "store.create"}, {"ids", ids}});
    auto page = std::make_shared<QoroAppStoreMockViewController>();
    page->loadView();
    return page;
}

void QoroAppStoreMockViewController::dismissViewController(bool animated, std::function<void()> completion)
{
    Platform::current().tell("kit", {{"do", "store.dismiss"}});
    UIViewController::dismissViewController(animated, std::move(completion));
}

void QoroAppStoreMockViewController::dismissed_by_viewer()
{
    const auto self = std::static_pointer_cast<QoroAppStoreMockViewController>(shared_from_this());
    if (const auto delegate = delegate_.lock())
        delegate->didDismissStoreViewController(self);
}

} // namespace qoro
