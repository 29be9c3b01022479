#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace qoro
{

struct ViewNode;

/// The accessible properties of a view.
struct Accessible {
    enum class Role : std::uint8_t {
        /// Not exposed: a background, a strip, a decorative picture.
        None,
        Button,
        Text,
        Image,
        Video,
        Page,
        /// A countdown.
        Timer,
        /// A progress indicator.
        Wait,
    };

    Role role = Role::None;
    /// The accessible name: translated, unless the ad supplied it. May be empty.
    std::string name = {};
    /// State of a toggle; absent for any other view.
    std::optional<bool> on = {};
    /// False for a control that is disabled at present.
    bool usable = true;
};

/// Derives the properties of a view. The name is its label, its text, or else the meaning of its picture or action.
Accessible accessible(const ViewNode& view);

} // namespace qoro
