#include "workbench/explore/Setup.h"

#include "formats/InputError.h"
#include "formats/JsonText.h"
#include "simulator/VirtualLoop.h"

#include <algorithm>
#include <variant>

namespace qoro
{

namespace
{

constexpr double Late = 10;
constexpr double Never = 1e6;
/// Seconds without a change beyond the ad's own times.
constexpr double Patience = 10;

template <typename... Kinds>
bool is_one_of(const Step& step)
{
    return (std::holds_alternative<Kinds>(step.what) || ...);
}

std::string json_of(const Value& value)
{
    std::string json;
    append_json(json, value);
    return json;
}

ScenarioText with_steps(ScenarioText text, const std::vector<Step>& steps)
{
    text.clear_steps();
    for (const Step& step : steps)
        text.add_step(step.at, step.key, json_of(step.value));
    return text;
}

/// Without the viewer's steps.
std::vector<Step> steps_of_surroundings(const std::vector<Step>& steps)
{
    std::vector<Step> kept;
    bool open = false;
    for (const Step& step : steps) {
        const bool opens = is_one_of<OpenStep>(step);
        if ((!open && !is_one_of<SnapshotStep, ReleaseStep>(step)) ||
            is_one_of<ScriptStep, PlayerStep, PageStep, ServersStep>(step))
            kept.push_back(step);
        open = open || opens;
    }
    if (open)
        return kept;
    Step& opening = kept.emplace_back();
    opening.at = kept.size() > 1 ? kept[kept.size() - 2].at : 0;
    opening.what = OpenStep{};
    opening.key = "open";
    opening.value = 0;
    return kept;
}

std::string number(double value)
{
    return json_of(Value(value));
}

} // namespace

SearchSetup search_setup(const ScenarioText& scenario, bool guard)
{
    SearchSetup setup;
    ScenarioText plain = scenario;
    for (const char* limit : {"/host/guard", "/host/trackerLimit"}) {
        plain.remove(limit);
        if (guard)
            plain.set(limit, "true");
    }
    const Scenario read = plain.scenario();
    if (!read.ad)
        throw InputError("scenario", "/tag", "a scenario with a tag can't be explored; name the tag itself");
    plain = with_steps(std::move(plain), steps_of_surroundings(read.steps));

    const auto add = [&](const char* name, ScenarioText text) {
        setup.run.starts.push_back(text.scenario());
        setup.run.start_names.emplace_back(name);
        setup.texts.push_back(std::move(text));
    };
    const auto with = [&](const auto& change) {
        ScenarioText text = plain;
        change(text);
        return text;
    };
    add("", plain);
    if (const NSString& page = read.ad->strWebViewUrl) {
        add("page late", with([&](ScenarioText& text) { text.delay_answer(page.text(), Late); }));
        add("page fails", with([&](ScenarioText& text) { text.fail_answer(page.text(), "not found"); }));
    }
    if (read.ad->strVideoUrl && !read.world.video.manual) {
        add("video late", with([&](ScenarioText& text) { text.set("/video/loadAfter", number(Late)); }));
        add("video never loads", with([&](ScenarioText& text) { text.set("/video/loadAfter", number(Never)); }));
        add("video broken", with([&](ScenarioText& text) { text.fail_video(0); }));
    }
    setup.run.page = page_commands(read);
    setup.run.position_trackers = position_trackers(*read.ad);
    const double longest = std::max({read.world.video.duration, static_cast<double>(read.ad->iCloseBtnCountdown),
                                     static_cast<double>(read.ad->iBufferingSufferTime), Late});
    setup.run.patience = to_microseconds(longest + Patience);
    return setup;
}

ScenarioText scenario_of_course(const SearchSetup& setup, const FoundCourse& course, std::int64_t until)
{
    ScenarioText text = with_steps(setup.texts[course.start], steps_of(setup.run.starts[course.start], course.moves));
    const double end = static_cast<double>(until) / 1e6;
    if (end > text.end())
        text.add_step(end, "snapshot", "true");
    return text;
}

} // namespace qoro
