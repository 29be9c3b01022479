#include "formats/Scenario.h"

#include "formats/AdFile.h"
#include "formats/InputError.h"
#include "tests/support/ScenarioRun.h"

#include <gtest/gtest.h>

namespace qoro
{
namespace
{

using test::complaint_about;

Scenario read(const std::string& keys)
{
    return read_scenario("{" + keys + R"( "ad": {}, "steps": []})", "scenario.json");
}

TEST(Scenario, AVideoOfAnAddressIsAsTheOthersButForWhatItSays)
{
    const Scenario scenario = read_scenario(R"({"video": {"duration": 8, "loadAfter": 1},
        "videos": {"http://m/b.mp4": {"duration": 4}}, "ad": {}, "steps": []})",
                                            "scenario.json");
    ASSERT_EQ(scenario.world.videos.size(), 1U);
    EXPECT_EQ(scenario.world.videos.at("http://m/b.mp4").duration, 4);
    EXPECT_EQ(scenario.world.videos.at("http://m/b.mp4").load_after, 1);
}

TEST(Scenario, HasDefaultsForEverythingButAdAndSteps)
{
    const Scenario scenario = read("");

    EXPECT_EQ(scenario.world.device.facts.screen, (CGSize{375, 812}));
    EXPECT_EQ(scenario.world.device.facts.current_screen, std::nullopt);
    EXPECT_EQ(scenario.world.device.orientation, 1);
    EXPECT_EQ(scenario.world.device.status_bar_orientation, 1);
    EXPECT_FALSE(scenario.world.device.status_bar_hidden);
    EXPECT_TRUE(scenario.world.device.facts.phone);
    EXPECT_TRUE(scenario.world.device.facts.ios8);
    EXPECT_EQ(scenario.world.device.output_volume, 0.6F);
    EXPECT_TRUE(scenario.world.device.volume_slider);
    EXPECT_EQ(scenario.world.device.can_open, (std::vector<std::string>{"http:", "https:", "tel:"}));
    EXPECT_TRUE(scenario.world.device.calendar);
    EXPECT_EQ(scenario.world.device.facts.can_send_text, true);
    EXPECT_EQ(scenario.world.device.facts.imei, NSString("356938035643809"));
    EXPECT_EQ(scenario.world.device.facts.display_name, NSString("Host App"));
    EXPECT_EQ(scenario.host.autorotates, std::vector<std::int64_t>{1});
    EXPECT_EQ(scenario.host.root_view, (CGSize{375, 812}));
    EXPECT_TRUE(scenario.host.key_window);
    EXPECT_FALSE(scenario.host.parent);
    EXPECT_FALSE(scenario.host.parent_window);
    EXPECT_FALSE(scenario.host.delegate);
    EXPECT_FALSE(scenario.host.interstitial_delegate);
    EXPECT_EQ(scenario.host.guid, NSString("g-1"));
    EXPECT_EQ(scenario.host.session, 1700000000.0);
    EXPECT_EQ(scenario.host.sequence, 7);
    EXPECT_EQ(scenario.host.script, NSString("kit://script.js"));
    EXPECT_EQ(scenario.host.store_page, "https://flathub.org/apps/{id}");
    EXPECT_FALSE(scenario.world.video.manual);
    EXPECT_EQ(scenario.world.video.duration, 30);
    EXPECT_EQ(scenario.world.video.load_after, 0.3);
    EXPECT_EQ(scenario.world.video.error, std::nullopt);
    EXPECT_EQ(scenario.world.video.error_for_good, std::nullopt);
}

TEST(Scenario, ReadsTheDevice)
{
    const DeviceSetup device =
        read(R"("device": {"screen": null, "currentScreen": [812, 375], "orientation": 3, "statusBarOrientation": 4,
                "statusBarHidden": true, "phone": false, "iOS8": false, "outputVolume": 0.1, "volumeSlider": false,
                "canOpen": ["sms:"], "canSendText": null, "calendar": false, "imei": null,
                "displayName": null},)")
            .world.device;

    EXPECT_EQ(device.facts.screen, std::nullopt);
    EXPECT_EQ(device.facts.current_screen, (CGSize{812, 375}));
    EXPECT_EQ(device.orientation, 3);
    EXPECT_EQ(device.status_bar_orientation, 4);
    EXPECT_TRUE(device.status_bar_hidden);
    EXPECT_FALSE(device.facts.phone);
    EXPECT_FALSE(device.facts.ios8);
    EXPECT_EQ(device.output_volume, 0.1F);
    EXPECT_FALSE(device.volume_slider);
    EXPECT_EQ(device.can_open, std::vector<std::string>{"sms:"});
    EXPECT_EQ(device.facts.can_send_text, std::nullopt);
    EXPECT_FALSE(device.calendar);
    EXPECT_EQ(device.facts.imei, NSString());
    EXPECT_EQ(device.facts.display_name, NSString());
}

