#pragma once

#include "platform/Export.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace QORO_EXPORT_TO_DESKTOP qoro
{

/// The number of bytes after which a text can be cut without splitting a UTF-8 character: the text's size if that is at
/// most `longest`; otherwise `longest` or up to three less, also in a text that is not valid UTF-8.
std::size_t whole_characters(std::string_view text, std::size_t longest);

/// Cuts a text that is longer than a number of bytes at the end of a character (see whole_characters), and marks the
/// cut.
/// @param longest bytes, not counting the mark
/// @param mark appended to a text that is cut
std::string shortened(std::string_view text, std::size_t longest, std::string_view mark = "…");

} // namespace qoro
