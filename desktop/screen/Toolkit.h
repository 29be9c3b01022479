#pragma once

namespace qoro
{

/// Sets the locale, what GTK draws with and how it keeps memory: unless the user chose another renderer it is Cairo's,
/// which draws everything right without a graphics card. A program with threads calls it before the first of them;
/// start_toolkit does otherwise.
void prepare_toolkit();

/// Starts GTK; to be called once, before anything that draws.
/// @return false when there is no display
bool start_toolkit();

} // namespace qoro