TEST(Scenario, ReadsTheHost)
{
    const Scenario scenario =
        read(R"("host": {"autorotates": [3, 4], "rootView": null, "keyWindow": false, "parent": true,
                "parentWindow": true, "delegates": ["interstitialDelegate"],
                "flags": {"bIsLockOneSide": true, "bUseAutoRotate": true, "instSendImpPolicy": "PageFinished"},
                "guid": null, "session": 12.5, "sequence": 9, "script": "s.js",
                "cached": {"http://ad/v.mp4": "/cache/v.mp4"}},)");

    EXPECT_EQ(scenario.host.autorotates, (std::vector<std::int64_t>{3, 4}));
    EXPECT_EQ(scenario.host.root_view, std::nullopt);
    EXPECT_FALSE(scenario.host.key_window);
    EXPECT_TRUE(scenario.host.parent);
    EXPECT_TRUE(scenario.host.parent_window);
    EXPECT_FALSE(scenario.host.delegate);
    EXPECT_TRUE(scenario.host.interstitial_delegate);
    EXPECT_TRUE(scenario.host.lock_one_side);
    EXPECT_FALSE(scenario.host.lock_one_side_landscape);
    EXPECT_TRUE(scenario.host.use_auto_rotate);
    EXPECT_EQ(scenario.host.impression_policy, PageFinished);
    EXPECT_EQ(scenario.host.guid, NSString());
    EXPECT_EQ(scenario.host.session, 12.5);
    EXPECT_EQ(scenario.host.sequence, 9);
    EXPECT_EQ(scenario.world.cached.at("http://ad/v.mp4"), "/cache/v.mp4");
}

TEST(Scenario, ReadsTheHostsStoreAddress)
{
    EXPECT_EQ(read(R"("host": {"storePage": "http://store.example/?item={id}"},)").host.store_page,
              "http://store.example/?item={id}");
    EXPECT_EQ(complaint_about(R"({"host": {"storePage": "file:///{id}"}, "ad": {}, "steps": []})"),
              "scenario.json: /host/storePage: expected an address that begins with http:// or https://, with {id} in "
              "it, got \"file:///{id}\"");
    EXPECT_NE(complaint_about(R"({"host": {"storePage": "http://store.example/"}, "ad": {}, "steps": []})"), "");
    EXPECT_NE(complaint_about(R"({"host": {"storePage": 7}, "ad": {}, "steps": []})"), "");
    EXPECT_EQ(read(R"("host": {"storePage": null},)").host.store_page, "") << "no store pages";
}

TEST(Scenario, ReadsTheConsent)
{
    const HostSetup host = read(R"("host": {"consent": {"tcf": "CPXYZ", "gdprApplies": false, "usPrivacy": "1---",
        "gpp": "DBAA", "gppSections": [2, -1]}},)")
                               .host;
    EXPECT_EQ(
        host.consent,
        (ConsentStrings{
            .tcf = "CPXYZ", .gdpr_applies = false, .us_privacy = "1---", .gpp = "DBAA", .gpp_sections = {2, -1}}));
    EXPECT_EQ(read(R"("host": {"consent": {"tcf": null, "gdprApplies": null}},)").host.consent, ConsentStrings{});
    EXPECT_EQ(complaint_about(R"({"host": {"consent": {"usPrivacy": "yes"}}, "ad": {}, "steps": []})"),
              "scenario.json: /host/consent/usPrivacy: expected a US privacy string such as 1YNN, got \"yes\"");
    EXPECT_NE(complaint_about(R"({"host": {"consent": {"tcf": "B"}}, "ad": {}, "steps": []})"), "");
    EXPECT_NE(complaint_about(R"({"host": {"consent": {"gpp": ""}}, "ad": {}, "steps": []})"), "");
    EXPECT_NE(complaint_about(R"({"host": {"consent": {"ccpa": ""}}, "ad": {}, "steps": []})"), "");
}

TEST(Surroundings, NameHeadersAndCookiesOfOrigins)
{
    const Surroundings around = read_surroundings(
        R"({"host": {"origins": {"https://ads.example": {"headers": {"X-Partner": "7"}, "cookies": {"sid": "abc"}},
                                 "http://b.example:81": {}}}})",
        "host.json");
    ASSERT_EQ(around.origins.size(), 2U);
    EXPECT_EQ(around.origins[0].origin, "https://ads.example");
    EXPECT_EQ(around.origins[0].headers, (std::vector<std::pair<std::string, std::string>>{{"X-Partner", "7"}}));
    EXPECT_EQ(around.origins[0].cookies, (std::vector<std::pair<std::string, std::string>>{{"sid", "abc"}}));
    EXPECT_TRUE(around.origins[1].headers.empty());
    // A scenario may name them too; its network is simulated.
    EXPECT_EQ(complaint_about(R"({"host": {"origins": {"https://ads.example": {"headers": {"Host": "x"}}}},
                                  "ad": {}, "steps": []})"),
              "scenario.json: /host/origins/https:~1~1ads.example: the header \"Host\" belongs to the connection or is "
              "set by "
              "the library");
    EXPECT_NE(complaint_about(R"({"host": {"origins": {"ads.example": {}}}, "ad": {}, "steps": []})"), "");
}

