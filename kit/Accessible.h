#pragma once

#include "platform/Export.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace QORO_EXPORT qoro
{

struct ViewNode;

/// Accessible names of the ad's controls that have no text, untranslated. Shared by a platform (Platform::shared) and
/// empty until the session sets it.
struct ControlNames {
    /// A control that shows one of the ad's own pictures.
    struct Picture {
        /// Accessibility identifier of the picture.
        std::string_view picture;
        /// Accessible name; not null.
        const char* name;
        /// State of a toggle; absent for any other control.
        std::optional<bool> on;
    };
    /// A control that shows nothing, or a picture supplied by the ad.
    struct Action {
        /// Name of its first action.
        std::string_view action;
        /// Accessible name; not null.
        const char* name;
    };
    /// Of static storage duration.
    std::span<const Picture> pictures;
    /// Of static storage duration; consulted after the pictures.
    std::span<const Action> actions;
};

/// The accessible properties of a view.
struct Accessible {
    /// What a view is for assistive technology.
    enum class Role : std::uint8_t {
        /// Not exposed: a background, a strip, a decorative picture.
        Unexposed,
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

    /// Unexposed for a view that assistive technology does not see.
    Role role = Role::Unexposed;
    /// The accessible name: translated, unless the ad supplied it. May be empty.
    std::string name = {};
    /// State of a toggle; absent for any other view.
    std::optional<bool> on = {};
    /// False for a control that is disabled at present.
    bool usable = true;
};

/// Derives the properties of a view. The name is its label, its text, or else its entry in ControlNames.
Accessible accessible(const ViewNode& view);

} // namespace qoro
