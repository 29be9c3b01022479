#pragma once

#include "kit/CloseGuard.h"
#include "platform/Geometry.h"
#include "platform/QoroAdManager.h"
#include "platform/QoroPhoneGapViewController.h"
#include "platform/Value.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace qoro
{

/// The host application around an ad, and what the kit has set for the ad's controller before it opens.
struct HostSetup {
    /// Interface orientations that the host allows.
    std::vector<std::int64_t> autorotates{UIInterfaceOrientationPortrait};
    /// Size of the host's root view; absent for no root view controller.
    std::optional<CGSize> root_view = CGSize{375, 812};
    /// Whether the host's window has the key.
    bool key_window = true;
    /// Whether another ad controller has opened this one.
    bool parent = false;
    /// Whether the ad is given a window of its parent's.
    bool parent_window = false;
    /// Which delegates are set; those that are answer the failure message.
    bool delegate = false;
    bool interstitial_delegate = false;

    bool lock_one_side = false;
    bool lock_one_side_landscape = false;
    bool lock_one_side_portrait = false;
    bool use_auto_rotate = false;
    SendImpPolicy impression_policy = CallShowFunc;
    /// When a viewer whom the ad does not let go is shown a way out; absent for never.
    std::optional<CloseGuardTimes> guard = CloseGuardTimes{};

    /// The kit's cookie identifier; null for none.
    NSString guid = "g-1";
    double session = 1700000000.0;
    std::int32_t sequence = 7;
    /// Path of the kit's script library, as a page names it.
    NSString script = "kit://script.js";
    /// Which address shows a store's item, as QoroAdManager::set_store_page takes it.
    std::string store_page = DefaultStorePage;

    /// Whether the ad's requests are bounded (QoroAdManager::begin_ad).
    bool tracker_limit = true;
};

/// The host of a simulated session that asks for nothing: the ad alone, without the kit's guard and limits.
HostSetup unguarded_host();

/// The address at which a store shows the item "id".
/// @param pattern as QoroAdManager::set_store_page takes it
NSURL store_page_of_id(const std::string& pattern);

/// Whether a text says which address shows a store's item: one on the web that names the item.
bool is_store_page(const std::string& pattern);

/// The ad controller that opened the ad: it only tells what it is asked.
class ParentController final : public QoroPhoneGapViewController
{
public:
    void clickRequester() override;
    void closeVideoAdUnit(bool close) override;
    void setBIsSendImpression(bool sent) override;
};

/// A delegate of the host: it tells the failures that it hears of.
class HostDelegate final : public QoroAdDelegate
{
public:
    /// @param name which of the delegates this is; outlives it
    explicit HostDelegate(std::string_view name) : platform_(Platform::current()), name_(name) {}
    bool responds_to_ad_failed() const override { return true; }
    void onZulixAdFailed(const UIView& adView, const NSError& error) override;

private:
    Platform& platform_;
    const std::string_view name_;
};

} // namespace qoro
