#include "workbench/check/Courses.h"

#include "Base/VideoPlayer/QoroVideoAd.h"
#include "formats/DeviceModels.h"
#include "platform/AddressParts.h"
#include "workbench/check/RuleFunctions.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <utility>

namespace qoro
{

namespace
{

/// Seconds after the end for which a viewer without a close button is watched.
constexpr double Patience = 65;
/// Seconds for which a video's data does not come any more.
constexpr double Endless = 600;
constexpr double SlowServer = 20;
constexpr double SlowIcon = 2;
/// Seconds from a close to the release by the host, and from then to the end.
constexpr double ReleaseAfter = 1;
constexpr double GoneAfter = 20;
/// Seconds for which a device is watched.
constexpr double LongestOnDevice = 20;

std::string json_text(std::string_view text)
{
    std::string quoted = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\')
            quoted += '\\';
        quoted += c;
    }
    return quoted + '"';
}

/// When a control can first be touched; absent if never.
std::optional<double> first_touchable(const CheckedSession& session, std::string_view control)
{
    for (const Sight& sight : session.record().sights)
        for (const SeenControl& each : sight.controls)
            if (each.name == control && each.touchable)
                return in_seconds(sight.at);
    return std::nullopt;
}

std::optional<double> first_close(const CheckedSession& session)
{
    const auto& sights = session.record().sights;
    const auto found = std::ranges::find_if(sights, [](const Sight& sight) { return sight.open && sight.close; });
    return found == sights.end() ? std::nullopt : std::optional(in_seconds(found->at));
}

} // namespace

Courses::Courses(const BaseScenario& base, const CheckOptions& options)
    : base_(base.scenario), options_(options), written_(base.kind == InputKind::Scenario)
{
    base_.set("/host/guard", options.guard ? "true" : "false");
    base_.set("/host/trackerLimit", options.guard ? "true" : "false");
    make_video_the_only_one();
    scenario_ = base_.scenario();
    const VideoSetup& video = scenario_.world.video;
    end_ = video.load_after + video.duration;
    for (const Stall& stall : video.stalls)
        end_ += stall.lasts;
    // The ads of a tag follow each other; its scenario is as long as all of them.
    if (!scenario_.ad && !written_)
        end_ = std::max(end_, base_.end() - 7);
    for (const std::string& step : base_.children("/steps"))
        if (const auto y = base_.value(step + "/open"))
            open_ = *y;
}

/// The faults of a course are those of every video, so nothing is said about that of an address.
void Courses::make_video_the_only_one()
{
    const auto address = base_.string("/ad/strVideoUrl");
    if (!address)
        return;
    const std::string own = path_under("/videos", *address);
    for (const std::string& key : base_.children(own))
        base_.set("/video" + key.substr(own.size()), *base_.value(key));
    base_.remove("/videos");
}

Course Courses::course(std::string when, ScenarioText scenario) const
{
    return {.when = std::move(when),
            .scenario = std::move(scenario),
            .models = {},
            .policy_seconds = options_.policy_seconds};
}

std::optional<Course> Courses::as_written() const
{
    return written_ ? std::optional(course("", base_)) : std::nullopt;
}

ScenarioText Courses::opened() const
{
    ScenarioText scenario = base_;
    scenario.clear_steps();
    scenario.add_step(0, "open", open_);
    const bool has_to_start = scenario_.ad && !scenario_.ad->bIsAutoStart && scenario_.ad->strVideoUrl.length() > 0;
    if (has_to_start)
        scenario.add_step(scenario_.world.video.load_after + 0.5, "tap", R"("btnPlayAndPause")");
    return scenario;
}

ScenarioText Courses::watched_until(ScenarioText scenario, double end) const
{
    scenario.add_step(std::max(end, scenario.end()), "device", "{}");
    return scenario;
}

std::optional<Course> Courses::watch() const
{
    if (scenario_.world.video.manual)
        return std::nullopt;
    return course("", watched_until(opened(), end_ + Patience));
}

std::vector<Course> Courses::others(const CheckedSession& watched) const
{
    std::vector<Course> all;
    add_closes(all, watched);
    add_faults(all);
    add_pages_acts(all, watched);
    add_buttons(all, watched);

    ScenarioText leaves = opened();
    leaves.add_step(2, "app", R"("background")");
    leaves.add_step(12, "app", R"("foreground")");
    leaves.add_step(12, "app", R"("active")");
    all.push_back(course("when the viewer leaves the application and returns",
                         watched_until(std::move(leaves), end_ + 12 + Patience)));
    return all;
}

void Courses::add_closes(std::vector<Course>& all, const CheckedSession& watched) const
{
    const auto closable = first_close(watched);
    if (!closable)
        return;
    const double last = end_ + 1;
    for (const double at : {*closable + 0.1, (*closable + last) / 2, last}) {
        if (at < *closable)
            continue;
        ScenarioText closes = opened();
        closes.add_step(at, "tap", R"("btnClose")");
        closes.add_step(at + ReleaseAfter, "release", "true");
        all.push_back(course("when the viewer closes it at second " + seconds_text(at),
                             watched_until(std::move(closes), at + ReleaseAfter + GoneAfter)));
    }
    ScenarioText closes = opened();
    for (const double after : {0.1, 2.1, 4.1})
        closes.add_step(*closable + after, "tap", R"("btnClose")");
    all.push_back(course("", watched_until(std::move(closes), *closable + 8)));
}

