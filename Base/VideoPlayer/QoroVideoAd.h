#pragma once

#include "platform/Object.h"
#include "platform/UIKit.h"
#include "platform/Value.h"

#include <cstdint>

namespace qoro
{

/// Where a view sits on the screen. 0 = not said.
enum ViewPosition : std::int32_t { TOP = 1, BOTTOM = 2, RIGHT = 3, LEFT = 4, MIDDLE = 5, FULL = 6 };

/// What an arrangement shows. 0 = the ad has no such arrangement.
enum VideoAdMode : std::int32_t { ONLY_VIDEO = 1, VIDEO_AND_WEBVIEW = 2 };

enum VideoAdType : std::int32_t { VIDEO = 1, VIDEO_BANNER = 2, VIDEO_EX = 3 };

enum CloseButtonSize : std::int32_t { SMALL = 1, BIG = 2 };

/// The description of one video ad: where the video lies, how it is laid out, which controls it shows, when it may be
/// closed, and which addresses are fetched for which event. The kit fills it; the controller keeps one reference and
/// reads each property at the moment of use, so that a change takes effect at the next reading. What is absent is a
/// null text, a null list or a zero. Addresses are texts as received.
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

    /// Seconds before the close button appears.
    std::int32_t iCloseBtnCountdown = 0;
    /// Seconds from the player's start after which the close button appears anyway; negative: never.
    std::int32_t iBufferingSufferTime = 0;
    /// Not 0: the countdown is visible while it runs.
    std::int32_t iShowProgressWheel = 0;
    /// Seconds between two time-based progress reports; 3 when not positive.
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

    /// The hidden image that repeated mute taps reveal.
    NSString strMIUrl;
    /// The store's product; present: a store page belongs to the ad.
    NSString strStoreId;
    NSString strVideoUrl;
    /// The creative's page.
    NSString strWebViewUrl;
    NSString strCampaignId;
    NSString strProviderId;
    NSString strAdProviderId;
    NSString strLogoWebViewUrl; // carried
    /// The heartbeat's address, for ads without milestone addresses.
    NSString strVideoTrackingUrl;
    NSString strCountdownText;        // carried
    bool bIsDefaultVideoMode = false; // carried, read-only
    bool bHasStatusbar = false;       // carried, read-only

    // ---------------------------------------------------------------------------------------- behaviour and controls

    /// One dictionary for each call-to-action button.
    NSArray arrayButtonsInfo;
    UIDeviceOrientation launchOrientation{};
    /// A decimal ARGB number.
    NSString strBackgroundColor;
    bool bIsAutoClose = false;
    bool bIsEndedCloseBtn = false;
    bool bIsDefaultMute = false;
    bool bShowReplayBtn = false; // carried
    NSString strBrandIconUrl;
    NSString strBrandText;
    /// On close, the parent ad controller closes too.
    bool bNeedCloseParent = false;

    // ----------------------------------------------------------------------------------------------- tracking lists

    NSArray arrayReplayTrackingUrls;
    NSArray arrayResumeTrackingUrls;
    NSArray arrayPauseTrackingUrls;
    NSArray arrayMuteTrackingUrls;
    NSArray arrayUnmuteTrackingUrls;
    NSArray arrayCloseTrackingUrls;
    /// Whole seconds at which the video pauses by itself; 0 is none. Absent and empty differ: an empty list keeps the
    /// fine tick.
    NSArray arrayPrePauseLocations;
    /// Milestone ("start", "firstQuartile", "midpoint", "thirdQuartile", "complete") → list of addresses.
    NSDictionary dicTrackingUrls;
    /// Whole seconds as text → list of addresses; entries leave it as they are sent.
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

    // -------------------------------------------------------------------------- what the controller itself changes

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
