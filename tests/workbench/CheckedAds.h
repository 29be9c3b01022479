#pragma once

#include "workbench/BaseScenario.h"
#include "workbench/check/Check.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

// Ads for the tests of `qoro-ad check`.

namespace qoro::test
{

using Json = nlohmann::ordered_json;

/// A scenario with a sound ad: a video of 12 seconds above a page, in both arrangements.
inline Json sound_scenario()
{
    return Json::parse(R"({
        "video": {"duration": 12},
        "net": {"http://m/p.html": {"body": "<head><script src=\"mraid.js\"></script></head>"}},
        "host": {"parent": true},
        "ad": {"strVideoUrl": "http://m/v.mp4", "strWebViewUrl": "http://m/p.html", "fVideoWidth": 16,
               "fVideoHeight": 9, "portraitModeType": 2, "landscapeModeType": 2, "portraitVideoPos": 1,
               "strBackgroundColor": "4278190080", "bIsAutoStart": true, "iCloseBtnCountdown": 3,
               "iBufferingSufferTime": 8,
               "dicTrackingUrls": {"start": ["http://t/start"], "firstQuartile": ["http://t/first"],
                                   "midpoint": ["http://t/mid"], "thirdQuartile": ["http://t/third"],
                                   "complete": ["http://t/complete"]},
               "arrayCloseTrackingUrls": ["http://t/close?at={CurrentTime}"]},
        "steps": [{"open": 0}, {"at": 14, "tap": "btnClose"}, {"at": 15, "release": true}, {"at": 40, "device": {}}]})");
}

/// The sound scenario with some of its parts replaced (RFC 7386: a merge patch).
inline Json changed(const std::string& patch)
{
    Json scenario = sound_scenario();
    scenario.merge_patch(Json::parse(patch));
    return scenario;
}

inline BaseScenario base_of(const Json& scenario)
{
    const bool tag = scenario["ad"].contains("vast");
    return {.kind = tag ? InputKind::Tag : InputKind::Scenario,
            .file = "ad.json",
            .text = scenario.dump(),
            .scenario = ScenarioText(scenario.dump())};
}

/// What a check finds, from a severity on.
inline std::vector<Finding> found_in(const BaseScenario& base, Severity from = Severity::Note,
                                     const CheckOptions& options = {})
{
    std::vector<Finding> findings = check_ad(base, options).findings;
    std::erase_if(findings, [&](const Finding& each) { return each.severity < from; });
    return findings;
}

/// The rules and sentences of findings, for messages of failed tests.
inline std::string text_of(const std::vector<Finding>& findings)
{
    std::string text;
    for (const Finding& each : findings)
        text += std::string(each.rule) + ": " + each.path + ": " + each.sentence + '\n';
    return text;
}

/// The first finding of a rule; null without one.
inline const Finding* of_rule(const std::vector<Finding>& findings, std::string_view rule)
{
    const auto found = std::ranges::find(findings, rule, &Finding::rule);
    return found == findings.end() ? nullptr : &*found;
}

} // namespace qoro::test
