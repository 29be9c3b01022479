#include "tests/workbench/CheckedAds.h"
#include "workbench/check/Rules.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

// What a sound ad does, and a check must not report.

namespace qoro::test
{
namespace
{

/// The id of the exemption, and a patch of the sound scenario in which it happens.
const std::map<std::string, std::string, std::less<>>& cases()
{
    static const std::map<std::string, std::string, std::less<>> all{
        {"timers-outlive-close", R"({"ad": {"iBufferingSufferTime": 14}})"},
        {"quartiles-on-replay",
         R"({"steps": [{"open": 0}, {"at": 13, "tap": "btnReplay"}, {"at": 40, "device": {}}]})"},
        {"heartbeats", R"({"ad": {"dicTrackingUrls": null, "strVideoTrackingUrl": "http://t/beat"}})"},
        {"controls-of-44-points", R"({"ad": {"bShowHideVideoBtn": true}, "steps": [
            {"at": 0, "device": {"orientation": 3, "statusBarOrientation": 3}}, {"open": 0}, {"at": 14, "device": {}}]})"},
        {"volume-restored", R"({"steps": [{"open": 0}, {"at": 2, "tap": "btnMute"}, {"at": 6, "tap": "btnClose"},
            {"at": 9, "device": {}}]})"},
        {"one-second-late", R"({"video": {"duration": 30.6}, "ad": {"bIsAutoStart": true}})"},
        {"paused-countdown", R"({"ad": {"iBufferingSufferTime": -1}, "steps": [{"open": 0},
            {"at": 2, "tap": "btnPlayAndPause"}, {"at": 60, "tap": "btnPlayAndPause"}, {"at": 80, "device": {}}]})"},
        {"away-from-the-ad", R"({"ad": {"iCloseBtnCountdown": 8, "iBufferingSufferTime": 12}, "steps": [{"open": 0},
            {"at": 2, "app": "background"}, {"at": 60, "app": "foreground"}, {"at": 60, "app": "active"},
            {"at": 80, "device": {}}]})"},
        {"in-a-call", R"({"ad": {"strWebViewUrl": null}, "steps": [{"open": 0}, {"at": 2, "interrupt": 1},
            {"at": 8, "interrupt": 0}, {"at": 9, "device": {}}]})"},
        {"sideways-without-landscape", R"({"ad": {"landscapeModeType": 0}})"},
        {"layout-of-every-ad", "{}"},
    };
    return all;
}

} // namespace

TEST(CheckExemptions, AreNoFindings)
{
    for (const auto& [id, patch] : cases()) {
        // A stall without a limit for buffering is a fault of its own.
        auto findings = found_in(base_of(changed(patch)), Severity::Warning);
        if (id == "paused-countdown")
            std::erase_if(findings, [](const Finding& each) {
                return each.sentence.find("no more of the video arrives") != std::string::npos;
            });
        EXPECT_TRUE(findings.empty()) << id << ":\n" << text_of(findings);
    }
}

TEST(CheckExemptions, AllAreTested)
{
    for (const Exemption& each : exemptions())
        EXPECT_TRUE(cases().contains(each.id)) << each.id;
    EXPECT_EQ(exemptions().size(), cases().size());
}

} // namespace qoro::test
