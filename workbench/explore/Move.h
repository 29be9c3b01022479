#pragma once

#include "formats/Steps.h"

#include <cstdint>
#include <string>
#include <vector>

namespace qoro
{

class Simulation;
struct Scenario;

/// What can happen to an ad at one moment.
struct Move {
    enum class Kind : std::uint8_t {
        Touch,        ///< The viewer taps a button, at a point of the screen.
        Turn,         ///< The viewer turns the device to an orientation.
        Leave,        ///< The viewer leaves the application.
        Return,       ///< The viewer returns to it.
        LeaveSheet,   ///< The viewer returns from a program that a button has opened.
        Page,         ///< The page gives a command, by its number.
        PageFault,    ///< The page's process dies (0), or its script hangs (1).
        CallBegins,   ///< An interruption of the sound begins.
        CallEnds,     ///< It ends.
        ShortStall,   ///< The video gets no data for five seconds.
        EndlessStall, ///< The video gets no data any more.
        Error,        ///< Playback fails once.
        Broken,       ///< Playback fails for good.
        Exit,         ///< Playback ends with the reason "user exited".
    };

    Kind kind{};
    /// Orientation, command or fault.
    std::int32_t number = 0;
    CGPoint point = {};
    /// For people: "tap btnClose".
    std::string name = {};

    /// Whether it belongs to the ways out of an ad: what the viewer and the page do, and the end of a call. Nobody can
    /// hope for a fault.
    bool helps() const;
    /// The steps of a scenario, all at the same time.
    std::vector<Step> steps(double at) const;
};

/// Where the viewer is.
struct Viewer {
    bool away = false;
    bool in_call = false;

    void note(const Move& move);
};

/// The commands that a page can give: those whose names its text contains, or that of a script beside it.
struct PageCommands {
    /// Indices into the table of known commands.
    std::vector<std::int32_t> known;
    /// Why some are missing; a line each.
    std::vector<std::string> missing;
};

/// Reads the page of a scenario's ad, and the scripts, in the answers of its network.
PageCommands page_commands(const Scenario& scenario);

/// What can happen at this moment, in a fixed order. Between two events of the session.
/// @param interface_turns interface orientations that the host allows
std::vector<Move> moves_at(Simulation& simulation, const Viewer& viewer, const PageCommands& page,
                           const std::vector<std::int64_t>& interface_turns);

/// Whether a tap on a close control of the ad, or on the close guard's button, reaches it and closes the ad or hides
/// its video: the page has not taken the taps over.
bool close_is_reachable(Simulation& simulation);

} // namespace qoro
