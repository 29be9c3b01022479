#include "formats/AdFile.h"
#include "formats/AdAddresses.h"
#include "formats/InputError.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <type_traits>
#include <vector>

using namespace qoro;

namespace
{
std::shared_ptr<QoroVideoAd> strict(const std::string& text)
{
    return read_ad(text, "ad.json", AdTypes::Strict);
}

std::shared_ptr<QoroVideoAd> lenient(const std::string& text)
{
    return read_ad(text, "ad.json", AdTypes::Lenient);
}

/// The error for a text; empty if it is valid.
std::string complaint(const std::string& text)
{
    try {
        strict(text);
    } catch (const InputError& error) {
        return error.what();
    }
    return "";
}

std::string playable_complaint(const std::string& text)
{
    try {
        require_playable(*strict(text), "ad.json");
    } catch (const InputError& error) {
        return error.what();
    }
    return "";
}
} // namespace

TEST(AdFileTest, PropertiesHaveTheirOwnNames)
{
    const auto ad =
        strict(R"({"strVideoUrl": "v.mp4", "fVideoWidth": 1280, "iCloseBtnCountdown": 5, "bIsAutoStart": true,
        "portraitVideoPos": "TOP", "portraitModeType": 2, "closeBtnSize": "BIG", "launchOrientation": 3,
        "arrayCloseTrackingUrls": ["a", "c"], "dicTrackingUrls": {"start": ["s"]},
        "arrayButtonsInfo": [{"btn_text": "Go"}], "arrayPrePauseLocations": [5, 10]})");
    EXPECT_EQ(ad->strVideoUrl, "v.mp4");
    EXPECT_EQ(ad->fVideoWidth, 1280);
    EXPECT_EQ(ad->iCloseBtnCountdown, 5);
    EXPECT_TRUE(ad->bIsAutoStart);
    EXPECT_EQ(ad->portraitVideoPos, TOP);
    EXPECT_EQ(ad->portraitModeType, VIDEO_AND_WEBVIEW);
    EXPECT_EQ(ad->closeBtnSize, BIG);
    EXPECT_EQ(ad->launchOrientation, UIDeviceOrientationLandscapeLeft);
    EXPECT_EQ(ad->arrayCloseTrackingUrls[1].string(), "c");
    EXPECT_EQ(ad->dicTrackingUrls["start"].array()[0].string(), "s");
    EXPECT_EQ(ad->arrayButtonsInfo[0].dictionary()["btn_text"].string(), "Go");
    EXPECT_EQ(ad->arrayPrePauseLocations[1].intValue(), 10);
}

namespace
{
template <typename T>
struct Property {
    const char* name;
    T QoroVideoAd::*member;
};

/// Checks that each property takes a written value and is zero or null without one.
template <typename T>
void expect_read(const std::string& written, const T& value, const std::vector<Property<T>>& properties)
{
    const auto empty = strict("{}");
    for (const auto& [name, member] : properties) {
        const auto ad = strict("{\"" + std::string(name) + "\": " + written + "}");
        if constexpr (std::is_enum_v<T>) {
            EXPECT_EQ(*ad.*member, value) << name;
            EXPECT_EQ(*empty.*member, T{}) << name;
        } else {
            EXPECT_EQ(Value(*ad.*member), Value(value)) << name;
            EXPECT_EQ(Value(*empty.*member), Value(T{})) << name;
        }
    }
}
} // namespace

