#pragma once

#include "platform/HostCall.h"
#include "vast/MediaChoice.h"

#include <functional>
#include <string>

// Functions that a host supplies for a tag. They may throw: the exception is reported, and the kit's own value takes
// the place of the result.

namespace qoro
{

class Platform;

/// A function of the host, which may throw.
/// @param otherwise its result in that case
template <typename Result>
std::function<Result()> guarded(const char* name, Platform& platform, std::function<Result()> function,
                                Result (*otherwise)())
{
    return [name, &platform, function = std::move(function), otherwise] {
        Result result{};
        return call_host(name, &platform, [&] { result = function(); }) ? result : otherwise();
    };
}

/// Of the host, whose functions may throw: what cannot be asked cannot be played.
class HostsSupport final : public vast::MediaSupport
{
public:
    HostsSupport(const vast::MediaSupport& support, Platform& platform) : support_(support), platform_(platform) {}

    bool can_play(const std::string& type, const std::string& codec) const override
    {
        bool can = false;
        call_host("MediaSupport::can_play", &platform_, [&] { can = support_.can_play(type, codec); });
        return can;
    }

private:
    const vast::MediaSupport& support_;
    Platform& platform_;
};

} // namespace qoro
