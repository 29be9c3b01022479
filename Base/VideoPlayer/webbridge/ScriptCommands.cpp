#include "Base/VideoPlayer/QoroVideoWebViewController.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace qoro
{

namespace
{

using Ad = QoroVideoWebViewController;
using Arguments = const NSArray&;

struct Command {
    std::string_view name;
    /// Number of required arguments; surplus ones are ignored.
    std::size_t arguments;
    /// Converts the arguments (a wrong type reads as null or zero), calls the operation and returns its result.
    Value (*run)(Ad&, Arguments);
};

template <void (Ad::*operation)()>
Value plain(Ad& ad, Arguments)
{
    (ad.*operation)();
    return {};
}

Value useCustomClose(Ad& ad, Arguments given)
{
    ad.MRAIDUseCustomClose(given[0].boolValue());
    return {};
}

Value seekToTime(Ad& ad, Arguments given)
{
    ad.setVideoSeekToTime(given[0].floatValue());
    return {};
}

Value totalTime(Ad& ad, Arguments)
{
    return ad.getVideoTotalTime();
}

Value isMute(Ad& ad, Arguments)
{
    return ad.getVideoIsMute();
}

Value playNext(Ad& ad, Arguments given)
{
    ad.playNextVideo(given[0].dictionary());
    return {};
}

Value canPlayNext(Ad& ad, Arguments given)
{
    return ad.checkCanPlayNextVideo(given[0].string());
}

Value changeOrientation(Ad& ad, Arguments given)
{
    ad.changeOrientation(given[0].string());
    return {};
}

constexpr Command commands[] = {
    {"MRAIDUseCustomClose", 1, useCustomClose},
    {"setVideoPlay", 0, plain<&Ad::setVideoPlay>},
    {"setVideoPause", 0, plain<&Ad::setVideoPause>},
    {"setVideoMute", 0, plain<&Ad::setVideoMute>},
    {"setVideoUnmute", 0, plain<&Ad::setVideoUnmute>},
    {"setVideoSeekToTime", 1, seekToTime},
    {"getVideoTotalTime", 0, totalTime},
    {"getVideoIsMute", 0, isMute},
    {"checkVideoPlay", 0, plain<&Ad::checkVideoPlay>},
    {"playNextVideo", 1, playNext},
    {"checkCanPlayNextVideo", 1, canPlayNext},
    {"cancelPrePauseLocations", 0, plain<&Ad::cancelPrePauseLocations>},
    {"changeOrientation", 1, changeOrientation},
};

} // namespace

ScriptAnswer QoroVideoWebViewController::callFromScript(const ScriptMessage& message)
{
    for (const Command& command : commands) {
        if (command.name != message.command)
            continue;
        const std::size_t given = message.arguments.count();
        if (given < command.arguments)
            return {.error = message.command + " takes " + std::to_string(command.arguments) + " arguments, not " +
                             std::to_string(given),
                    .value = {}};
        return {.error = nullptr, .value = command.run(*this, message.arguments)};
    }
    return QoroPhoneGapViewController::callFromScript(message);
}

} // namespace qoro
