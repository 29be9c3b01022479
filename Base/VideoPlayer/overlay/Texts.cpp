#include "Base/VideoPlayer/overlay/Texts.h"

#include "platform/Numbers.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <string>

namespace qoro
{

namespace
{

/// Appends a number as "%02d" formats it: the sign counts towards the width.
void appendTwoPlaces(std::string& text, std::int32_t number)
{
    if (number >= 0 && number < 100) {
        text += static_cast<char>('0' + number / 10);
        text += static_cast<char>('0' + number % 10);
        return;
    }
    std::array<char, 12> digits;
    const auto end = std::to_chars(digits.begin(), digits.end(), number).ptr;
    text.append(digits.begin(), end);
}

} // namespace

NSString remainingTimeText(float total, std::int32_t played, bool finished)
{
    if (total < 0)
        return "";
    const std::int32_t left = finished ? 0 : truncated(total - static_cast<float>(played));
    const std::int32_t minutes = left / 60;
    std::string text;
    appendTwoPlaces(text, minutes);
    text += ':';
    appendTwoPlaces(text, left - 60 * minutes);
    return text;
}

NSString decodedTitle(const NSString& encoded)
{
    if (!encoded)
        return nullptr;
    std::string text = encoded.text();
    std::ranges::replace(text, '+', ' ');
    const NSString decoded = stringByReplacingPercentEscapes(text);
    if (!decoded)
        return nullptr;
    constexpr const char* blanks = " \t";
    const std::size_t first = decoded.text().find_first_not_of(blanks);
    if (first == std::string::npos)
        return "";
    const std::size_t last = decoded.text().find_last_not_of(blanks);
    return decoded.text().substr(first, last - first + 1);
}

} // namespace qoro
