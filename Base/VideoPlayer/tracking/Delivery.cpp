#include "Base/VideoPlayer/QoroVideoWebViewController.h"
#include "platform/QoroAdManager.h"

namespace qoro
{

void QoroVideoWebViewController::sendTrackingUrls(const NSArray& urls)
{
    for (const Value& url : urls)
        sendTrackingToServer(getTrackingUniqueInfo(url.string()));
}

void QoroVideoWebViewController::sendBtnClickTracking(const NSString& url)
{
    if (url)
        sendTrackingToServer(url);
}

void QoroVideoWebViewController::sendTrackingToServer(const NSString& url)
{
    requestTracker(url, RequestPurpose::Tracking);
}

void QoroVideoWebViewController::requestTracker(const NSString& url, RequestPurpose purpose)
{
    if (!url)
        return;
    if (url.isEqualToString("c")) {
        clickRequester();
        return;
    }
    QoroAdManager::sharedInstance().connectToServerWithRequest(
        url, action<&QoroVideoWebViewController::didSendTracking>(this, "didSendTracking:"),
        action<&QoroVideoWebViewController::failSendTracking>(this, "failSendTracking:"), false, purpose);
}

void QoroVideoWebViewController::didSendTracking(const QoroAdRequest&)
{
    QoroAdManager::showLog("didSendTracking", ZulixLogTagOfDebug);
}

void QoroVideoWebViewController::failSendTracking(const QoroAdRequest&)
{
    QoroAdManager::showLog("failSendTracking", ZulixLogTagOfDebug);
}

void QoroVideoWebViewController::clickRequester()
{
    sendClickFromOtherView();
}

void QoroVideoWebViewController::sendClickFromOtherView()
{
    if (parentControllerView)
        parentControllerView->clickRequester();
}

void QoroVideoWebViewController::sendImpression()
{
    QoroPhoneGapViewController::sendImpression();
    if (parentControllerView)
        parentControllerView->setBIsSendImpression(true);
}

} // namespace qoro
