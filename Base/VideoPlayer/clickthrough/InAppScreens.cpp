#include "Base/VideoPlayer/QoroVideoWebViewController.h"
#include "Base/VideoPlayer/SharedFrom.h"
#include "platform/QoroAdManager.h"

namespace qoro
{

void QoroVideoWebViewController::initInAppWebViewController()
{
    if (qoroInAppWebViewController) {
        qoroInAppWebViewController->closeAction();
        qoroInAppWebViewController->view().removeFromSuperview();
        qoroInAppWebViewController = nullptr;
    }
    qoroInAppWebViewController = QoroInAppWebViewController::create();
    qoroInAppWebViewController->setStrMRAID2Expanded(strMRAID2Expanded);
    qoroInAppWebViewController->setQoroDelegate(qoroDelegate);
    qoroInAppWebViewController->setUseAutoRotate(bUseAutoRotate);
    QoroAdManager::sharedInstance().addExtraView(qoroInAppWebViewController);
}

void QoroVideoWebViewController::closeInAppWebView()
{
    setBDoButtonAction(false);
    qoroInAppWebViewController = nullptr;
    UIDevice::forceOrientation(UIDeviceOrientationPortrait);
    showAdActionView();
    checkViewSizeAfterOpenOtherApp();
}

std::shared_ptr<ZulixOpenInAppApplicationViewController> QoroVideoWebViewController::getOpenInAppApplicationController()
{
    if (openInAppApplicationViewController)
        closeInAppApplication();
    openInAppApplicationViewController = ZulixOpenInAppApplicationViewController::create();
    openInAppApplicationViewController->setParentViewController(sharedFrom(this));
    QoroAdManager::sharedInstance().addExtraView(openInAppApplicationViewController);
    return openInAppApplicationViewController;
}

void QoroVideoWebViewController::closeInAppApplication()
{
    stopTimerWith(timerCheckDeviceOrientation);
    timerCheckDeviceOrientation = nullptr;
    QoroPhoneGapViewController::closeInAppApplication();
    setBDoButtonAction(false);
    // The field, not the property: the property stays true once a message screen was opened.
    bIsOpenInAppApplication = false;
    checkVideoSize();
}

} // namespace qoro
