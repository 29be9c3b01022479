#pragma once

#include "platform/Foundation.h"
#include "platform/UIKit.h"

#include <string_view>
#include <vector>

namespace qoro
{

/// A control of an ad.
struct NamedControl {
    /// Name of its field; of static storage duration.
    std::string_view name;
    /// Null while the ad does not have it.
    UIView view;
};

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
    /// The controls of the ad, in the order in which the page receives them.
    virtual std::vector<NamedControl> controls() const = 0;
};

} // namespace qoro
