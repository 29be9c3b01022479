#include "workbench/check/CheckedSession.h"
#include "workbench/check/RuleFunctions.h"

#include "Base/VideoPlayer/QoroVideoAd.h"
#include "formats/AdAddresses.h"
#include "formats/AddressPattern.h"
#include "platform/Numbers.h"
#include "platform/Value.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace qoro
{

namespace
{

/// Seconds between two checks of the position.
constexpr double CheckedEach = 1;
constexpr double Tolerance = 0.15;

constexpr std::array<std::pair<std::string_view, double>, 4> Milestones{
    {{"start", 0}, {"firstQuartile", 0.25}, {"midpoint", 0.5}, {"thirdQuartile", 0.75}}};

/// A tracker of a position in the video.
struct Tracker {
    std::string path;
    /// As in the ad.
    std::string address;
    /// "midpoint" or "progress 8".
    std::string kind;
    /// Position in seconds.
    double due = 0;
    /// Index among the milestones; absent for a progress tracker.
    std::optional<std::size_t> milestone = {};
    /// The first line that sends it in the first play; null if there is none.
    const CheckedLine* sent = nullptr;
    /// Microseconds: when the video was first seen at or behind the position; absent if it never was.
    std::optional<std::int64_t> passed = {};
};

/// "/dicTrackingUrls/midpoint/0" → "midpoint".
std::string key_in(std::string_view path, std::string_view dictionary)
{
    path.remove_prefix(dictionary.size());
    return std::string(path.substr(0, path.rfind('/')));
}

std::vector<Tracker> trackers_of(const QoroVideoAd& ad, double duration)
{
    std::vector<Tracker> trackers;
    visit_addresses(ad, [&](AdAddressUse use, const std::string& path, const std::string& address) {
        constexpr std::string_view Events = "/dicTrackingUrls/";
        constexpr std::string_view Positions = "/dicProgressTrackingUrls/";
        if (use != AdAddressUse::Tracker)
            return;
        if (path.starts_with(Events)) {
            const std::string key = key_in(path, Events);
            const auto* found = std::ranges::find(Milestones, key, &decltype(Milestones)::value_type::first);
            if (found != Milestones.end())
                trackers.push_back({.path = path,
                                    .address = address,
                                    .kind = key,
                                    .due = found->second * duration,
                                    .milestone = static_cast<std::size_t>(found - Milestones.begin())});
            else if (key == "complete")
                trackers.push_back(
                    {.path = path, .address = address, .kind = key, .due = duration, .milestone = Milestones.size()});
        } else if (path.starts_with(Positions)) {
            const std::string key = key_in(path, Positions);
            trackers.push_back({.path = path,
                                .address = address,
                                .kind = "progress " + key,
                                .due = static_cast<double>(Value(key).intValue())});
        }
    });
    return trackers;
}

bool is_tracker(const CheckedLine& line)
{
    return line.what == "request" && line.purpose == "tracking";
}

/// The first play of an ad's video.
struct FirstPlay {
    std::vector<Tracker> trackers;
    double duration = 0;
    /// The furthest position in seconds.
    double reached = 0;
    /// Microseconds: its end, or the beginning of a replay.
    std::int64_t until = 0;
    bool ended = false;
    /// Whether the session moves the position or changes the video.
    bool sought = false;
};

/// Absent for sessions whose video or positions are not the ad's own.
std::optional<FirstPlay> first_play(const CheckedSession& session)
{
    const QoroVideoAd* ad = session.ad();
    const VideoSetup& video = session.scenario().world.video;
    if (!ad || video.manual || !session.opened())
        return std::nullopt;
    FirstPlay play{.trackers = trackers_of(*ad, video.duration), .duration = video.duration};
    std::vector<AddressPattern> patterns;
    for (const Tracker& tracker : play.trackers)
        patterns.push_back(AddressPattern::of_tracker(tracker.address));
    for (const CheckedLine& line : session.lines()) {
        if (line.what == "player" && line.act == "seek")
            play.sought = true;
        const double position = line.position.value_or(0);
        // A replay begins.
        if (play.ended && position < play.reached - CheckedEach)
            break;
        play.until = line.at;
        play.reached = std::max(play.reached, position);
        for (Tracker& tracker : play.trackers)
            if (!tracker.passed && line.position && position >= tracker.due)
                tracker.passed = line.at;
        if (line.what == "js" && line.event == "video_ended" && position >= video.duration - Tolerance)
            play.ended = true;
        if (is_tracker(line))
            for (std::size_t i = 0; i < play.trackers.size(); ++i)
                if (!play.trackers[i].sent && patterns[i].matches(line.url))
                    play.trackers[i].sent = &line;
    }
    return play;
}

/// When an address is sent for the second time in a play, in microseconds; absent if it is not.
std::optional<std::int64_t> second_sending(const CheckedSession& session, const FirstPlay& play,
                                           const std::string& address)
{
    bool once = false;
    for (const CheckedLine& line : session.lines())
        if (line.at <= play.until && is_tracker(line) && line.url == address && std::exchange(once, true))
            return line.at;
    return std::nullopt;
}

/// @param at microseconds
Suspicion of_tracker(const CheckedSession& session, const Tracker& tracker, const std::string& what,
                     std::optional<std::int64_t> at)
{
    return {.sentence = in_course(session, "the tracker of " + tracker.kind + ' ' + what),
            .path = tracker.path,
            .key = tracker.path,
            .at = at};
}

/// The tracker's place in the ad; empty for an address that is not the ad's, or for a tag.
std::string path_of(const CheckedSession& session, const std::string& sent)
{
    std::string found;
    std::size_t longest = 0;
    if (session.ad())
        visit_addresses(*session.ad(), [&](AdAddressUse use, const std::string& path, const std::string& address) {
            if (use != AdAddressUse::Tracker)
                return;
            const AddressPattern pattern = AddressPattern::of_tracker(address);
            if (pattern.matches(sent) && (found.empty() || pattern.length() > longest)) {
                found = path;
                longest = pattern.length();
            }
        });
    return found;
}

/// One suspicion for each tracker whose sent address has a fault.
/// @param fault the faulty part of an address; empty for a sound one
template <typename Fault>
std::vector<Suspicion> of_addresses(const CheckedSession& session, const std::string& what, const Fault& fault)
{
    std::vector<Suspicion> suspicions;
    for (const CheckedLine& line : session.lines()) {
        if (!is_tracker(line))
            continue;
        const std::string wrong = fault(line.url);
        if (wrong.empty())
            continue;
        const std::string path = path_of(session, line.url);
        const std::string key = path.empty() ? line.event + wrong : path;
        if (std::ranges::find(suspicions, key, &Suspicion::key) == suspicions.end())
            suspicions.push_back(
                {.sentence = "an address is sent with " + what + ' ' + wrong, .path = path, .key = key, .at = line.at});
    }
    return suspicions;
}

bool is_macro_letter(char c)
{
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_' || c == '-' ||
           c == '.' || c == ':';
}

/// A macro in the usual brackets of templates; empty without one. "[…]" only with capital letters, as in VAST, section
/// 6: a list's index in a query is none.
std::string macro_in(std::string_view address)
{
    constexpr std::array<std::pair<std::string_view, std::string_view>, 5> Brackets{
        {{"${", "}"}, {"{{", "}}"}, {"{", "}"}, {"%%", "%%"}, {"[", "]"}}};
    for (const auto& [open, close] : Brackets)
        for (std::size_t at = address.find(open); at != std::string_view::npos; at = address.find(open, at + 1)) {
            const std::size_t from = at + open.size();
            const std::size_t end = address.find(close, from);
            if (end == std::string_view::npos || end == from)
                continue;
            const std::string_view name = address.substr(from, end - from);
            const bool capitals = std::ranges::none_of(name, [](char c) { return c >= 'a' && c <= 'z'; }) &&
                                  std::ranges::any_of(name, [](char c) { return c >= 'A' && c <= 'Z'; }) &&
                                  name.size() > 2;
            if (std::ranges::all_of(name, is_macro_letter) && (open == "{" || open == "${" || open == "{{" || capitals))
                return std::string(address.substr(at, end + close.size() - at));
        }
    return "";
}

} // namespace

std::vector<Suspicion> tracker_never_sent(const CheckedSession& session)
{
    const auto play = first_play(session);
    std::vector<Suspicion> suspicions;
    if (play && play->ended && !play->sought)
        for (const Tracker& tracker : play->trackers)
            if (!tracker.sent && (tracker.due < play->duration || tracker.kind == "complete"))
                suspicions.push_back(of_tracker(session, tracker, "is never sent, though the video plays to its end",
                                                tracker.passed.value_or(play->until)));
    return suspicions;
}

std::vector<Suspicion> tracker_sent_twice(const CheckedSession& session)
{
    const auto play = first_play(session);
    if (!play)
        return {};
    // Addresses that the ad sends for its events: those of controls may be sent as often as the viewer uses these.
    std::map<std::string, std::vector<const Tracker*>> by_address;
    for (const Tracker& tracker : play->trackers)
        if (tracker.sent)
            by_address[tracker.sent->url].push_back(&tracker);
    std::vector<Suspicion> suspicions;
    for (const auto& [address, trackers] : by_address) {
        const auto second = trackers.size() < 2 ? std::nullopt : second_sending(session, *play, address);
        if (!second)
            continue;
        std::string kinds;
        for (const Tracker* each : trackers)
            kinds += (kinds.empty() ? "" : " and ") + each->kind;
        suspicions.push_back({.sentence = in_course(session, "one address is sent " + std::to_string(trackers.size()) +
                                                                 " times in one play, for " + kinds),
                              .path = trackers.back()->path,
                              .key = trackers.back()->path,
                              .at = *second});
    }
    return suspicions;
}

std::vector<Suspicion> tracker_late(const CheckedSession& session)
{
    const auto play = first_play(session);
    if (!play || play->sought)
        return {};
    std::vector<double> all;
    std::vector<const Tracker*> late;
    for (const Tracker& tracker : play->trackers) {
        if (!tracker.sent || !tracker.sent->position || !tracker.milestone || tracker.kind == "complete")
            continue;
        const double behind = *tracker.sent->position - tracker.due;
        all.push_back(behind);
        if (behind > play->duration / Milestones.size() + Tolerance)
            late.push_back(&tracker);
    }
    std::ranges::sort(all);
    std::vector<Suspicion> suspicions;
    suspicions.reserve(late.size());
    for (const Tracker* tracker : late)
        suspicions.push_back(
            of_tracker(session, *tracker,
                       "is sent at position " + seconds_text(*tracker->sent->position) + " s of " +
                           seconds_text(play->duration) + " s, behind the next milestone; milestones are sent " +
                           seconds_text(all.front()) + " s to " + seconds_text(all.back()) +
                           " s late, half of them more than " + seconds_text(all[(all.size() - 1) / 2]) + " s",
                       tracker->sent->at));
    return suspicions;
}

std::vector<Suspicion> macro_unreplaced(const CheckedSession& session)
{
    return of_addresses(session, "the macro", [](const std::string& address) { return macro_in(address); });
}

std::vector<Suspicion> null_in_address(const CheckedSession& session)
{
    return of_addresses(session, "an absent value,", [](const std::string& address) -> std::string {
        for (const std::string_view null : {"(null)", "%28null%29", "=undefined", "=null"})
            if (const std::size_t at = address.find(null); at != std::string::npos) {
                const std::size_t end = at + null.size();
                if (end == address.size() || address[end] == '&' || address[end] == '#' || !null.starts_with('='))
                    return std::string(null.substr(null.starts_with('=') ? 1 : 0));
            }
        return "";
    });
}

std::vector<Suspicion> address_not_encoded(const CheckedSession& session)
{
    return of_addresses(session, "the character", [](const std::string& address) -> std::string {
        // RFC 3986, section 2: the others are percent-encoded. Braces belong to macros, a rule of their own.
        for (const char c : address) {
            const auto byte = static_cast<unsigned char>(c);
            if (byte >= 0x80)
                return "beyond ASCII that is not percent-encoded";
            if (byte <= 0x20 || byte == 0x7F)
                return "' ' that is not percent-encoded";
            if (std::string_view("\"<>\\^`|").find(c) != std::string_view::npos)
                return std::string("'") + c + "' that is not percent-encoded";
        }
        return "";
    });
}

} // namespace qoro