TEST(Scenario, ReadsTheAnswersOfAddresses)
{
    const World world = read(R"("net": {"http://a": {"body": "text", "after": 0.25}, "http://b": {"fail": "gone"},
                                        "http://c": {"body64": "iVBORw0KGgoA/w=="}, "http://d": {}},)")
                            .world;

    EXPECT_EQ(world.net.at("http://a").body, "text");
    EXPECT_EQ(world.net.at("http://a").after, 0.25);
    EXPECT_FALSE(world.net.at("http://b").ok);
    EXPECT_EQ(world.net.at("http://b").error, "gone");
    EXPECT_EQ(world.net.at("http://c").body, std::string("\x89PNG\r\n\x1a\n\x00\xff", 10));
    EXPECT_TRUE(world.net.at("http://d").ok);
}

TEST(Scenario, ReadsTheVideoAndTheTexts)
{
    const World world = read(R"("video": {"mode": "auto", "duration": 12, "loadAfter": 2, "stalls": [[3, 1], [5, 0.5]],
                                          "error": 9, "errorForGood": 10.5}, "text": {"Buy": [80.3, 17.9]},)")
                            .world;

    EXPECT_FALSE(world.video.manual);
    EXPECT_EQ(world.video.duration, 12);
    EXPECT_EQ(world.video.load_after, 2);
    EXPECT_EQ(world.video.stalls.size(), 2U);
    EXPECT_EQ(world.video.stalls[1].lasts, 0.5);
    EXPECT_EQ(world.video.error, 9);
    EXPECT_EQ(world.video.error_for_good, 10.5);
    EXPECT_EQ(world.text.at("Buy"), (CGSize{80.3, 17.9}));
}

TEST(Scenario, ReadsTheAdWithNamesOfEnumeratorsAndOddValuesAsAbsent)
{
    const Scenario scenario = read_scenario(
        R"({"ad": {"portraitVideoPos": "FULL", "landscapeModeType": 2, "strVideoUrl": 5, "iCloseBtnCountdown": "x"},
            "steps": []})",
        "scenario.json");

    EXPECT_EQ(scenario.ad->portraitVideoPos, FULL);
    EXPECT_EQ(scenario.ad->landscapeModeType, VIDEO_AND_WEBVIEW);
    EXPECT_FALSE(scenario.ad->strVideoUrl);
    EXPECT_EQ(scenario.ad->iCloseBtnCountdown, 0);
}

TEST(Scenario, GivesEachSessionACopyOfTheAdWithMappingsOfItsOwn)
{
    const Scenario scenario =
        read_scenario(R"({"ad": {"dicProgressTrackingUrls": {"1": ["u"]}}, "steps": []})", "scenario.json");

    copy_of(*scenario.ad)->dicProgressTrackingUrls.removeAllObjects();

    EXPECT_EQ(scenario.ad->dicProgressTrackingUrls.count(), 1U);
}