TEST(AdFileTest, EveryPropertyIsReadInItsTypeAndZeroOrNullWhenLeftOut)
{
    expect_read<VideoAdType>(R"("VIDEO_EX")", VIDEO_EX, {{"adType", &QoroVideoAd::adType}});
    expect_read<ViewPosition>(R"("LEFT")", LEFT,
                              {{"portraitVideoPos", &QoroVideoAd::portraitVideoPos},
                               {"portraitWebviewPos", &QoroVideoAd::portraitWebviewPos},
                               {"landScapeWebviewPos", &QoroVideoAd::landScapeWebviewPos}});
    expect_read<VideoAdMode>(
        R"("VIDEO_AND_WEBVIEW")", VIDEO_AND_WEBVIEW,
        {{"portraitModeType", &QoroVideoAd::portraitModeType}, {"landscapeModeType", &QoroVideoAd::landscapeModeType}});
    expect_read<CloseButtonSize>(R"("BIG")", BIG, {{"closeBtnSize", &QoroVideoAd::closeBtnSize}});
    expect_read<UIDeviceOrientation>("4", UIDeviceOrientationLandscapeRight,
                                     {{"launchOrientation", &QoroVideoAd::launchOrientation}});
    expect_read<std::int32_t>("-7", -7,
                              {{"iCloseBtnCountdown", &QoroVideoAd::iCloseBtnCountdown},
                               {"iBufferingSufferTime", &QoroVideoAd::iBufferingSufferTime},
                               {"iShowProgressWheel", &QoroVideoAd::iShowProgressWheel}});
    expect_read<float>("0.1", 0.1F,
                       {{"fTrackingInterval", &QoroVideoAd::fTrackingInterval},
                        {"fPortraitWebViewHeightPercent", &QoroVideoAd::fPortraitWebViewHeightPercent},
                        {"fPortraitLogoHeightPercent", &QoroVideoAd::fPortraitLogoHeightPercent},
                        {"fLandscapeWebViewSizePercent", &QoroVideoAd::fLandscapeWebViewSizePercent},
                        {"fVideoWidth", &QoroVideoAd::fVideoWidth},
                        {"fVideoHeight", &QoroVideoAd::fVideoHeight}});
    expect_read<bool>("true", true,
                      {{"bLandscapeVideoFullScreen", &QoroVideoAd::bLandscapeVideoFullScreen},
                       {"bCanRotate", &QoroVideoAd::bCanRotate},
                       {"bIsInApp", &QoroVideoAd::bIsInApp},
                       {"bIsDefaultVideoMode", &QoroVideoAd::bIsDefaultVideoMode},
                       {"bHasStatusbar", &QoroVideoAd::bHasStatusbar},
                       {"bIsAutoClose", &QoroVideoAd::bIsAutoClose},
                       {"bIsEndedCloseBtn", &QoroVideoAd::bIsEndedCloseBtn},
                       {"bIsDefaultMute", &QoroVideoAd::bIsDefaultMute},
                       {"bShowReplayBtn", &QoroVideoAd::bShowReplayBtn},
                       {"bNeedCloseParent", &QoroVideoAd::bNeedCloseParent},
                       {"bIsHideFullPortraitVideoAtEnd", &QoroVideoAd::bIsHideFullPortraitVideoAtEnd},
                       {"bIsHideLandscapeVideoAtEnd", &QoroVideoAd::bIsHideLandscapeVideoAtEnd},
                       {"bIsHideActionButton", &QoroVideoAd::bIsHideActionButton},
                       {"bShowHideVideoBtn", &QoroVideoAd::bShowHideVideoBtn},
                       {"bIsWebViewInFront", &QoroVideoAd::bIsWebViewInFront},
                       {"bIsAutoReplay", &QoroVideoAd::bIsAutoReplay},
                       {"bIsAutoStart", &QoroVideoAd::bIsAutoStart},
                       {"bIsUseVideoCache", &QoroVideoAd::bIsUseVideoCache}});
    expect_read<NSString>(R"("text")", "text",
                          {{"strMIUrl", &QoroVideoAd::strMIUrl},
                           {"strStoreId", &QoroVideoAd::strStoreId},
                           {"strVideoUrl", &QoroVideoAd::strVideoUrl},
                           {"strWebViewUrl", &QoroVideoAd::strWebViewUrl},
                           {"strCampaignId", &QoroVideoAd::strCampaignId},
                           {"strProviderId", &QoroVideoAd::strProviderId},
                           {"strAdProviderId", &QoroVideoAd::strAdProviderId},
                           {"strLogoWebViewUrl", &QoroVideoAd::strLogoWebViewUrl},
                           {"strVideoTrackingUrl", &QoroVideoAd::strVideoTrackingUrl},
                           {"strCountdownText", &QoroVideoAd::strCountdownText},
                           {"strBackgroundColor", &QoroVideoAd::strBackgroundColor},
                           {"strBrandIconUrl", &QoroVideoAd::strBrandIconUrl},
                           {"strBrandText", &QoroVideoAd::strBrandText}});
    expect_read<NSArray>(R"([{"key": "text"}])", NSArray{NSDictionary{{"key", "text"}}},
                         {{"arrayButtonsInfo", &QoroVideoAd::arrayButtonsInfo}});
    expect_read<NSArray>(R"(["text"])", NSArray::of_strings({"text"}),
                         {{"arrayReplayTrackingUrls", &QoroVideoAd::arrayReplayTrackingUrls},
                          {"arrayResumeTrackingUrls", &QoroVideoAd::arrayResumeTrackingUrls},
                          {"arrayPauseTrackingUrls", &QoroVideoAd::arrayPauseTrackingUrls},
                          {"arrayMuteTrackingUrls", &QoroVideoAd::arrayMuteTrackingUrls},
                          {"arrayUnmuteTrackingUrls", &QoroVideoAd::arrayUnmuteTrackingUrls},
                          {"arrayCloseTrackingUrls", &QoroVideoAd::arrayCloseTrackingUrls}});
    expect_read<NSArray>("[5]", NSArray{5}, {{"arrayPrePauseLocations", &QoroVideoAd::arrayPrePauseLocations}});
    expect_read<NSDictionary>(R"({"key": ["text"]})", NSDictionary{{"key", NSArray::of_strings({"text"})}},
                              {{"dicTrackingUrls", &QoroVideoAd::dicTrackingUrls}});
    expect_read<NSMutableDictionary>(R"({"5": ["text"]})", NSMutableDictionary{{"5", NSArray::of_strings({"text"})}},
                                     {{"dicProgressTrackingUrls", &QoroVideoAd::dicProgressTrackingUrls}});
}

