#include "formats/Steps.h"

#include "formats/Fields.h"
#include "formats/InputError.h"
#include "formats/Operations.h"
#include "formats/detail/Names.h"
#include "formats/detail/StepReader.h"

#include <algorithm>
#include <array>
#include <limits>
#include <utility>

namespace qoro
{

namespace
{

using detail::Reader;
using detail::shown;
using What = decltype(Step::what);

/// Commands of the creative's script.
constexpr std::array<std::string_view, 30> ScriptCommands{
    "addEventListener",
    "removeEventListener",
    "MRAIDClose",
    "MRAIDUseCustomClose",
    "setVideoPlay",
    "setVideoPause",
    "setVideoMute",
    "setVideoUnmute",
    "setVideoSeekToTime",
    "getVideoTotalTime",
    "getVideoIsMute",
    "checkVideoPlay",
    "playNextVideo",
    "checkCanPlayNextVideo",
    "cancelPrePauseLocations",
    "changeOrientation",
    "replay",
    "getConsent",
    "getControlRects",
    "mraid.load",
    "mraid.open",
    "mraid.close",
    "mraid.unload",
    "mraid.useCustomClose",
    "mraid.playVideo",
    "mraid.createCalendarEvent",
    "mraid.storePicture",
    "mraid.expand",
    "mraid.resize",
    "mraid.setOrientationProperties",
};

constexpr std::array<std::pair<std::string_view, AppStep::Event>, 3> AppEvents{{
    {"background", AppStep::Event::Background},
    {"foreground", AppStep::Event::Foreground},
    {"active", AppStep::Event::Active},
}};

/// Rejects an unknown name.
template <typename Names>
const std::string& known_name(const Reader& reader, const std::string& what, const Names& names)
{
    const std::string& name = reader.text(what);
    if (std::ranges::find(names, name) == std::ranges::end(names)) {
        const std::vector<std::string_view> known(std::ranges::begin(names), std::ranges::end(names));
        throw InputError(reader.file(), reader.path(),
                         "expected " + what + ", got " + shown(reader.json()) + detail::did_you_mean(name, known));
    }
    return name;
}

void require_true(const Reader& reader)
{
    if (!reader.json().is_boolean() || !reader.flag())
        reader.refuse("true");
}

What read_open(const Reader& reader)
{
    return OpenStep{static_cast<float>(reader.number("a number of points"))};
}

What read_tap(const Reader& reader)
{
    return TapStep{known_name(reader, "the name of a button of the controller", button_names())};
}

What read_touch(const Reader& reader)
{
    if (reader.json().is_object() && reader.at("selector"))
        throw InputError(reader.file(), reader.at("selector")->path(),
                         "the page here has no elements; expected a point as \"touch\": [x, y]");
    const CGSize point = reader.size("[x, y]");
    return TouchStep{{point.width, point.height}};
}

What read_real_touch(const Reader& reader)
{
    const std::string expected = "[x, y] or {\"selector\": \"#id\"}";
    if (!reader.json().is_object()) {
        const CGSize point = reader.size(expected);
        return TouchStep{{point.width, point.height}};
    }
    const auto selector = reader.with_keys({"selector"}).at("selector");
    if (!selector)
        reader.refuse(expected);
    const std::string text = selector->text("a CSS selector");
    if (text.empty())
        selector->refuse("a CSS selector");
    return TouchStep{{}, text};
}

/// The arguments after the name, in a list of a name and its arguments.
NSArray arguments_of(const std::vector<Reader>& list)
{
    std::vector<Value> arguments;
    for (std::size_t i = 1; i < list.size(); ++i)
        arguments.push_back(to_value(list[i].json()));
    return NSArray(std::move(arguments));
}

What read_script(const Reader& reader)
{
    const std::string expected = "a list of a command and its arguments";
    const std::vector<Reader> list = reader.list(expected);
    if (list.empty())
        reader.refuse(expected);
    return ScriptStep{{known_name(list[0], "a command of the script", ScriptCommands), arguments_of(list)}};
}

What read_player(const Reader& reader)
{
    reader.with_keys({"time", "duration", "load", "state", "finish", "stall", "broken"});
    PlayerNews news;
    if (const auto time = reader.at("time"))
        news.time = time->number("a number of seconds");
    if (const auto duration = reader.at("duration"))
        news.duration = duration->number("a number of seconds");
    if (const auto load = reader.at("load"))
        news.load = load->enumerated<MPMovieLoadState>("a load state");
    if (const auto state = reader.at("state"))
        news.state = state->enumerated<MPMoviePlaybackState>("a playback state");
    if (const auto finish = reader.at("finish"))
        news.finish = finish->enumerated<MPMovieFinishReason>("a finish reason");
    if (const auto stall = reader.at("stall"))
        news.stall = stall->json() == "endless" ? std::numeric_limits<double>::infinity()
                                                : stall->number("a number of seconds, or \"endless\"");
    if (const auto broken = reader.at("broken"))
        news.broken = broken->flag();
    return PlayerStep{news};
}

What refuse_player(const Reader& reader)
{
    throw InputError(reader.file(), reader.path(), "the player here is a real one; its news can't be given in a step");
}

What read_page(const Reader& reader)
{
    const std::string expected = "\"dies\" or \"hangs\"";
    const std::string& fault = reader.text(expected);
    if (fault != "dies" && fault != "hangs")
        reader.refuse(expected);
    return PageStep{fault == "dies" ? PageFault::Dies : PageFault::Hangs};
}

What refuse_page(const Reader& reader)
{
    throw InputError(reader.file(), reader.path(), "the page here is a real one; a step can't make it hang or die");
}

What read_servers(const Reader& reader)
{
    ServersStep step;
    for (const auto& [server, failure] : reader.entries()) {
        const std::size_t scheme = server.find("://");
        const bool is_server = scheme != std::string::npos && scheme > 0 && scheme + 3 < server.size() &&
                               server.find_first_of("/?#", scheme + 3) == std::string::npos;
        if (!is_server && server != "*")
            failure.refuse("a server as \"https://ads.example\", or \"*\" for all of them, as the key");
        if (!failure.is_null() && !failure.json().is_string())
            failure.refuse("why the server fails, or null when it answers again");
        step.changes.push_back({server, failure.is_null() ? std::nullopt : std::optional<std::string>(failure.text())});
    }
    return step;
}

What refuse_servers(const Reader& reader)
{
    throw InputError(reader.file(), reader.path(), "the servers here are real ones; a step can't make them fail");
}

What read_device(const Reader& reader)
{
    reader.with_keys({"orientation", "statusBarOrientation", "statusBarHidden", "outputVolume"});
    DeviceChange change;
    if (const auto orientation = reader.at("orientation"))
        change.orientation = orientation->enumerated<UIDeviceOrientation>("a device orientation");
    if (const auto orientation = reader.at("statusBarOrientation"))
        change.status_bar_orientation = orientation->enumerated<UIInterfaceOrientation>("an interface orientation");
    if (const auto hidden = reader.at("statusBarHidden"))
        change.status_bar_hidden = hidden->flag();
    if (const auto volume = reader.at("outputVolume"))
        change.output_volume = static_cast<float>(volume->number("a volume from 0 to 1"));
    return DeviceStep{change};
}

What read_app(const Reader& reader)
{
    const std::string expected = "\"background\", \"foreground\" or \"active\"";
    const auto event = std::ranges::find(AppEvents, reader.text(expected), &decltype(AppEvents)::value_type::first);
    if (event == AppEvents.end())
        reader.refuse(expected);
    return AppStep{event->second};
}

What read_interrupt(const Reader& reader)
{
    return InterruptStep{reader.enumerated<AVAudioSessionInterruptionType>("an interruption type")};
}

void check_argument(const Reader& reader, ArgumentKind kind)
{
    switch (kind) {
    case ArgumentKind::Flag:
        reader.flag();
        break;
    case ArgumentKind::WholeNumber:
        reader.whole();
        break;
    case ArgumentKind::TextOrNull:
        reader.text_or_null();
        break;
    case ArgumentKind::ButtonName:
        known_name(reader, "the name of a button of the controller", button_names());
        break;
    }
}

What read_call(const Reader& reader)
{
    const std::string expected = "a list of an operation and its arguments";
    const std::vector<Reader> list = reader.list(expected);
    if (list.empty())
        reader.refuse(expected);
    std::vector<std::string_view> names;
    for (const Operation& operation : operations())
        names.push_back(operation.name);
    const std::string& name = known_name(list[0], "an operation that the host or the kit calls", names);
    const auto operation = std::ranges::find(operations(), name, &Operation::name);
    if (list.size() != operation->arguments.size() + 1)
        reader.refuse("\"" + name + "\" with " + std::to_string(operation->arguments.size()) + " arguments");
    for (std::size_t i = 0; i < operation->arguments.size(); ++i)
        check_argument(list[i + 1], operation->arguments[i]);
    return CallStep{name, arguments_of(list)};
}

What read_snapshot(const Reader& reader)
{
    require_true(reader);
    return SnapshotStep{};
}

What read_release(const Reader& reader)
{
    require_true(reader);
    return ReleaseStep{};
}

struct StepKind {
    std::string_view key;
    What (*read)(const Reader& reader);
    /// Replaces `read` where players and pages are real.
    What (*read_for_real)(const Reader& reader) = read;
};

constexpr std::array StepKinds{
    StepKind{"open", read_open},
    StepKind{"tap", read_tap},
    StepKind{"touch", read_touch, read_real_touch},
    StepKind{"script", read_script},
    StepKind{"player", read_player, refuse_player},
    StepKind{"page", read_page, refuse_page},
    StepKind{"servers", read_servers, refuse_servers},
    StepKind{"device", read_device},
    StepKind{"app", read_app},
    StepKind{"interrupt", read_interrupt},
    StepKind{"call", read_call},
    StepKind{"snapshot", read_snapshot},
    StepKind{"release", read_release},
};

Step read_step(const Reader& reader, double earliest, bool simulated)
{
    reader.with_keys({"at", "open", "tap", "touch", "script", "player", "page", "servers", "device", "app", "interrupt",
                      "call", "snapshot", "release"});
    Step step;
    step.at = earliest;
    if (const auto at = reader.at("at")) {
        step.at = at->seconds();
        if (step.at < earliest)
            at->refuse("a time not before the last step's");
    }
    std::size_t found = 0;
    for (const StepKind& kind : StepKinds) {
        const auto value = reader.at(kind.key);
        if (!value)
            continue;
        if (++found > 1)
            break;
        step.key = kind.key;
        step.value = to_value(value->json());
        step.what = (simulated ? kind.read : kind.read_for_real)(*value);
    }
    if (found != 1)
        reader.refuse("\"at\" and exactly one thing to do");
    return step;
}

} // namespace

std::vector<Step> detail::read_steps(const Reader& list, bool simulated)
{
    std::vector<Step> steps;
    double latest = 0;
    for (const Reader& each : list.list("a list of steps")) {
        steps.push_back(read_step(each, latest, simulated));
        latest = steps.back().at;
    }
    return steps;
}

std::vector<Step> read_steps(std::string_view json, const std::string& file, bool simulated)
{
    const detail::Json parsed = detail::parse_json(json, file);
    return detail::read_steps(Reader(parsed, file), simulated);
}

} // namespace qoro
