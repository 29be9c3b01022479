#pragma once

#include <span>
#include <string>
#include <string_view>

namespace qoro::detail
{

/// The end of a complaint about a name that nobody knows: "; did you mean \"iCloseBtnCountdown\"?". Empty when nothing
/// is known, or when the name is too long to be one.
std::string did_you_mean(std::string_view name, std::span<const std::string_view> known);

} // namespace qoro::detail
