#pragma once

#include "platform/Export.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace QORO_EXPORT qoro
{

/// The parts of an authority: [ user "@" ] host [ ":" port ] (RFC 3986, section 3.2).
struct AuthorityParts {
    /// @param authority outlives the result. Its user ends at the last "@" (WHATWG URL Standard), so that no part of a
    ///        user passes for the host.
    static AuthorityParts of(std::string_view authority);

    /// User information without the "@"; absent without one.
    std::optional<std::string_view> user;
    /// As written: escapes and letter case are kept, an IP literal keeps its brackets. May be empty.
    std::string_view host;
    /// Without the colon, may be empty; absent without a colon. A valid port is decimal.
    std::optional<std::string_view> port;
};

/// The parts of an address (RFC 3986, section 3 and appendix B). Every text has parts; they are neither validated nor
/// decoded, and a text without a scheme is a relative reference.
///
/// A view: the text must outlive it and its copies. Any thread may use it.
class AddressParts
{
public:
    /// The parts of the empty text.
    AddressParts() = default;
    /// The parts of a text.
    explicit AddressParts(std::string_view text);

    /// The whole address.
    std::string_view text() const { return text_; }
    /// In lower case, without the colon; empty for a relative reference.
    std::string scheme() const;
    /// Whether the address has a scheme, in any letter case.
    /// @param scheme in lower case, without the colon; empty: whether the address is a relative reference
    bool has_scheme(std::string_view scheme) const;
    /// The text after the scheme and its colon; the whole text of a relative reference.
    std::string_view after_scheme() const { return text_.substr(scheme_.empty() ? 0 : scheme_.size() + 1); }
    /// Absent unless "//" follows the scheme, or begins a relative reference.
    const std::optional<AuthorityParts>& authority() const { return authority_; }
    /// Empty without an authority.
    std::string_view host() const { return authority_ ? authority_->host : std::string_view(); }
    /// The port's number; absent if it is missing, empty or no number up to 65535.
    std::optional<std::uint16_t> port() const;
    /// The text from the host to the end, without the user; absent without an authority.
    std::optional<std::string_view> from_host() const;
    /// May be empty.
    std::string_view path() const { return path_; }
    /// Without the "?"; absent without one.
    const std::optional<std::string_view>& query() const { return query_; }
    /// Without the "#"; absent without one.
    const std::optional<std::string_view>& fragment() const { return fragment_; }
    /// The text before the fragment, which identifies the document.
    std::string_view without_fragment() const;

    /// Whether the address begins with http:// or https://, in any letter case.
    bool is_web() const;
    /// Whether the address has neither scheme nor authority, so that it names no server ("clip.mp4", "/t?x", "?x").
    bool names_no_server() const { return scheme_.empty() && !authority_; }

private:
    std::string_view text_;
    std::string_view scheme_;
    std::optional<AuthorityParts> authority_;
    std::string_view path_;
    std::optional<std::string_view> query_;
    std::optional<std::string_view> fragment_;
};

} // namespace qoro
