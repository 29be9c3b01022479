#pragma once

#include "app/PlayOptions.h"

namespace qoro
{

/// Plays an ad in a window until it closes.
/// @return the exit status: 1 where the machine lacks a requirement
/// @throws InputError before any window opens
int play(const PlayOptions& options);

} // namespace qoro
