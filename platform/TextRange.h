#pragma once

#include "platform/Platform.h"
#include "platform/Value.h"

#include <cstddef>
#include <limits>
#include <string>
#include <string_view>

namespace qoro
{

inline constexpr std::size_t NSNotFound = std::numeric_limits<std::size_t>::max();

/// A range of a text, in bytes of UTF-8.
struct NSRange {
    /// NSNotFound when there is no match.
    std::size_t location = NSNotFound;
    std::size_t length = 0;
};

/// The first occurrence of a part; not found in a null text.
inline NSRange rangeOfString(const NSString& text, std::string_view part)
{
    const std::size_t location = text.text().find(part);
    return location == std::string::npos ? NSRange{} : NSRange{location, part.size()};
}

/// The text with a range replaced; null for null. Throws PlatformFault for a range outside the text.
inline NSString stringByReplacingCharactersInRange(const NSString& text, NSRange range, const NSString& withString)
{
    if (!text)
        return nullptr;
    if (range.location > text.length() || range.length > text.length() - range.location)
        throw PlatformFault{"replaceCharactersInRange:withString:", "Range or index out of bounds"};
    return std::string(text.text()).replace(range.location, range.length, withString.text());
}

} // namespace qoro
