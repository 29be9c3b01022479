#include "vast/Macros.h"
#include "vast/MacroTable.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>

namespace qoro::vast
{

namespace
{

constexpr std::string_view Unknown = "-1";
constexpr std::string_view Withheld = "-2";

bool applies(Where where, AddressKind kind)
{
    switch (where) {
    case Where::Everywhere:
        return true;
    case Where::Documents:
        return kind == AddressKind::Document;
    case Where::Trackers:
        return kind != AddressKind::Document;
    case Where::Clicks:
        return kind == AddressKind::ClickTracking;
    case Where::Errors:
        return kind == AddressKind::Error;
    case Where::NotVerified:
        return kind == AddressKind::VerificationNotExecuted;
    }
    return false;
}

/// A macro in an address, or null.
struct Found {
    const Macro* macro = nullptr;
    /// Position after it.
    std::size_t end = 0;
};

/// @param name position after the opening bracket
/// @param escaped whether that bracket is escaped; the closing one is then too
Found macro_at(std::string_view address, std::size_t name, bool escaped)
{
    std::size_t end = name;
    while (end < address.size() && is_macro_character(address[end]))
        ++end;
    const std::string_view rest = address.substr(end);
    const bool closed = escaped ? rest.size() >= 3 && rest.starts_with("%5") && (rest[2] == 'D' || rest[2] == 'd')
                                : rest.starts_with(']');
    if (!closed)
        return {};
    return {find_macro(address.substr(name, end - name)), end + (escaped ? 3 : 1)};
}

void append_value(const Macro& macro, Expansion& expansion)
{
    const MacroValues& values = expansion.values;
    const bool applicable = applies(macro.where, values.request.kind);
    if (applicable && macro.of_viewer && !viewer_may_be_identified(values.regulation))
        expansion.out += Withheld;
    else if (!applicable || !macro.append(expansion))
        expansion.out += Unknown;
}

} // namespace

bool viewer_may_be_identified(const MacroValues::Regulation& regulation)
{
    const auto is_present = [](const std::optional<std::string>& value) { return value && !value->empty(); };
    const std::string_view us_privacy = regulation.us_privacy ? *regulation.us_privacy : std::string_view();
    const bool sale_refused = us_privacy.size() > 2 && (us_privacy[2] == 'Y' || us_privacy[2] == 'y');
    if (regulation.limit_ad_tracking.value_or(false) || regulation.coppa.value_or(false) || sale_refused)
        return false;

    constexpr int EuropeanSection = 2;
    const auto& sections = regulation.gpp_section_ids;
    const bool european = sections && std::find(sections->begin(), sections->end(), EuropeanSection) != sections->end();
    const bool has_tcf = is_present(regulation.tcf_string);
    const bool has_gpp = is_present(regulation.gpp_string);
    if (european || regulation.gdpr.value_or(false))
        return has_tcf || (european && has_gpp);
    return regulation.gdpr || has_tcf || has_gpp || is_present(regulation.us_privacy);
}

std::string make_transaction_id(const std::function<std::uint32_t()>& random)
{
    constexpr std::uint32_t Version = 0x4000;
    constexpr std::uint32_t Variant = 0x80000000;
    const std::uint32_t first = random();
    const std::uint32_t second = (random() & 0xFFFF0FFF) | Version;
    const std::uint32_t third = (random() & 0x3FFFFFFF) | Variant;
    const std::uint32_t fourth = random();
    std::array<char, 37> text;
    std::snprintf(text.data(), text.size(), "%08x-%04x-%04x-%04x-%04x%08x", first, second >> 16, second & 0xFFFF,
                  third >> 16, third & 0xFFFF, fourth);
    return text.data();
}

std::string expand(std::string_view address, const MacroValues& values)
{
    std::string out;
    expand(address, values, out);
    return out;
}

void expand(std::string_view address, const MacroValues& values, std::string& out)
{
    // Room for a few values, which are mostly longer than their names.
    constexpr std::size_t Room = 128;
    out.reserve(out.size() + address.size() + Room);
    Expansion expansion{out, values};
    std::size_t copied = 0;
    std::size_t bracket = address.find('[');
    std::size_t percent = address.find('%');
    while (bracket != address.npos || percent != address.npos) {
        const bool escaped = percent < bracket;
        const std::size_t at = std::min(bracket, percent);
        std::size_t next = at + 1;
        const bool opens = !escaped || (address.size() - at > 2 && address[at + 1] == '5' &&
                                        (address[at + 2] == 'B' || address[at + 2] == 'b'));
        if (opens) {
            if (const Found found = macro_at(address, at + (escaped ? 3 : 1), escaped); found.macro) {
                out.append(address, copied, at - copied);
                append_value(*found.macro, expansion);
                copied = next = found.end;
            }
        }
        if (bracket < next)
            bracket = address.find('[', next);
        if (percent < next)
            percent = address.find('%', next);
    }
    out.append(address, copied);
}

} // namespace qoro::vast