TEST(Scenario, ReadsSurroundingsAlone)
{
    const Surroundings around = read_surroundings(R"({"device": {"phone": false},
                              "host": {"parent": true, "cached": {"http://ad/v.mp4": "v.mp4"}}})",
                                                  "host.json");

    EXPECT_FALSE(around.device.facts.phone);
    EXPECT_TRUE(around.host.parent);
    EXPECT_EQ(around.cached.at("http://ad/v.mp4"), "v.mp4");
    EXPECT_THROW(read_surroundings(R"({"ad": {}})", "host.json"), InputError);
}

// ------------------------------------------------------------------------------------------------------------- errors

struct Unusable {
    const char* scenario;
    const char* complaint;
};

void PrintTo(const Unusable& unusable, std::ostream* out)
{
    *out << unusable.scenario;
}

struct UnusableScenario : testing::TestWithParam<Unusable> {
};

TEST_P(UnusableScenario, IsRefusedInOneLineThatNamesFilePathAndExpectation)
{
    const std::string complaint = complaint_about(GetParam().scenario);

    EXPECT_EQ(complaint, GetParam().complaint);
    EXPECT_EQ(complaint.find('\n'), std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(
    , UnusableScenario,
    testing::Values(
        Unusable{"{", "scenario.json: no JSON at line 1, column 2"},
        Unusable{"{\"ad\": {},\n \"steps\": nope}", "scenario.json: no JSON at line 2, column 12"},
        Unusable{R"({"ad": {}, "steps": [{"open": 1e999}]})", "scenario.json: a number is too large"},
        Unusable{"[]", "scenario.json: expected an object, got []"},
        Unusable{R"({"steps": []})", "scenario.json: expected an \"ad\""},
        Unusable{R"({"ad": {}})", "scenario.json: expected \"steps\""},
        Unusable{R"({"ad": {}, "steps": [], "devcie": {}})",
                 "scenario.json: /devcie: unknown key; did you mean \"device\"?"},
        Unusable{R"({"ad": {"strVideoUlr": ""}, "steps": []})",
                 "scenario.json: /ad/strVideoUlr: no property of an ad; did you mean \"strVideoUrl\"?"},
        Unusable{R"({"ad": {}, "steps": [], "device": {"screen": [1]}})",
                 "scenario.json: /device/screen: expected [width, height] or null, got [1]"},
        Unusable{R"({"ad": {}, "steps": [], "device": {"orientation": 1.5}})",
                 "scenario.json: /device/orientation: expected a device orientation, got 1.5"},
        Unusable{R"({"ad": {}, "steps": [], "host": {"delegates": ["other"]}})",
                 "scenario.json: /host/delegates/0: expected \"qoroDelegate\" or \"interstitialDelegate\", got "
                 "\"other\""},
        Unusable{R"({"ad": {}, "steps": [], "host": {"flags": {"bIsLockOneSide": 1}}})",
                 "scenario.json: /host/flags/bIsLockOneSide: expected true or false, got 1"},
        Unusable{R"({"ad": {}, "steps": [], "net": {"http://a/b": {"body": "", "fail": ""}}})",
                 "scenario.json: /net/http:~1~1a~1b: expected at most one of \"body\", \"body64\" and \"fail\", got "
                 R"({"body":"","fail":""})"},
        Unusable{R"({"ad": {}, "steps": [], "net": {"a": {"body64": "@@@="}}})",
                 "scenario.json: /net/a/body64: expected bytes in base64, got \"@@@=\""},
        Unusable{R"({"ad": {}, "steps": [], "net": {"a": {"after": -1}}})",
                 "scenario.json: /net/a/after: expected a number of seconds from 0 to 1000000000, got -1"},
        Unusable{R"({"ad": {}, "steps": [], "video": {"mode": "fast"}})",
                 "scenario.json: /video/mode: expected \"manual\" or \"auto\", got \"fast\""},
        Unusable{R"({"ad": {}, "steps": [], "video": {"duration": 0}})",
                 "scenario.json: /video/duration: expected a number of seconds from 0.000001, got 0"},
        Unusable{R"({"ad": {}, "steps": [], "video": {"stalls": [[1]]}})",
                 "scenario.json: /video/stalls/0: expected [at, for], got [1]"}));

TEST(Scenario, RefusesTooDeepNestingBeforeReadingIt)
{
    std::string deep = R"({"ad": {"arrayButtonsInfo": )";
    deep += std::string(100'000, '[') + std::string(100'000, ']') + "}, \"steps\": []}";

    EXPECT_EQ(complaint_about(deep), "scenario.json: lists and objects stand more than 64 deep");
}

} // namespace
} // namespace qoro
