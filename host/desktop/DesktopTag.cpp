#include "host/desktop/DesktopTag.h"

#include "desktop/media/Decoders.h"
#include "desktop/net/Reach.h"

#include <algorithm>
#include <array>
#include <deque>
#include <string_view>
#include <utility>

namespace qoro
{

namespace
{

struct Format {
    /// How names of the codec begin (RFC 6381), or how people write it; in lower case.
    std::string_view name;
    const char* caps;
};

constexpr std::array<Format, 12> Codecs{{{"avc1", "video/x-h264"},
                                         {"avc3", "video/x-h264"},
                                         {"h264", "video/x-h264"},
                                         {"h.264", "video/x-h264"},
                                         {"hev1", "video/x-h265"},
                                         {"hvc1", "video/x-h265"},
                                         {"h265", "video/x-h265"},
                                         {"h.265", "video/x-h265"},
                                         {"vp8", "video/x-vp8"},
                                         {"vp09", "video/x-vp9"},
                                         {"vp9", "video/x-vp9"},
                                         {"av01", "video/x-av1"}}};

constexpr std::array<Format, 5> Containers{{{"video/mp4", "video/quicktime"},
                                            {"video/quicktime", "video/quicktime"},
                                            {"video/webm", "video/webm"},
                                            {"video/ogg", "application/ogg"},
                                            {"video/3gpp", "application/x-3gp"}}};

std::string lower(std::string text)
{
    std::ranges::transform(text, text.begin(),
                           [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return text;
}

/// What GStreamer's plugins on this machine can play. An unknown codec is left to the attempt.
class InstalledDecoders final : public vast::MediaSupport
{
public:
    bool can_play(const std::string& type, const std::string& codec) const override
    {
        const auto* const container = std::ranges::find(Containers, type, &Format::name);
        if (container == Containers.end() || !has_demuxer(container->caps))
            return false;
        const std::string name = lower(codec);
        const auto* const known =
            std::ranges::find_if(Codecs, [&](const Format& each) { return name.starts_with(each.name); });
        return known == Codecs.end() || has_video_decoder(known->caps);
    }
};

void append(std::vector<std::string>& all, const std::vector<std::string>& more)
{
    all.insert(all.end(), more.begin(), more.end());
}

/// What an ad may request, or its page.
std::vector<std::string> addresses_of(const vast::ResolvedAd& resolved)
{
    const vast::Ad& ad = resolved.ad;
    const vast::Linear& linear = *ad.linear;
    std::vector<std::string> all = ad.impressions;
    for (const auto* list : {&ad.errors, &ad.viewable.viewable, &ad.viewable.not_viewable, &ad.viewable.undetermined,
                             &linear.click_tracking, &linear.custom_click})
        append(all, *list);
    all.push_back(linear.click_through);
    for (const vast::MediaFile& file : linear.media_files)
        all.push_back(file.address);
    for (const vast::Tracker& tracker : linear.trackers)
        all.push_back(tracker.address);
    for (const vast::Verification& verification : ad.verifications)
        append(all, verification.not_executed);
    const auto append_resources = [&all](const std::vector<vast::Resource>& resources) {
        for (const vast::Resource& resource : resources)
            all.push_back(resource.text);
    };
    for (const vast::Icon& icon : linear.icons) {
        append_resources(icon.resources);
        all.push_back(icon.click_through);
        append(all, icon.click_tracking);
        append(all, icon.view_tracking);
    }
    for (const vast::Companion& companion : ad.companions) {
        append_resources(companion.resources);
        all.push_back(companion.click_through);
        append(all, companion.click_tracking);
        append(all, companion.creative_view);
    }
    return all;
}

/// @param document its address; empty for a file
bool is_of_this_machine(const std::string& document)
{
    return document.empty() || zone_named_by(document) != NetworkZone::Public;
}

} // namespace

struct DesktopTag::Hosts {
    std::deque<NamedHosts> named;
};

DesktopTag::DesktopTag(const OpenedTag::Tag& tag)
    : hosts_(std::make_unique<Hosts>()), support_(std::make_unique<InstalledDecoders>())
{
    // The user names it.
    hosts_->named.emplace_back(std::vector{tag.address});
}

DesktopTag::~DesktopTag() = default;

TagOptions DesktopTag::options(TagOptions options)
{
    next_ = std::exchange(options.observer, this);
    if (!options.support)
        options.support = support_.get();
    // Those to which a document may not lead are not requested.
    options.resolver.requests = [this, also = options.resolver.requests](const std::string& address) {
        hosts_->named.emplace_back(std::vector{address});
        if (also)
            also(address);
    };
    return options;
}

void DesktopTag::ad_begins(const vast::ResolvedAd& ad, std::size_t n, std::size_t of)
{
    if (std::ranges::all_of(ad.documents, is_of_this_machine))
        hosts_->named.emplace_back(addresses_of(ad));
    if (next_)
        next_->ad_begins(ad, n, of);
}

void DesktopTag::ad_failed(const vast::FailedAd& failed)
{
    if (std::ranges::all_of(failed.documents, is_of_this_machine))
        hosts_->named.emplace_back(failed.errors);
    if (next_)
        next_->ad_failed(failed);
}

void DesktopTag::ad_ended(std::size_t n, const AdOutcome& outcome)
{
    if (next_)
        next_->ad_ended(n, outcome);
}

} // namespace qoro
