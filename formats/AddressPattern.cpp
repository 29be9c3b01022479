#include "formats/AddressPattern.h"

namespace qoro
{

namespace
{

/// Position after a macro of VAST that begins at a position; npos when none does.
std::size_t end_of_macro(std::string_view text, std::size_t at)
{
    const std::size_t end = text.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ", at + 1);
    const bool is_macro = text[at] == '[' && end != std::string_view::npos && end > at + 1 && text[end] == ']';
    return is_macro ? end + 1 : std::string_view::npos;
}

} // namespace

AddressPattern AddressPattern::of_tracker(std::string_view address)
{
    AddressPattern pattern;
    while (true) {
        const std::size_t begin = address.find('{');
        const std::size_t end = begin == std::string_view::npos ? begin : address.find('}', begin);
        if (end == std::string_view::npos)
            break;
        pattern.texts_.back() = address.substr(0, begin);
        pattern.texts_.emplace_back();
        address.remove_prefix(end + 1);
    }
    pattern.texts_.back() = address;
    return pattern;
}

AddressPattern AddressPattern::of_document(std::string_view address)
{
    AddressPattern pattern;
    for (std::size_t at = 0; at < address.size();)
        if (const std::size_t end = end_of_macro(address, at); end != std::string_view::npos) {
            pattern.texts_.emplace_back();
            at = end;
        } else {
            pattern.texts_.back() += address[at++];
        }
    return pattern;
}

bool AddressPattern::matches(std::string_view address) const
{
    if (!has_macros())
        return address == texts_.front();
    if (!address.starts_with(texts_.front()))
        return false;
    address.remove_prefix(texts_.front().size());
    for (std::size_t n = 1; n + 1 < texts_.size(); ++n) {
        const std::size_t at = address.find(texts_[n]);
        if (at == std::string_view::npos)
            return false;
        address.remove_prefix(at + texts_[n].size());
    }
    return address.ends_with(texts_.back());
}

std::size_t AddressPattern::length() const
{
    std::size_t length = 0;
    for (const std::string& text : texts_)
        length += text.size();
    return length;
}

} // namespace qoro
