#pragma once

#include "platform/Geometry.h"
#include "workbench/Sight.h"

#include <cstdint>
#include <string_view>
#include <vector>

namespace qoro
{

/// What is wrong with the place or the size of a control.
enum class ControlFault : std::uint8_t {
    /// More than a tenth of it lies outside the screen.
    Outside,
    /// No touch reaches it, because another view covers it or its own view ends before it.
    Covered,
    /// Less than 44 points of a side, and less than its own, are in the safe area.
    Unsafe,
    /// A side is shorter than 44 points.
    Small
};

/// "outside", "covered", "unsafe" or "small".
std::string_view name_of(ControlFault fault);

/// A control that the viewer touches, in words: "the mute button". The transparent button over the whole video is none.
/// @param name of its field
/// @return empty for another view; of static storage duration
std::string_view words_for_control(std::string_view name);

/// What is wrong with a control. One that is outside is not said to be covered or unsafe, nor a covered one unsafe.
/// @param screen upright, in points
/// @param safe the part of the upright screen that no camera, rounded corner or system bar covers
/// @return empty for what is no control
std::vector<ControlFault> faults_of(const SeenControl& control, CGSize screen, const CGRect& safe);

} // namespace qoro
