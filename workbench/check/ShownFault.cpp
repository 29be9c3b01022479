#include "workbench/check/ShownFault.h"

#include "formats/DeviceModels.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace qoro
{

namespace
{

/// A key without the indices of lists, which change when other entries are removed: "/dicTrackingUrls/start".
std::string without_indices(const std::string& key)
{
    std::string kept;
    for (std::size_t begin = 0; begin < key.size();) {
        const std::size_t end = std::min(key.find('/', begin + 1), key.size());
        const std::string_view segment = std::string_view(key).substr(begin, end - begin);
        const bool is_index = segment.size() > 1 && segment.front() == '/' &&
                              segment.find_first_not_of("0123456789", 1) == std::string_view::npos;
        if (!is_index)
            kept += segment;
        begin = end;
    }
    return kept;
}

} // namespace

ShownFault::ShownFault(const Rule& rule, const ScenarioText& scenario, double policy_seconds)
    : rule_(rule), policy_seconds_(policy_seconds)
{
    std::vector<Suspicion> all = suspicions_in(scenario);
    if (!all.empty())
        shown_ = std::move(all.front());
}

std::optional<std::string> ShownFault::sentence() const
{
    return shown_ ? std::optional(shown_->sentence) : std::nullopt;
}

bool ShownFault::is_in(const ScenarioText& scenario) const
{
    if (!shown_)
        return false;
    const std::string key = without_indices(shown_->key);
    return std::ranges::any_of(suspicions_in(scenario),
                               [&](const Suspicion& each) { return without_indices(each.key) == key; });
}

std::vector<Suspicion> ShownFault::suspicions_in(const ScenarioText& scenario) const
{
    if (rule_.of_ad)
        return rule_.of_ad(
            {.kind = InputKind::Scenario, .file = "scenario", .text = scenario.text(), .scenario = scenario});
    Course course{.when = "", .scenario = scenario, .models = {}, .policy_seconds = policy_seconds_};
    const CGSize screen = scenario.scenario().world.device.facts.screen.value_or(CGSize{});
    for (const DeviceModel& model : device_models())
        if (model.screen.width == screen.width && model.screen.height == screen.height)
            course.models.push_back(model);
    return rule_.of_session(CheckedSession(course));
}

} // namespace qoro
