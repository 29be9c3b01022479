#pragma once

namespace qoro
{

/// Takes each view off the screen and clears its field, in the order in which they are given.
template <typename... Views>
void removeAndRelease(Views&... fields)
{
    ((fields.removeFromSuperview(), fields = nullptr), ...);
}

} // namespace qoro
