#include "kit/WebText.h"

namespace qoro
{

namespace
{

bool is_letter_or_digit(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
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

NSString appstream_id_of(const NSURL& address)
{
    if (!address.parts().has_scheme("appstream"))
        return nullptr;
    std::string_view id = address.parts().after_scheme();
    if (id.starts_with("//"))
        id.remove_prefix(2);
    if (id.ends_with('/'))
        id.remove_suffix(1);
    return id.empty() ? NSString() : NSString(std::string(id));
}

std::string shown_address(const NSURL& address)
{
    const AddressParts& parts = address.parts();
    // A user name in front of the host may imitate another host.
    std::string_view shown = parts.from_host().value_or(parts.text());
    if (parts.path() == "/" && !parts.query() && !parts.fragment())
        shown.remove_suffix(1);
    return std::string(shown);
}

std::string shown_host(const NSURL& address)
{
    const auto& authority = address.parts().authority();
    if (!authority)
        return "";
    std::string shown(authority->host);
    if (authority->port)
        shown.append(":").append(*authority->port);
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
