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
                ElementsAre("ad.json: /strBackgroundColor: has no effect: expected a colour as a decimal ARGB number, "
                            "such as \"4278190080\" for black"));
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
    std::filesystem::create_directory(folder);
    std::ofstream(folder / "my v.mp4") << "video";
    const auto ad = read_ad(R"({"strVideoUrl": "my%20v.mp4?x", "strWebViewUrl": "page.html",
                                "strBrandIconUrl": "http://ads.example/icon.png",
                                "dicTrackingUrls": {"start": ["t/start"]}})",
                            "ad.json", AdTypes::Strict);

    EXPECT_THAT(missing_files(*ad, "ad.json", folder.string()),
                ElementsAre("ad.json: /strWebViewUrl: no such file: page.html"));
    std::filesystem::remove_all(folder);
}

} // namespace
} // namespace qoro
