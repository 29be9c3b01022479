#include "tests/support/ScenarioRun.h"

#include <gmock/gmock.h>

#include <algorithm>

// The kit's screens during a whole ad, as scenarios show them.

namespace qoro::test
{
namespace
{

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Lines = std::vector<std::string>;

constexpr const char* Opens = R"({"open": 0}, {"at": 1, "player": {"duration": 30, "load": 1}},
                                 {"at": 1, "player": {"time": 0, "state": 1}}, )";
constexpr const char* Tap = R"({"at": 2, "tap": "btnActionOne"}, )";

std::string button(const std::string& action)
{
    return R"("arrayButtonsInfo": [{"btn_text": "Go", )" + action + "}], ";
}

const std::string Browser = button(R"("launch_type": "inapp", "data": {"u": "http://shop.example/"})");

/// The lines after a step, without the step's own line and without times.
Lines after_step(const Lines& trace, int n)
{
    const std::string mark = R"("what":"step","n":)" + std::to_string(n) + ",";
    const auto step =
        std::ranges::find_if(trace, [&](const std::string& line) { return line.find(mark) != std::string::npos; });
    Lines rest;
    for (auto line = step == trace.end() ? step : step + 1; line != trace.end(); ++line)
        rest.push_back(line->substr(line->find(R"("what")")));
    return rest;
}

TEST(ScreensInScenarios, ATouchOnTheBrowsersCloseButtonEqualsTheCloseCall)
{
    const Lines touched = manual_run(std::string(Opens) + Tap + R"({"at": 3, "touch": [355, 20]})", Browser);
    const Lines called = manual_run(std::string(Opens) + Tap + R"({"at": 3, "call": ["closeInAppWebView"]})", Browser);

    EXPECT_EQ(after_step(touched, 4), after_step(called, 4));
    EXPECT_THAT(after_step(touched, 4), Contains(HasSubstr("checkViewSizeAfterOpenOtherApp")));
}

TEST(ScreensInScenarios, ATouchBesideTheCloseButtonReachesThePageAndNotTheAd)
{
    const Lines trace = manual_run(std::string(Opens) + Tap + R"({"at": 3, "touch": [25, 69]})", Browser);

    EXPECT_THAT(after_step(trace, 4), IsEmpty());
}

TEST(ScreensInScenarios, ThePageOfABrowserAddsNoLine)
{
    const Lines trace = manual_run(std::string(Opens) + Tap + R"({"at": 9, "snapshot": true})", Browser);

    EXPECT_THAT(of_kind(trace, "page"), IsEmpty());
    EXPECT_THAT(of_kind(trace, "web"), IsEmpty());
    EXPECT_THAT(of_kind(trace, "request"), IsEmpty());
    EXPECT_THAT(of_kind(trace, "kit"),
                ElementsAre(HasSubstr("browser.create"), HasSubstr("addExtraView"), HasSubstr("browser.expand")));
}

TEST(ScreensInScenarios, ABrowserOnATurnedDeviceClosesInTheViewersCorner)
{
    const Lines trace = manual_run(std::string(Opens) + Tap + R"({"at": 3, "device": {"orientation": 3}},
                                                                 {"at": 3, "touch": [355, 20]}, {"at": 3, "touch": [355, 792]})",
                                   Browser);

    EXPECT_THAT(after_step(trace, 5).front(), HasSubstr("\"n\":6")) << "the corner of before is the page's";
    EXPECT_THAT(after_step(trace, 6), Contains(HasSubstr("checkViewSizeAfterOpenOtherApp")));
}

TEST(ScreensInScenarios, ABrowserWithItsOwnCloseSignClosesInTheSameCorner)
{
    const Lines trace =
        manual_run(std::string(Opens) + Tap + R"({"at": 3, "touch": [330, 45]})",
                   button(R"("launch_type": "inapp", "data": {"u": "http://shop.example/", "custom_close": true})"));

    EXPECT_THAT(after_step(trace, 4), Contains(HasSubstr("checkViewSizeAfterOpenOtherApp")));
}

TEST(ScreensInScenarios, AMessageEndsWithItsStep)
{
    const std::string message = button(R"("action": "send_sms", "data": {"tel": "+1 555", "b": "Hi"})");

    const Lines waits = manual_run(std::string(Opens) + Tap + R"({"at": 60, "snapshot": true})", message);
    EXPECT_EQ(in_snapshot(waits, "/fields/_bDoButtonAction"), "true");
    EXPECT_THAT(of_kind(waits, "openURL"), IsEmpty());

    const Lines over = manual_run(
        std::string(Opens) + Tap + R"({"at": 60, "call": ["closeInAppApplication"]}, {"snapshot": true})", message);
    EXPECT_EQ(in_snapshot(over, "/fields/_bDoButtonAction"), "false");
}

TEST(ScreensInScenarios, ATouchOnTheCloseButtonOfAnItemsPageEqualsTheCloseCall)
{
    const std::string store = button(R"("action": "open_store", "id": 42, "data": {})");

    const Lines touched = manual_run(std::string(Opens) + Tap + R"({"at": 3, "touch": [355, 20]})", store);
    const Lines called =
        manual_run(std::string(Opens) + Tap + R"({"at": 3, "call": ["closeInAppApplication"]})", store);

    EXPECT_EQ(after_step(touched, 4), after_step(called, 4));
    EXPECT_THAT(after_step(touched, 4), Contains(HasSubstr("closeInAppApplication")));
}

TEST(ScreensInScenarios, OnAPhoneTheStorePageIsBelowTheVideoAndItsCloseButtonClosesTheAd)
{
    const std::string store = R"("strStoreId": "org.example.Lamps", )";

    const Lines touched = manual_run(std::string(Opens) + R"({"at": 3, "touch": [355, 275]})", store);
    const Lines called =
        manual_run(std::string(Opens) + R"({"at": 3, "call": ["didDismissStoreViewController"]})", store);

    EXPECT_EQ(after_step(touched, 3), after_step(called, 3));
    EXPECT_THAT(after_step(touched, 3), Contains(HasSubstr("onhide")));
}

TEST(ScreensInScenarios, OnAPhoneTheStoresWindowKeepsTheFrameThatTheAdGivesIt)
{
    const Lines trace =
        manual_run(std::string(Opens) + R"({"at": 3, "snapshot": true})", R"("strStoreId": "org.example.Lamps", )");

    EXPECT_EQ(in_snapshot(trace, "/views/appStoreWindow/frame"), "[0,254.9375,375,557.0625]");
}

TEST(ScreensInScenarios, OnATabletTheCloseButtonOfTheStorePageKeepsTheAdOpen)
{
    const Lines trace =
        manual_run(std::string(Opens) + R"({"at": 3, "player": {"time": 2, "state": 2}},
                                                           {"at": 4, "touch": [748, 20]}, {"at": 5, "snapshot": true})",
                   R"("strStoreId": "org.example.Lamps", )", R"("device": {"screen": [768, 1024], "phone": false}, )");

    EXPECT_THAT(of_kind(trace, "kit"),
                ElementsAre(HasSubstr("store.create"), HasSubstr("store.present"), HasSubstr("store.dismiss")));
    EXPECT_NE(in_snapshot(trace, "/player"), "null");
}

} // namespace
} // namespace qoro::test
