#pragma once

#include "platform/Value.h"

#include <cstdint>

namespace qoro
{

/// Minutes and seconds left of a video: "01:05"; the empty text for a negative total. A position beyond the total is
/// not held at 0: 5 seconds beyond it are "00:-5".
/// @param total seconds
/// @param played whole seconds
/// @param finished the video has ended: nothing is left, whatever the position
NSString remainingTimeText(float total, std::int32_t played, bool finished);

/// A title that arrived URL-encoded: plus signs are blanks, escapes are decoded, blanks and tabs at both ends go. Null
/// for null, for a malformed escape and for what is no UTF-8.
NSString decodedTitle(const NSString& encoded);

} // namespace qoro
