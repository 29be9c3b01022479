#pragma once

#include "platform/Object.h"
#include "platform/UIKit.h"
#include "platform/Value.h"

#include <cstdint>

namespace qoro
{

/// Where a view sits on the screen; 0 when the ad leaves it open.
enum ViewPosition : std::int32_t { TOP = 1, BOTTOM = 2, RIGHT = 3, LEFT = 4, MIDDLE = 5, FULL = 6 };

/// What an arrangement shows; 0 when the ad lacks that arrangement.
enum VideoAdMode : std::int32_t { ONLY_VIDEO = 1, VIDEO_AND_WEBVIEW = 2 };

enum VideoAdType : std::int32_t { VIDEO = 1, VIDEO_BANNER = 2, VIDEO_EX = 3 };

enum CloseButtonSize : std::int32_t { SMALL = 1, BIG = 2 };

/// The description of one video ad: its addresses, layout, controls, closing rules and trackers. The kit fills it. The
/// controller holds one reference and reads each property when it uses it, so a change takes effect at the next read.
/// Absent values are null (texts, lists, dictionaries) or zero. Addresses are unparsed texts. Properties marked
/// "carried" are stored for the kit; the controller never reads them.
class QoroVideoAd : public Object
{
public:
    // ------------------------------------------------------------------------------------------- kind and layout

    VideoAdType adType{};
    ViewPosition portraitVideoPos{};
    ViewPosition portraitWebviewPos{};  // carried
    ViewPosition landScapeWebviewPos{}; // carried
    VideoAdMode portraitModeType{};
    VideoAdMode landscapeModeType{};

    /// Playing time in seconds before the close button appears.
    std::int32_t iCloseBtnCountdown = 0;
    /// The close button appears anyway one second later than this many seconds after the player's start; negative means
    /// never.
    std::int32_t iBufferingSufferTime = 0;
    /// Nonzero shows the countdown while it runs.
    std::int32_t iShowProgressWheel = 0;
    /// Seconds between two heartbeats; 3 when not positive.
    float fTrackingInterval = 0;
    float fPortraitWebViewHeightPercent = 0; // carried
    float fPortraitLogoHeightPercent = 0;    // carried
    float fLandscapeWebViewSizePercent = 0;  // carried
    /// The video's own size in pixels; only its aspect ratio counts.
    float fVideoWidth = 0;
    float fVideoHeight = 0;

    bool bLandscapeVideoFullScreen = false; // carried
    bool bCanRotate = false;                // carried
    bool bIsInApp = false;                  // carried

    // -------------------------------------------------------------------------------------- addresses and identifiers

    /// The hidden image, which repeated mute toggles reveal.
    NSString strMIUrl;
    /// The product in the store; when present, the ad shows its store page.
    NSString strStoreId;
    NSString strVideoUrl;
    /// Address of the creative's page.
    NSString strWebViewUrl;
    NSString strCampaignId;
    NSString strProviderId;
    NSString strAdProviderId;
    NSString strLogoWebViewUrl; // carried
    /// Address of the heartbeat, for ads without milestone trackers.
    NSString strVideoTrackingUrl;
    NSString strCountdownText;        // carried
    bool bIsDefaultVideoMode = false; // carried, read-only
    bool bHasStatusbar = false;       // carried, read-only

    // ---------------------------------------------------------------------------------------- behaviour and controls

    /// One dictionary per call-to-action button.
    NSArray arrayButtonsInfo;
    UIDeviceOrientation launchOrientation{};
    /// Decimal ARGB number.
    NSString strBackgroundColor;
    bool bIsAutoClose = false;
    bool bIsEndedCloseBtn = false;
    bool bIsDefaultMute = false;
    bool bShowReplayBtn = false; // carried
    NSString strBrandIconUrl;
    NSString strBrandText;
    /// Closing the ad also closes the parent ad controller.
    bool bNeedCloseParent = false;

    // ----------------------------------------------------------------------------------------------- tracking lists

    NSArray arrayReplayTrackingUrls;
    NSArray arrayResumeTrackingUrls;
    NSArray arrayPauseTrackingUrls;
    NSArray arrayMuteTrackingUrls;
    NSArray arrayUnmuteTrackingUrls;
    NSArray arrayCloseTrackingUrls;
    /// Whole seconds at which the video pauses automatically; 0 is ignored. An empty list still makes the playback tick
    /// fine (0.1 s); a null one leaves it at 1 s.
    NSArray arrayPrePauseLocations;
    /// Milestone ("start", "firstQuartile", "midpoint", "thirdQuartile", "complete") → list of addresses.
    NSDictionary dicTrackingUrls;
    /// Whole seconds as text → list of addresses; the controller removes an entry when it sends it.
    NSMutableDictionary dicProgressTrackingUrls;

    // -------------------------------------------------------------------------------------------------------- flags

    bool bIsHideFullPortraitVideoAtEnd = false;
    bool bIsHideLandscapeVideoAtEnd = false;
    bool bIsHideActionButton = false;
    bool bShowHideVideoBtn = false;
    CloseButtonSize closeBtnSize{};
    bool bIsWebViewInFront = false;
    bool bIsAutoReplay = false;
    bool bIsAutoStart = false;
    bool bIsUseVideoCache = false;

    // -------------------------------------------------------------------------------- written by the controller

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
};

} // namespace qoro
