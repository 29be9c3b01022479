#include "kit/Consent.h"

#include <algorithm>

namespace qoro
{

namespace
{

/// Base64 for addresses (RFC 4648, 5), in segments.
bool is_encoded(std::string_view text, std::string_view separators)
{
    return !text.empty() && std::ranges::all_of(text, [&](char c) {
        return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-' || c == '_' ||
               separators.find(c) != std::string_view::npos;
    });
}

Value value_of(const std::optional<std::string>& text)
{
    return text ? Value(NSString(*text)) : Value();
}

} // namespace

NSDictionary record_of(const ConsentStrings& consent)
{
    std::vector<Value> sections;
    for (const std::int64_t each : consent.gpp_sections)
        sections.emplace_back(each);
    return {
        {"tcf", value_of(consent.tcf)},
        {"gdprApplies", consent.gdpr_applies ? Value(*consent.gdpr_applies) : Value()},
        {"usPrivacy", value_of(consent.us_privacy)},
        {"gpp", value_of(consent.gpp)},
        {"gppSections", NSArray(std::move(sections))},
    };
}

bool is_tc_string(std::string_view text)
{
    // The version is the first six bits: C is 2.
    return is_encoded(text, ".") && text.front() == 'C';
}

bool is_us_privacy(std::string_view text)
{
    return text.size() == 4 && text.front() == '1' &&
           std::ranges::all_of(text.substr(1), [](char c) { return c == 'Y' || c == 'N' || c == '-'; });
}

bool is_gpp_string(std::string_view text)
{
    // The header's type is the first six bits: D is 3.
    return is_encoded(text, ".~") && text.front() == 'D';
}

} // namespace qoro
