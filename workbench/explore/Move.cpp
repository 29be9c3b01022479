#include "workbench/explore/Move.h"

#include "Base/VideoPlayer/QoroVideoWebViewController.h"
#include "formats/Fields.h"
#include "formats/Scenario.h"
#include "kit/CloseGuard.h"
#include "kit/PageScreen.h"
#include "simulator/Simulation.h"
#include "views/ViewNode.h"

#include <algorithm>
#include <array>
#include <limits>
#include <type_traits>

namespace qoro
{

namespace
{

constexpr double ShortStallSeconds = 5;

/// A command of the creative's script, with its arguments, and the text of a page that gives it.
struct Command {
    const char* name;
    Value argument;
    Value second;
    std::string_view mark;
};

const std::array<Command, 12>& commands()
{
    static const std::array<Command, 12> all{{
        {"MRAIDClose", {}, {}, "MRAIDClose"},
        {"addEventListener", "onclick_closebtn", "explored", "onclick_closebtn"},
        {"removeEventListener", "onclick_closebtn", "explored", "removeEventListener"},
        {"MRAIDUseCustomClose", true, {}, "MRAIDUseCustomClose"},
        {"MRAIDUseCustomClose", false, {}, "MRAIDUseCustomClose"},
        {"setVideoPlay", {}, {}, "setVideoPlay"},
        {"setVideoPause", {}, {}, "setVideoPause"},
        {"setVideoMute", {}, {}, "setVideoMute"},
        {"setVideoUnmute", {}, {}, "setVideoUnmute"},
        {"setVideoSeekToTime", 0, {}, "setVideoSeekToTime"},
        {"changeOrientation", "portrait", {}, "changeOrientation"},
        {"changeOrientation", "landscape", {}, "changeOrientation"},
    }};
    return all;
}

/// Commands that the search does not give.
constexpr std::array<std::string_view, 3> OtherCommands{"playNextVideo", "cancelPrePauseLocations", "mraid."};

NSArray arguments_of(const Command& command)
{
    std::vector<Value> arguments;
    for (const Value& each : {command.argument, command.second})
        if (each)
            arguments.push_back(each);
    return NSArray(std::move(arguments));
}

Step step_of_command(const Command& command)
{
    std::vector<Value> written{command.name};
    const NSArray arguments = arguments_of(command);
    written.insert(written.end(), arguments.begin(), arguments.end());
    return {
        .at = 0, .what = ScriptStep{{command.name, arguments}}, .key = "script", .value = NSArray(std::move(written))};
}

/// @param value of one member
template <typename T>
Step player_step(T PlayerNews::*member, std::type_identity_t<T> value, const NSDictionary& written)
{
    PlayerNews news;
    news.*member = value;
    return {.at = 0, .what = PlayerStep{news}, .key = "player", .value = written};
}

Step error_step()
{
    PlayerNews news;
    news.state = MPMoviePlaybackStateStopped;
    news.finish = MPMovieFinishReasonPlaybackError;
    return {.at = 0,
            .what = PlayerStep{news},
            .key = "player",
            .value =
                NSDictionary{{"state", MPMoviePlaybackStateStopped}, {"finish", MPMovieFinishReasonPlaybackError}}};
}

Step app_step(AppStep::Event event, const char* written)
{
    return {.at = 0, .what = AppStep{event}, .key = "app", .value = written};
}

Step call_step(std::int64_t type)
{
    return {.at = 0,
            .what = InterruptStep{static_cast<AVAudioSessionInterruptionType>(type)},
            .key = "interrupt",
            .value = type};
}

/// The device, and the interface where the host allows it; the number holds both.
constexpr std::int32_t BarTurns = 16;

Step turn_step(std::int32_t number)
{
    DeviceChange change;
    change.orientation = static_cast<UIDeviceOrientation>(number % BarTurns);
    NSDictionary written{{"orientation", number % BarTurns}};
    if (const std::int32_t bar = number / BarTurns) {
        change.status_bar_orientation = static_cast<UIInterfaceOrientation>(bar);
        written.setObject(bar, "statusBarOrientation");
    }
    return {.at = 0, .what = DeviceStep{change}, .key = "device", .value = written};
}

/// Calls a function for each button in the shown windows.
template <typename Visit>
void visit_buttons(const ViewNode& view, const Visit& visit)
{
    if (view.hidden)
        return;
    if (view.kind == ViewNode::Kind::Button)
        visit(view);
    for (const auto& subview : view.subviews)
        visit_buttons(*subview, visit);
}

std::string name_of(const ViewNode& button, const std::shared_ptr<QoroVideoWebViewController>& ad)
{
    if (ad)
        for (const ViewField& field : view_fields())
            if (field.get(*ad).node().get() == &button)
                return std::string(field.name);
    return button.targets.empty() ? "button" : std::string(button.targets.front().name());
}

void add_touches(Simulation& simulation, std::vector<Move>& moves)
{
    for (const auto& window : simulation.platform().shared<WindowList>().visible_from_below())
        visit_buttons(*window, [&](const ViewNode& button) {
            if (button.targets.empty())
                return;
            if (const auto point = touchable_point(button))
                moves.push_back({.kind = Move::Kind::Touch,
                                 .point = *point,
                                 .name = "tap " + name_of(button, simulation.living())});
        });
}

void add_turns(Simulation& simulation, const std::vector<std::int64_t>& interface_turns, std::vector<Move>& moves)
{
    const SimulatedDevice& device = simulation.platform().device();
    constexpr std::array<std::pair<std::int32_t, const char*>, 3> Turns{{{UIDeviceOrientationPortrait, "upright"},
                                                                         {UIDeviceOrientationLandscapeLeft, "left"},
                                                                         {UIDeviceOrientationLandscapeRight, "right"}}};
    for (const auto& [orientation, name] : Turns) {
        // The interface's landscape orientations are named the other way round, with the same numbers.
        const bool follows = std::ranges::find(interface_turns, orientation) != interface_turns.end();
        const bool same_bar = !follows || device.status_bar_orientation() == orientation;
        if (device.orientation() == orientation && same_bar)
            continue;
        moves.push_back({.kind = Move::Kind::Turn,
                         .number = orientation + (follows ? orientation * BarTurns : 0),
                         .name = std::string("turn ") + name});
    }
}

void add_surroundings(const QoroVideoWebViewController& ad, std::vector<Move>& moves)
{
    if (!ad.qoroMoviePlayer)
        return;
    if (ad.qoroMoviePlayer.playbackState() == MPMoviePlaybackStatePlaying) {
        moves.push_back({.kind = Move::Kind::ShortStall, .name = "stall of 5 s"});
        moves.push_back({.kind = Move::Kind::EndlessStall, .name = "endless stall"});
        moves.push_back({.kind = Move::Kind::Error, .name = "playback error"});
        moves.push_back({.kind = Move::Kind::Broken, .name = "permanent playback error"});
    }
    moves.push_back({.kind = Move::Kind::Exit, .name = "finish by \"user exited\""});
}

void add_page(Simulation& simulation, const QoroVideoWebViewController& ad, const PageCommands& page,
              std::vector<Move>& moves)
{
    const auto node = ad.webView().node();
    if (!node || !node->web || !node->web->page_state().has_content || !simulation.platform().page_runs(ad.webView()))
        return;
    for (const std::int32_t number : page.known) {
        const Command& command = commands()[static_cast<std::size_t>(number)];
        std::string name = std::string("page: ") + command.name;
        if (command.argument)
            name += "(" +
                    (command.argument.is_bool() ? std::string(command.argument.boolValue() ? "true" : "false")
                                                : command.argument.stringValue().text()) +
                    ")";
        moves.push_back({.kind = Move::Kind::Page, .number = number, .name = std::move(name)});
    }
    moves.push_back({.kind = Move::Kind::PageFault, .number = 0, .name = "page dies"});
    moves.push_back({.kind = Move::Kind::PageFault, .number = 1, .name = "page hangs"});
}

} // namespace

bool Move::helps() const
{
    return kind <= Kind::Page || kind == Kind::CallEnds;
}

std::vector<Step> Move::steps(double at) const
{
    std::vector<Step> steps;
    switch (kind) {
    case Kind::Touch:
        steps = {{.at = 0, .what = TouchStep{point}, .key = "touch", .value = NSArray{point.x, point.y}}};
        break;
    case Kind::Turn:
        steps = {turn_step(number)};
        break;
    case Kind::Leave:
        steps = {app_step(AppStep::Event::Background, "background")};
        break;
    case Kind::Return:
        steps = {app_step(AppStep::Event::Foreground, "foreground"), app_step(AppStep::Event::Active, "active")};
        break;
    case Kind::LeaveSheet:
        steps = {{.at = 0,
                  .what = CallStep{"closeInAppApplication", NSArray(std::vector<Value>{})},
                  .key = "call",
                  .value = NSArray{"closeInAppApplication"}}};
        break;
    case Kind::Page:
        steps = {step_of_command(commands()[static_cast<std::size_t>(number)])};
        break;
    case Kind::PageFault:
        steps = {{.at = 0,
                  .what = PageStep{number == 0 ? qoro::PageFault::Dies : qoro::PageFault::Hangs},
                  .key = "page",
                  .value = number == 0 ? "dies" : "hangs"}};
        break;
    case Kind::CallBegins:
        steps = {call_step(1)};
        break;
    case Kind::CallEnds:
        steps = {call_step(0)};
        break;
    case Kind::ShortStall:
        steps = {player_step(&PlayerNews::stall, ShortStallSeconds, {{"stall", ShortStallSeconds}})};
        break;
    case Kind::EndlessStall:
        steps = {player_step(&PlayerNews::stall, std::numeric_limits<double>::infinity(), {{"stall", "endless"}})};
        break;
    case Kind::Error:
        steps = {error_step()};
        break;
    case Kind::Broken:
        steps = {player_step(&PlayerNews::broken, true, {{"broken", true}})};
        break;
    case Kind::Exit:
        steps = {player_step(&PlayerNews::finish, MPMovieFinishReasonUserExited,
                             {{"finish", MPMovieFinishReasonUserExited}})};
        break;
    }
    for (Step& step : steps)
        step.at = at;
    return steps;
}

void Viewer::note(const Move& move)
{
    away = move.kind == Move::Kind::Leave || (away && move.kind != Move::Kind::Return);
    in_call = move.kind == Move::Kind::CallBegins || (in_call && move.kind != Move::Kind::CallEnds);
}

PageCommands page_commands(const Scenario& scenario)
{
    PageCommands page;
    const NSString& address = scenario.ad->strWebViewUrl;
    if (!address)
        return page;
    const auto answer = scenario.world.net.find(address.text());
    if (answer == scenario.world.net.end() || answer->second.body.empty()) {
        page.missing.emplace_back("the page's commands: its text is not in the scenario");
        return page;
    }
    std::string text = answer->second.body;
    for (const auto& [other, script] : scenario.world.net)
        if (other.ends_with(".js"))
            text += script.body;
    for (std::size_t n = 0; n < commands().size(); ++n)
        if (text.find(commands()[n].mark) != std::string::npos)
            page.known.push_back(static_cast<std::int32_t>(n));
    for (const std::string_view other : OtherCommands)
        if (text.find(other) != std::string::npos)
            page.missing.push_back("the page's " + std::string(other) + (other == "mraid." ? "… calls" : ""));
    return page;
}

std::vector<Move> moves_at(Simulation& simulation, const Viewer& viewer, const PageCommands& page,
                           const std::vector<std::int64_t>& interface_turns)
{
    std::vector<Move> moves;
    if (viewer.in_call)
        moves.push_back({.kind = Move::Kind::CallEnds, .name = "a call ends"});
    if (viewer.away)
        moves.push_back({.kind = Move::Kind::Return, .name = "return to the app"});
    else
        add_touches(simulation, moves);
    const auto ad = simulation.living();
    if (!ad)
        return moves;
    if (!viewer.away) {
        if (ad->openInAppApplicationViewController && !PageScreen::topmost(simulation.platform()))
            moves.push_back({.kind = Move::Kind::LeaveSheet, .name = "return from the other program"});
        add_turns(simulation, interface_turns, moves);
        moves.push_back({.kind = Move::Kind::Leave, .name = "leave the app"});
        if (!viewer.in_call)
            moves.push_back({.kind = Move::Kind::CallBegins, .name = "a call begins"});
    }
    add_page(simulation, *ad, page, moves);
    add_surroundings(*ad, moves);
    return moves;
}

bool close_is_reachable(Simulation& simulation)
{
    bool reachable = false;
    for (const auto& window : simulation.platform().shared<WindowList>().visible_from_below())
        visit_buttons(*window, [&](const ViewNode& button) {
            const bool closes = std::ranges::any_of(button.targets, [](const Action& target) {
                return target.name() == "closeAction" || dynamic_cast<CloseGuard*>(target.target().get());
            });
            reachable = reachable || (closes && touchable_point(button).has_value());
        });
    return reachable;
}

} // namespace qoro
