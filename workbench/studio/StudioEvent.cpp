#include "workbench/studio/StudioEvent.h"

#include "workbench/detail/Json.h"

namespace qoro
{

using detail::Json;
using Kind = StudioEvent::Kind;

std::string_view name_of(StudioEvent::Kind kind)
{
    switch (kind) {
    case Kind::Touch:
        return "touch";
    case Kind::Turn:
        return "turn";
    case Kind::Stall:
        return "stall";
    case Kind::VideoFails:
        return "videoFails";
    case Kind::Servers:
        return "servers";
    case Kind::Call:
        return "call";
    case Kind::Leave:
        return "leave";
    case Kind::Volume:
        return "volume";
    case Kind::Step:
        break;
    }
    return "step";
}

std::vector<StudioEvent::Step> StudioEvent::steps() const
{
    const auto now = [this](const char* key, const Json& value) { return Step{at, key, value.dump()}; };
    const auto later = [this](const char* key, const Json& value) { return Step{at + seconds, key, value.dump()}; };
    switch (kind) {
    case Kind::Touch:
        return {now("touch", {point.x, point.y})};
    case Kind::Turn: {
        const int held = static_cast<int>(orientation);
        return {now("device", {{"orientation", held}, {"statusBarOrientation", held}})};
    }
    case Kind::Stall:
        return {now("player", {{"stall", seconds > 0 ? Json(seconds) : Json("endless")}})};
    case Kind::VideoFails:
        return {now("player", {{"broken", true}})};
    case Kind::Servers: {
        std::vector<Step> steps{now("servers", {{server, "the server fails"}})};
        if (seconds > 0)
            steps.push_back(later("servers", {{server, nullptr}}));
        return steps;
    }
    case Kind::Call:
        return {now("interrupt", 1), later("interrupt", 0)};
    case Kind::Leave:
        return {now("app", "background"), later("app", "foreground"), later("app", "active")};
    case Kind::Volume:
        return {now("device", {{"outputVolume", volume}})};
    case Kind::Step:
        break;
    }
    return {Step{at, step.key, step.json}};
}

} // namespace qoro
