#include "simulator/Summary.h"

#include "formats/JsonText.h"
#include "formats/LogLines.h"
#include "simulator/SessionWatch.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace qoro
{

namespace
{

constexpr std::size_t LabelWidth = 32;
constexpr std::size_t LeftWidth = 14;
constexpr std::size_t LongestAddress = 60;
/// Times of one tracker that a table shows; the rest are only counted.
constexpr std::size_t MomentsShown = 12;

struct Leftover {
    std::string_view name;
    std::size_t LeftBehind::*count;
};
constexpr std::array Leftovers{
    Leftover{"observers", &LeftBehind::observers},
    Leftover{"windows", &LeftBehind::windows},
    Leftover{"listeners", &LeftBehind::listeners},
    Leftover{"requests", &LeftBehind::requests},
};

std::string_view name_of(LeftBehind::Controller controller)
{
    switch (controller) {
    case LeftBehind::Controller::Held:
        return "held";
    case LeftBehind::Controller::Kept:
        return "kept";
    case LeftBehind::Controller::Gone:
        break;
    }
    return "gone";
}

// --------------------------------------------------------------------------------------------------------------- JSON

void append_moment(std::string& out, std::string_view key, std::optional<std::int64_t> microseconds)
{
    append_json_text(out, key);
    out += ':';
    if (microseconds)
        append_seconds(out, *microseconds);
    else
        out += "null";
    out += ',';
}

void append_tracker(std::string& out, const TrackerSummary& tracker)
{
    out += R"({"kind":)";
    if (tracker.kind.empty())
        out += "null";
    else
        append_json_text(out, tracker.kind);
    out += R"(,"url":)";
    append_json_text(out, tracker.url);
    out += R"(,"count":)";
    append_json(out, static_cast<std::int64_t>(tracker.sent.size()));
    out += R"(,"sent":[)";
    for (std::size_t i = 0; i < tracker.sent.size(); ++i) {
        if (i > 0)
            out += ',';
        append_seconds(out, tracker.sent[i]);
    }
    out += "]}";
}

void append_left(std::string& out, const LeftBehind& left)
{
    out += R"({"timers":[)";
    for (std::size_t i = 0; i < left.timers.size(); ++i) {
        if (i > 0)
            out += ',';
        append_json_text(out, left.timers[i]);
    }
    out += ']';
    for (const Leftover& leftover : Leftovers) {
        out += ',';
        append_json_text(out, leftover.name);
        out += ':';
        append_json(out, static_cast<std::int64_t>(left.*leftover.count));
    }
    out += R"(,"controller":)";
    append_json_text(out, name_of(left.controller));
    out += '}';
}

// -------------------------------------------------------------------------------------------------------------- table

/// Number of code points, for column widths.
std::size_t width_of(std::string_view text)
{
    return static_cast<std::size_t>(
        std::ranges::count_if(text, [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
}

void append_padded(std::string& out, std::string_view text, std::size_t width)
{
    out += text;
    const std::size_t shown = width_of(text);
    out.append(shown < width ? width - shown : 1, ' ');
}

std::string seconds(std::int64_t microseconds)
{
    std::string text;
    append_seconds(text, microseconds);
    return text;
}

void append_row(std::string& out, std::string_view label, std::string_view value)
{
    out += "  ";
    append_padded(out, label, LabelWidth);
    out += value;
    out += '\n';
}

std::string moment(std::optional<std::int64_t> microseconds)
{
    return microseconds ? "at " + seconds(*microseconds) + " s" : "never";
}

/// "at 21 s, 11.5 s after the release"; the second part only when `before` is not 0.
std::string moment_after(std::optional<std::int64_t> microseconds, std::optional<std::int64_t> before,
                         std::string_view what)
{
    std::string text = moment(microseconds);
    if (microseconds && before.value_or(0) != 0)
        text.append(", ").append(seconds(*microseconds - *before)).append(" s after the ").append(what);
    return text;
}

std::string moments(const std::vector<std::int64_t>& sent)
{
    std::string text;
    const bool all = sent.size() <= MomentsShown;
    const std::size_t shown = all ? sent.size() : MomentsShown - 1;
    for (std::size_t i = 0; i < shown; ++i)
        text += (i > 0 ? "  " : "") + seconds(sent[i]);
    if (!all)
        text += "  … " + seconds(sent.back());
    return text;
}

void append_trackers(std::string& out, const std::vector<TrackerSummary>& trackers)
{
    if (trackers.empty()) {
        out += "\nTrackers: none\n";
        return;
    }
    constexpr std::string_view KindTitle = "Tracker";
    constexpr std::string_view AddressTitle = "Address";
    std::size_t kind_width = width_of(KindTitle);
    std::size_t address_width = width_of(AddressTitle);
    for (const TrackerSummary& tracker : trackers) {
        kind_width = std::max(kind_width, width_of(tracker.kind));
        address_width = std::max(address_width, std::min(LongestAddress, width_of(tracker.url)));
    }
    out += "\n  ";
    append_padded(out, KindTitle, kind_width + 2);
    out += "Sent  ";
    append_padded(out, AddressTitle, address_width + 2);
    out += "At (s)\n";
    for (const TrackerSummary& tracker : trackers) {
        out += "  ";
        append_padded(out, tracker.kind.empty() ? "-" : tracker.kind, kind_width + 2);
        const std::string count = std::to_string(tracker.sent.size());
        out.append(count.size() < 4 ? 4 - count.size() : 0, ' ');
        out += count + "  ";
        if (tracker.sent.empty())
            out += tracker.url;
        else
            append_padded(out, tracker.url, address_width + 2);
        out += moments(tracker.sent);
        out += '\n';
    }
}

std::string timers(const LeftBehind& left)
{
    std::string text = std::to_string(left.timers.size());
    for (std::size_t i = 0; i < left.timers.size(); ++i)
        text += (i == 0 ? " (" : ", ") + left.timers[i] + (i + 1 == left.timers.size() ? ")" : "");
    return text;
}

std::string_view controller_words(const LeftBehind& left)
{
    switch (left.controller) {
    case LeftBehind::Controller::Held:
        return "held by the host";
    case LeftBehind::Controller::Kept:
        return "kept, though released";
    case LeftBehind::Controller::Gone:
        break;
    }
    return "gone";
}

/// One row per kind of leftover; the first column only if the ad closed.
void append_left_behind(std::string& out, const Summary& summary)
{
    const std::string close_timers = summary.after_close ? timers(*summary.after_close) : "";
    const std::size_t column = std::max<std::size_t>(close_timers.size(), 22) + 2;
    const auto row = [&](std::string_view label, std::string_view after_close, std::string_view at_end) {
        out += "  ";
        append_padded(out, label, LeftWidth);
        if (summary.after_close)
            append_padded(out, after_close, column);
        out += at_end;
        out += '\n';
    };
    out += '\n';
    row("Left behind", "after the close", summary.after_close ? "at the end" : "at the end (the ad was not closed)");
    row("timers", close_timers, timers(summary.at_end));
    const LeftBehind& at_close = summary.after_close ? *summary.after_close : summary.at_end;
    for (const Leftover& leftover : Leftovers)
        row(leftover.name, std::to_string(at_close.*leftover.count), std::to_string(summary.at_end.*leftover.count));
    row("controller", controller_words(at_close), controller_words(summary.at_end));
}

} // namespace

Summary simulate_and_sum_up(const Scenario& scenario, TraceFormat format, const LineSink& sink, const LogSink& log)
{
    Simulation simulation(scenario);
    Trace trace(simulation.platform().loop(), format, sink);
    LogFilter filter(log, trace);
    const QoroVideoAd without_trackers;
    SessionWatch watch(simulation, scenario.ad ? *scenario.ad : without_trackers, filter);
    simulation.run();
    return watch.finish();
}

void append_json(std::string& out, const Summary& summary)
{
    out += '{';
    append_moment(out, "opened", summary.opened);
    append_moment(out, "closeButtonTappable", summary.close_button);
    append_moment(out, "closed", summary.closed);
    append_moment(out, "released", summary.released);
    append_moment(out, "destroyed", summary.destroyed);
    append_moment(out, "mainThreadBlocked", summary.blocked);
    out += R"("trackers":[)";
    for (std::size_t i = 0; i < summary.trackers.size(); ++i) {
        if (i > 0)
            out += ',';
        append_tracker(out, summary.trackers[i]);
    }
    out += R"(],"afterClose":)";
    if (summary.after_close)
        append_left(out, *summary.after_close);
    else
        out += "null";
    out += R"(,"atEnd":)";
    append_left(out, summary.at_end);
    out += '}';
}

void append_table(std::string& out, const Summary& summary)
{
    out += "Summary\n";
    append_row(out, "ad opened", moment(summary.opened));
    append_row(out, "close button could be tapped", moment_after(summary.close_button, summary.opened, "opening"));
    append_row(out, "ad closed", moment(summary.closed));
    append_row(out, "host released the controller", moment(summary.released));
    append_row(out, "controller destroyed", moment_after(summary.destroyed, summary.released, "release"));
    append_row(out, "main thread blocked", seconds(summary.blocked) + " s, by synchronous fetches");
    append_trackers(out, summary.trackers);
    append_left_behind(out, summary);
}

} // namespace qoro
