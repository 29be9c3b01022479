#pragma once

#include "platform/Export.h"
#include "platform/Object.h"
#include "platform/UIKit.h"
#include "platform/Value.h"

#include <cstdint>

namespace QORO_EXPORT qoro
{

/// Where a view sits on the screen; 0 when the ad leaves it open.
enum ViewPosition : std::int32_t { TOP = 1, BOTTOM = 2, RIGHT = 3, LEFT = 4, MIDDLE = 5, FULL = 6 };

/// What an arrangement shows; 0 when the ad lacks that arrangement.
enum VideoAdMode : std::int32_t { ONLY_VIDEO = 1, VIDEO_AND_WEBVIEW = 2 };

/// The kind of a video ad.
enum VideoAdType : std::int32_t { VIDEO = 1, VIDEO_BANNER = 2, VIDEO_EX = 3 };

/// Side of the close button: 50 points, or 60 for BIG.
enum CloseButtonSize : std::int32_t { SMALL = 1, BIG = 2 };

/// The description of one video ad: its addresses, layout, controls, closing rules and trackers. The kit fills it. The
/// controller holds one reference and reads each property when it uses it, so a change takes effect at the next read.
/// Absent values are null (texts, lists, dictionaries) or zero. Addresses are unparsed texts. Properties marked
/// "carried" are stored for the kit; the controller never reads them. Trackers are templates, in which the controller
/// replaces macros ({CurrentTime}, …).
class QoroVideoAd : public Object
{
public:
    // ------------------------------------------------------------------------------------------- kind and layout

    /// Carried.
    VideoAdType adType{};
    /// Place of the video in the portrait arrangement. With FULL that arrangement is used in every orientation.
    ViewPosition portraitVideoPos{};
    /// Carried.
    /// @{
    ViewPosition portraitWebviewPos{};
    ViewPosition landScapeWebviewPos{};
    /// @}
    /// What this arrangement shows; 0 when the ad lacks it.
    /// @{
    VideoAdMode portraitModeType{};
    VideoAdMode landscapeModeType{};
    /// @}

    /// Playing time in seconds before the close button appears.
    std::int32_t iCloseBtnCountdown = 0;
    /// The close button appears anyway one second later than this many seconds after the player's start; negative means
    /// never.
    std::int32_t iBufferingSufferTime = 0;
    /// Nonzero shows the countdown while it runs.
    std::int32_t iShowProgressWheel = 0;
    /// Seconds between two heartbeats; 3 when not positive.
    float fTrackingInterval = 0;
    /// Carried.
    /// @{
    float fPortraitWebViewHeightPercent = 0;
    float fPortraitLogoHeightPercent = 0;
    float fLandscapeWebViewSizePercent = 0;
    /// @}
    /// The video's own size in pixels; only its aspect ratio counts.
    /// @{
    float fVideoWidth = 0;
    float fVideoHeight = 0;
    /// @}

    /// Carried.
    /// @{
    bool bLandscapeVideoFullScreen = false;
    bool bCanRotate = false;
    bool bIsInApp = false;
    /// @}

    // -------------------------------------------------------------------------------------- addresses and identifiers

    /// Address of the hidden image, which the eighth mute toggle reveals.
    NSString strMIUrl;
    /// The product in the store; when present, the ad shows its store page.
    NSString strStoreId;
    /// Address of the video. Without it the ad opens and plays nothing.
    NSString strVideoUrl;
    /// Address of the creative's page.
    NSString strWebViewUrl;
    /// Attribution that the store page of strStoreId receives.
    /// @{
    NSString strCampaignId;
    NSString strProviderId;
    NSString strAdProviderId;
    /// @}
    /// Carried.
    NSString strLogoWebViewUrl;
    /// Address of the heartbeat, for ads without milestone trackers.
    NSString strVideoTrackingUrl;
    /// Carried.
    NSString strCountdownText;
    /// Carried, read-only.
    /// @{
    bool bIsDefaultVideoMode = false;
    bool bHasStatusbar = false;
    /// @}

    // ---------------------------------------------------------------------------------------- behaviour and controls

