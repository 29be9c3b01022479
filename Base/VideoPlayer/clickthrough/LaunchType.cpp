#include "Base/VideoPlayer/QoroVideoWebViewController.h"
#include "Base/VideoPlayer/SharedFrom.h"
#include "platform/Numbers.h"

#include <cstdint>

namespace qoro
{

namespace
{
/// Default background of the in-app browser, decimal ARGB: dark grey, 0xCC202020.
constexpr const char* DefaultBrowserColor = "3424657440";

/// The number of a store item, exact to 64 bits; 0 for none.
std::int64_t itemNumber(const Value& id)
{
    if (id.is_integer())
        return id.integer();
    return id.is_string() ? leading_integer(id.text()) : truncated_to_64(id.doubleValue());
}
} // namespace

void QoroVideoWebViewController::checkLaunchType(const NSDictionary& info)
{
    if (!info)
        return;
    const std::int64_t device = getDeviceOriengation();
    const NSArray trackers = info["btn_tracking_urls"].array();
    if (trackers.count() > 0)
        sendTrackingUrls(trackers);
    const NSString launchType = info["launch_type"].string();
    const NSString action = info["action"].string();
    const NSDictionary data = info["data"].dictionary();
    if (!data)
        return;

    setBDoButtonAction(true);
    viewBackground.setHidden(true);
    const NSString address = data["u"].string();
    const NSString appAddress = info["app_u"].string();

    if (action.isEqualToString("send_sms")) {
        qoroMoviePlayer.pause();
        setBIsOpenInAppApplication(true);
        const NSString number = formatPhoneNumber(data["tel"].string());
        const NSString body = stringByReplacingPercentEscapes(data["b"].string());
        getOpenInAppApplicationController()->sendSmsMsg(number, body);
        // No return: a message record may also name an address to open.
    } else if (action.isEqualToString("place_call")) {
        const NSURL call = NSURL::URLWithString(formatPhoneNumber(data["tel"].string()));
        if (UIApplication::sharedApplication().canOpenURL(call)) {
            UIApplication::sharedApplication().openURL(call);
            doOutAppNotify();
        } else {
            setBDoButtonAction(false);
        }
        return;
    } else if (action.isEqualToString("open_store")) {
        // The click-through stays under way until closeInAppApplication.
        qoroMoviePlayer.pause();
        getOpenInAppApplicationController()->open_store(appAddress, itemNumber(info["id"]));
        return;
    } else if (action.isEqualToString("cre_cal_event")) {
        MRAIDCreateCalendarEvent(data["e"]);
        setBDoButtonAction(false);
        return;
    }

    if (appAddress) {
        setBDoButtonAction(false);
        UIApplication::sharedApplication().openURL(NSURL::URLWithString(appAddress));
        doOutAppNotify();
        return;
    }
    if (address.length() == 0)
        return;
    if (!launchType.isEqualToString("inapp")) {
        openOutAppAction(address, !launchType.isEqualToString("app"));
        return;
    }
    openInAppAction(data);
    if (isLandscape(device))
        qoroMoviePlayer.view().removeFromSuperview();
}

void QoroVideoWebViewController::openOutAppAction(const NSString& url, bool /*openWithBrowser*/)
{
    if (url.length() == 0)
        return;
    const NSURL address = NSURL::URLWithString(url);
    setBDoButtonAction(false);
    UIApplication::sharedApplication().openURL(address);
    doOutAppNotify();
}

void QoroVideoWebViewController::openInAppAction(const NSDictionary& data)
{
    if (!data)
        return;
    initInAppWebViewController();
    const std::shared_ptr<QoroInAppWebViewController> browser = qoroInAppWebViewController;
    const bool customClose = data["custom_close"].boolValue();
    browser->setBIsUseNavigationBar(data["show_nav_bar"].boolValue());
    browser->setBIsUseProgressbar(data["show_prog_bar"].boolValue());
    browser->setBIsUseCustomClose(customClose);
    browser->setSessionId(dSessionId);
    browser->setSeqNo(iSeqNo);
    browser->setTheRootView(rootViewController);

    const NSString color = data["bk_c"] ? data["bk_c"].stringValue() : NSString(DefaultBrowserColor);
    const CGSize screen = UIScreen::mainScreenBounds().value_or(CGSize{});
    browser->expand(data["u"].string(), nullptr, customClose, screen.height, screen.width, sharedFrom(this),
                    formatColor(color));

    const bool upright = UIApplication::sharedApplication().statusBarOrientation() == UIInterfaceOrientationPortrait;
    if (bIsMoreThaniOS8 || (bIsLockOneSide && upright)) {
        removeTempWindow();
        browser->view().removeFromSuperview();
        windowDefaultWindow.addSubview(browser->view());
    }
    qoroPresent();
}

void QoroVideoWebViewController::doOutAppNotify()
{
    bGoOutApp = true;
    qoroPresent();
    qoroLeaveApplication();
}

void QoroVideoWebViewController::qoroPresent()
{
    qoroMoviePlayer.pause();
    QoroPhoneGapViewController::qoroPresent();
}

} // namespace qoro