void Courses::add_faults(std::vector<Course>& all) const
{
    // A tag's author has no influence on how long a viewer waits for a video.
    if (!scenario_.ad)
        return;
    if (scenario_.ad->strVideoUrl.length() > 0) {
        for (const double at : {0.0, 1.0, scenario_.world.video.duration / 2}) {
            ScenarioText stalls = opened();
            stalls.add_stall(at, Endless);
            all.push_back(course("when no more of the video arrives from position " + seconds_text(at) + " s on",
                                 watched_until(std::move(stalls), end_ + Patience + 10)));
        }
        for (const double at : {0.0, scenario_.world.video.duration / 2}) {
            ScenarioText fails = opened();
            fails.fail_video(at);
            all.push_back(course(at > 0 ? "when the video fails at position " + seconds_text(at) + " s"
                                        : std::string("when the video does not load"),
                                 watched_until(std::move(fails), end_ + Patience + 10)));
        }
    }
    const auto answers = [&](const NSString& address, const std::string& what, double slow) {
        if (address.length() == 0)
            return;
        ScenarioText late = opened();
        late.delay_answer(address.text(), slow);
        all.push_back(course("when " + what + " arrives after " + seconds_text(slow) + " s",
                             watched_until(std::move(late), end_ + Patience)));
        ScenarioText fails = opened();
        fails.fail_answer(address.text(), "unreachable");
        all.push_back(course("when " + what + " does not load", watched_until(std::move(fails), end_ + Patience)));
    };
    answers(scenario_.ad->strWebViewUrl, "the page", SlowServer);
    answers(scenario_.ad->strBrandIconUrl, "the brand icon", SlowIcon);
}

void Courses::add_pages_acts(std::vector<Course>& all, const CheckedSession& watched) const
{
    const auto page = watched.page();
    if (!page || page_can_close(*page))
        return;
    if (page_draws_close_control(*page)) {
        ScenarioText takes_over = opened();
        takes_over.add_step(scenario_.world.video.load_after + 0.5, "script", R"(["MRAIDUseCustomClose", true])");
        all.push_back(course("once its page draws its own close control, which closes nothing",
                             watched_until(std::move(takes_over), end_ + Patience)));
    }
    if (const auto closable = first_close(watched); closable && page_listens_to_close_button(*page)) {
        ScenarioText listens = opened();
        listens.add_step(scenario_.world.video.load_after, "script", R"(["addEventListener", "onclick_closebtn", 1])");
        for (const double after : {0.1, 2.1, 4.1})
            listens.add_step(*closable + after, "tap", R"("btnClose")");
        all.push_back(course("while its page listens to the button but never closes",
                             watched_until(std::move(listens), *closable + 8)));
    }
}

void Courses::add_buttons(std::vector<Course>& all, const CheckedSession& watched) const
{
    if (!scenario_.ad)
        return;
    for (const char* button : {"btnActionOne", "btnActionTwo"}) {
        const auto at = first_touchable(watched, button);
        if (!at)
            continue;
        ScenarioText taps = opened();
        // The device has a program for every address.
        taps.set("/device/canOpen", R"([""])");
        taps.add_step(std::max(*at, taps.end()) + 0.1, "tap", json_text(button));
        const double end = taps.end() + 4;
        all.push_back(course("", watched_until(std::move(taps), end)));
    }
}

std::vector<Course> Courses::on_devices() const
{
    std::vector<Course> all;
    if (scenario_.world.video.manual)
        return all;
    std::vector<std::vector<DeviceModel>> screens;
    for (const DeviceModel& model : device_models()) {
        const auto alike = std::ranges::find_if(screens, [&](const auto& models) {
            const DeviceModel& first = models.front();
            return first.screen.width == model.screen.width && first.screen.height == model.screen.height &&
                   first.phone == model.phone;
        });
        if (alike == screens.end())
            screens.push_back({model});
        else
            alike->push_back(model);
    }
    for (const auto& models : screens)
        for (const auto held : {UIDeviceOrientationPortrait, UIDeviceOrientationLandscapeLeft})
            for (const bool locked : {false, true}) {
                ScenarioText scenario = opened();
                scenario.set_device(models.front(), held);
                if (locked)
                    scenario.lock_host(held != UIDeviceOrientationPortrait);
                else
                    scenario.set("/host/autorotates", "[1,3,4]");
                Course one = course(locked ? "in a host that allows only this orientation" : "",
                                    watched_until(std::move(scenario), std::min(end_ + 2, LongestOnDevice)));
                one.models = models;
                all.push_back(std::move(one));
            }
    return all;
}

} // namespace qoro
