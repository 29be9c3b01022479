#pragma once

namespace qoro
{

/// Sets the locale, GTK's renderer and the allocator's parameters. Unless the user has chosen another renderer, it is
/// Cairo's, which draws everything correctly without a graphics card. A program that creates threads before
/// start_toolkit() must call this before the first of them; start_toolkit() calls it as well.
void prepare_toolkit();

/// Starts GTK. To be called once, before anything is drawn.
/// @return false if there is no display
bool start_toolkit();

} // namespace qoro
