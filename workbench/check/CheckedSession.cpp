#include "workbench/check/CheckedSession.h"

#include "Base/VideoPlayer/QoroVideoAd.h"
#include "platform/Numbers.h"
#include "workbench/detail/Json.h"

#include <cmath>

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
    checked.app = text_of(line, "app");
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

UIDeviceOrientation CheckedSession::held() const
{
    for (const Step& step : scenario_.steps)
        if (const auto* device = std::get_if<DeviceStep>(&step.what))
            if (step.at <= 0 && device->change.orientation)
                return *device->change.orientation;
    return scenario_.world.device.orientation;
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
