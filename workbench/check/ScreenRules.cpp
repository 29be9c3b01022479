#include "workbench/ControlFaults.h"
#include "workbench/check/CheckedSession.h"
#include "workbench/check/RuleFunctions.h"

#include "Base/VideoPlayer/QoroVideoAd.h"
#include "platform/Numbers.h"
#include "simulator/SimulatedText.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <utility>

namespace qoro
{

namespace
{

/// Seconds without a picture that a viewer does not notice.
constexpr double UnnoticedEmptiness = 1;
/// Seconds that a control may be misplaced, for example during a turn.
constexpr double UnnoticedMisplacement = 0.5;
/// The texts of the ad that views show, with words for them.
constexpr std::array<std::pair<std::string_view, std::string_view>, 3> Titles{{
    {"btnActionOne", "the title of the first action button"},
    {"btnActionTwo", "the title of the second action button"},
    {"labelBrandText", "the brand text"},
}};
/// Points by which a text may be cut unnoticed.
constexpr double UnnoticedCut = 1;

CGSize screen_of(const CheckedSession& session)
{
    return session.scenario().world.device.facts.screen.value_or(CGSize{});
}

std::string size_text(CGSize size)
{
    return shortest_text(std::round(size.width)) + " x " + shortest_text(std::round(size.height));
}

/// Whether the device is held in landscape.
/// @param at microseconds
bool is_turned(const CheckedSession& session, std::int64_t at)
{
    const UIDeviceOrientation held = session.held(at);
    return held == UIDeviceOrientationLandscapeLeft || held == UIDeviceOrientationLandscapeRight;
}

/// "a screen of 375 x 812 points held upright".
std::string device_text(const CheckedSession& session, std::int64_t at)
{
    return "a screen of " + size_text(screen_of(session)) + " points held " +
           (is_turned(session, at) ? "sideways" : "upright");
}

/// Whether a control's place is that of an arrangement that the ad has. An ad without a landscape arrangement that is
/// held sideways lays its bars out for the long edge; only its close button matters then.
bool has_a_place(const CheckedSession& session, const SeenControl& control, std::int64_t at)
{
    return !is_turned(session, at) || control.name == "btnClose" || !session.ad() ||
           session.ad()->landscapeModeType != 0;
}

/// What is wrong for long enough to be noticed. Suspicions with equal keys are one, that of the first sight.
std::vector<Suspicion> lasting(const CheckedSession& session,
                               const std::function<std::vector<Suspicion>(const Sight&)>& faults_in)
{
    struct Lasting {
        Suspicion first;
        double seconds = 0;
    };
    std::map<std::string, Lasting, std::less<>> found;
    const std::vector<Sight>& sights = session.record().sights;
    for (std::size_t i = 0; i < sights.size(); ++i) {
        if (!sights[i].open || sights[i].other_screen)
            continue;
        for (Suspicion& fault : faults_in(sights[i])) {
            Lasting& one = found[fault.key];
            one.seconds += in_seconds(session.seen(sights[i].at, session.end_of(i)));
            if (!one.first.sentence.empty())
                continue;
            one.first = std::move(fault);
            one.first.at = sights[i].at;
        }
    }
    std::vector<Suspicion> suspicions;
    for (auto& [key, one] : found)
        if (one.seconds >= UnnoticedMisplacement)
            suspicions.push_back(std::move(one.first));
    return suspicions;
}

/// The suspicions about controls.
/// @param wanted the fault that the rule is about
/// @param words for what is wrong with a control that has the fault
std::vector<Suspicion> misplaced(const CheckedSession& session, const CGRect& safe, ControlFault wanted,
                                 const std::function<std::string(const SeenControl&)>& words)
{
    const CGSize screen = screen_of(session);
    return lasting(session, [&](const Sight& sight) {
        std::vector<Suspicion> found;
        const bool turned = is_turned(session, sight.at);
        for (const SeenControl& control : sight.controls) {
            const auto faults = faults_of(control, screen, safe);
            if (std::ranges::find(faults, wanted) == faults.end() || !has_a_place(session, control, sight.at))
                continue;
            found.push_back({.sentence = in_course(session, std::string(words_for_control(control.name)) + ' ' +
                                                                words(control) + ' ' + device_text(session, sight.at)),
                             .path = turned ? "/landscapeModeType" : "/portraitVideoPos",
                             .key = std::string(control.name) + (turned ? " sideways" : " upright")});
        }
        return found;
    });
}

/// Points of a one-line text that the viewer sees.
/// @param width of the text
double seen_of_text(const SeenControl& view, double width)
{
    const bool lies = view.turns % 2 == 0;
    const double length = lies ? view.frame.width : view.frame.height;
    double from = lies ? view.visible->x - view.frame.x : view.visible->y - view.frame.y;
    double to = from + (lies ? view.visible->width : view.visible->height);
    if (view.turns >= 2) {
        std::swap(from, to);
        from = length - from;
        to = length - to;
    }
    // A button centres its title.
    const double begin = view.is_button ? (length - width) / 2 : 0;
    return std::max(0.0, std::min(to, begin + width) - std::max(from, begin));
}

CGRect whole_screen(const CheckedSession& session)
{
    const CGSize screen = screen_of(session);
    return {0, 0, screen.width, screen.height};
}

/// A model's insets in the coordinates of the upright screen.
SafeAreaInsets upright_insets(const DeviceModel& model, UIDeviceOrientation held)
{
    const SafeAreaInsets& turned = model.landscape;
    if (held == UIDeviceOrientationLandscapeLeft)
        return {.top = turned.left, .left = turned.bottom, .bottom = turned.right, .right = turned.top};
    if (held == UIDeviceOrientationLandscapeRight)
        return {.top = turned.right, .left = turned.top, .bottom = turned.left, .right = turned.bottom};
    return model.portrait;
}

/// Whether the network and the video of a session are in order: what then is empty, is empty because of the ad.
bool is_undisturbed(const CheckedSession& session)
{
    const World& world = session.scenario().world;
    return !world.video.error && !world.video.error_for_good && world.video.stalls.empty() &&
           world.video.load_after <= UnnoticedEmptiness && !world.video.manual &&
           std::ranges::all_of(world.net, [](const auto& answer) {
               return answer.second.ok && answer.second.after <= UnnoticedEmptiness;
           });
}

/// Whether the ad has a page whose text is not known: it may show something.
bool has_unknown_page(const CheckedSession& session)
{
    return !session.ad() || (session.ad()->strWebViewUrl.length() > 0 && !session.page());
}

} // namespace

std::vector<Suspicion> empty_screen(const CheckedSession& session)
{
    if (!is_undisturbed(session) || has_unknown_page(session))
        return {};
    const std::vector<Sight>& sights = session.record().sights;
    for (std::size_t i = 0; i < sights.size();) {
        const auto is_empty_sight = [](const Sight& sight) {
            return sight.open && !sight.video && !sight.page && !sight.other_screen;
        };
        const std::size_t first = i;
        while (i < sights.size() && is_empty_sight(sights[i]))
            ++i;
        if (i == first) {
            ++i;
            continue;
        }
        if (in_seconds(session.seen(sights[first].at, session.end_of(i - 1))) <= UnnoticedEmptiness)
            continue;
        const bool ended = std::ranges::any_of(session.lines(), [&](const CheckedLine& line) {
            return line.event == "video_ended" && line.at <= sights[first].at;
        });
        return {{.sentence = in_course(session, ended ? "the screen is empty after the end of the video"
                                                      : "the screen is empty for more than a second"),
                 .path = session.ad() && session.ad()->strVideoUrl.length() == 0 ? "" : "/strVideoUrl",
                 .at = sights[first].at}};
    }
    return {};
}

std::vector<Suspicion> control_off_screen(const CheckedSession& session)
{
    return misplaced(session, whole_screen(session), ControlFault::Outside,
                     [](const SeenControl& control) { return control.visible ? "is partly outside" : "is outside"; });
}

std::vector<Suspicion> control_covered(const CheckedSession& session)
{
    return misplaced(session, whole_screen(session), ControlFault::Covered, [](const SeenControl& control) {
        return control.visible ? "cannot be touched, because another view covers it or its view ends before it, on"
                               : "is covered by another view on";
    });
}

std::vector<Suspicion> control_in_unsafe_area(const CheckedSession& session)
{
    std::vector<Suspicion> all;
    const CGSize screen = screen_of(session);
    for (const DeviceModel& model : session.course().models) {
        // A model's insets are those of one way of holding it: the first.
        const SafeAreaInsets insets = upright_insets(model, session.held(0));
        const CGRect safe{insets.left, insets.top, screen.width - insets.left - insets.right,
                          screen.height - insets.top - insets.bottom};
        for (Suspicion& each : misplaced(session, safe, ControlFault::Unsafe, [&](const SeenControl&) {
                 return "lies where the camera, a rounded corner or a bar of " + std::string(model.name) +
                        " may cover it, on";
             }))
            if (std::ranges::find(all, each.key, &Suspicion::key) == all.end())
                all.push_back(std::move(each));
    }
    return all;
}

std::vector<Suspicion> title_cut_off(const CheckedSession& session)
{
    constexpr CGSize Unlimited{1e6, 1e6};
    SimulatedText texts(session.scenario().world);
    return lasting(session, [&](const Sight& sight) {
        std::vector<Suspicion> found;
        for (const SeenControl& view : sight.controls) {
            const auto* title = std::ranges::find(Titles, view.name, &decltype(Titles)::value_type::first);
            // What is wholly outside or covered has a fault of another rule.
            if (title == Titles.end() || view.text.empty() || !view.visible || !has_a_place(session, view, sight.at))
                continue;
            const double width = texts.measure(NSString(view.text), {}, Unlimited).width;
            const double seen = seen_of_text(view, width);
            if (width - seen <= UnnoticedCut)
                continue;
            const auto button = static_cast<std::size_t>(title - Titles.begin());
            found.push_back(
                {.sentence =
                     in_course(session, std::string(title->second) + " is cut off: " + shortest_text(std::round(seen)) +
                                            " of its " + shortest_text(std::round(width)) + " points are visible on " +
                                            device_text(session, sight.at)),
                 .path = view.is_button ? path_of_button(session, button) + "/btn_text" : "/strBrandText",
                 .key = std::string(view.name)});
        }
        return found;
    });
}

} // namespace qoro
