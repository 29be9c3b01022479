#include "workbench/check/CheckedSession.h"

#include "Base/VideoPlayer/QoroVideoAd.h"
#include "platform/Numbers.h"
#include "simulator/VirtualLoop.h"
#include "workbench/detail/Json.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace qoro
{

using detail::Json;

namespace
{

std::string text_of(const Json& line, const char* key)
{
    const auto found = line.find(key);
    return found != line.end() && found->is_string() ? found->get<std::string>() : std::string();
}

CheckedLine parsed(const RecordedLine& recorded)
{
    const Json line = Json::parse(recorded.json, nullptr, false);
    CheckedLine checked{.at = recorded.at, .position = recorded.position};
    if (!line.is_object())
        return checked;
    checked.what = text_of(line, "what");
    checked.act = text_of(line, "do");
    checked.event = text_of(line, "event");
    checked.url = text_of(line, "url");
    checked.purpose = text_of(line, "for");
    checked.why = text_of(line, "why");
    checked.path = text_of(line, "path");
    checked.name = text_of(line, checked.what == "vast" ? "element" : "name");
    checked.is_touch = line.contains("touch") || line.contains("tap");
    checked.button = line.contains("tap") ? text_of(line, "tap") : text_of(line, "hit");
    return checked;
}

} // namespace

CheckedSession::CheckedSession(const Course& course, const ScenarioText& scenario)
    : course_(course), text_(scenario), scenario_(text_.scenario()), record_(record_session(scenario_))
{
}

CheckedSession::~CheckedSession() = default;

const std::vector<CheckedLine>& CheckedSession::lines() const
{
    if (!lines_) {
        lines_.emplace();
        lines_->reserve(record_.lines.size());
        for (const RecordedLine& line : record_.lines)
            lines_->push_back(parsed(line));
    }
    return *lines_;
}

std::optional<std::string> CheckedSession::page() const
{
    const auto address = text_.string("/ad/strWebViewUrl");
    if (!address)
        return std::nullopt;
    return text_.string(path_under(path_under("/net", *address), "body"));
}

std::optional<double> CheckedSession::opened() const
{
    return record_.summary.opened ? std::optional(in_seconds(*record_.summary.opened)) : std::nullopt;
}

std::int64_t CheckedSession::end_of(std::size_t sight) const
{
    return sight + 1 < record_.sights.size() ? record_.sights[sight + 1].at : record_.end;
}

UIDeviceOrientation CheckedSession::held(std::int64_t at) const
{
    UIDeviceOrientation held = scenario_.world.device.orientation;
    for (const Step& step : scenario_.steps)
        if (const auto* device = std::get_if<DeviceStep>(&step.what))
            if (to_microseconds(step.at) <= at && device->change.orientation)
                held = *device->change.orientation;
    return held;
}

std::int64_t CheckedSession::seen(std::int64_t from, std::int64_t until) const
{
    std::int64_t seen = until - from;
    std::int64_t counted = from;
    std::vector<TimeSpan> elsewhere = absences(*this);
    const std::vector<TimeSpan> in_calls = calls(*this);
    elsewhere.insert(elsewhere.end(), in_calls.begin(), in_calls.end());
    std::ranges::sort(elsewhere, {}, &TimeSpan::from);
    for (const TimeSpan& span : elsewhere) {
        const std::int64_t begin = std::max(span.from, counted);
        const std::int64_t end = std::min(span.until, until);
        if (end <= begin)
            continue;
        seen -= end - begin;
        counted = end;
    }
    return seen;
}

namespace
{

/// The times between steps that begin something and steps that end it.
template <typename Begins, typename Ends>
std::vector<TimeSpan> spans_between(const CheckedSession& session, const Begins& begins, const Ends& ends)
{
    std::vector<TimeSpan> spans;
    std::optional<std::int64_t> begun;
    for (const Step& step : session.scenario().steps) {
        if (begins(step) && !begun)
            begun = to_microseconds(step.at);
        else if (ends(step) && begun)
            spans.push_back({*std::exchange(begun, std::nullopt), to_microseconds(step.at)});
    }
    if (begun)
        spans.push_back({*begun, session.record().end});
    return spans;
}

} // namespace

std::vector<TimeSpan> absences(const CheckedSession& session)
{
    const auto is = [](AppStep::Event event) {
        return [event](const Step& step) {
            const auto* app = std::get_if<AppStep>(&step.what);
            return app && app->event == event;
        };
    };
    return spans_between(session, is(AppStep::Event::Background), is(AppStep::Event::Foreground));
}

std::vector<TimeSpan> calls(const CheckedSession& session)
{
    const auto is = [](AVAudioSessionInterruptionType type) {
        return [type](const Step& step) {
            const auto* interruption = std::get_if<InterruptStep>(&step.what);
            return interruption && interruption->type == type;
        };
    };
    return spans_between(session, is(AVAudioSessionInterruptionTypeBegan), is(AVAudioSessionInterruptionTypeEnded));
}

std::string seconds_text(double seconds)
{
    return shortest_text(std::round(seconds * 10) / 10);
}

std::string in_course(const CheckedSession& session, const std::string& sentence)
{
    const std::string& when = session.course().when;
    return when.empty() ? sentence : sentence + ' ' + when;
}

} // namespace qoro
