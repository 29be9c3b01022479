#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace qoro
{

class Simulation;
class SimulatedPlatform;

/// What a screen shows, ready to be drawn.
struct Drawing {
    /// Rotation of the device's screen relative to the viewer: degrees, clockwise, a multiple of 90 in (-180, 180].
    int turn = 0;
    /// From bottom to top: the place of each view's description in a table of descriptions.
    std::vector<std::size_t> views = {};

    bool operator==(const Drawing&) const = default;
};

/// Gives each distinct text a number from 0.
class TextTable
{
public:
    std::size_t number_of(const std::string& text);
    const std::vector<std::string>& texts() const { return texts_; }

private:
    std::map<std::string, std::size_t, std::less<>> numbers_;
    std::vector<std::string> texts_;
};

/// Describes what screens show. Views that look alike, at any time and on any screen, share one description.
class Draughtsman
{
public:
    /// What the screen shows between two events of a session.
    Drawing draw(Simulation& simulation);

    /// JSON objects. "kind" is the view's class; "at" its centre, width and height in points of the upright screen;
    /// the other keys are left out where they would say nothing: "name" of the controller's field, "label" for people,
    /// "turn" in degrees, "alpha" with that of its ancestors, "fill", "radius", "text", "font", "ink", "shadow",
    /// "align", "lines", "break", "picture", "fit", "symbol", "count".
    const std::vector<std::string>& views() const { return views_.texts(); }
    /// data: addresses of the pictures by their number; empty for one that is too large.
    const std::vector<std::string>& pictures() const { return pictures_.texts(); }

private:
    std::size_t picture_of(std::string_view bytes);

    TextTable views_;
    TextTable pictures_;
    /// Numbers in pictures_ by the pictures' bytes.
    std::map<std::string, std::size_t, std::less<>> known_pictures_;
    /// Bytes of all pictures so far.
    std::size_t picture_bytes_ = 0;
};

/// Rotation of the device's screen relative to the viewer, as Drawing::turn.
int turn_of(SimulatedPlatform& platform);

} // namespace qoro
