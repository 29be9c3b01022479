#include "vast/Model.h"

namespace qoro::vast
{

std::optional<double> Offset::seconds(const std::optional<double>& duration) const
{
    if (!percent)
        return value;
    if (!duration)
        return std::nullopt;
    return *duration * value / 100;
}

} // namespace qoro::vast
