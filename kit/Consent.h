#pragma once

#include "platform/Export.h"
#include "platform/Value.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace QORO_EXPORT qoro
{

/// The viewer's consent and privacy choices, as the host's consent manager has recorded them. The strings are passed on
/// as they are. Absent values are unknown.
struct ConsentStrings {
    /// TC string of the IAB Transparency and Consent Framework, version 2.
    std::optional<std::string> tcf = {};
    /// Whether the GDPR applies to the viewer.
    std::optional<bool> gdpr_applies = {};
    /// US privacy string of the IAB CCPA Compliance Framework, version 1: "1YNN".
    std::optional<std::string> us_privacy = {};
    /// String of the IAB Global Privacy Platform.
    std::optional<std::string> gpp = {};
    /// Identifiers of the GPP sections that apply to the viewer.
    std::vector<std::int64_t> gpp_sections = {};
    /// Whether all members are equal.
    friend bool operator==(const ConsentStrings&, const ConsentStrings&) = default;
};

/// The strings as pages receive them: {"tcf", "gdprApplies", "usPrivacy", "gpp", "gppSections"}. Unknown ones are null;
/// the sections are always a list.
NSDictionary record_of(const ConsentStrings& consent);

/// Whether a text has the form of a TC string, of a US privacy string, and of a GPP string. Their content is not read.
/// @{
bool is_tc_string(std::string_view text);
bool is_us_privacy(std::string_view text);
bool is_gpp_string(std::string_view text);
/// @}

} // namespace qoro
