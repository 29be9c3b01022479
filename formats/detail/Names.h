#pragma once

#include <span>
#include <string>
#include <string_view>

namespace qoro::detail
{

/// Suffix for an unknown-name error: "; did you mean \"iCloseBtnCountdown\"?". Empty when `known` is empty, or the name
/// is longer than 100 bytes.
std::string did_you_mean(std::string_view name, std::span<const std::string_view> known);

} // namespace qoro::detail
