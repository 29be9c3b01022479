#include "Base/VideoPlayer/QoroVideoWebViewController.h"
#include "Base/VideoPlayer/SharedFrom.h"
#include "platform/QoroAdManager.h"

namespace qoro
{

void QoroVideoWebViewController::createAppStoreViewWithStoreId(const NSString& storeId, const NSString& CampaignId,
                                                               const NSString& ProviderId, const NSString& AdProviderId)
{
    if (!QoroAdManager::bIsiPhone()) {
        qoroAppStoreMockViewController =
            QoroAppStoreMockViewController::initWithStoreId(storeId, CampaignId, ProviderId, AdProviderId);
        qoroAppStoreMockViewController->setDelegate(sharedFrom(this));
        presentViewController(qoroAppStoreMockViewController, true, nullptr);
        return;
    }

    if (appStoreWindow) {
        appStoreWindow.setHidden(false);
    } else {
        appStoreWindow = UIWindow::create();
        appStoreWindow.setBackgroundColor(UIColor::whiteColor());
        appStoreWindow.setWindowLevel(UIWindowLevelStatusBar + 1.0);
    }
    // Only the window owns the page.
    const auto page = QoroAppStoreMockViewController::initWithStoreId(storeId, CampaignId, ProviderId, AdProviderId);
    appStoreWindow.setRootViewController(page);
    page->setDelegate(sharedFrom(this));
    appStoreWindow.makeKeyAndVisible();
}

void QoroVideoWebViewController::removeAppStoreWindow()
{
    if (!QoroAdManager::bIsiPhone())
        return;
    appStoreWindow.setWindowLevel(UIWindowLevelNormal);
    appStoreWindow.setHidden(true);
    appStoreWindow.removeFromSuperview();
    if (windowDefaultWindow)
        windowDefaultWindow.makeKeyAndVisible();
    appStoreWindow = nullptr;
}

void QoroVideoWebViewController::didDismissStoreViewController(
    const std::shared_ptr<QoroAppStoreMockViewController>& page)
{
    if (QoroAdManager::bIsiPhone()) {
        if (page)
            page->setDelegate({});
        closeAction();
    } else if (qoroAppStoreMockViewController) {
        qoroAppStoreMockViewController->dismissViewController(true, nullptr);
    }
}

} // namespace qoro
