#pragma once

namespace qoro
{

/// Removes each view from its parent and sets its field to null, in argument order.
template <typename... Views>
void removeAndRelease(Views&... fields)
{
    ((fields.removeFromSuperview(), fields = nullptr), ...);
}

} // namespace qoro
