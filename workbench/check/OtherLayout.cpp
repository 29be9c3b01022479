#include "workbench/check/OtherLayout.h"

#include <algorithm>
#include <array>
#include <vector>

namespace qoro
{

namespace
{

/// Another layout that the ad could have.
struct OtherLayout {
    const char* path;
    const char* value;
    const char* words;
};
constexpr std::array OtherLayouts{
    OtherLayout{"/ad/portraitVideoPos", "1", "set portraitVideoPos to TOP"},
    OtherLayout{"/ad/portraitVideoPos", "5", "set portraitVideoPos to MIDDLE"},
    OtherLayout{"/ad/portraitVideoPos", "2", "set portraitVideoPos to BOTTOM"},
    OtherLayout{"/ad/portraitVideoPos", "6", "set portraitVideoPos to FULL"},
    OtherLayout{"/ad/landscapeModeType", "2", "set landscapeModeType to VIDEO_AND_WEBVIEW"},
    OtherLayout{"/ad/landscapeModeType", "1", "set landscapeModeType to ONLY_VIDEO"},
    OtherLayout{"/ad/bIsHideActionButton", "false", "set bIsHideActionButton to false"},
    OtherLayout{"/ad/closeBtnSize", "1", "set closeBtnSize to SMALL"},
};

/// Whether a control still has a fault of the layout, or any control has a serious one: a cure must not be the cause of
/// another fault.
bool has_layout_fault(const CheckedSession& session, const std::string& control, const Rule& cured)
{
    for (const Rule& rule : rules()) {
        if (!rule.about_layout)
            continue;
        const std::vector<Suspicion> left = rule.of_session(session);
        if (rule.severity != Severity::Note && !left.empty())
            return true;
        if (rule.id == cured.id &&
            std::ranges::any_of(left, [&](const Suspicion& each) { return each.key.starts_with(control + ' '); }))
            return true;
    }
    return false;
}

} // namespace

std::optional<std::string> layout_without(const Rule& rule, const Course& course, const ScenarioText& scenario,
                                          const Suspicion& fault, std::size_t* sessions)
{
    const std::string control = fault.key.substr(0, fault.key.find(' '));
    for (const OtherLayout& layout : OtherLayouts) {
        ScenarioText other = scenario;
        if (other.value(layout.path) == layout.value)
            continue;
        other.set(layout.path, layout.value);
        const CheckedSession tried(course, other);
        if (sessions)
            ++*sessions;
        const bool seen = std::ranges::any_of(tried.record().sights, [&](const Sight& sight) {
            return std::ranges::find(sight.controls, control, &SeenControl::name) != sight.controls.end();
        });
        if (seen && !has_layout_fault(tried, control, rule))
            return layout.words;
    }
    return std::nullopt;
}

} // namespace qoro
