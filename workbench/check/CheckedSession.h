#pragma once

#include "formats/DeviceModels.h"
#include "workbench/ScenarioText.h"
#include "workbench/SessionRecord.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qoro
{

/// A course of events that an ad is put through.
struct Course {
    /// What is special about it, to follow a sentence: "when the video does not load"; empty for a full view.
    std::string when;
    ScenarioText scenario;
    /// Models that have the scenario's screen; empty when the device is not the point.
    std::vector<DeviceModel> models = {};
    /// Seconds after which the viewer must be able to close an ad.
    double policy_seconds = 15;
};

/// A time in microseconds since a session's start.
struct TimeSpan {
    std::int64_t from = 0;
    std::int64_t until = 0;
};

/// A line of a session's trace.
struct CheckedLine {
    /// Microseconds since the session's start.
    std::int64_t at = 0;
    /// Position of the player in seconds; absent without one.
    std::optional<double> position = {};
    /// Values of the line; empty if they are missing or not texts.
    /// @{
    std::string what = {};
    std::string act = {};
    std::string event = {};
    std::string url = {};
    std::string purpose = {};
    std::string why = {};
    std::string path = {};
    std::string name = {};
    /// @}
    /// Of a step: whether the viewer touches the screen or a button, and the button's name.
    /// @{
    bool is_touch = false;
    std::string button = {};
    /// @}
};

/// A course that has been simulated.
class CheckedSession
{
public:
    /// @throws InputError for an invalid scenario
    CheckedSession(const Course& course, const ScenarioText& scenario);
    explicit CheckedSession(const Course& course) : CheckedSession(course, course.scenario) {}
    CheckedSession(const CheckedSession&) = delete;
    CheckedSession& operator=(const CheckedSession&) = delete;
    ~CheckedSession();

    const Course& course() const { return course_; }
    const ScenarioText& text() const { return text_; }
    const Scenario& scenario() const { return scenario_; }
    const SessionRecord& record() const { return record_; }
    /// Null for a tag.
    const QoroVideoAd* ad() const { return scenario_.ad.get(); }
    /// Every line, parsed when first asked for.
    const std::vector<CheckedLine>& lines() const;
    /// The creative's page, if its text is known; absent otherwise.
    std::optional<std::string> page() const;
    /// Seconds at which the ad opened; absent if it did not.
    std::optional<double> opened() const;
    /// When a sight ends, in microseconds.
    std::int64_t end_of(std::size_t sight) const;
    /// How the device is held at a moment, in microseconds since the session's start.
    UIDeviceOrientation held(std::int64_t at) const;
    /// Microseconds between two moments in which the viewer is in this application and not in a call.
    std::int64_t seen(std::int64_t from, std::int64_t until) const;

private:
    const Course& course_;
    const ScenarioText text_;
    const Scenario scenario_;
    const SessionRecord record_;
    mutable std::optional<std::vector<CheckedLine>> lines_;
};

/// The times that the viewer spends in another application, as the steps say; the last may have no end.
std::vector<TimeSpan> absences(const CheckedSession& session);
/// The times of the calls that interrupt it; the last may have no end.
std::vector<TimeSpan> calls(const CheckedSession& session);

/// Seconds with at most one decimal: "5.4".
std::string seconds_text(double seconds);

/// Microseconds as seconds.
inline double in_seconds(std::int64_t microseconds)
{
    return static_cast<double>(microseconds) / 1e6;
}

/// A sentence with what is special about the course: "… when the video does not load".
std::string in_course(const CheckedSession& session, const std::string& sentence);

} // namespace qoro
