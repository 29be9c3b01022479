#include "formats/AdRemarks.h"

#include "formats/AdFile.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace qoro
{
namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> remarks_on(const std::string& json)
{
    return ad_remarks(*read_ad(json, "ad.json", AdTypes::Strict), "ad.json");
}

TEST(AdRemarks, ASoundAdHasNone)
{
    EXPECT_THAT(remarks_on(R"({"strVideoUrl": "v.mp4", "strBackgroundColor": "4278190080",
                               "arrayPrePauseLocations": [0, 3],
                               "dicTrackingUrls": {"start": ["t"], "firstQuartile": ["t"], "complete": ["t"]},
                               "dicProgressTrackingUrls": {"5": ["t"]},
                               "arrayButtonsInfo": [{"btn_text": "Buy", "action": "x", "launch_type": "inapp",
                                                     "data": {"u": "http://shop/", "bk_c": "0"}}]})"),
                IsEmpty());
}

TEST(AdRemarks, AnUnknownKeyOfAButtonIsNamedWithItsPlace)
{
    EXPECT_THAT(remarks_on(R"({"arrayButtonsInfo": [{"btn_txt": "Buy"}]})"),
                ElementsAre("ad.json: /arrayButtonsInfo/0/btn_txt: has no effect: no key of a button; "
                            "did you mean \"btn_text\"?"));
}

TEST(AdRemarks, AnUnknownKeyOfAButtonsDataIsNamedWithItsPlace)
{
    EXPECT_THAT(remarks_on(R"({"arrayButtonsInfo": [{}, {"data": {"show_navbar": true}}]})"),
                ElementsAre("ad.json: /arrayButtonsInfo/1/data/show_navbar: has no effect: no key of a button's data; "
                            "did you mean \"show_nav_bar\"?"));
}

TEST(AdRemarks, AnUnknownMilestoneIsNamed)
{
    EXPECT_THAT(remarks_on(R"({"dicTrackingUrls": {"firstquartile": ["t"]}})"),
                ElementsAre("ad.json: /dicTrackingUrls/firstquartile: has no effect: no milestone of a video; "
                            "did you mean \"firstQuartile\"?"));
}

TEST(AdRemarks, AProgressKeyIsInWholeSeconds)
{
    EXPECT_THAT(remarks_on(R"({"dicProgressTrackingUrls": {"2.5": ["t"]}})"),
                ElementsAre("ad.json: /dicProgressTrackingUrls/2.5: has no effect: expected whole seconds"));
}

TEST(AdRemarks, AColorIsDecimal)
{
    EXPECT_THAT(remarks_on(R"({"strBackgroundColor": "#ff0000"})"),
                ElementsAre("ad.json: /strBackgroundColor: shown as white: expected a colour as a decimal ARGB number, "
                            "such as \"4278190080\" for black"));
}

TEST(AdRemarks, AColorHasAtMost32Bits)
{
    EXPECT_THAT(remarks_on(R"({"strBackgroundColor": "4294967295"})"), IsEmpty());
    EXPECT_THAT(remarks_on(R"({"strBackgroundColor": "4294967296"})"), testing::SizeIs(1));
    EXPECT_THAT(
        remarks_on(R"({"arrayButtonsInfo": [{"data": {"bk_c": "red"}}]})"),
        ElementsAre("ad.json: /arrayButtonsInfo/0/data/bk_c: shown as white: expected a colour as a decimal ARGB "
                    "number, such as \"4278190080\" for black"));
}

TEST(AdRemarks, AnUnknownFieldOfAButtonsCalendarEventIsNamedWithItsPlace)
{
    EXPECT_THAT(remarks_on(R"({"arrayButtonsInfo": [{"data": {"e": {"summari": "x", "start": "2027-03-22",
                               "recurrence": {"frequency": "daily", "intervals": 2}}}}]})"),
                ElementsAre("ad.json: /arrayButtonsInfo/0/data/e/summari: has no effect: no field of a calendar event; "
                            "did you mean \"summary\"?",
                            "ad.json: /arrayButtonsInfo/0/data/e/recurrence/intervals: has no effect: no field of a "
                            "recurrence; did you mean \"interval\"?"));
}

TEST(AdRemarks, AButtonsValueOfAnotherTypeIsNamed)
{
    EXPECT_THAT(remarks_on(R"({"arrayButtonsInfo": [{"btn_text": 5, "btn_tracking_urls": "t/x", "data": "http://shop/",
                                                     "action": null}]})"),
                ElementsAre("ad.json: /arrayButtonsInfo/0/btn_text: has no effect: expected a text",
                            "ad.json: /arrayButtonsInfo/0/btn_tracking_urls: has no effect: expected a list of texts",
                            "ad.json: /arrayButtonsInfo/0/data: has no effect: expected an object"));
}

TEST(AdRemarks, WhatLiesBehindTheVideosEndHasNoEffect)
{
    const auto ad = read_ad(R"({"arrayPrePauseLocations": [0, 11, 12, 40],
                                "dicProgressTrackingUrls": {"5": ["t"], "40": ["t"], "x": ["t"]}})",
                            "ad.json", AdTypes::Strict);
    EXPECT_THAT(remarks_on_duration(*ad, "ad.json", 11.5),
                ElementsAre("ad.json: /arrayPrePauseLocations/2: has no effect: behind the video's end at 11.5 s",
                            "ad.json: /arrayPrePauseLocations/3: has no effect: behind the video's end at 11.5 s",
                            "ad.json: /dicProgressTrackingUrls/40: has no effect: behind the video's end at 11.5 s"));
}

TEST(AdRemarks, ANegativePrePausePointHasNoEffect)
{
    EXPECT_THAT(remarks_on(R"({"arrayPrePauseLocations": [2, -1]})"),
                ElementsAre("ad.json: /arrayPrePauseLocations/1: has no effect: before the video's beginning"));
}

TEST(MissingFiles, OfTheAdsFolderAreNamed)
{
    const std::filesystem::path folder =
        std::filesystem::temp_directory_path() / ("qoro-missing-" + std::to_string(getpid()));
    std::filesystem::create_directories(folder / "ad");
    std::ofstream(folder / "icon.png") << "icon";
    std::ofstream(folder / "ad" / "my v.mp4") << "video";
    std::filesystem::create_symlink(folder / "icon.png", folder / "ad" / "link.png");
    const auto ad = read_ad(R"({"strVideoUrl": "my%20v.mp4?x", "strWebViewUrl": "My w.mp4",
                                "strBrandIconUrl": "http://ads.example/icon.png", "strMIUrl": "../icon.png",
                                "strLogoWebViewUrl": "link.png",
                                "dicTrackingUrls": {"start": ["t/start"]}})",
                            "ad.json", AdTypes::Strict);

    EXPECT_THAT(
        missing_files(*ad, "ad.json", (folder / "ad").string()),
        testing::UnorderedElementsAre("ad.json: /strWebViewUrl: no such file: My w.mp4; did you mean \"my v.mp4\"?",
                                      // The server sends no file from outside the folder.
                                      "ad.json: /strMIUrl: no such file: ../icon.png",
                                      testing::StartsWith("ad.json: /strLogoWebViewUrl: no such file: link.png")));
    std::filesystem::remove_all(folder);
}

} // namespace
} // namespace qoro
