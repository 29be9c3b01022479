#pragma once

// Only for this folder's .cpp files.

#include "Base/VideoPlayer/QoroVideoAd.h"
#include "formats/AdAddresses.h"

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <type_traits>
#include <variant>

namespace qoro::detail
{

/// An enumerator by its name in an ad file.
struct Enumerator {
    std::string_view name;
    std::int64_t number;
};

inline constexpr auto VideoAdTypes =
    std::to_array<Enumerator>({{"VIDEO", VIDEO}, {"VIDEO_BANNER", VIDEO_BANNER}, {"VIDEO_EX", VIDEO_EX}});

inline constexpr auto ViewPositions = std::to_array<Enumerator>(
    {{"TOP", TOP}, {"BOTTOM", BOTTOM}, {"RIGHT", RIGHT}, {"LEFT", LEFT}, {"MIDDLE", MIDDLE}, {"FULL", FULL}});

inline constexpr auto VideoAdModes =
    std::to_array<Enumerator>({{"ONLY_VIDEO", ONLY_VIDEO}, {"VIDEO_AND_WEBVIEW", VIDEO_AND_WEBVIEW}});

inline constexpr auto CloseButtonSizes = std::to_array<Enumerator>({{"SMALL", SMALL}, {"BIG", BIG}});

inline constexpr auto DeviceOrientations = std::to_array<Enumerator>({
    {"UIDeviceOrientationUnknown", UIDeviceOrientationUnknown},
    {"UIDeviceOrientationPortrait", UIDeviceOrientationPortrait},
    {"UIDeviceOrientationPortraitUpsideDown", UIDeviceOrientationPortraitUpsideDown},
    {"UIDeviceOrientationLandscapeLeft", UIDeviceOrientationLandscapeLeft},
    {"UIDeviceOrientationLandscapeRight", UIDeviceOrientationLandscapeRight},
    {"UIDeviceOrientationFaceUp", UIDeviceOrientationFaceUp},
    {"UIDeviceOrientationFaceDown", UIDeviceOrientationFaceDown},
});

/// The named values of an enumeration. 0, the value of an absent property, is valid for every one.
template <typename Enumeration>
constexpr std::span<const Enumerator> enumerators()
{
    if constexpr (std::is_same_v<Enumeration, VideoAdType>)
        return VideoAdTypes;
    else if constexpr (std::is_same_v<Enumeration, ViewPosition>)
        return ViewPositions;
    else if constexpr (std::is_same_v<Enumeration, VideoAdMode>)
        return VideoAdModes;
    else if constexpr (std::is_same_v<Enumeration, CloseButtonSize>)
        return CloseButtonSizes;
    else
        return DeviceOrientations;
}

using AdMember = std::variant<VideoAdType QoroVideoAd::*, ViewPosition QoroVideoAd::*, VideoAdMode QoroVideoAd::*,
                              CloseButtonSize QoroVideoAd::*, UIDeviceOrientation QoroVideoAd::*,
                              std::int32_t QoroVideoAd::*, float QoroVideoAd::*, bool QoroVideoAd::*,
                              NSString QoroVideoAd::*, NSArray QoroVideoAd::*, NSDictionary QoroVideoAd::*>;

/// The type of a list's entries, or of the entries of a mapping's lists.
enum class Entries { None, Texts, Objects, WholeNumbers };

/// One property of QoroVideoAd.
struct AdProperty {
    std::string_view name;
    AdMember member;
    Entries entries = Entries::None;
    /// Absent for a property without addresses.
    std::optional<AdAddressUse> addresses = {};
};

/// Every property of QoroVideoAd that an ad file may contain.
inline constexpr auto AdProperties = std::to_array<AdProperty>({
    {"adType", &QoroVideoAd::adType},
    {"portraitVideoPos", &QoroVideoAd::portraitVideoPos},
    {"portraitWebviewPos", &QoroVideoAd::portraitWebviewPos},
    {"landScapeWebviewPos", &QoroVideoAd::landScapeWebviewPos},
    {"portraitModeType", &QoroVideoAd::portraitModeType},
    {"landscapeModeType", &QoroVideoAd::landscapeModeType},
    {"iCloseBtnCountdown", &QoroVideoAd::iCloseBtnCountdown},
    {"iBufferingSufferTime", &QoroVideoAd::iBufferingSufferTime},
    {"iShowProgressWheel", &QoroVideoAd::iShowProgressWheel},
    {"fTrackingInterval", &QoroVideoAd::fTrackingInterval},
    {"fPortraitWebViewHeightPercent", &QoroVideoAd::fPortraitWebViewHeightPercent},
    {"fPortraitLogoHeightPercent", &QoroVideoAd::fPortraitLogoHeightPercent},
    {"fLandscapeWebViewSizePercent", &QoroVideoAd::fLandscapeWebViewSizePercent},
    {"fVideoWidth", &QoroVideoAd::fVideoWidth},
    {"fVideoHeight", &QoroVideoAd::fVideoHeight},
    {"bLandscapeVideoFullScreen", &QoroVideoAd::bLandscapeVideoFullScreen},
    {"bCanRotate", &QoroVideoAd::bCanRotate},
    {"bIsInApp", &QoroVideoAd::bIsInApp},
    {"strMIUrl", &QoroVideoAd::strMIUrl, Entries::None, AdAddressUse::Content},
    {"strStoreId", &QoroVideoAd::strStoreId},
    {"strVideoUrl", &QoroVideoAd::strVideoUrl, Entries::None, AdAddressUse::Content},
    {"strWebViewUrl", &QoroVideoAd::strWebViewUrl, Entries::None, AdAddressUse::Content},
    {"strCampaignId", &QoroVideoAd::strCampaignId},
    {"strProviderId", &QoroVideoAd::strProviderId},
    {"strAdProviderId", &QoroVideoAd::strAdProviderId},
    {"strLogoWebViewUrl", &QoroVideoAd::strLogoWebViewUrl, Entries::None, AdAddressUse::Content},
    {"strVideoTrackingUrl", &QoroVideoAd::strVideoTrackingUrl, Entries::None, AdAddressUse::Tracker},
    {"strCountdownText", &QoroVideoAd::strCountdownText},
    {"bIsDefaultVideoMode", &QoroVideoAd::bIsDefaultVideoMode},
    {"bHasStatusbar", &QoroVideoAd::bHasStatusbar},
    {"arrayButtonsInfo", &QoroVideoAd::arrayButtonsInfo, Entries::Objects},
    {"launchOrientation", &QoroVideoAd::launchOrientation},
    {"strBackgroundColor", &QoroVideoAd::strBackgroundColor},
    {"bIsAutoClose", &QoroVideoAd::bIsAutoClose},
    {"bIsEndedCloseBtn", &QoroVideoAd::bIsEndedCloseBtn},
    {"bIsDefaultMute", &QoroVideoAd::bIsDefaultMute},
    {"bShowReplayBtn", &QoroVideoAd::bShowReplayBtn},
    {"strBrandIconUrl", &QoroVideoAd::strBrandIconUrl, Entries::None, AdAddressUse::Content},
    {"strBrandText", &QoroVideoAd::strBrandText},
    {"bNeedCloseParent", &QoroVideoAd::bNeedCloseParent},
    {"arrayReplayTrackingUrls", &QoroVideoAd::arrayReplayTrackingUrls, Entries::Texts, AdAddressUse::Tracker},
    {"arrayResumeTrackingUrls", &QoroVideoAd::arrayResumeTrackingUrls, Entries::Texts, AdAddressUse::Tracker},
    {"arrayPauseTrackingUrls", &QoroVideoAd::arrayPauseTrackingUrls, Entries::Texts, AdAddressUse::Tracker},
    {"arrayMuteTrackingUrls", &QoroVideoAd::arrayMuteTrackingUrls, Entries::Texts, AdAddressUse::Tracker},
    {"arrayUnmuteTrackingUrls", &QoroVideoAd::arrayUnmuteTrackingUrls, Entries::Texts, AdAddressUse::Tracker},
    {"arrayCloseTrackingUrls", &QoroVideoAd::arrayCloseTrackingUrls, Entries::Texts, AdAddressUse::Tracker},
    {"arrayPrePauseLocations", &QoroVideoAd::arrayPrePauseLocations, Entries::WholeNumbers},
    {"dicTrackingUrls", &QoroVideoAd::dicTrackingUrls, Entries::Texts, AdAddressUse::Tracker},
    {"dicProgressTrackingUrls", &QoroVideoAd::dicProgressTrackingUrls, Entries::Texts, AdAddressUse::Tracker},
    {"bIsHideFullPortraitVideoAtEnd", &QoroVideoAd::bIsHideFullPortraitVideoAtEnd},
    {"bIsHideLandscapeVideoAtEnd", &QoroVideoAd::bIsHideLandscapeVideoAtEnd},
    {"bIsHideActionButton", &QoroVideoAd::bIsHideActionButton},
    {"bShowHideVideoBtn", &QoroVideoAd::bShowHideVideoBtn},
    {"closeBtnSize", &QoroVideoAd::closeBtnSize},
    {"bIsWebViewInFront", &QoroVideoAd::bIsWebViewInFront},
    {"bIsAutoReplay", &QoroVideoAd::bIsAutoReplay},
    {"bIsAutoStart", &QoroVideoAd::bIsAutoStart},
    {"bIsUseVideoCache", &QoroVideoAd::bIsUseVideoCache},
});

} // namespace qoro::detail
