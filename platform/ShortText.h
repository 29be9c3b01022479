#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace qoro
{

/// The number of bytes, at most `longest`, after which a text can be cut without splitting a UTF-8 character. In a text
/// that is not valid UTF-8, at most three bytes less than `longest`.
std::size_t whole_characters(std::string_view text, std::size_t longest);

/// Cuts a text that is longer than a number of bytes, at the end of a character, and marks the cut.
/// @param longest bytes, without the mark
/// @param mark appended to a text that is cut
std::string shortened(std::string_view text, std::size_t longest, std::string_view mark = "…");

} // namespace qoro