TEST(AdFileTest, AMissingOrNullPropertyIsAbsent)
{
    const auto ad = strict(R"({"strVideoUrl": null, "arrayCloseTrackingUrls": []})");
    EXPECT_FALSE(ad->strVideoUrl);
    EXPECT_FALSE(ad->strWebViewUrl);
    EXPECT_EQ(ad->iCloseBtnCountdown, 0);
    EXPECT_FALSE(ad->arrayReplayTrackingUrls);
    EXPECT_TRUE(ad->arrayCloseTrackingUrls);
}

TEST(AdFileTest, AnUnknownPropertyIsRefusedWithTheNearestName)
{
    EXPECT_EQ(complaint(R"({"iCloseBtnCountDown": 5})"),
              R"(ad.json: /iCloseBtnCountDown: no property of an ad; did you mean "iCloseBtnCountdown"?)");
    EXPECT_EQ(complaint(R"({"videoUrl": "x"})"),
              R"(ad.json: /videoUrl: no property of an ad; did you mean "strVideoUrl"?)");
}

TEST(AdFileTest, AnUnknownPropertyIsRefusedEvenInLenientMode)
{
    EXPECT_THROW(lenient(R"({"bIsAutoStrat": true})"), InputError);
    EXPECT_THROW(lenient(R"({"portraitVideoPos": "TPO"})"), InputError);
}

