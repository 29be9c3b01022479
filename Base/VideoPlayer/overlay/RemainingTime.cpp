#include "Base/VideoPlayer/QoroVideoWebViewController.h"
#include "Base/VideoPlayer/layout/Frames.h"
#include "Base/VideoPlayer/overlay/Texts.h"
#include "Base/VideoPlayer/webbridge/EventNames.h"
#include "platform/Numbers.h"

#include <array>
#include <string>

namespace qoro
{

namespace
{

// Seconds between ticks; the short one pauses promptly at pre-pause locations.
constexpr double PrePauseTick = 0.1;
constexpr double PlainTick = 1.0;

constexpr double LabelLeft = 10.0;
constexpr double LabelAboveBottom = 10.5;

/// The timers that stopUpdateTimer stops, in order. The buffering watchdog and the loaded timer are excluded.
constexpr std::array PlayingTimers{
    &QoroVideoWebViewController::timerCheckDeviceOrientation, &QoroVideoWebViewController::timerUpdateRemainderTime,
    &QoroVideoWebViewController::timerCloseBtnCountdown,      &QoroVideoWebViewController::timerCheckVideoPlay,
    &QoroVideoWebViewController::timerSendTrackingToServer,   &QoroVideoWebViewController::timerSetControllerButtonHide,
};

} // namespace

void QoroVideoWebViewController::addTimerUpdateRemainder()
{
    stopTimerWith(timerUpdateRemainderTime);
    timerUpdateRemainderTime = nullptr;
    timerUpdateRemainderTime = NSTimer::scheduledTimerWithTimeInterval(
        ad().arrayPrePauseLocations ? PrePauseTick : PlainTick,
        action<&QoroVideoWebViewController::updateRemainderTime>(this, "updateRemainderTime"), true);
}

void QoroVideoWebViewController::updateRemainderTime()
{
    const double time = qoroMoviePlayer.currentPlaybackTime();
    if (fTotalTime <= 0)
        fTotalTime = static_cast<float>(qoroMoviePlayer.duration());
    if (fTotalTime <= 0)
        return;
    const std::int32_t played = truncated(time);

    if (bIsPlay) {
        sendEventToJS(event_names::VideoTimeUpdate, "current_time", std::to_string(played));
        // Back from another application: continue at the last pause.
        if (qoroMoviePlayerStatus == QoroMoviePlayerStatusResuming)
            setVideoSeekToTime(fVideoStopTime);
        for (const Value& entry : ad().arrayPrePauseLocations) {
            const std::int32_t location = entry.intValue();
            if (location == 0 || prePauseStatusAtLocation(location) || played < location)
                continue;
            setVideoPause();
            setPrePauseStatusWithStatus(true, location);
        }
    }

    // Bottom edge of the video, which the label is placed above.
    const UIView video = qoroMoviePlayer.view();
    const CGRect player = video.frame();
    const CGSize screen = getCurrnetScreenSize();
    const std::int64_t orientation = getDeviceOriengation();
    double bottom = bIsFullScreen ? screen.height : player.height;
    if (orientation == UIDeviceOrientationPortrait && bIsFullScreen)
        bottom = screen.width;
    if (bIsLockOneSide && bIsFullScreen) {
        if (bIsLockOneSideAndIsLandscape)
            bottom = bIsMoreThaniOS8 ? screen.height : screen.width;
        else if (isLandscape(orientation) && bIsMoreThaniOS8)
            bottom = screen.width;
    }
    if (ad().portraitVideoPos == FULL)
        bottom = bIsLockOneSide && bIsLockOneSideAndIsLandscape ? player.width : player.height;

    labelRemainderTime.setText(remainingTimeText(fTotalTime, played, bIsPlayFinish));
    labelRemainderTime.sizeToFit();
    const CGSize text = sizeWithFont(labelRemainderTime.text(), labelRemainderTime.font(), TextBox);
    // Rounded to single precision, like the controller's sizes.
    const double edge = static_cast<float>(bottom);
    labelRemainderTime.setFrame({LabelLeft, edge - text.height - LabelAboveBottom, text.width, text.height});
    // Adding it again moves it in front of everything else on the video.
    labelRemainderTime.removeFromSuperview();
    video.addSubview(labelRemainderTime);
}

void QoroVideoWebViewController::stopUpdateTimer()
{
    QoroPhoneGapViewController::stopUpdateTimer();
    for (const auto timer : PlayingTimers) {
        stopTimerWith(this->*timer);
        this->*timer = nullptr;
    }
}

void QoroVideoWebViewController::setButtonText(const UIButton& button, const NSString& setTitleString)
{
    const NSString title = decodedTitle(setTitleString);
    const UILabel label = button.titleLabel();
    label.setFont({"Arial", 17.0});
    label.setTextColor(UIColor::whiteColor());
    label.setLineBreakMode(NSLineBreakByCharWrapping);
    label.setTextAlignment(NSTextAlignmentRight);
    label.setNumberOfLines(1);
    label.setHighlighted(true);
    button.setTitleShadowColor(UIColor::blackColor().colorWithAlphaComponent(0.3));
    label.setShadowOffset({0.5, 0.5});
    button.setTitle(title);
    button.setShowsTouchWhenHighlighted(true);
}

} // namespace qoro
