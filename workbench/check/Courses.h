#pragma once

#include "workbench/BaseScenario.h"
#include "workbench/check/CheckedSession.h"
#include "workbench/check/Finding.h"

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace qoro
{

/// What differs between checks.
struct CheckOptions {
    /// Seconds after which the viewer must be able to close the ad.
    double policy_seconds = 15;
    /// Whether the kit's close guard and its request limit are on, as in hosts.
    bool guard = false;
    /// The least severity; rules below it are not asked.
    Severity severity = Severity::Note;
    /// Whether the ad is put on every device, for the rules about its layout.
    bool devices = true;
};

/// The courses of events that an ad is put through.
class Courses
{
public:
    Courses(const BaseScenario& base, const CheckOptions& options);

    /// The session as the file has it; absent for an ad or a tag.
    std::optional<Course> as_written() const;
    /// The viewer watches to the end, and long beyond it, without a touch. Absent if the scenario scripts its player.
    std::optional<Course> watch() const;
    /// Everything else.
    /// @param watched the session of watch()
    std::vector<Course> others(const CheckedSession& watched) const;
    /// The same ad on every device: upright and turned, in hosts that are locked or not.
    std::vector<Course> on_devices() const;

private:
    void make_video_the_only_one();
    /// The ad is opened, and played if it does not start by itself.
    ScenarioText opened() const;
    ScenarioText watched_until(ScenarioText scenario, double end) const;
    Course course(std::string when, ScenarioText scenario) const;
    void add_closes(std::vector<Course>& all, const CheckedSession& watched) const;
    void add_faults(std::vector<Course>& all) const;
    void add_pages_acts(std::vector<Course>& all, const CheckedSession& watched) const;
    void add_buttons(std::vector<Course>& all, const CheckedSession& watched) const;

    ScenarioText base_;
    CheckOptions options_;
    bool written_ = false;
    /// As read, from the base.
    Scenario scenario_;
    /// Seconds at which the video has ended.
    double end_ = 0;
    /// The value of the step that opens the ad.
    std::string open_ = "0";
};

} // namespace qoro
