#include "tests/support/ScenarioRun.h"

#include <gmock/gmock.h>

#include <algorithm>

// A creative's page that dies or hangs: the controls that it took over return to the viewer.

namespace qoro::test
{
namespace
{

using testing::AllOf;
using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using Lines = std::vector<std::string>;

constexpr const char* Plays = R"({"open": 0}, {"at": 1, "player": {"duration": 30, "load": 1}},
                                 {"at": 1, "player": {"time": 0, "state": 1}}, )";
constexpr const char* BothArrangements = R"("landscapeModeType": 2, )";

/// The lines from the page's fault on.
Lines after_fault(const Lines& trace)
{
    const auto fault = std::ranges::find_if(trace, [](const std::string& line) {
        return line.find(R"("what":"step")") != std::string::npos && line.find(R"("page":)") != std::string::npos;
    });
    return fault == trace.end() ? Lines{} : Lines(fault + 1, trace.end());
}

TEST(PageFault, ADeadPageReturnsTheCloseButtonsTaps)
{
    const Lines trace =
        manual_run(std::string(Plays) + R"({"at": 2, "script": ["addEventListener", "onclick_closebtn", 1]},
        {"at": 3, "page": "dies"}, {"at": 4, "snapshot": true}, {"at": 5, "tap": "btnClose"})");

    EXPECT_EQ(in_snapshot(trace, "/views/btnClose/targets"), R"(["closeAction"])");
    EXPECT_EQ(in_snapshot(trace, "/super/bIsClickCloseButton"), "false");
    EXPECT_EQ(in_snapshot(trace, "/super/listeners"), "{}");
    EXPECT_THAT(after_fault(trace), Contains(HasSubstr(R"("event":"onhide")")));
    EXPECT_THAT(trace, Not(Contains(HasSubstr(R"("event":"onclick_closebtn")"))));
}

TEST(PageFault, ADeadPageReceivesNoEvents)
{
    const Lines trace =
        manual_run(std::string(Plays) + R"({"at": 2, "script": ["addEventListener", "video_pause", "b"]},
        {"at": 2, "script": ["addEventListener", "video_pause", "a"]},
        {"at": 2, "script": ["addEventListener", "video_ended", "c"]},
        {"at": 3, "page": "dies"}, {"at": 4, "player": {"state": 2}})");

    EXPECT_THAT(after_fault(trace), Contains(HasSubstr(R"("event":"video_pause","data":null,"listeners":0)")));
}

TEST(PageFault, MessagesOfADeadPageAreIgnored)
{
    const Lines trace = manual_run(std::string(Plays) + R"({"at": 3, "page": "dies"},
        {"at": 4, "script": ["setVideoPause"]}, {"at": 4, "script": ["MRAIDClose"]},
        {"at": 4, "script": ["getVideoTotalTime"]})");

    EXPECT_THAT(of_kind(after_fault(trace), "player"), IsEmpty());
    EXPECT_THAT(of_kind(after_fault(trace), "super"), IsEmpty());
    EXPECT_THAT(of_kind(after_fault(trace), "return"), IsEmpty());
}

TEST(PageFault, ThePagesDeathIsTraced)
{
    const Lines trace = manual_run(std::string(Plays) + R"({"at": 3, "page": "dies"})");

    EXPECT_THAT(of_kind(trace, "web"), testing::ElementsAre(HasSubstr(R"("t":3,"what":"web","do":"died")")));
}

TEST(PageFault, TheCloseButtonOfACustomCloseReturnsWhenThePageDies)
{
    const Lines trace = manual_run(std::string(Plays) + R"({"at": 2, "script": ["MRAIDUseCustomClose", true]},
        {"at": 2.5, "snapshot": true}, {"at": 3, "page": "dies"}, {"at": 3, "snapshot": true})");

    const Lines snapshots = of_kind(trace, "snapshot");
    EXPECT_EQ(in_snapshot({snapshots[0]}, "/views/btnClose/parent"), "null");
    EXPECT_EQ(in_snapshot({snapshots[1]}, "/views/btnClose/parent"), R"("moviePlayerView")");
    EXPECT_EQ(in_snapshot({snapshots[1]}, "/fields/bIsUseVideoCustomClose"), "false");
    EXPECT_THAT(after_fault(trace), Contains(HasSubstr(R"("event":"video_orientation")")));
}

TEST(PageFault, WithoutACustomCloseTheLayoutIsNotRepeated)
{
    const Lines trace = manual_run(std::string(Plays) + R"({"at": 3, "page": "dies"})");

    EXPECT_THAT(of_kind(after_fault(trace), "js"), IsEmpty());
}

TEST(PageFault, WhileABrowserIsOpenTheCloseButtonReturnsWithTheAd)
{
    const std::string browser =
        R"("arrayButtonsInfo": [{"btn_text": "Go", "launch_type": "inapp", "data": {"u": "http://shop.example/"}}], )";
    const Lines trace = manual_run(std::string(Plays) + R"({"at": 2, "script": ["MRAIDUseCustomClose", true]},
        {"at": 2, "tap": "btnActionOne"}, {"at": 3, "page": "dies"}, {"at": 3.5, "snapshot": true},
        {"at": 4, "call": ["closeInAppWebView"]}, {"at": 5, "snapshot": true})",
                                   browser);

