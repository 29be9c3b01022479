#include "workbench/check/RuleFunctions.h"

#include "Base/VideoPlayer/QoroVideoAd.h"
#include "formats/AdAddresses.h"
#include "formats/AdFile.h"
#include "formats/AdRemarks.h"
#include "formats/Scenario.h"
#include "platform/AddressParts.h"
#include "platform/Numbers.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <string_view>
#include <utility>

namespace qoro
{

namespace
{

/// The server of an ad's own folder in a scenario.
constexpr std::string_view OwnServer = "http://ad.example/";

std::shared_ptr<const QoroVideoAd> ad_of(const BaseScenario& base)
{
    return base.scenario.scenario().ad;
}

/// A property that the controller does not read, with what decides instead.
constexpr auto Ignored = std::to_array<std::pair<std::string_view, std::string_view>>({
    {"portraitWebviewPos", "the page takes the room that the video leaves"},
    {"landScapeWebviewPos", "in landscape the video fills the screen"},
    {"fPortraitWebViewHeightPercent", "the page takes the room that the video leaves"},
    {"fPortraitLogoHeightPercent", "there is no such logo"},
    {"fLandscapeWebViewSizePercent", "in landscape the video fills the screen"},
    {"bLandscapeVideoFullScreen", "in landscape the video fills the screen"},
    {"bCanRotate", "portraitModeType and landscapeModeType decide which arrangements there are"},
    {"strLogoWebViewUrl", "there is no such logo"},
    {"strCountdownText", "the countdown shows only the seconds"},
    {"bHasStatusbar", "the host's status bar is not changed"},
    {"bShowReplayBtn", "the replay button always appears at the end"},
});

bool is_set(const BaseScenario& base, std::string_view property)
{
    const auto value = base.scenario.value(path_under("/ad", property));
    return value && *value != "null" && *value != "false" && *value != "0" && *value != R"("")" && *value != "{}" &&
           *value != "[]";
}

/// Trackers and content at addresses of a server.
template <typename Visit>
void visit_web_addresses(const BaseScenario& base, const Visit& visit)
{
    const auto ad = ad_of(base);
    if (!ad)
        return;
    visit_addresses(*ad, [&](AdAddressUse use, const std::string& path, const std::string& address) {
        const bool own = base.kind == InputKind::Ad && address.starts_with(OwnServer);
        if (use != AdAddressUse::Target && !own)
            visit(path, address);
    });
}

} // namespace

std::vector<Suspicion> missing_file(const BaseScenario& base)
{
    std::vector<Suspicion> suspicions;
    for (const PlacedRemark& each : base.missing_files)
        suspicions.push_back({.sentence = each.text, .path = each.path, .key = each.path});
    return suspicions;
}

std::vector<Suspicion> unknown_key(const BaseScenario& base)
{
    std::vector<Suspicion> suspicions;
    const auto ad = ad_of(base);
    if (!ad)
        return suspicions;
    std::vector<std::string> lines = ad_remarks(*ad, base.file);
    if (ad->strVideoUrl.length() > 0 && !base.video_is_unreadable && !base.scenario.value("/videos"))
        for (std::string& line : remarks_on_duration(*ad, base.file, base.scenario.scenario().world.video.duration))
            lines.push_back(std::move(line));
    for (const std::string& line : lines) {
        const PlacedRemark remark = placed_remark(line, base.file);
        suspicions.push_back({.sentence = remark.text, .path = remark.path, .key = remark.path});
    }
    return suspicions;
}

std::vector<Suspicion> setting_without_effect(const BaseScenario& base)
{
    std::vector<Suspicion> suspicions;
    const auto ad = ad_of(base);
    if (!ad)
        return suspicions;
    const auto add = [&](std::string_view property, std::string_view why) {
        const std::string path = '/' + std::string(property);
        suspicions.push_back(
            {.sentence = std::string(property) + " has no effect: " + std::string(why), .path = path, .key = path});
    };
    for (const auto& [property, why] : Ignored)
        if (is_set(base, property))
            add(property, why);
    if (is_set(base, "strVideoTrackingUrl") && ad->dicTrackingUrls.count() > 0)
        add("strVideoTrackingUrl", "dicTrackingUrls takes the place of the heartbeat");
    if (is_set(base, "fTrackingInterval") && (ad->dicTrackingUrls.count() > 0 || !is_set(base, "strVideoTrackingUrl")))
        add("fTrackingInterval", "the ad sends no heartbeat");
    if (ad->bIsEndedCloseBtn && is_set(base, "iCloseBtnCountdown"))
        add("iCloseBtnCountdown", "with bIsEndedCloseBtn the close button has no countdown");
    if (ad->bIsHideFullPortraitVideoAtEnd && ad->portraitVideoPos != FULL)
        add("bIsHideFullPortraitVideoAtEnd", "portraitVideoPos is not FULL");
    if (ad->bShowHideVideoBtn && ad->landscapeModeType != VIDEO_AND_WEBVIEW)
        add("bShowHideVideoBtn", "landscapeModeType is not VIDEO_AND_WEBVIEW");
    return suspicions;
}

std::vector<Suspicion> http_beside_https(const BaseScenario& base)
{
    bool secure = false;
    std::vector<Suspicion> suspicions;
    visit_web_addresses(base, [&](const std::string& path, const std::string& address) {
        const AddressParts parts(address);
        secure = secure || parts.has_scheme("https");
        if (parts.has_scheme("http"))
            suspicions.push_back(
                {.sentence = "the address begins with http:, others of the ad with https:", .path = path, .key = path});
    });
    return secure ? suspicions : std::vector<Suspicion>();
}

std::vector<Suspicion> address_malformed(const BaseScenario& base)
{
    std::vector<Suspicion> suspicions;
    visit_web_addresses(base, [&](const std::string& path, const std::string& address) {
        const AddressParts parts(address);
        std::string fault;
        if (parts.is_web() && parts.host().empty())
            fault = "the address has no server";
        else if ((parts.has_scheme("http") || parts.has_scheme("https")) && !parts.authority())
            fault = "the address lacks the // before its server";
        else if (parts.authority() && parts.authority()->port && !parts.authority()->port->empty() && !parts.port())
            fault = "the address has a port that is not a number up to 65535";
        if (!fault.empty())
            suspicions.push_back({.sentence = fault, .path = path, .key = path});
    });
    return suspicions;
}

std::vector<Suspicion> video_unreadable(const BaseScenario& base)
{
    if (!base.video_is_unreadable)
        return {};
    return {{.sentence = "the file is not a video that this machine can play", .path = "/strVideoUrl"}};
}

std::vector<Suspicion> video_proportions(const BaseScenario& base)
{
    constexpr double Tolerance = 0.01;
    const auto ad = ad_of(base);
    if (!ad || !base.video || !(ad->fVideoWidth > 0 && ad->fVideoHeight > 0))
        return {};
    const CGSize real = base.video->size;
    if (!(real.width > 0 && real.height > 0))
        return {};
    const double given = static_cast<double>(ad->fVideoWidth) / static_cast<double>(ad->fVideoHeight);
    if (std::abs(given / (real.width / real.height) - 1) <= Tolerance)
        return {};
    return {{.sentence = "the ad says " + shortest_text(ad->fVideoWidth) + " x " + shortest_text(ad->fVideoHeight) +
                         ", which has other proportions than the video, " + shortest_text(real.width) + " x " +
                         shortest_text(real.height),
             .path = "/fVideoWidth"}};
}

} // namespace qoro
