#pragma once

#include "platform/Foundation.h"

#include <string_view>

namespace qoro
{

/// What a page's script may know and do beyond its ad's own commands. The session implements it for the controller,
/// which the kit does not know.
class ScriptExtras
{
public:
    virtual ~ScriptExtras() = default;
    /// Why the ad would silently ignore a command now; null when it would not, and for an unknown command.
    virtual NSString reason_to_ignore(std::string_view command) const = 0;
    /// Plays a video that has ended again.
    /// @return null, or the reason for a refusal
    virtual NSString replay() = 0;
};

} // namespace qoro
