#pragma once

namespace qoro
{

/// Starts GTK; to be called once, before anything that draws. Unless the user chose another renderer it is Cairo's,
/// which draws everything right without a graphics card.
/// @return false when there is no display
bool start_toolkit();

} // namespace qoro