    /// One dictionary per call-to-action button.
    NSArray arrayButtonsInfo;
    /// Landscape left selects the landscape arrangement in every device orientation, unless portraitVideoPos is FULL.
    /// Other values have no effect.
    UIDeviceOrientation launchOrientation{};
    /// Background behind video and page, as a decimal ARGB number. Without it the page is invisible.
    NSString strBackgroundColor;
    /// Closes the ad at the video's end.
    bool bIsAutoClose = false;
    /// The close button appears at the video's end, without a countdown.
    bool bIsEndedCloseBtn = false;
    /// The ad starts muted.
    bool bIsDefaultMute = false;
    /// Carried.
    bool bShowReplayBtn = false;
    /// Address of the brand's icon in the top bar, fetched synchronously while the ad opens.
    NSString strBrandIconUrl;
    /// The brand's text in the top bar.
    NSString strBrandText;
    /// Closing the ad also closes the parent ad controller.
    bool bNeedCloseParent = false;

    // ----------------------------------------------------------------------------------------------- tracking lists

    /// Trackers of the event that the property names. A replay counts when the viewer taps the replay button; a mute,
    /// once the video has started.
    /// @{
    NSArray arrayReplayTrackingUrls;
    NSArray arrayResumeTrackingUrls;
    NSArray arrayPauseTrackingUrls;
    NSArray arrayMuteTrackingUrls;
    NSArray arrayUnmuteTrackingUrls;
    NSArray arrayCloseTrackingUrls;
    /// @}
    /// Whole seconds at which the video pauses automatically; 0 is ignored. An empty list still makes the playback tick
    /// fine (0.1 s); a null one leaves it at 1 s.
    NSArray arrayPrePauseLocations;
    /// Milestone ("start", "firstQuartile", "midpoint", "thirdQuartile", "complete") → list of addresses.
    NSDictionary dicTrackingUrls;
    /// Whole seconds as text → list of addresses; the controller removes an entry when it sends it.
    NSMutableDictionary dicProgressTrackingUrls;

    // -------------------------------------------------------------------------------------------------------- flags

    /// Hides the video at its end to show the page, when the video fills the screen.
    /// @{
    bool bIsHideFullPortraitVideoAtEnd = false;
    bool bIsHideLandscapeVideoAtEnd = false;
    /// @}
    /// Keeps the call-to-action buttons inside the top bar.
    bool bIsHideActionButton = false;
    /// In landscape the close button hides the video to show the page, and another button shows the video again.
    bool bShowHideVideoBtn = false;
    /// Size of the close button; 0 means SMALL.
    CloseButtonSize closeBtnSize{};
    /// The page lies over the video. The ad's own controls are removed, and the page closes the ad.
    bool bIsWebViewInFront = false;
    /// Plays the video again at its end.
    bool bIsAutoReplay = false;
    /// Plays the video as soon as the player is ready.
    bool bIsAutoStart = false;
    /// Plays the local copy of the video, if there is one.
    bool bIsUseVideoCache = false;

    // -------------------------------------------------------------------------------- written by the controller

    /// Sets the property of this name while the ad runs; the controller assigns properties only with these.
    /// @{
    void setPortraitModeType(VideoAdMode mode) { portraitModeType = mode; }
    void setBIsWebViewInFront(bool inFront) { bIsWebViewInFront = inFront; }
    void setBIsHideFullPortraitVideoAtEnd(bool hides) { bIsHideFullPortraitVideoAtEnd = hides; }
    void setBIsHideLandscapeVideoAtEnd(bool hides) { bIsHideLandscapeVideoAtEnd = hides; }
    void setArrayButtonsInfo(const NSArray& buttons) { arrayButtonsInfo = buttons; }
    void setArrayReplayTrackingUrls(const NSArray& urls) { arrayReplayTrackingUrls = urls; }
    void setBIsAutoClose(bool closes) { bIsAutoClose = closes; }
    void setDicTrackingUrls(const NSDictionary& urls) { dicTrackingUrls = urls; }
    void setStrVideoTrackingUrl(const NSString& url) { strVideoTrackingUrl = url; }
    void setStrVideoUrl(const NSString& url) { strVideoUrl = url; }
    void setArrayPrePauseLocations(const NSArray& locations) { arrayPrePauseLocations = locations; }
    void setStrMIUrl(const NSString& url) { strMIUrl = url; }
    /// @}
};

} // namespace qoro