    const Lines snapshots = of_kind(trace, "snapshot");
    EXPECT_EQ(in_snapshot({snapshots[0]}, "/views/btnClose/parent"), "null");
    EXPECT_EQ(in_snapshot({snapshots[1]}, "/views/btnClose/parent"), R"("moviePlayerView")");
}

TEST(PageFault, AfterACallThatNeverEndsTheCloseButtonReturnsWithTheNextActionThatDoes)
{
    const std::string buttons = R"("arrayButtonsInfo": [
        {"btn_text": "Call", "action": "place_call", "data": {"tel": "tel:123"}},
        {"btn_text": "Shop", "app_u": "http://shop.example/", "data": {}}], )";
    const Lines trace = manual_run(std::string(Plays) + R"({"at": 2, "script": ["MRAIDUseCustomClose", true]},
        {"at": 2, "tap": "btnActionOne"}, {"at": 3, "page": "dies"}, {"at": 4, "snapshot": true},
        {"at": 5, "tap": "btnActionTwo"}, {"at": 6, "snapshot": true})",
                                   buttons);

    const Lines snapshots = of_kind(trace, "snapshot");
    EXPECT_EQ(in_snapshot({snapshots[0]}, "/views/btnClose/parent"), "null");
    EXPECT_EQ(in_snapshot({snapshots[1]}, "/views/btnClose/parent"), R"("moviePlayerView")");
}

TEST(PageFault, AnOrientationThatTheDeadPageForcedIsReleased)
{
    const Lines trace =
        manual_run(std::string(Plays) +
                       R"({"at": 2, "script": ["mraid.setOrientationProperties", {"forceOrientation": "landscape"}]},
        {"at": 2.5, "snapshot": true}, {"at": 3, "page": "dies"}, {"at": 3, "script": ["checkVideoPlay"]},
        {"at": 9, "snapshot": true})",
                   BothArrangements);

    const Lines snapshots = of_kind(trace, "snapshot");
    EXPECT_EQ(in_snapshot({snapshots[0]}, "/fields/bIsVideoOrientationLandscape"), "true");
    EXPECT_EQ(in_snapshot({snapshots[1]}, "/fields/bIsVideoOrientationLandscape"), "false");
}

TEST(PageFault, MessagesOfAHungPageAreIgnoredAndItsEventsStillTraced)
{
    const Lines trace = manual_run(std::string(Plays) + R"({"at": 2, "script": ["addEventListener", "video_pause", 1]},
        {"at": 3, "page": "hangs"}, {"at": 4, "script": ["MRAIDClose"]}, {"at": 5, "player": {"state": 2}})");

    EXPECT_THAT(of_kind(after_fault(trace), "super"), IsEmpty());
    EXPECT_THAT(after_fault(trace), Contains(HasSubstr(R"("event":"video_pause","data":null,"listeners":1)")));
}

TEST(PageFault, APageThatDiesAfterTheCloseChangesNothing)
{
    const Lines trace = manual_run(std::string(Plays) + R"({"at": 2, "script": ["MRAIDUseCustomClose", true]},
        {"at": 3, "call": ["closeAction"]}, {"at": 4, "page": "dies"})");

    EXPECT_THAT(of_kind(after_fault(trace), "js"), IsEmpty());
}

TEST(PageFault, OnlyDyingAndHangingAreFaults)
{
    EXPECT_THAT(complaint_about(R"({"ad": {}, "steps": [{"page": "sleeps"}]})"),
                AllOf(HasSubstr("/steps/0/page"), HasSubstr(R"("dies" or "hangs")")));
}

} // namespace
} // namespace qoro::test
