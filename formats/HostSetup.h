#pragma once

#include "formats/LogSink.h"
#include "kit/CloseGuardTimes.h"
#include "kit/Consent.h"
#include "platform/Export.h"
#include "platform/Geometry.h"
#include "platform/KitEnumerations.h"
#include "platform/Orientation.h"
#include "platform/StoreItem.h"
#include "platform/Value.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace QORO_EXPORT qoro
{

class AdObserver;

/// The host application around an ad, and the settings that the kit makes on the ad's controller before it opens.
struct HostSetup {
    /// Interface orientations that the host allows, as values of UIInterfaceOrientation.
    std::vector<std::int64_t> autorotates{UIInterfaceOrientationPortrait};
    /// Size of the host's root view in points; zero: that of the device's screen. Absent: the host has no root view
    /// controller.
    std::optional<CGSize> root_view = CGSize{};
    /// Whether the host's window is the key window.
    bool key_window = true;
    /// Whether another ad controller opened this one.
    bool parent = false;
    /// Whether the ad is added to a window of its parent.
    bool parent_window = false;
    /// Whether the ad has this delegate, which is notified when the ad fails, for example when its page does not load.
    /// @{
    bool delegate = false;
    bool interstitial_delegate = false;
    /// @}

    /// Set on the controller before it opens: bIsLockOneSide, bIsLockOneSideAndIsLandscape,
    /// bIsLockOneSideAndIsPortrait, bUseAutoRotate and instSendImpPolicy.
    /// @{
    bool lock_one_side = false;
    bool lock_one_side_landscape = false;
    bool lock_one_side_portrait = false;
    bool use_auto_rotate = false;
    SendImpPolicy impression_policy = CallShowFunc;
    /// @}
    /// Times of the close guard; absent: the guard is off.
    std::optional<CloseGuardTimes> guard = CloseGuardTimes{};

    /// The kit's cookie identifier, the value of the macro {Zulix-Guid}; null when not set.
    NSString guid = "g-1";
    /// The kit's session identifier, the value of the macro {Zulix-Sid}, which writes it as a whole number.
    double session = 1700000000.0;
    /// The kit's sequence number, the value of the macro {Zulix-Seq}.
    std::int32_t sequence = 7;
    /// Address of the kit's script library, as a page names it.
    NSString script = "kit://script.js";
    /// Address pattern of a store's item. {id}, {campaign}, {provider} and {adProvider} are replaced with the item's
    /// values, percent-encoded; a null value becomes empty. See is_store_page. Empty: the store's screens show what a
    /// store would receive, for programs that test ads.
    std::string store_page = DefaultStorePage;

    /// The viewer's consent, for pages and macros.
    ConsentStrings consent = {};

    /// Whether the number and the rate of the ad's requests are limited; a request beyond the limit is not sent.
    bool tracker_limit = true;

    /// Closes the ad when its video cannot be played (OpenedAd only). If nothing of any video was played, the outcome
    /// is AdEnd::Failed.
    bool close_when_video_fails = false;
    /// Follows the ad while it runs; outlives the OpenedAd, which alone uses it. May be null.
    AdObserver* observer = nullptr;

    /// Receives the lines of the ad's log, on the platform's thread and inside the event that writes them; it must not
    /// call the ad. Used by OpenedAd; may be empty.
    LogSink log;
};

/// Defaults of a simulated session's host: without the kit's close guard and request limits.
HostSetup unguarded_host();

/// Address of the store page of an example item, whose identifier is "id" and whose other values are empty.
/// @param pattern as HostSetup::store_page
NSURL store_page_of_id(const std::string& pattern);

/// Whether a pattern is valid for HostSetup::store_page: it contains "{id}" and results in an http or https address.
bool is_store_page(const std::string& pattern);

} // namespace qoro
