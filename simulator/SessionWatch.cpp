#include "simulator/SessionWatch.h"

#include "formats/AdAddresses.h"
#include "formats/Snapshot.h"
#include "views/ViewNode.h"

#include <algorithm>
#include <array>
#include <utility>

namespace qoro
{

namespace
{

/// What a tracker is called for people, by the path of its entry in the ad.
struct KindOfTracker {
    std::string_view path;
    std::string_view name;
    /// Whether what follows in the path belongs to the name.
    bool keyed = false;
};
constexpr std::array Kinds{
    KindOfTracker{"/dicTrackingUrls/", "", true},        KindOfTracker{"/dicProgressTrackingUrls/", "progress ", true},
    KindOfTracker{"/strVideoTrackingUrl", "heartbeat"},  KindOfTracker{"/arrayReplayTrackingUrls", "replay"},
    KindOfTracker{"/arrayResumeTrackingUrls", "resume"}, KindOfTracker{"/arrayPauseTrackingUrls", "pause"},
    KindOfTracker{"/arrayMuteTrackingUrls", "mute"},     KindOfTracker{"/arrayUnmuteTrackingUrls", "unmute"},
    KindOfTracker{"/arrayCloseTrackingUrls", "close"},
};
constexpr std::string_view Buttons = "/arrayButtonsInfo/";

std::string kind_of(std::string_view path)
{
    if (path.starts_with(Buttons)) {
        const std::string_view index = path.substr(Buttons.size(), path.find('/', Buttons.size()) - Buttons.size());
        return "button " + std::to_string(std::stoul(std::string(index)) + 1) + " click";
    }
    for (const KindOfTracker& kind : Kinds) {
        if (!path.starts_with(kind.path))
            continue;
        std::string name(kind.name);
        if (kind.keyed) // up to the index within the list
            name += path.substr(kind.path.size(), path.rfind('/') - kind.path.size());
        return name;
    }
    return std::string(path);
}

} // namespace

SessionWatch::SessionWatch(Simulation& simulation, const QoroVideoAd& ad, EventSink& trace)
    : simulation_(simulation), platform_(simulation.platform()), trace_(trace)
{
    find_trackers(ad);
    platform_.on_display_change([this] {
        if (!summary_.close_button)
            look_later();
    });
    platform_.set_event_sink(this);
}

SessionWatch::~SessionWatch()
{
    platform_.set_event_sink(nullptr);
    platform_.on_display_change(nullptr);
}

void SessionWatch::receive(const Event& event)
{
    trace_.receive(event);
    std::visit([this](const auto& each) { note(each); }, event);
}

void SessionWatch::note(const event::Requested& request)
{
    if (request.purpose != RequestPurpose::Page)
        count_tracker(request.url.view());
}

/// The tag's documents are not known before: a tracker is named by its event, and its address is as sent.
void SessionWatch::note(const event::VastTracked& request)
{
    auto& trackers = summary_.trackers;
    auto known = std::ranges::find_if(trackers, [&](const TrackerSummary& tracker) {
        return tracker.kind == request.event.view() && tracker.url == request.url.view();
    });
    if (known == trackers.end())
        known = trackers.insert(known, {std::string(request.event.view()), std::string(request.url.view()), {}});
    known->sent.push_back(platform_.loop().now_microseconds());
}

void SessionWatch::note(const event::StepBegun& step)
{
    if (step.key.view() == "open" && !summary_.opened)
        summary_.opened = platform_.loop().now_microseconds();
    if (step.key.view() == "release" && !summary_.released)
        summary_.released = platform_.loop().now_microseconds();
}

void SessionWatch::note(const event::Released&)
{
    summary_.destroyed = platform_.loop().now_microseconds();
}

/// A close begins with this event, so the look precedes the answers to the close trackers.
void SessionWatch::note(const event::ExtraViewRemoved&)
{
    if (!summary_.closed)
        look_later();
}

void SessionWatch::note(const event::AdClosed&)
{
    summary_.closed = platform_.loop().now_microseconds();
    look_later();
}

Summary SessionWatch::finish()
{
    look();
    summary_.at_end = left_behind();
    summary_.blocked = to_microseconds(platform_.fetcher().blocked_seconds());
    return std::move(summary_);
}

// ----------------------------------------------------------------------------------------------------------- trackers

void SessionWatch::find_trackers(const QoroVideoAd& ad)
{
    visit_addresses(ad, [this](AdAddressUse use, const std::string& path, const std::string& address) {
        if (use != AdAddressUse::Tracker)
            return;
        const std::string kind = kind_of(path);
        const auto known = std::ranges::find(summary_.trackers, address, &TrackerSummary::url);
        if (known == summary_.trackers.end())
            summary_.trackers.push_back({kind, address, {}});
        else if (known->kind != kind)
            known->kind += ", " + kind;
    });
    for (const TrackerSummary& tracker : summary_.trackers)
        patterns_.push_back(AddressPattern::of_tracker(tracker.url));
}

void SessionWatch::count_tracker(std::string_view url)
{
    auto& trackers = summary_.trackers;
    std::size_t best = trackers.size();
    for (std::size_t i = 0; i < patterns_.size(); ++i) {
        const bool better = best == trackers.size() || patterns_[i].length() > patterns_[best].length();
        if (better && patterns_[i].matches(url))
            best = i;
    }
    if (best == trackers.size()) {
        const auto others = trackers.begin() + static_cast<std::ptrdiff_t>(patterns_.size());
        best = static_cast<std::size_t>(std::ranges::find(others, trackers.end(), url, &TrackerSummary::url) -
                                        trackers.begin());
    }
    if (best == trackers.size())
        trackers.push_back({"", std::string(url), {}});
    trackers[best].sent.push_back(platform_.loop().now_microseconds());
}

// ------------------------------------------------------------------------------------------------------------- looking

void SessionWatch::look_later()
{
    if (std::exchange(will_look_, true))
        return;
    platform_.loop().post([this] {
        will_look_ = false;
        look();
    });
}

void SessionWatch::look()
{
    if (!summary_.close_button && close_button_is_reachable())
        summary_.close_button = platform_.loop().now_microseconds();
    if (summary_.closed && !summary_.after_close)
        summary_.after_close = left_behind();
}

bool SessionWatch::close_button_is_reachable() const
{
    const auto living = simulation_.living();
    const auto button = living ? living->btnClose.node() : nullptr;
    return button && !button->hidden && hit_test(platform_, placement_on_screen(*button).center) == button;
}

LeftBehind SessionWatch::left_behind() const
{
    LeftBehind left;
    const auto host_window = simulation_.host_window();
    for (const auto& window : platform_.shared<WindowList>().all())
        left.windows += window != host_window;
    left.requests = platform_.fetcher().pending();
    const auto living = simulation_.living();
    if (!living)
        return left;
    left.controller = simulation_.holds_controller() ? LeftBehind::Controller::Held : LeftBehind::Controller::Kept;
    left.timers = snapshot_timers(*living).allKeys();
    left.observers = platform_.shared<NSNotificationCenter>().count_of(living.get());
    for (const NSDictionary::Entry& event : living->dicEventListener)
        left.listeners += event.value.array().count();
    return left;
}

} // namespace qoro
