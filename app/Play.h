#pragma once

#include "app/PlayOptions.h"

namespace qoro
{

/// Plays an ad in a window, from its opening to its close.
/// @return the program's exit status: 1 where this machine lacks what it takes
/// @throws InputError before any window opens
int play(const PlayOptions& options);

} // namespace qoro
