#pragma once

#include "workbench/BaseScenario.h"
#include "workbench/check/Finding.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace qoro
{

class CheckedSession;

/// What a rule has found in an ad or a session.
struct Suspicion {
    /// One sentence without a full stop.
    std::string sentence;
    /// JSON path in the ad, or XPath; empty for the ad as a whole.
    std::string path = {};
    /// What it concerns, for example a control: suspicions of one rule with equal keys are one finding.
    std::string key = {};
    /// When the session shows it, in microseconds since its start; absent for a fact that needs no session.
    std::optional<std::int64_t> at = {};
};

/// A rule for ads.
struct Rule {
    /// Stable, in kebab case.
    std::string_view id;
    Severity severity;
    /// What is wrong, in a few words.
    std::string_view title;
    /// Why it matters; a sentence.
    std::string_view why;
    /// How to mend it; a sentence.
    std::string_view cure;
    /// Examines the ad's own text. Null for a rule about sessions.
    std::vector<Suspicion> (*of_ad)(const BaseScenario& ad) = nullptr;
    /// Examines a session; depends on nothing but the session. Null for a rule about texts.
    std::vector<Suspicion> (*of_session)(const CheckedSession& session) = nullptr;
    /// Whether it is about the layout: a fault that every layout of the ad has on a device is no finding, because it is
    /// the controller's.
    bool about_layout = false;
};

/// What looks like a fault but is how a sound ad works, and is therefore no finding.
struct Exemption {
    /// Stable, in kebab case.
    std::string_view id;
    /// A sentence without a full stop.
    std::string_view what;
};

/// All exemptions.
std::span<const Exemption> exemptions();

/// All rules; the worst first.
std::span<const Rule> rules();

/// Null if there is no such rule.
const Rule* rule_named(std::string_view id);

} // namespace qoro
