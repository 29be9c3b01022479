#include "platform/AddressParts.h"

#include <algorithm>
#include <charconv>

namespace qoro
{

namespace
{

bool is_letter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

char lower(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

/// The length of the scheme (RFC 3986, section 3.1) without its colon; 0 without a scheme.
std::size_t scheme_length(std::string_view text)
{
    const auto may_follow = [](char c) {
        return is_letter(c) || (c >= '0' && c <= '9') || c == '+' || c == '-' || c == '.';
    };
    if (text.empty() || !is_letter(text.front()))
        return 0;
    const auto end = static_cast<std::size_t>(std::ranges::find_if_not(text, may_follow) - text.begin());
    return end < text.size() && text[end] == ':' ? end : 0;
}

/// Removes from a text the part before the first of some characters, and returns that part. Two or three comparisons
/// are faster than find_first_of(), which searches the set for each character.
template <char... Ends>
std::string_view take_until(std::string_view& text)
{
    const auto end = std::ranges::find_if(text, [](char c) { return ((c == Ends) || ...); });
    const std::string_view part = text.substr(0, static_cast<std::size_t>(end - text.begin()));
    text.remove_prefix(part.size());
    return part;
}

} // namespace

AuthorityParts AuthorityParts::of(std::string_view authority)
{
    AuthorityParts parts;
    if (const std::size_t at = authority.rfind('@'); at != std::string_view::npos) {
        parts.user = authority.substr(0, at);
        authority.remove_prefix(at + 1);
    }
    const bool literal = authority.starts_with('[');
    const std::size_t end = std::min(authority.find(literal ? ']' : ':'), authority.size());
    parts.host = authority.substr(0, literal ? end + 1 : end);
    authority.remove_prefix(parts.host.size());
    if (authority.starts_with(':'))
        parts.port = authority.substr(1);
    return parts;
}

AddressParts::AddressParts(std::string_view text) : text_(text), scheme_(text.substr(0, scheme_length(text)))
{
    std::string_view rest = after_scheme();
    if (rest.starts_with("//")) {
        rest.remove_prefix(2);
        authority_ = AuthorityParts::of(take_until<'/', '?', '#'>(rest));
    }
    path_ = take_until<'?', '#'>(rest);
    if (rest.starts_with('?'))
        query_ = take_until<'#'>(rest).substr(1);
    if (rest.starts_with('#'))
        fragment_ = rest.substr(1);
}

std::string AddressParts::scheme() const
{
    std::string scheme(scheme_);
    std::ranges::transform(scheme, scheme.begin(), lower);
    return scheme;
}

bool AddressParts::has_scheme(std::string_view scheme) const
{
    return std::ranges::equal(scheme_, scheme, {}, lower);
}

std::optional<std::uint16_t> AddressParts::port() const
{
    if (!authority_ || !authority_->port)
        return std::nullopt;
    const std::string_view digits = *authority_->port;
    std::uint16_t number = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (error != std::errc() || end != digits.data() + digits.size())
        return std::nullopt;
    return number;
}

std::optional<std::string_view> AddressParts::from_host() const
{
    if (!authority_)
        return std::nullopt;
    return text_.substr(static_cast<std::size_t>(authority_->host.data() - text_.data()));
}

std::string_view AddressParts::without_fragment() const
{
    return text_.substr(0, fragment_ ? text_.size() - fragment_->size() - 1 : text_.size());
}

bool AddressParts::is_web() const
{
    return authority_ && (has_scheme("http") || has_scheme("https"));
}

} // namespace qoro
