#include "Base/VideoPlayer/QoroVideoWebViewController.h"
#include "Base/VideoPlayer/VideoImage/EmbeddedImage.h"
#include "Base/VideoPlayer/VideoImage/VideoImage.h"
#include "platform/QoroAdManager.h"

namespace qoro
{

namespace
{

constexpr double BigSide = 60.0;
constexpr double SmallSide = 50.0;
constexpr double HideVideoSide = 44.0;
constexpr double CountDownSide = 50.0;
constexpr double CountDownBorder = 3.0;
/// Seconds between two ticks of the close countdown.
constexpr double CountdownTick = 0.1;

} // namespace

void QoroVideoWebViewController::setVideoCloseButtonImage()
{
    const CGRect before = btnClose.frame();
    const bool big = ad().closeBtnSize == BIG;
    UIImage image = big ? embeddedImage(arrayVideoBigCloseButton) : embeddedImage(arrayVideoCloseButton);
    double side = big ? BigSide : SmallSide;
    if (bIsFullScreen && ad().landscapeModeType == VIDEO_AND_WEBVIEW && ad().bShowHideVideoBtn && qoroMoviePlayer &&
        !qoroMoviePlayer.view().isHidden() && miImageView.isHidden()) {
        image = embeddedImage(arrayHideVideo);
        side = HideVideoSide;
    }
    setCloseButtonAction(btnClose);
    btnClose.setFrame({before.x, before.y, side, side});
    btnClose.setBackgroundImage(image);
    if (bIsUseVideoCustomClose)
        removeBtnClose();
}

void QoroVideoWebViewController::addVideoCloseButton()
{
    QoroAdManager::showLog("Added Video Close Button", ZulixLogTagOfDebug);
    btnClose.removeFromSuperview();

    const UIView player = qoroMoviePlayer.view();
    const ViewPosition position = ad().portraitVideoPos;
    const bool portraitArrangement =
        bIsPortraitNow && !(ad().portraitModeType == ONLY_VIDEO && currentOrientation == UIDeviceOrientationPortrait);
    UIView parent = player.isHidden() ? webView() : player;
    // With a band that is not at the top, the page holds the screen's top left corner.
    if (portraitArrangement && position != FULL)
        parent = position == TOP ? player : webView();
    parent.addSubview(btnClose);

    if (!isShowMI) {
        addCountDownView();
        return;
    }
    btnClose.setHidden(false);
    btnClose.removeFromSuperview();
    miImageView.addSubview(btnClose);
}

void QoroVideoWebViewController::addCountDownView()
{
    countDownView.removeFromSuperview();
    if (!countDownView) {
        const CGRect button = btnClose.frame();
        countDownView = QoroCountDownView::initWithFrame({button.x, button.y, CountDownSide, CountDownSide},
                                                         iCountdownCount, CountDownBorder);
        countDownView.setHidden(true);
    }
    btnClose.superview().addSubview(countDownView);
    QoroAdManager::showLog("Added Count Down View", ZulixLogTagOfDebug);
}

void QoroVideoWebViewController::showCloseButton()
{
    iCountdownCount = static_cast<float>(iCountdownCount - CountdownTick);
    if (iCountdownCount <= 0) {
        btnClose.setHidden(false);
        countDownView.setHidden(true);
        stopTimerWith(timerCloseBtnCountdown);
    } else {
        countDownView.updateWithSeconds(iCountdownCount);
        countDownView.setHidden(iShowProgressWheel == 0);
    }
}

void QoroVideoWebViewController::showCloseButtonWhenBufferingTimeOut()
{
    if (iBufferingSufferTime < 1) {
        btnClose.setHidden(false);
        stopTimerWith(timerBufferSufferTime);
        QoroAdManager::showLog("Buffer Suffer Time's up, show close button.", ZulixLogTagOfNote);
    } else {
        --iBufferingSufferTime;
    }
}

void QoroVideoWebViewController::MRAIDUseCustomClose(bool uses)
{
    bIsUseVideoCustomClose = uses;
    if (uses)
        removeBtnClose();
    else
        checkVideoSize();
}

} // namespace qoro
