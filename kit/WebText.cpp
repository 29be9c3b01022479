#include "kit/WebText.h"

#include <algorithm>

namespace qoro
{

namespace
{

bool is_letter_or_digit(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

char lower(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

} // namespace

std::string percent_encoded(std::string_view text)
{
    constexpr std::string_view Unreserved = "-._~";
    constexpr std::string_view Digits = "0123456789ABCDEF";
    std::string encoded;
    for (const char c : text) {
        if (is_letter_or_digit(c) || Unreserved.find(c) != std::string_view::npos) {
            encoded += c;
            continue;
        }
        const auto byte = static_cast<unsigned char>(c);
        encoded += '%';
        encoded += Digits[byte >> 4U];
        encoded += Digits[byte & 0xFU];
    }
    return encoded;
}

std::string scheme_of(const NSURL& address)
{
    const std::string& text = address.absoluteString().text();
    std::string scheme = text.substr(0, std::min(text.find(':'), text.size()));
    std::ranges::transform(scheme, scheme.begin(), lower);
    return scheme;
}

NSString appstream_id_of(const NSURL& address)
{
    if (scheme_of(address) != "appstream")
        return nullptr;
    std::string_view id = address.absoluteString().text();
    id.remove_prefix(id.find(':') + 1);
    if (id.starts_with("//"))
        id.remove_prefix(2);
    if (id.ends_with('/'))
        id.remove_suffix(1);
    return id.empty() ? NSString() : NSString(std::string(id));
}

std::string shown_address(const NSURL& address)
{
    std::string shown = address.absoluteString().text();
    if (const std::size_t scheme = shown.find("://"); scheme != std::string::npos)
        shown.erase(0, scheme + 3);
    const std::size_t host_end = std::min(shown.find_first_of("/?#"), shown.size());
    // A user name in front of the host may imitate another host.
    if (const std::size_t user = shown.substr(0, host_end).rfind('@'); user != std::string::npos)
        shown.erase(0, user + 1);
    if (shown.ends_with('/') && shown.find('/') == shown.size() - 1)
        shown.pop_back();
    return shown;
}

NSURL message_address(const NSString& number, const NSString& body)
{
    constexpr std::string_view Telephone = "tel:";
    std::string_view to = number.text();
    if (to.starts_with(Telephone))
        to.remove_prefix(Telephone.size());
    std::string address = "sms:" + std::string(to);
    if (body)
        address += "?body=" + percent_encoded(body.text());
    return NSURL::URLWithString(address);
}

} // namespace qoro
