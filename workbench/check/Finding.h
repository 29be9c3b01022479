#pragma once

#include "workbench/check/TextPlace.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace qoro
{

/// How bad a finding is, from the least.
enum class Severity : std::uint8_t {
    /// Worth knowing; nothing is wrong.
    Note,
    /// Costs money, attention or patience.
    Warning,
    /// The ad fails its viewer or its owner.
    Error
};

/// "note", "warning" or "error".
std::string_view name_of(Severity severity);

/// Something that is wrong with an ad.
struct Finding {
    /// Stable identifier of the rule: "close-never".
    std::string_view rule;
    Severity severity = Severity::Warning;
    /// One sentence without a full stop.
    std::string sentence = {};
    /// The ad's file, or a tag's address.
    std::string file = {};
    /// JSON path in the file, or XPath in a tag's document; empty for the file as a whole.
    std::string path = {};
    /// Of the path; absent if the file has no such place, or is not read from here.
    std::optional<TextPlace> place = {};
    /// How to mend it; one sentence without a full stop.
    std::string cure = {};
    /// What it concerns, for example a control: two findings of one rule differ in it.
    std::string key = {};
    /// A scenario that shows it; empty for a fact that needs no session.
    std::string counterexample = {};
    /// When the counterexample shows it, in microseconds since its start; absent for a fact that needs no session.
    std::optional<std::int64_t> at = {};
};

} // namespace qoro
