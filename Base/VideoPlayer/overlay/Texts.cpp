#include "Base/VideoPlayer/overlay/Texts.h"

#include "platform/Numbers.h"

#include <algorithm>
#include <string>

namespace qoro
{

namespace
{

/// A number as "%02d" formats it: the sign counts towards the width.
std::string twoPlaces(std::int32_t number)
{
    const std::string digits = std::to_string(number);
    return digits.size() < 2 ? "0" + digits : digits;
}

} // namespace

NSString remainingTimeText(float total, std::int32_t played, bool finished)
{
    if (total < 0)
        return "";
    const std::int32_t left = finished ? 0 : truncated(total - static_cast<float>(played));
    const std::int32_t minutes = left / 60;
    return twoPlaces(minutes) + ":" + twoPlaces(left - 60 * minutes);
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
