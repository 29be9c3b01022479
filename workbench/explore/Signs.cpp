#include "workbench/explore/Signs.h"

#include "Base/VideoPlayer/QoroVideoWebViewController.h"
#include "formats/AdAddresses.h"
#include "simulator/Simulation.h"
#include "workbench/explore/StateHash.h"
#include "workbench/explore/StateWriter.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>

namespace qoro
{

namespace
{

/// Microseconds beyond which rules notice what is seen.
constexpr std::array<std::int64_t, 2> Noticed{500'000, 1'000'000};

template <typename... Parts>
Sign sign(std::string_view kind, const Parts&... parts)
{
    StateWriter out;
    out.add("kind", kind);
    (out.add("part", parts), ...);
    return out.key().first;
}

/// An address without its numbers, which count, or name the time.
std::string without_digits(std::string_view url)
{
    std::string kept;
    for (const char c : url)
        if (c < '0' || c > '9')
            kept += c;
        else if (!kept.ends_with('#'))
            kept += '#';
    return kept;
}

} // namespace

std::vector<AddressPattern> position_trackers(const QoroVideoAd& ad)
{
    constexpr std::size_t Most = 64;
    std::vector<AddressPattern> patterns;
    visit_addresses(ad, [&](AdAddressUse use, const std::string& path, const std::string& address) {
        const bool of_position = path.starts_with("/dicTrackingUrls/") || path.starts_with("/dicProgressTrackingUrls/");
        if (use == AdAddressUse::Tracker && of_position && patterns.size() < Most)
            patterns.push_back(AddressPattern::of_tracker(address));
    });
    return patterns;
}

void add_tracker_signs(std::uint64_t before, const Passage& happened, std::vector<Sign>& signs)
{
    if ((before & happened.sent) != 0)
        signs.push_back(sign("again", before & happened.sent));
    if (happened.ended)
        signs.push_back(sign("ended", before | happened.sent));
}

std::optional<Sign> sign_of_joining(std::uint64_t sent, std::uint64_t joined)
{
    return sent == joined ? std::nullopt : std::optional(sign("joins", sent & ~joined, joined & ~sent));
}

Sign sign_of_touches(std::string_view control, std::size_t times)
{
    return sign("touches", control, times);
}

void SignCollector::begin(std::string_view move)
{
    happened_ = {};
    kinds_ = {};
    move_ = move;
    at_once_ = true;
}

void SignCollector::note(const Event& event)
{
    constexpr std::size_t Bits = 64;
    kinds_[event.index() / Bits] |= std::uint64_t{1} << event.index() % Bits;
    if (const auto* request = std::get_if<event::Requested>(&event))
        note_request(request->url.view(), request->purpose);
    else if (const auto* script = std::get_if<event::ScriptEvent>(&event))
        happened_.ended = happened_.ended || script->event.view() == "video_ended";
}

void SignCollector::note_request(std::string_view url, RequestPurpose purpose)
{
    happened_.signs.push_back(sign("request", purpose, std::string_view(without_digits(url))));
    if (purpose != RequestPurpose::Tracking)
        return;
    for (std::size_t i = 0; i < positions_.size(); ++i) {
        if (!positions_[i].matches(url))
            continue;
        const std::uint64_t bit = std::uint64_t{1} << i;
        if ((happened_.sent & bit) != 0)
            happened_.signs.push_back(sign("again", bit));
        happened_.sent |= bit;
        const auto ad = simulation_.living();
        if (ad && ad->qoroMoviePlayer)
            happened_.signs.push_back(sign("at", i, std::round(ad->qoroMoviePlayer.currentPlaybackTime())));
    }
}

void SignCollector::note_duration(std::int64_t now)
{
    for (const std::int64_t least : Noticed)
        if (picture_ != 0 && now - picture_at_ > least)
            happened_.signs.push_back(sign("lasts", picture_, least));
}

void SignCollector::note_kinds(std::string_view move)
{
    StateWriter out;
    out.add("move", move);
    for (const std::uint64_t each : kinds_)
        out.add("kinds", each);
    happened_.signs.push_back(out.key().first);
    kinds_ = {};
}

Passage SignCollector::take()
{
    const std::int64_t now = simulation_.platform().loop().now_microseconds();
    note_duration(now);
    picture_ = state_key(simulation_, StateDetail::Picture).value_or(StateKey{}).first;
    picture_at_ = now;
    happened_.signs.push_back(sign("picture", picture_));
    // What follows a touch at once is its outcome.
    note_kinds(at_once_ ? move_ : std::string_view());
    at_once_ = false;
    return std::exchange(happened_, {});
}

Passage SignCollector::rest()
{
    note_duration(simulation_.platform().loop().now_microseconds());
    note_kinds({});
    return std::exchange(happened_, {});
}

} // namespace qoro
