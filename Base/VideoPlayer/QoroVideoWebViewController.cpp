#include "Base/VideoPlayer/QoroVideoWebViewController.h"

#include "Base/VideoPlayer/ControlButtons.h"
#include "Base/VideoPlayer/RemoveViews.h"
#include "platform/QoroAdManager.h"

#include <memory>
#include <utility>

namespace qoro
{

namespace
{

UILabel labelOverVideo(double fontSize)
{
    UILabel label = UILabel::create();
    label.setFont({"Arial", fontSize});
    label.setBackgroundColor(UIColor::clearColor());
    label.setLineBreakMode(NSLineBreakByCharWrapping);
    label.setTextColor(UIColor::whiteColor());
    label.setNumberOfLines(1);
    label.setHighlighted(true);
    label.setShadowOffset({0.5, 0.5});
    label.setShadowColor(UIColor::blackColor().colorWithAlphaComponent(0.3));
    return label;
}

UIWindow firstWindow()
{
    const std::vector<UIWindow> windows = UIApplication::sharedApplication().windows();
    return windows.empty() ? UIWindow() : windows.front();
}

} // namespace

std::shared_ptr<QoroVideoWebViewController> QoroVideoWebViewController::create()
{
    return std::make_shared<QoroVideoWebViewController>();
}

QoroVideoWebViewController* QoroVideoWebViewController::init()
{
    if (!QoroPhoneGapViewController::init())
        return nullptr;

    NSNotificationCenter& notifications = NSNotificationCenter::defaultCenter();
    notifications.postNotificationName("zulixInAppADWillBeOpen");
    UIDevice::forceOrientation(UIDeviceOrientationPortrait);

    bCanOrientation = false;
    bIsTwoPartExpand = true;
    bIsFullScreen = false;
    bIsMute = true;
    bIsPlay = false;
    bGoOutApp = false;
    bIsPortraitOnly = false;
    bIsPortraitNow = true;
    bIsHideControlbutton = false;
    bIsInitVideoBeginStep = false;
    bIsPlayFinish = false;
    bIsUseVideoCustomClose = false;
    bDefaultStatusBarHidden = ckeckIsStatusbarHide();

    viewTopBackground = UIView::create();
    viewBottomBackground = UIView::create();
    viewButtonBackground = UIView::create();
    imgTopBackgroundColor = UIImageView::create();
    imgBottomBackgroundColor = UIImageView::create();

    createControlButtons(*this);
    btnClose.setFrame({0, 0, 50, 50});

    const CGSize screen = UIScreen::mainScreenBounds().value_or(CGSize{});
    fScreenWidth = static_cast<float>(screen.width);
    fScreenHeight = static_cast<float>(screen.height);
    changeModeOrientation = UIDeviceOrientationUnknown;

    // Landscape size: the screen's height becomes the width.
    btnClickListener.setFrame({0, 0, fScreenHeight, fScreenWidth});
    btnClickListener.setBackgroundColor(UIColor::clearColor());

    bIsStopProgreeebar = false;
    setBDoButtonAction(false);
    notifications.addObserver(
        action<&QoroPhoneGapViewController::checkViewSizeAfterOpenOtherApp>(this, "checkViewSizeAfterOpenOtherApp"),
        UIApplicationDidBecomeActiveNotification);

    windowDefaultWindow = UIApplication::sharedApplication().keyWindow();
    if (!windowDefaultWindow)
        windowDefaultWindow = firstWindow();
    setBIsOpenInAppApplication(false);
    fPortraitModeVideoPosY = -1.0F;
    bIsAddOnWindow = false;
    bIsVideoViewController = true;
    bOnlyOneSideVideo = true;

    labelRemainderTime = labelOverVideo(13.5);
    labelBrandText = labelOverVideo(20.0);

    bIsVideoOrientationLandscape = false;
    bHideVideoToShowWebViewInLandscapeMode = false;
    bHideVideoToShowWebViewInPortraitMode = false;
    AdType = VIDEO_AD;
    changeMoviePlayerStatus(QoroMoviePlayerStatusNone);

    notifications.addObserver(
        action<&QoroVideoWebViewController::appWillEnterForeground>(this, "appWillEnterForeground"),
        UIApplicationWillEnterForegroundNotification);
    notifications.addObserver(
        action<&QoroVideoWebViewController::checkScreenRotateEvent>(this, "checkScreenRotateEvent"),
        UIApplicationDidChangeStatusBarFrameNotification);
    notifications.addObserver(action<&QoroVideoWebViewController::volumeChanged>(this, "volumeChanged"),
                              SystemVolumeDidChangeNotification);

    arrayVideoState = {"video_loading", "video_loaded", "video_play", "video_pause", "video_ended"};
    bPlayNextVideo = false;
    miWatchDog = 0;
    isShowMI = false;
    _createMI();
    return this;
}

QoroVideoWebViewController::~QoroVideoWebViewController()
{
    // The last reference may be released outside an event, when no platform is current.
    const PlatformScope scope(platform());
    NSNotificationCenter::defaultCenter().removeObserver(this);
    if (qoroInAppWebViewController)
        qoroInAppWebViewController->removeParentViewController();
    if (openInAppApplicationViewController)
        openInAppApplicationViewController->setParentViewController(nullptr);
    arrayVideoState = {};
    qoroDelegate.reset();
}

void QoroVideoWebViewController::viewDidLoad()
{
    QoroPhoneGapViewController::viewDidLoad();
    setBIsLockLandscapeAndEnterLandscapeLeft(UIApplication::sharedApplication().statusBarOrientation() ==
                                             UIInterfaceOrientationLandscapeLeft);
    webView().setScalesPageToFit(true);
}

void QoroVideoWebViewController::viewDidAppear(bool animated)
{
    QoroPhoneGapViewController::viewDidAppear(animated);
    bGoOutApp = false;
}

void QoroVideoWebViewController::presentViewController(const std::shared_ptr<UIViewController>& controller,
                                                       bool animated, std::function<void()> completion)
{
    QoroPhoneGapViewController::presentViewController(controller, animated, std::move(completion));
}

void QoroVideoWebViewController::appWillEnterForeground()
{
    if (qoroMoviePlayerStatus != QoroMoviePlayerStatusFinishedVideo)
        changeMoviePlayerStatus(QoroMoviePlayerStatusResuming);
}

void QoroVideoWebViewController::setParentViewController(const std::shared_ptr<QoroPhoneGapViewController>& parent)
{
    parentControllerView = parent;
}

const std::shared_ptr<QoroPhoneGapViewController>& QoroVideoWebViewController::getParentViewController() const
{
    return parentControllerView;
}

void QoroVideoWebViewController::addOnParentWindow(const UIWindow& window)
{
    windowAddOnParent = window;
}

void QoroVideoWebViewController::closeAction()
{
    sendEventToJS("onhide", nullptr);
    QoroAdManager::sharedInstance().removeExtraView(this);

    // The button serves to hide the video. "onhide" has been sent all the same.
    if (checkVideoNeedToHide() && ad().portraitVideoPos != FULL && ad().bShowHideVideoBtn) {
        setVideoInvisible();
        return;
    }

    if (qoroAppStoreMockViewController && qoroAppStoreMockViewController->isBeingPresented())
        qoroAppStoreMockViewController->dismissViewController(true, nullptr);
    setVideoPause();
    sendTrackingUrls(ad().arrayCloseTrackingUrls);
    if (dicSendTrackingState) {
        dicSendTrackingState.removeAllObjects();
        dicSendTrackingState = nullptr;
    }
    updateStatusbar();
    stopUpdateTimer();
    removeObserverFromQoroMoviePlayer();
    NSNotificationCenter::defaultCenter().removeObserver(this);
    if (dicEventListener) {
        dicEventListener.removeAllObjects();
        dicEventListener = nullptr;
    }
    removeViewAndButton();
    if (viewBackground)
        removeAndRelease(viewBackground);
    webView().removeFromSuperview();
    view().removeFromSuperview();
    removeFromParentViewController();
    if (appStoreWindow)
        removeAppStoreWindow();
    if (windowTempWindow)
        removeTempWindow();
    windowAddOnParent = nullptr;
    if (parentControllerView) {
        parentControllerView->closeVideoAdUnit(ad().bNeedCloseParent);
        parentControllerView = nullptr;
    }
}

void QoroVideoWebViewController::MRAIDClose()
{
    QoroPhoneGapViewController::MRAIDClose();
    const ClosingBy page(*this, ClosedBy::Page);
    closeAction();
}

AdFacts QoroVideoWebViewController::facts() const
{
    const QoroVideoAd& shown = ad();
    // With the page in front the button is removed, so the countdown itself decides.
    const bool countedDown =
        shown.bIsEndedCloseBtn ? bIsPlayFinish : shown.iCloseBtnCountdown >= 0 && iCountdownCount <= 0;
    const bool inFront = shown.bIsWebViewInFront && !btnClose;
    return {
        .custom_close = bIsUseVideoCustomClose,
        .page_closes = bIsUseVideoCustomClose || bIsClickCloseButton || inFront,
        .close_due = btnClose ? !btnClose.isHidden() : countedDown,
        .close_at_end = shown.bIsEndedCloseBtn,
        .layout_suspended = getBDoButtonAction() || qoroInAppWebViewController,
        .both_arrangements = shown.portraitModeType != 0 && shown.landscapeModeType != 0,
    };
}

void QoroVideoWebViewController::removeViewAndButton()
{
    if (qoroMoviePlayer) {
        if (musicPlayer)
            volumeSlider.setValue(fDefaultVolume);
        qoroMoviePlayer.view().removeFromSuperview();
        setQoroMoviePlayer(nullptr);
    }
    playerViewController = nullptr;
    removeControlButtons(*this);
    removeAndRelease(labelRemainderTime, imgTopBackgroundColor, viewTopBackground, imgBottomBackgroundColor,
                     viewButtonBackground, viewBottomBackground, labelBrandText);
}

void QoroVideoWebViewController::removeBtnClose()
{
    if (!qoroMoviePlayer)
        return;

    const bool landscapeArrangement =
        ad().launchOrientation == UIDeviceOrientationLandscapeLeft ||
        (isLandscape(getDeviceOriengation()) && ad().landscapeModeType != 0) || ad().portraitModeType == 0 ||
        (isLandscape(UIApplication::sharedApplication().statusBarOrientation()) && bIsLockOneSide);
    const bool hidesVideo =
        ad().bShowHideVideoBtn && !qoroMoviePlayer.view().isHidden() && ad().landscapeModeType == VIDEO_AND_WEBVIEW;
    if (landscapeArrangement && hidesVideo)
        return;
    btnClose.removeFromSuperview();
}

void QoroVideoWebViewController::removeTempWindow()
{
    windowTempWindow.setWindowLevel(UIWindowLevelNormal);
    windowTempWindow.removeFromSuperview();
    windowTempWindow.resignKeyWindow();
    windowTempWindow = nullptr;
    if (windowDefaultWindow)
        windowDefaultWindow.makeKeyAndVisible();
}

QoroVideoAd& QoroVideoWebViewController::ad()
{
    return const_cast<QoroVideoAd&>(std::as_const(*this).ad());
}

const QoroVideoAd& QoroVideoWebViewController::ad() const
{
    if (qoroVideoAdInfo)
        return *qoroVideoAdInfo;
    if (!absentAd_) {
        absentAd_ = std::make_unique<QoroVideoAd>();
    } else {
        // Rebuild it in place: discards what was written and keeps existing references valid.
        std::destroy_at(absentAd_.get());
        std::construct_at(absentAd_.get());
    }
    return *absentAd_;
}

} // namespace qoro