TEST(AdFileTest, AWrongTypeIsRefusedWithItsPlaceAndTheExpectedType)
{
    EXPECT_EQ(complaint(R"({"iCloseBtnCountdown": "five"})"),
              R"(ad.json: /iCloseBtnCountdown: expected a whole number, got "five")");
    EXPECT_EQ(complaint(R"({"iCloseBtnCountdown": 5.5})"),
              R"(ad.json: /iCloseBtnCountdown: expected a whole number, got 5.5)");
    EXPECT_EQ(complaint(R"({"iCloseBtnCountdown": 3000000000})"),
              R"(ad.json: /iCloseBtnCountdown: expected a whole number, got 3000000000)");
    EXPECT_EQ(complaint(R"({"fVideoWidth": true})"), R"(ad.json: /fVideoWidth: expected a number, got true)");
    EXPECT_EQ(complaint(R"({"fVideoWidth": 1e60})"), R"(ad.json: /fVideoWidth: expected a number, got 1e+60)");
    EXPECT_EQ(complaint(R"({"bIsAutoStart": 1})"), R"(ad.json: /bIsAutoStart: expected true or false, got 1)");
    EXPECT_EQ(complaint(R"({"strBrandText": 7})"), R"(ad.json: /strBrandText: expected a text, got 7)");
    EXPECT_EQ(complaint(R"({"arrayCloseTrackingUrls": "http://t"})"),
              R"(ad.json: /arrayCloseTrackingUrls: expected a list of texts, got "http://t")");
    EXPECT_EQ(complaint(R"({"arrayCloseTrackingUrls": ["c", 7]})"),
              R"(ad.json: /arrayCloseTrackingUrls/1: expected a text, got 7)");
    EXPECT_EQ(complaint(R"({"arrayButtonsInfo": [[]]})"),
              R"(ad.json: /arrayButtonsInfo/0: expected an object, got [])");
    EXPECT_EQ(complaint(R"({"arrayPrePauseLocations": ["5"]})"),
              R"(ad.json: /arrayPrePauseLocations/0: expected a whole number, got "5")");
    EXPECT_EQ(complaint(R"({"dicTrackingUrls": {"start": "http://t"}})"),
              R"(ad.json: /dicTrackingUrls/start: expected a list of texts, got "http://t")");
    EXPECT_EQ(complaint(R"({"dicProgressTrackingUrls": []})"),
              R"(ad.json: /dicProgressTrackingUrls: expected an object with lists of texts, got [])");
}

TEST(AdFileTest, AnEnumerationIsANumberOrANameOfItsOwn)
{
    EXPECT_EQ(complaint(R"({"closeBtnSize": 0})"), "");
    EXPECT_EQ(complaint(R"({"closeBtnSize": 3})"),
              R"(ad.json: /closeBtnSize: expected one of SMALL, BIG, or its number, got 3)");
    EXPECT_EQ(complaint(R"({"closeBtnSize": "TOP"})"),
              R"(ad.json: /closeBtnSize: expected one of SMALL, BIG, or its number, got "TOP")");
    EXPECT_EQ(complaint(R"({"closeBtnSize": true})"),
              R"(ad.json: /closeBtnSize: expected one of SMALL, BIG, or its number, got true)");
}

TEST(AdFileTest, InvalidJsonAndNonObjectsAreRefused)
{
    EXPECT_EQ(complaint("[1]"), "ad.json: expected an object with the ad's properties, got [1]");
    EXPECT_EQ(complaint("{\n  \"a\": }").substr(0, 29), "ad.json: no JSON at line 2, c");
    EXPECT_NE(complaint(""), "");
    EXPECT_NE(complaint("{\"strBrandText\": \"\xff\"}"), "");
}

TEST(AdFileTest, AComplaintIsOneLine)
{
    EXPECT_EQ(complaint("{\"a\\nb\": 1}").find('\n'), std::string::npos);
    EXPECT_EQ(complaint("{\"strBrandText\": {\"a\": \"b\\nc\"}}").find('\n'), std::string::npos);
}

TEST(AdFileTest, InLenientModeAValueOfAnotherTypeIsAbsent)
{
    const auto ad = lenient(R"({"iCloseBtnCountdown": "five", "iBufferingSufferTime": 2.9, "fVideoWidth": "1280",
        "bIsAutoStart": 1, "strBrandText": 7, "arrayCloseTrackingUrls": "http://t", "closeBtnSize": true,
        "portraitVideoPos": 9, "dicTrackingUrls": {"start": "http://t"}, "arrayPauseTrackingUrls": [7]})");
    EXPECT_EQ(ad->iCloseBtnCountdown, 0);
    EXPECT_EQ(ad->iBufferingSufferTime, 2);
    EXPECT_EQ(ad->fVideoWidth, 0);
    EXPECT_FALSE(ad->bIsAutoStart);
    EXPECT_FALSE(ad->strBrandText);
    EXPECT_FALSE(ad->arrayCloseTrackingUrls);
    EXPECT_EQ(ad->closeBtnSize, 0);
    EXPECT_EQ(ad->portraitVideoPos, 9);
    EXPECT_EQ(ad->dicTrackingUrls["start"].string(), "http://t");
    EXPECT_EQ(ad->arrayPauseTrackingUrls[0].intValue(), 7);
}

TEST(AdFileTest, ABandNeedsAVideoOfPositiveSize)
{
    const std::string band = R"("strVideoUrl": "v.mp4", "portraitModeType": 2, "portraitVideoPos": "TOP")";
    const std::string expected =
        "expected the video's size, more than 0, since its band on the screen keeps its proportions";
    EXPECT_EQ(playable_complaint("{" + band + "}"), "ad.json: /fVideoWidth: " + expected);
    EXPECT_EQ(playable_complaint("{" + band + R"(, "fVideoWidth": -1, "fVideoHeight": 9})"),
              "ad.json: /fVideoWidth: " + expected);
    EXPECT_EQ(playable_complaint("{" + band + R"(, "fVideoWidth": 16, "fVideoHeight": 0})"),
              "ad.json: /fVideoHeight: " + expected);
    EXPECT_EQ(playable_complaint("{" + band + R"(, "fVideoWidth": 16, "fVideoHeight": 9})"), "");
}

TEST(AdFileTest, TheVideosSizeMayBeLeftOutWhereTheLayoutDoesNotUseIt)
{
    EXPECT_EQ(playable_complaint(R"({"strVideoUrl": "v", "portraitModeType": 1, "portraitVideoPos": "FULL"})"), "");
    EXPECT_EQ(playable_complaint(R"({"strVideoUrl": "v", "landscapeModeType": 1, "portraitVideoPos": "TOP"})"), "");
    EXPECT_EQ(playable_complaint(R"({"portraitModeType": 1, "portraitVideoPos": "TOP"})"), "");
    EXPECT_EQ(playable_complaint(
                  R"({"strVideoUrl": "v", "portraitModeType": 1, "portraitVideoPos": "TOP", "launchOrientation": 3})"),
              "");
}

TEST(AdFileTest, FetchedAddressesNeedASupportedScheme)
{
    EXPECT_EQ(playable_complaint(R"({"strVideoUrl": "file:///etc/passwd"})"),
              R"(ad.json: /strVideoUrl: expected an address of http or https, or one in the ad's folder, got )"
              R"("file:///etc/passwd")");
    EXPECT_EQ(playable_complaint(R"({"arrayCloseTrackingUrls": ["c", "ftp://t/x"]})"),
              R"(ad.json: /arrayCloseTrackingUrls/1: expected an address of http or https, or one in the ad's folder, )"
              R"(got "ftp://t/x")");
    EXPECT_EQ(playable_complaint(R"({"strVideoUrl": "HTTPS://a/v.mp4", "strWebViewUrl": "page.html"})"), "");
    EXPECT_EQ(playable_complaint(R"({"arrayButtonsInfo": [{"data": {"u": "market://details"}, "app_u": "tel:1"}]})"),
              "");
}

TEST(AdAddressesTest, EveryAddressIsVisitedWithItsPlaceAndUse)
{
    const auto ad = strict(R"({"strVideoUrl": "v", "strMIUrl": "m", "strStoreId": "7", "strVideoTrackingUrl": "b",
        "strBrandIconUrl": "", "arrayMuteTrackingUrls": ["c", "x"], "dicProgressTrackingUrls": {"5": ["p"]},
        "arrayButtonsInfo": [{"btn_tracking_urls": ["k"], "app_u": "a", "data": {"u": "t", "tel": "1"}}, {}]})");
    std::vector<std::string> seen;
    rewrite_addresses(*ad, [&seen](AdAddressUse use, const std::string& path, const std::string& address) {
        seen.push_back(std::to_string(static_cast<int>(use)) + path + "=" + address);
        return "<" + address + ">";
    });
    EXPECT_EQ(seen, (std::vector<std::string>{"0/strMIUrl=m", "0/strVideoUrl=v", "1/strVideoTrackingUrl=b",
                                              "1/arrayMuteTrackingUrls/1=x", "1/dicProgressTrackingUrls/5/0=p",
                                              "1/arrayButtonsInfo/0/btn_tracking_urls/0=k",
                                              "2/arrayButtonsInfo/0/data/u=t"}));
    EXPECT_EQ(ad->strVideoUrl, "<v>");
    EXPECT_EQ(ad->strStoreId, "7");
    EXPECT_EQ(ad->arrayMuteTrackingUrls[0].string(), "c");
    EXPECT_EQ(ad->arrayMuteTrackingUrls[1].string(), "<x>");
    EXPECT_EQ(ad->dicProgressTrackingUrls["5"].array()[0].string(), "<p>");
    EXPECT_EQ(ad->arrayButtonsInfo[0].dictionary()["data"].dictionary()["u"].string(), "<t>");
    EXPECT_EQ(ad->arrayButtonsInfo[0].dictionary()["data"].dictionary()["tel"].string(), "1");
    EXPECT_EQ(ad->arrayButtonsInfo[0].dictionary()["app_u"].string(), "a");
    EXPECT_EQ(ad->arrayButtonsInfo.count(), 2u);
}

TEST(AdAddressesTest, RelativeAddressesPointToTheServerAndOthersAreUnchanged)
{
    const std::string server = "http://127.0.0.1:80";
    EXPECT_EQ(address_on_server("v.mp4", server), "http://127.0.0.1:80/v.mp4");
    EXPECT_EQ(address_on_server("/t/start?at={CurrentTime}", server), "http://127.0.0.1:80/t/start?at={CurrentTime}");
    EXPECT_EQ(address_on_server("./my clip ü.mp4", server), "http://127.0.0.1:80/my%20clip%20%C3%BC.mp4");
    EXPECT_EQ(address_on_server("t?at=12:30", server), "http://127.0.0.1:80/t?at=12:30");
    EXPECT_EQ(address_on_server("https://x/y z", server), "https://x/y z");
    EXPECT_EQ(address_on_server("tel:1", server), "tel:1");
    EXPECT_EQ(address_on_server("//x/y", server), "//x/y");
}

TEST(AdAddressesTest, AreVisitedInTheOrderInWhichTheyAreRewritten)
{
    const auto ad = strict(R"({"strVideoUrl": "v", "arrayMuteTrackingUrls": ["c", "x"],
        "dicProgressTrackingUrls": {"5": ["p"]}, "arrayButtonsInfo": [{"data": {"u": "t"}}]})");
    std::vector<std::string> seen;
    visit_addresses(*ad, [&seen](AdAddressUse use, const std::string& path, const std::string& address) {
        seen.push_back(std::to_string(static_cast<int>(use)) + path + "=" + address);
    });
    EXPECT_EQ(seen, (std::vector<std::string>{"0/strVideoUrl=v", "1/arrayMuteTrackingUrls/1=x",
                                              "1/dicProgressTrackingUrls/5/0=p", "2/arrayButtonsInfo/0/data/u=t"}));
}
