#include "workbench/ControlFaults.h"

#include <algorithm>
#include <array>
#include <utility>

namespace qoro
{

namespace
{

/// Points.
constexpr double SmallestSide = 44;
constexpr double Tolerance = 0.5;
/// Part of a control's area that must be on the screen.
constexpr double VisiblePart = 0.9;

constexpr std::array<std::pair<std::string_view, std::string_view>, 8> Controls{{
    {"btnClose", "the close button"},
    {"btnMute", "the mute button"},
    {"btnPlayAndPause", "the play button"},
    {"btnScreenScale", "the screen scale button"},
    {"btnReplay", "the replay button"},
    {"btnActionOne", "the first action button"},
    {"btnActionTwo", "the second action button"},
    {"btnReturnToVideo", "the button that returns to the video"},
}};

/// Size of two rectangles' intersection; not positive without one.
CGSize shared_size(const CGRect& one, const CGRect& two)
{
    return {std::min(one.x + one.width, two.x + two.width) - std::max(one.x, two.x),
            std::min(one.y + one.height, two.y + two.height) - std::max(one.y, two.y)};
}

bool is_outside(const CGRect& control, CGSize screen)
{
    const CGSize seen = shared_size(control, {0, 0, screen.width, screen.height});
    return seen.width <= 0 || seen.height <= 0 ||
           seen.width * seen.height < VisiblePart * control.width * control.height;
}

bool is_cut(const CGRect& control, const CGRect& area)
{
    const CGSize left = shared_size(control, area);
    return left.width < std::min(control.width, SmallestSide) - Tolerance ||
           left.height < std::min(control.height, SmallestSide) - Tolerance;
}

} // namespace

std::string_view name_of(ControlFault fault)
{
    switch (fault) {
    case ControlFault::Outside:
        return "outside";
    case ControlFault::Covered:
        return "covered";
    case ControlFault::Unsafe:
        return "unsafe";
    case ControlFault::Small:
        break;
    }
    return "small";
}

std::string_view words_for_control(std::string_view name)
{
    const auto* found = std::ranges::find(Controls, name, &decltype(Controls)::value_type::first);
    return found == Controls.end() ? std::string_view() : found->second;
}

std::vector<ControlFault> faults_of(const SeenControl& control, CGSize screen, const CGRect& safe)
{
    std::vector<ControlFault> faults;
    const CGRect& frame = control.frame;
    if (!control.is_button || words_for_control(control.name).empty() || frame.width < 1 || frame.height < 1)
        return faults;
    if (is_outside(frame, screen))
        faults.push_back(ControlFault::Outside);
    else if (!control.touchable)
        faults.push_back(ControlFault::Covered);
    else if (is_cut(frame, safe))
        faults.push_back(ControlFault::Unsafe);
    if (std::min(frame.width, frame.height) < SmallestSide - Tolerance)
        faults.push_back(ControlFault::Small);
    return faults;
}

} // namespace qoro
