#pragma once

#include "platform/Export.h"

namespace QORO_EXPORT qoro
{

/// Settings of the whole process, for a program that exists to play ads. Nothing else in the library makes them; a host
/// that wants them calls this first, before it creates a thread and before GTK starts:
/// - the locale of characters and messages, as the environment names it; numbers keep their decimal point;
/// - the environment variable GSK_RENDERER, unless it is set: GTK draws by Cairo, correctly without a graphics card;
/// - without pages, "gl-disable" in the environment variable GDK_DEBUG: GTK does not search for a graphics card, which
///   takes a quarter of the time until the first picture, and loads no driver;
/// - the C library's allocator (mallopt): freed pictures stay in the process, and threads share an arena.
///
/// @param pages whether the ads show pages. A transparent page that appears all the same leaves trails behind moving
///        content; an in-app browser is not affected.
void prepare_program(bool pages = true);

/// Starts GTK, unless the program has. GTK does not set the locale then: that is the host's decision.
/// @return false if there is no display
bool start_toolkit();

} // namespace qoro
