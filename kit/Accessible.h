#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace qoro
{

struct ViewNode;

/// What a view is to a viewer who can't see it.
struct Accessible {
    enum class Role : std::uint8_t {
        /// Nothing: a background, a strip, a picture that only adorns.
        None,
        Button,
        Text,
        Image,
        Video,
        Page,
        /// Time that runs down.
        Timer,
        /// Something that is being waited for.
        Wait,
    };

    Role role = Role::None;
    /// In the viewer's language, but for what the ad brought.
    std::string name = {};
    /// Whether a control that is on or off is on; absent for any other.
    std::optional<bool> on = {};
    /// Whether it can be used now; what nobody uses can.
    bool usable = true;
};

/// Asks a view: its own label, its text, or else what its picture or its action stand for.
Accessible accessible(const ViewNode& view);

} // namespace qoro
