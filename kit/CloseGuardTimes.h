#pragma once

#include "platform/Export.h"

namespace QORO_EXPORT qoro
{

/// How long each condition must hold before the close guard shows its button, in seconds; none is negative.
struct CloseGuardTimes {
    /// The page controls closing, and its script does not respond.
    double page_silent = 2;
    /// The page received a tap on the close button, and nothing happened.
    double tap_unanswered = 1;
    /// The ad's own close button is due, but the page draws its own; or the video has played its whole length, but the
    /// page prevents it from ending.
    double custom_close = 5;
    /// The video makes no progress and no close button can be tapped. A video that the page repeatedly pauses or seeks
    /// makes no progress.
    double nothing_moves = 30;
};

} // namespace qoro
