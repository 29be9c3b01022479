#include "workbench/check/CheckedSession.h"
#include "workbench/check/RuleFunctions.h"

#include "Base/VideoPlayer/QoroVideoAd.h"
#include "platform/Numbers.h"

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
/// Part of a control that must be on the screen.
constexpr double VisiblePart = 0.9;
/// The controls that the viewer touches, with words for them. The transparent button over the whole video is none.
constexpr std::array<std::pair<std::string_view, std::string_view>, 8> Controls{{
    {"btnClose", "the close button"},
    {"btnMute", "the mute button"},
    {"btnPlayAndPause", "the play button"},
    {"btnScreenScale", "the screen scale button"},
    {"btnReplay", "the replay button"},
    {"btnActionOne", "the first action button"},
    {"btnActionTwo", "the second action button"},
    {"btnReturnToVideo", "the button that returns to the video"},
}};

std::string_view words_for(std::string_view control)
{
    const auto* found = std::ranges::find(Controls, control, &decltype(Controls)::value_type::first);
    return found == Controls.end() ? std::string_view() : found->second;
}

CGSize screen_of(const CheckedSession& session)
{
    return session.scenario().world.device.facts.screen.value_or(CGSize{});
}

std::string size_text(CGSize size)
{
    return shortest_text(std::round(size.width)) + " x " + shortest_text(std::round(size.height));
}

bool is_turned(const CheckedSession& session)
{
    return session.held() == UIDeviceOrientationLandscapeLeft || session.held() == UIDeviceOrientationLandscapeRight;
}

/// "a screen of 375 x 812 points held upright".
std::string device_text(const CheckedSession& session)
{
    return "a screen of " + size_text(screen_of(session)) + " points held " +
           (is_turned(session) ? "sideways" : "upright");
}

bool is_empty(const CGRect& rect)
{
    return rect.width < 1 || rect.height < 1;
}

/// Area of two rectangles' intersection.
double shared_area(const CGRect& one, const CGRect& two)
{
    const double width = std::min(one.x + one.width, two.x + two.width) - std::max(one.x, two.x);
    const double height = std::min(one.y + one.height, two.y + two.height) - std::max(one.y, two.y);
    return width > 0 && height > 0 ? width * height : 0;
}

double part_on_screen(const CheckedSession& session, const CGRect& frame)
{
    const CGSize screen = screen_of(session);
    return shared_area(frame, {0, 0, screen.width, screen.height}) / (frame.width * frame.height);
}

/// Calls a function for every control that the viewer can see in a sight.
void visit_controls(const Sight& sight, const std::function<void(const SeenControl&, std::string_view words)>& visit)
{
    if (!sight.open || sight.other_screen)
        return;
    for (const SeenControl& control : sight.controls) {
        const std::string_view words = words_for(control.name);
        if (control.is_button && !words.empty() && !is_empty(control.frame))
            visit(control, words);
    }
}

/// Whether a control's place is that of an arrangement that the ad has. An ad without a landscape arrangement that is
/// held sideways lays its bars out for the long edge; only its close button matters then.
bool has_a_place(const CheckedSession& session, const SeenControl& control)
{
    return !is_turned(session) || control.name == "btnClose" || !session.ad() || session.ad()->landscapeModeType != 0;
}

/// The suspicions about controls, those that last long enough.
/// @param fault what is wrong with a control; empty for nothing
std::vector<Suspicion> misplaced(const CheckedSession& session,
                                 const std::function<std::string(const SeenControl&)>& fault)
{
    struct Misplaced {
        std::string sentence;
        double seconds = 0;
        std::int64_t from = 0;
    };
    std::map<std::string, Misplaced, std::less<>> found;
    const std::vector<Sight>& sights = session.record().sights;
    for (std::size_t i = 0; i < sights.size(); ++i)
        visit_controls(sights[i], [&](const SeenControl& control, std::string_view words) {
            const std::string wrong = has_a_place(session, control) ? fault(control) : "";
            if (wrong.empty())
                return;
            Misplaced& one = found[std::string(control.name)];
            one.seconds += in_seconds(session.end_of(i) - sights[i].at);
            if (!one.sentence.empty())
                return;
            one.sentence = in_course(session, std::string(words) + ' ' + wrong + ' ' + device_text(session));
            one.from = sights[i].at;
        });
    std::vector<Suspicion> suspicions;
    for (const auto& [name, one] : found)
        if (one.seconds >= UnnoticedMisplacement)
            suspicions.push_back({.sentence = one.sentence,
                                  .path = is_turned(session) ? "/landscapeModeType" : "/portraitVideoPos",
                                  .key = name + (is_turned(session) ? " sideways" : " upright"),
                                  .at = one.from});
    return suspicions;
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

/// Whether the middle of a frame is where a model's camera, corners or bars may cover it.
bool is_unsafe(const CGRect& frame, CGSize screen, const SafeAreaInsets& insets)
{
    const CGPoint middle{frame.x + frame.width / 2, frame.y + frame.height / 2};
    return middle.x < insets.left || middle.y < insets.top || middle.x > screen.width - insets.right ||
           middle.y > screen.height - insets.bottom;
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
        if (in_seconds(session.end_of(i - 1) - sights[first].at) <= UnnoticedEmptiness)
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
    return misplaced(session, [&](const SeenControl& control) -> std::string {
        const double part = part_on_screen(session, control.frame);
        if (part >= VisiblePart)
            return "";
        return part <= 0.01 ? "is outside" : "is partly outside";
    });
}

std::vector<Suspicion> control_covered(const CheckedSession& session)
{
    return misplaced(session, [&](const SeenControl& control) -> std::string {
        if (control.touchable || part_on_screen(session, control.frame) < VisiblePart)
            return "";
        return control.visible ? "cannot be touched, because another view covers it or its view ends before it, on"
                               : "is covered by another view on";
    });
}

std::vector<Suspicion> control_in_unsafe_area(const CheckedSession& session)
{
    std::vector<Suspicion> all;
    const CGSize screen = screen_of(session);
    for (const DeviceModel& model : session.course().models) {
        const SafeAreaInsets insets = upright_insets(model, session.held());
        for (Suspicion& each : misplaced(session, [&](const SeenControl& control) -> std::string {
                 if (part_on_screen(session, control.frame) < VisiblePart || !is_unsafe(control.frame, screen, insets))
                     return "";
                 return "lies where the camera, a rounded corner or a bar of " + std::string(model.name) +
                        " may cover it, on";
             }))
            if (std::ranges::find(all, each.key, &Suspicion::key) == all.end())
                all.push_back(std::move(each));
    }
    return all;
}

} // namespace qoro
