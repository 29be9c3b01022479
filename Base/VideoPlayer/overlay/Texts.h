#pragma once

#include "platform/Value.h"

#include <cstdint>

namespace qoro
{

/// Remaining time as minutes and seconds, "01:05"; empty for a negative total. Not clamped at 0: a position 5 seconds
/// past the total gives "00:-5".
/// @param total seconds
/// @param played whole seconds
/// @param finished the video has ended; gives "00:00" whatever the position
NSString remainingTimeText(float total, std::int32_t played, bool finished);

/// Decodes a URL-encoded title: plus signs become blanks, percent escapes are decoded, blanks and tabs at both ends are
/// removed. Null for null, for a malformed escape and for bytes that are not UTF-8.
NSString decodedTitle(const NSString& encoded);

} // namespace qoro
