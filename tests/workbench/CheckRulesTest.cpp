#include "tests/workbench/CheckedAds.h"
#include "workbench/SessionRecord.h"
#include "workbench/check/Rules.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <ostream>
#include <set>

// Each rule: an ad that has the fault, a twin that lacks it, and the counterexample, which is replayed.

namespace qoro::test
{
namespace
{

using Shows = std::function<bool(const SessionRecord&)>;

struct Case {
    std::string rule;
    /// Patches of the sound scenario.
    /// @{
    std::string fault;
    std::string twin;
    /// @}
    /// Path of the finding.
    std::string path;
    /// Whether a replayed session shows the fault; null for a rule about the ad's text.
    Shows shows;
};

void PrintTo(const Case& each, std::ostream* out)
{
    *out << each.rule << " at " << each.path;
}

bool ever(const SessionRecord& record, const std::function<bool(const Sight&)>& seen)
{
    return std::ranges::any_of(record.sights, seen);
}

std::size_t lines_with(const SessionRecord& record, std::string_view text)
{
    return static_cast<std::size_t>(std::ranges::count_if(
        record.lines, [&](const RecordedLine& line) { return line.json.find(text) != std::string::npos; }));
}

const SeenControl* control(const Sight& sight, std::string_view name)
{
    const auto found = std::ranges::find(sight.controls, name, &SeenControl::name);
    return found == sight.controls.end() ? nullptr : &*found;
}

/// Whether a session has a line or a change of what the viewer sees at a moment.
bool something_happens_at(std::int64_t moment, const SessionRecord& record)
{
    return std::ranges::find(record.lines, moment, &RecordedLine::at) != record.lines.end() ||
           std::ranges::find(record.sights, moment, &Sight::at) != record.sights.end();
}

bool is_never_closable(const SessionRecord& record)
{
    return record.summary.opened && record.end - *record.summary.opened >= 60'000'000 &&
           !ever(record, [](const Sight& sight) { return sight.close; });
}

/// A page without a call that closes the ad, with a script.
std::string page_with(const std::string& script)
{
    const Json page = "<head><script src=\"mraid.js\"></script></head><script>" + script + "</script>";
    return R"({"net": {"http://m/p.html": {"body": )" + page.dump() + "}}}";
}

/// An ad of such a page alone.
std::string without_video(const std::string& script)
{
    Json patch = Json::parse(page_with(script));
    patch["ad"]["strVideoUrl"] = "";
    return patch.dump();
}

std::string with_video_of(double seconds, const std::string& script)
{
    Json patch = Json::parse(page_with(script));
    patch["video"]["duration"] = seconds;
    return patch.dump();
}

std::string vast_with(const std::string& in_line)
{
    const std::string document = R"(<VAST version="4.2"><Ad id="1">)" + in_line + "</Ad></VAST>";
    return R"({"ad": null, "net": {"http://ads/tag": {"body": )" + Json(document).dump() + "}}}";
}

std::string in_line(const std::string& extra)
{
    return "<InLine><AdSystem>s</AdSystem><AdTitle>t</AdTitle><AdServingId>i</AdServingId>"
           "<Impression>http://t/i</Impression>" +
           extra +
           "<Creatives><Creative><Linear><Duration>00:00:12</Duration><MediaFiles><MediaFile delivery=\"progressive\" "
           "type=\"video/mp4\" width=\"640\" height=\"360\">http://m/v.mp4</MediaFile></MediaFiles></Linear>"
           "</Creative></Creatives></InLine>";
}

Json scenario_of(const std::string& patch)
{
    Json scenario = changed(patch);
    if (!scenario.contains("ad")) // a merge patch removes what is null
        scenario["ad"] = {{"vast", "http://ads/tag"}};
    return scenario;
}

const std::string Buy = R"({"btn_text": "Buy", "data": {"u": "https://shop.example/"}})";

const std::vector<Case>& cases()
{
    static const std::vector<Case> all{
        {"close-never", R"({"ad": {"bIsEndedCloseBtn": true, "iCloseBtnCountdown": 0, "iBufferingSufferTime": -1}})",
         R"({"ad": {"bIsEndedCloseBtn": true, "iCloseBtnCountdown": 0}})", "/ad/bIsEndedCloseBtn", is_never_closable},
        {"close-never", page_with("mraid.useCustomClose(true)"),
         page_with("mraid.useCustomClose(true); x.onclick = () => mraid.close()"), "",
         [](const SessionRecord& record) {
             return record.summary.opened && record.end >= 60'000'000 &&
                    lines_with(record, "MRAIDUseCustomClose") > 0 && !record.sights.back().close &&
                    record.sights.back().open;
         }},
        {"close-never", R"({"ad": {"portraitVideoPos": 3}})", R"({"ad": {"portraitVideoPos": 5}})", "",
         is_never_closable},
        {"close-late", R"({"video": {"duration": 40}, "ad": {"iCloseBtnCountdown": 30, "iBufferingSufferTime": 40}})",
         R"({"video": {"duration": 40}})", "/ad/iCloseBtnCountdown",
         [](const SessionRecord& record) {
             const auto first = std::ranges::find_if(record.sights, &Sight::close);
             return first != record.sights.end() && first->at - *record.summary.opened > 15'000'000;
         }},
        {"close-ignored", page_with("qoroPlayer.addEventListener('onclick_closebtn', () => ask())"),
         page_with("qoroPlayer.addEventListener('onclick_closebtn', () => mraid.close())"), "/ad/strWebViewUrl",
         [](const SessionRecord& record) {
             return lines_with(record, R"("tap":"btnClose")") >= 3 && record.sights.back().open;
         }},
        {"address-malformed", R"({"ad": {"arrayCloseTrackingUrls": ["http://:80/close"]}})", "{}",
         "/ad/arrayCloseTrackingUrls/0", nullptr},
        {"tag-without-ad", vast_with("<InLine/>"), vast_with(in_line("")), "",
         [](const SessionRecord& record) { return lines_with(record, R"("what":"vast","do":"noAd")") > 0; }},
        {"tag-ignored", vast_with(in_line("<Survey>http://t/survey</Survey>")), vast_with(in_line("")),
         "/VAST/Ad/InLine/Survey",
         [](const SessionRecord& record) { return lines_with(record, R"("do":"ignored","element":"Survey")") > 0; }},
        {"button-leads-nowhere", R"({"ad": {"arrayButtonsInfo": [{"btn_text": "Buy", "data": {}}]}})",
         R"({"ad": {"arrayButtonsInfo": [)" + Buy + "]}}", "/ad/arrayButtonsInfo/0",
         [](const SessionRecord& record) {
             return lines_with(record, R"("tap":"btnActionOne")") > 0 && lines_with(record, "openURL") == 0;
         }},
        {"button-not-shown",
         R"({"ad": {"arrayButtonsInfo": [{"btn_text": "Call", "action": "place_call", "data": {"tel": "030 1"}}]}})",
         R"({"ad": {"arrayButtonsInfo": [{"btn_text": "Call", "action": "place_call", "data": {"tel": "tel:0301"}}]}})",
         "/ad/arrayButtonsInfo",
         [](const SessionRecord& record) {
             return !ever(record, [](const Sight& sight) { return control(sight, "btnActionOne"); });
         }},
        {"page-without-library", R"({"net": {"http://m/p.html": {"body": "<body><script src='mraid.js'></script>"}}})",
         "{}", "/ad/strWebViewUrl", nullptr},
        {"empty-screen",
         R"({"net": {"http://m/p.html": {"body": "<body><script src='mraid.js'></script>"}},
             "ad": {"portraitVideoPos": 6, "bIsHideFullPortraitVideoAtEnd": true}})",
         R"({"ad": {"portraitVideoPos": 6, "bIsHideFullPortraitVideoAtEnd": true}})", "/ad/strVideoUrl",
         [](const SessionRecord& record) {
             for (std::size_t i = 0; i < record.sights.size(); ++i) {
                 const Sight& sight = record.sights[i];
                 const std::int64_t until = i + 1 < record.sights.size() ? record.sights[i + 1].at : record.end;
                 if (sight.open && !sight.video && !sight.page && until - sight.at > 1'000'000)
                     return true;
             }
             return false;
         }},
        {"tracker-never-sent",
         R"({"ad": {"dicTrackingUrls": null, "dicProgressTrackingUrls": {"3": ["http://t/three"]}}})",
         R"({"ad": {"dicProgressTrackingUrls": {"3": ["http://t/three"]}}})", "/ad/dicProgressTrackingUrls/3/0",
         [](const SessionRecord& record) {
             return lines_with(record, "video_ended") > 0 && lines_with(record, "http://t/three") == 0;
         }},
        {"macro-unreplaced", R"({"ad": {"dicTrackingUrls": {"start": ["http://t/start?r=[CACHEBUSTING]"]}}})",
         R"({"ad": {"dicTrackingUrls": {"start": ["http://t/start?r={Zulix-Seq}&list[0]=1"]}}})",
         "/ad/dicTrackingUrls/start/0",
         [](const SessionRecord& record) { return lines_with(record, "[CACHEBUSTING]") > 0; }},
        {"control-off-screen", R"({"ad": {"portraitVideoPos": 6}})", "{}", "/ad/portraitVideoPos",
         [](const SessionRecord& record) {
             return ever(record, [](const Sight& sight) {
                 const SeenControl* mute = control(sight, "btnMute");
                 return mute && mute->frame.y + mute->frame.height > 812;
             });
         }},
        {"control-covered", R"({"ad": {"portraitVideoPos": 3}})", R"({"ad": {"portraitVideoPos": 5}})",
         "/ad/portraitVideoPos",
         [](const SessionRecord& record) {
             return ever(record, [](const Sight& sight) {
                 const SeenControl* close = control(sight, "btnClose");
                 return close && !close->touchable;
             });
         }},
        {"control-in-unsafe-area", R"({"ad": {"portraitVideoPos": 2}})", "{}", "/ad/portraitVideoPos",
         [](const SessionRecord& record) {
             return ever(record, [](const Sight& sight) {
                 const SeenControl* mute = control(sight, "btnMute");
                 return mute && mute->frame.y + mute->frame.height > 896 - 34;
             });
         }},
        {"title-cut-off",
         R"({"ad": {"arrayButtonsInfo": [{"btn_text": "A title that is long", "data": {"u": "https://s.example/"}}]},
             "text": {"A title that is long": [400, 20]}})",
         R"({"ad": {"arrayButtonsInfo": [{"btn_text": "A title that is long", "data": {"u": "https://s.example/"}}]},
             "text": {"A title that is long": [250, 20]}})",
         "/ad/arrayButtonsInfo/0/btn_text",
         [](const SessionRecord& record) {
             return ever(record, [](const Sight& sight) {
                 const SeenControl* button = control(sight, "btnActionOne");
                 // The screen shows less of the button than the title needs.
                 return button && button->visible && button->visible->width < 399;
             });
         }},
        {"tracker-sent-twice", R"({"ad": {"dicProgressTrackingUrls": {"0": ["http://t/start"]}}})",
         R"({"ad": {"dicProgressTrackingUrls": {"0": ["http://t/zero"]}}})", "/ad/dicProgressTrackingUrls/0/0",
         [](const SessionRecord& record) { return lines_with(record, R"("url":"http://t/start")") >= 2; }},
        {"tracker-late", R"({"video": {"duration": 2.5}})", R"({"video": {"duration": 4}})",
         "/ad/dicTrackingUrls/start/0",
         [](const SessionRecord& record) {
             return std::ranges::any_of(record.lines, [](const RecordedLine& line) {
                 return line.json.find("http://t/start") != std::string::npos && line.position.value_or(0) > 2.5 / 4;
             });
         }},
        {"null-in-address",
         R"({"host": {"guid": null}, "ad": {"dicTrackingUrls": {"start": ["http://t/start?g={Zulix-Guid}"]}}})",
         R"({"ad": {"dicTrackingUrls": {"start": ["http://t/start?g={Zulix-Guid}"]}}})", "/ad/dicTrackingUrls/start/0",
         [](const SessionRecord& record) { return lines_with(record, "(null)") > 0; }},
        {"address-not-encoded", R"({"ad": {"dicTrackingUrls": {"start": ["http://t/start?name=big lamp"]}}})",
         R"({"ad": {"dicTrackingUrls": {"start": ["http://t/start?name=big%20lamp"]}}})", "/ad/dicTrackingUrls/start/0",
         [](const SessionRecord& record) { return lines_with(record, "big lamp") > 0; }},
        {"http-beside-https", R"({"ad": {"strVideoUrl": "https://m/v.mp4"}})", "{}", "/ad/strWebViewUrl", nullptr},
        {"page-listens-in-vain", page_with("qoroPlayer.addEventListener('video_finished', f)"),
         page_with("qoroPlayer.addEventListener('video_ended', f)"), "/ad/strWebViewUrl", nullptr},
        {"page-listens-in-vain", page_with("mraid.addEventListener('resize', f)"),
         page_with("mraid.addEventListener('sizeChange', f)"), "/ad/strWebViewUrl", nullptr},
        {"event-never-sent", without_video("qoroPlayer.addEventListener('video_ended', f)"),
         page_with("qoroPlayer.addEventListener('video_ended', f)"), "/ad/strWebViewUrl",
         [](const SessionRecord& record) {
             return record.summary.opened && record.end - *record.summary.opened >= 15'000'000 &&
                    lines_with(record, R"("event":"video_ended")") == 0;
         }},
        {"event-never-sent", without_video("qoroPlayer.addEventListener('video_pause', f)"),
         page_with("qoroPlayer.addEventListener('video_pause', f)"), "/ad/strWebViewUrl",
         [](const SessionRecord& record) {
             return record.summary.opened && lines_with(record, R"("event":"video_pause")") == 0;
         }},
        {"event-never-sent", with_video_of(0.5, "qoroPlayer.addEventListener('video_timeupdate', f)"),
         page_with("qoroPlayer.addEventListener('video_timeupdate', f)"), "/ad/strWebViewUrl",
         [](const SessionRecord& record) {
             return lines_with(record, R"("event":"video_ended")") > 0 &&
                    lines_with(record, R"("event":"video_timeupdate")") == 0;
         }},
        {"unknown-key", R"({"ad": {"dicTrackingUrls": {"firstquartile": ["http://t/f"]}}})", "{}",
         "/ad/dicTrackingUrls/firstquartile", nullptr},
        {"setting-without-effect", R"({"ad": {"strVideoTrackingUrl": "http://t/beat"}})",
         R"({"ad": {"strVideoTrackingUrl": "http://t/beat", "dicTrackingUrls": null}})", "/ad/strVideoTrackingUrl",
         nullptr},
        {"main-thread-blocked", R"({"ad": {"strBrandIconUrl": "http://m/icon.png"}})", "{}", "/ad/strBrandIconUrl",
         [](const SessionRecord& record) { return record.summary.blocked > 100'000; }},
    };
    return all;
}

/// The scenario without keys that are null, because a test of an absent guid needs one.
Json with_null_guid(Json scenario, const std::string& patch)
{
    if (patch.find(R"("guid": null)") != std::string::npos)
        scenario["host"]["guid"] = nullptr;
    return scenario;
}

/// Only rules about the layout need every device.
CheckOptions options_for(const std::string& rule)
{
    return {.devices = rule_named(rule)->about_layout};
}

class CheckRules : public testing::TestWithParam<Case>
{
};

} // namespace

TEST_P(CheckRules, AnAdWithTheFaultHasTheFindingAndItsCounterexampleShowsIt)
{
    const Case& each = GetParam();
    const auto findings =
        found_in(base_of(with_null_guid(scenario_of(each.fault), each.fault)), Severity::Note, options_for(each.rule));
    const Finding* finding = of_rule(findings, each.rule);
    ASSERT_NE(finding, nullptr) << text_of(findings);
    EXPECT_EQ(finding->path, each.path);
    EXPECT_EQ(finding->severity, rule_named(each.rule)->severity);
    EXPECT_FALSE(finding->cure.empty());
    EXPECT_EQ(finding->counterexample.empty(), each.shows == nullptr);
    EXPECT_EQ(finding->at.has_value(), each.shows != nullptr);
    if (each.shows) {
        const SessionRecord replayed = record_session(ScenarioText(finding->counterexample).scenario());
        EXPECT_TRUE(each.shows(replayed)) << finding->sentence << '\n' << finding->counterexample;
        EXPECT_TRUE(something_happens_at(*finding->at, replayed)) << *finding->at << '\n' << finding->counterexample;
    }
}

TEST_P(CheckRules, ATwinWithoutTheFaultHasNoSuchFinding)
{
    const Case& each = GetParam();
    const auto findings = found_in(base_of(scenario_of(each.twin)), Severity::Note, options_for(each.rule));
    EXPECT_EQ(of_rule(findings, each.rule), nullptr) << text_of(findings);
}

INSTANTIATE_TEST_SUITE_P(Faults, CheckRules, testing::ValuesIn(cases()), [](const auto& tested) {
    std::string name = tested.param.rule + "_" + std::to_string(tested.index);
    std::ranges::replace(name, '-', '_');
    return name;
});

TEST(Check, ASoundAdHasNoFindings)
{
    const auto findings = found_in(base_of(sound_scenario()));
    EXPECT_TRUE(findings.empty()) << text_of(findings);
}

TEST(Check, AnEventThatThePageItselfMayCauseIsNotInVain)
{
    const std::string script = "qoroPlayer.addEventListener('video_ended', f); qoroPlayer.playNextVideo({v_u: next})";
    const auto findings = found_in(base_of(scenario_of(without_video(script))));
    EXPECT_EQ(of_rule(findings, "event-never-sent"), nullptr) << text_of(findings);
}

TEST(Check, EveryEventOfThePlayerIsHeardInASoundAd)
{
    std::string script;
    for (const char* event :
         {"video_loading", "video_loaded", "video_play", "video_pause", "video_ended", "video_timeupdate",
          "video_volumechange", "video_orientation", "video_visibilitychange", "onhide", "controlschange"})
        script += "qoroPlayer.addEventListener('" + std::string(event) + "', f);";
    const auto findings = found_in(base_of(scenario_of(page_with(script))));
    EXPECT_TRUE(findings.empty()) << text_of(findings);
}

TEST(Check, ASoundTagHasNoFindings)
{
    const auto findings = found_in(base_of(scenario_of(vast_with(in_line("")))));
    EXPECT_TRUE(findings.empty()) << text_of(findings);
}

TEST(Check, FilesAndVideosAreJudgedByWhatTheAdsFolderHas)
{
    BaseScenario base = base_of(sound_scenario());
    base.missing_files = {{"/strWebViewUrl", "no such file: pag.html"}};
    base.video = VideoFacts{.duration = 12, .size = {4, 3}};
    auto findings = found_in(base);
    ASSERT_NE(of_rule(findings, "missing-file"), nullptr);
    EXPECT_EQ(of_rule(findings, "missing-file")->path, "/ad/strWebViewUrl");
    ASSERT_NE(of_rule(findings, "video-proportions"), nullptr);
    EXPECT_EQ(of_rule(findings, "video-unreadable"), nullptr);

    base.missing_files.clear();
    base.video = VideoFacts{.duration = 12, .size = {1600, 900}};
    EXPECT_TRUE(found_in(base).empty()) << text_of(found_in(base));

    base.video.reset();
    base.video_is_unreadable = true;
    findings = found_in(base);
    ASSERT_NE(of_rule(findings, "video-unreadable"), nullptr);
}

TEST(Check, ATitleHasToFitIntoItsButton)
{
    const auto base = [](int width) {
        Json scenario = changed(R"({"ad": {"arrayButtonsInfo": [)" + Buy + "]}}");
        scenario["text"]["Buy"] = {width, 20};
        return base_of(scenario);
    };
    // A text is measured for at most 296 points, and the button has 10 points more.
    EXPECT_EQ(of_rule(found_in(base(300)), "title-cut-off"), nullptr) << text_of(found_in(base(300)));
    const auto findings = found_in(base(330));
    const Finding* cut = of_rule(findings, "title-cut-off");
    ASSERT_NE(cut, nullptr) << text_of(findings);
    EXPECT_THAT(cut->sentence, testing::HasSubstr("306 of its 330 points are visible on"));
    const SessionRecord replayed = record_session(ScenarioText(cut->counterexample).scenario());
    EXPECT_TRUE(ever(replayed, [](const Sight& sight) {
        const SeenControl* button = control(sight, "btnActionOne");
        return button && std::max(button->frame.width, button->frame.height) < 330;
    }));
}

TEST(Check, ABrandTextHasToFitIntoItsLabel)
{
    const auto base = [](int width) {
        Json scenario = changed(R"({"ad": {"strBrandText": "Lamps and more"}})");
        scenario["text"]["Lamps and more"] = {width, 24};
        return base_of(scenario);
    };
    EXPECT_EQ(of_rule(found_in(base(296)), "title-cut-off"), nullptr) << text_of(found_in(base(296)));
    const auto findings = found_in(base(350));
    const Finding* cut = of_rule(findings, "title-cut-off");
    ASSERT_NE(cut, nullptr) << text_of(findings);
    EXPECT_EQ(cut->path, "/ad/strBrandText");
    EXPECT_THAT(cut->sentence, testing::HasSubstr("296 of its 350 points"));
    const SessionRecord replayed = record_session(ScenarioText(cut->counterexample).scenario());
    EXPECT_TRUE(ever(replayed, [](const Sight& sight) {
        const SeenControl* brand = control(sight, "labelBrandText");
        return brand && std::max(brand->frame.width, brand->frame.height) < 350;
    }));
}

TEST(Check, ATagsMediaFilesAreJudgedByWhatIsBesideTheTag)
{
    const std::string linear = "/VAST/Ad/InLine/Creatives/Creative/Linear";
    const TagDocuments::MediaFile said{.address = "http://m/v.mp4",
                                       .width = 640,
                                       .height = 360,
                                       .bitrate = 800,
                                       .duration = 12,
                                       .path = linear + "/MediaFiles/MediaFile"};
    const auto found = [](const TagDocuments::MediaFile& media_file, const VideoFacts& real) {
        BaseScenario tag = base_of(scenario_of(vast_with(in_line(""))));
        tag.media_files = {{media_file, real}};
        return text_of(found_in(tag, Severity::Warning));
    };
    const std::string rule = "media-file-contradicted: ";
    const std::string file = rule + linear + "/MediaFiles/MediaFile: ";
    // Within two pixels, a quarter of the bitrate and a second.
    EXPECT_EQ(found(said, {.duration = 12.9, .size = {640, 362}, .bitrate = 990}), "");
    EXPECT_EQ(found(said, {.duration = 12, .size = {640, 480}, .bitrate = 800}),
              file + "the tag says 640 x 360 pixels, but the file has 640 x 480\n");
    EXPECT_EQ(found(said, {.duration = 12, .size = {640, 360}, .bitrate = 2400}),
              file + "the tag says 800 kbit/s, but the file has 2400\n");
    EXPECT_EQ(found(said, {.duration = 12, .size = {640, 360}, .bitrate = 200}),
              file + "the tag says 800 kbit/s, but the file has 200\n");
    EXPECT_EQ(found(said, {.duration = 30, .size = {640, 360}, .bitrate = 800}),
              rule + linear + "/Duration: the tag says a duration of 12 s, but the file has 30 s\n");
    // What the tag or the file does not give contradicts nothing.
    EXPECT_EQ(found(said, {}), "");
    EXPECT_EQ(found({.address = said.address, .path = said.path}, {.duration = 3, .size = {9, 9}, .bitrate = 1}), "");
    // A range has only an upper end.
    TagDocuments::MediaFile range{.address = said.address, .max_bitrate = 800, .path = said.path};
    EXPECT_EQ(found(range, {.duration = 12, .size = {640, 360}, .bitrate = 200}), "");
    EXPECT_NE(found(range, {.duration = 12, .size = {640, 360}, .bitrate = 2400}), "");
}

TEST(Check, EveryRuleIsTested)
{
    std::set<std::string_view> tested{"missing-file", "video-proportions", "video-unreadable",
                                      "media-file-contradicted"};
    for (const Case& each : cases())
        tested.insert(each.rule);
    for (const Rule& rule : rules())
        EXPECT_TRUE(tested.contains(rule.id)) << rule.id;
}

TEST(Check, TheWorstFindingComesFirst)
{
    const auto findings = found_in(base_of(changed(
        R"({"ad": {"strVideoTrackingUrl": "http://t/beat", "portraitVideoPos": 3, "strBrandIconUrl": "http://m/i.png"}})")));
    ASSERT_GT(findings.size(), 2U);
    EXPECT_TRUE(std::ranges::is_sorted(findings, std::ranges::greater(), &Finding::severity)) << text_of(findings);
}

TEST(Check, TheMomentOfAFindingIsThatOfItsCounterexample)
{
    const auto findings = found_in(base_of(changed(R"({"ad": {"bIsEndedCloseBtn": true, "iBufferingSufferTime": -1,
            "dicTrackingUrls": {"midpoint": ["http://t/mid?r=[CACHEBUSTING]"]}}})")),
                                   Severity::Error, {.devices = false});
    const Finding* never = of_rule(findings, "close-never");
    const Finding* macro = of_rule(findings, "macro-unreplaced");
    ASSERT_TRUE(never && macro) << text_of(findings);
    // The viewer waits from the opening on.
    EXPECT_EQ(never->at, record_session(ScenarioText(never->counterexample).scenario()).summary.opened);
    // Half of the video's 12 seconds; the position is checked once a second.
    EXPECT_GE(macro->at, 6'000'000);
    EXPECT_LE(macro->at, 7'500'000);
}

TEST(Check, OnlyFindingsThatASessionShowsHaveAMomentInIt)
{
    const BaseScenario base =
        base_of(changed(R"({"ad": {"bIsEndedCloseBtn": true, "iBufferingSufferTime": -1, "bCanRotate": true,
            "dicTrackingUrls": {"midpoint": ["http://t/mid?r=[CACHEBUSTING]"]}}})"));
    const auto findings = found_in(base, Severity::Note, {.devices = false});
    const auto moments = moments_in({.when = "", .scenario = base.scenario}, findings);
    ASSERT_EQ(moments.size(), findings.size());
    for (std::size_t i = 0; i < findings.size(); ++i)
        // The video stalls only in courses of the check, and a setting needs no session.
        EXPECT_EQ(moments[i].has_value(), findings[i].rule == "macro-unreplaced") << findings[i].rule;
}

TEST(Check, TheGuardShowsWhatAViewerGets)
{
    const BaseScenario trap =
        base_of(changed(R"({"ad": {"bIsEndedCloseBtn": true, "iCloseBtnCountdown": 0, "iBufferingSufferTime": -1}})"));
    EXPECT_NE(of_rule(found_in(trap), "close-never"), nullptr);
    const auto guarded = found_in(trap, Severity::Note, {.guard = true, .devices = false});
    EXPECT_EQ(of_rule(guarded, "close-never"), nullptr) << text_of(guarded);
}

TEST(Check, TheSecondsOfThePolicyDecideWhatIsLate)
{
    const BaseScenario base = base_of(changed(R"({"ad": {"iCloseBtnCountdown": 10, "iBufferingSufferTime": 9}})"));
    EXPECT_EQ(of_rule(found_in(base), "close-late"), nullptr);
    EXPECT_NE(of_rule(found_in(base, Severity::Note, {.policy_seconds = 5, .devices = false}), "close-late"), nullptr);
}

} // namespace qoro::test
