#include "Base/VideoPlayer/ControlButtons.h"
#include "Base/VideoPlayer/QoroVideoWebViewController.h"
#include "Base/VideoPlayer/RemoveViews.h"
#include "Base/VideoPlayer/TextFormat.h"
#include "platform/QoroAdManager.h"
#include "platform/TextRange.h"

#include <string>

namespace qoro
{

namespace
{

std::string headWithScriptLibrary(const NSString& path)
{
    return R"(<head><script type="text/javascript" charset="utf-8" src=")" + objectText(path) + R"("></script>)";
}

} // namespace

void QoroVideoWebViewController::openInAppVideoView(const std::shared_ptr<QoroVideoAd>& ad, float DefaultPosY)
{
    fDefaultPosY = DefaultPosY;
    qoroVideoAdInfo = ad;
    const QoroVideoAd& opened = this->ad();
    iCountdownCount = static_cast<float>(opened.iCloseBtnCountdown);
    iBufferingSufferTime = opened.iBufferingSufferTime;
    iShowProgressWheel = opened.iShowProgressWheel;
    // Unclamped until addActionButton runs.
    if (opened.arrayButtonsInfo)
        buttonPosMode = static_cast<ButtonPositionMode>(opened.arrayButtonsInfo.count());
    if (opened.strVideoUrl)
        play_video(opened.strVideoUrl);
}

bool QoroVideoWebViewController::verifyWebUrlWithString(const NSString& url) const
{
    return url.contains("http");
}

void QoroVideoWebViewController::loadWebView(const NSString& url)
{
    // Suppress the kit's own close button and progress bar on the page.
    bIsUseCustomClose = true;
    bIsUseProgressbar = false;
    constexpr auto superFailAdRequest = static_cast<void (QoroPhoneGapViewController::*)(const QoroAdRequest&)>(
        &QoroPhoneGapViewController::failAdRequest);
    QoroAdManager::sharedInstance().connectToServerWithRequest(
        url, action<&QoroVideoWebViewController::didAdRequester>(this, "didAdRequester:"),
        action<superFailAdRequest>(this, "failAdRequest"), false, RequestPurpose::Page);
}

void QoroVideoWebViewController::didAdRequester(const QoroAdRequest& request)
{
    NSString page = NSString::with_utf8(request.respData.view());
    const NSRange head = rangeOfString(page, "<head>");
    // Without a <head> the range is invalid, and the replacement throws.
    if (page.contains("mraid.js"))
        page = stringByReplacingCharactersInRange(page, head, headWithScriptLibrary(strMRAID2Expanded));
    strBaseUrl = request.strTargetURL;
    QoroAdManager::showLog("send imp policy " + std::to_string(instSendImpPolicy), ZulixLogTagOfDebug);
    webView().loadHTMLString(page, NSURL::URLWithString(strBaseUrl));
}

void QoroVideoWebViewController::failAdRequest(const NSError& error)
{
    QoroAdManager::showLog("InApp failAdRequest", ZulixLogTagOfError);
    if (const auto delegate = qoroDelegate.lock(); delegate && delegate->responds_to_ad_failed()) {
        const auto banner = qoroBanner.lock();
        delegate->onZulixAdFailed(banner ? banner->getZulixAdView() : UIView(), error);
    }
    if (const auto delegate = interstitialDelegate.lock(); delegate && delegate->responds_to_ad_failed())
        delegate->onZulixAdFailed(view(), error);
}

bool QoroVideoWebViewController::webView(const UIWebView& webView, const NSURL& shouldStartLoadWithRequest,
                                         std::int64_t navigationType)
{
    return QoroPhoneGapViewController::webView(webView, shouldStartLoadWithRequest, navigationType);
}

void QoroVideoWebViewController::webViewDidStartLoad(const UIWebView& webView)
{
    QoroPhoneGapViewController::webViewDidStartLoad(webView);
}

void QoroVideoWebViewController::webViewDidFinishLoad(const UIWebView& webView)
{
    QoroPhoneGapViewController::webViewDidFinishLoad(webView);
    if (!bHideVideoToShowWebViewInPortraitMode && !bHideVideoToShowWebViewInLandscapeMode)
        checkVideoSize();
}

void QoroVideoWebViewController::openNewWebAction()
{
    UIApplication::sharedApplication().openURL(webView().requestURL());
}

void QoroVideoWebViewController::handleWebViewInFront()
{
    if (!(bIsLockOneSideAndIsLandscape && bIsMoreThaniOS8))
        playerViewController.view().setFrame(windowTempWindow.frame());
    windowTempWindow.bringSubviewToFront(view());
    removeControlButtons(*this);
    removeAndRelease(imgTopBackgroundColor, viewTopBackground, imgBottomBackgroundColor, viewButtonBackground,
                     viewBottomBackground, labelBrandText);
}

} // namespace qoro
