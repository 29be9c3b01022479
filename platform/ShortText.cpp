#include "platform/ShortText.h"

namespace qoro
{

std::size_t whole_characters(std::string_view text, std::size_t longest)
{
    if (text.size() <= longest)
        return text.size();
    constexpr std::size_t LongestCharacter = 4;
    const auto continues = [text](std::size_t at) { return (static_cast<unsigned char>(text[at]) & 0xC0U) == 0x80U; };
    for (std::size_t back = 0; back < LongestCharacter && back <= longest; ++back)
        if (!continues(longest - back))
            return longest - back;
    return longest;
}

std::string shortened(std::string_view text, std::size_t longest, std::string_view mark)
{
    std::string beginning(text.substr(0, whole_characters(text, longest)));
    return beginning.size() < text.size() ? beginning.append(mark) : beginning;
}

} // namespace qoro
