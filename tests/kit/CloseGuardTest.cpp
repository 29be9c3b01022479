#include "tests/support/ScenarioRun.h"

#include <gmock/gmock.h>

#include <algorithm>

// The close guard: the close button that the kit adds to an ad without one, in virtual time.

namespace qoro::test
{
namespace
{

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using Lines = std::vector<std::string>;

constexpr const char* Guarded = R"("host": {"guard": true}, )";
/// A page beside a video of 30 seconds; the close button is due after two seconds of playback.
constexpr const char* Ad = R"("strVideoUrl": "http://ad/v.mp4", "fVideoWidth": 1280, "fVideoHeight": 720,
    "portraitModeType": 2, "portraitVideoPos": "TOP", "iCloseBtnCountdown": 2, "iBufferingSufferTime": -1,
    "bIsAutoStart": true)";
constexpr const char* EndOfPlay = R"({"at": 100, "device": {}})";

/// Runs an ad whose video plays automatically from 0.3 s on.
Lines auto_run(const std::string& steps, const std::string& ad = "", const std::string& video = "",
               const std::string& host = Guarded)
{
    return trace_of("{" + host + R"("video": {)" + video + R"("duration": 30}, "ad": {)" + Ad + ad +
                    R"(}, "steps": [{"open": 0}, )" + steps + "]}");
}

Lines guard_lines(const Lines& trace)
{
    return of_kind(trace, "guard");
}

// -------------------------------------------------------------------------------------------- ads that need no guard

TEST(CloseGuard, IsNotShownForAnOrdinaryAd)
{
    EXPECT_THAT(guard_lines(auto_run(EndOfPlay)), IsEmpty());
}

TEST(CloseGuard, IsNotShownWhileTheVideoPlays)
{
    const Lines trace = auto_run(R"({"at": 29, "device": {}})", R"(, "bIsEndedCloseBtn": true)");

    EXPECT_THAT(guard_lines(trace), IsEmpty());
}

TEST(CloseGuard, IsNotShownDuringALongCountdown)
{
    const Lines trace = trace_of(std::string("{") + Guarded + R"("video": {"duration": 300}, "ad": {)" + Ad +
                                 R"(, "iCloseBtnCountdown": 200}, "steps": [{"open": 0}, {"at": 190, "device": {}}]})");

    EXPECT_THAT(guard_lines(trace), IsEmpty());
}

TEST(CloseGuard, IsNotShownUnlessTheHostEnablesIt)
{
    const Lines trace = auto_run(EndOfPlay, R"(, "iBufferingSufferTime": -1)", R"("loadAfter": 90, )", "");

    EXPECT_THAT(guard_lines(trace), IsEmpty());
}

TEST(CloseGuard, IsNotShownForAPageThatClosesOnTheViewersTap)
{
    const Lines trace = auto_run(R"({"at": 1, "script": ["addEventListener", "onclick_closebtn", 1]},
        {"at": 5, "tap": "btnClose"}, {"at": 5.9, "script": ["MRAIDClose"]}, )" +
                                 std::string(EndOfPlay));

    EXPECT_THAT(guard_lines(trace), IsEmpty());
}

// ------------------------------------------------------------------------------------ when the guard's button appears

TEST(CloseGuard, IsShownForAPageThatOwnsTheCloseAndHangsForTwoSeconds)
{
    const Lines trace = auto_run(R"({"at": 1, "script": ["addEventListener", "onclick_closebtn", 1]},
        {"at": 4, "page": "hangs"}, )" +
                                 std::string(EndOfPlay));

    EXPECT_THAT(guard_lines(trace), ElementsAre(HasSubstr(R"({"t":6,"what":"guard","do":"show",)"
                                                          R"("why":"the page does not answer"})")));
}

TEST(CloseGuard, IsShownForAPageThatTakesTheCloseBeforeItHangs)
{
    const Lines trace = auto_run(R"({"at": 4, "script": ["MRAIDUseCustomClose", true]}, {"at": 4, "page": "hangs"}, )" +
                                 std::string(EndOfPlay));

    EXPECT_THAT(guard_lines(trace), ElementsAre(HasSubstr(R"({"t":6,"what":"guard")")));
}

TEST(CloseGuard, IsNotShownForAHungPageThatDoesNotOwnTheClose)
{
    EXPECT_THAT(guard_lines(auto_run(R"({"at": 4, "page": "hangs"}, )" + std::string(EndOfPlay))), IsEmpty());
}

TEST(CloseGuard, IsShownAfterATapThatThePageIgnores)
{
    const Lines trace = auto_run(R"({"at": 1, "script": ["addEventListener", "onclick_closebtn", 1]},
        {"at": 5, "tap": "btnClose"}, )" +
                                 std::string(EndOfPlay));

    EXPECT_THAT(guard_lines(trace), ElementsAre(HasSubstr(R"({"t":6,"what":"guard","do":"show",)"
                                                          R"("why":"nothing came of a tap on the close button"})")));
}

TEST(CloseGuard, IsNotShownIfATapHidesTheVideo)
{
    // In landscape, with the button that hides the video: the controller itself hides the video in response to the tap.
    const Lines trace = auto_run(R"({"at": 1, "device": {"orientation": 3, "statusBarOrientation": 3}},
        {"at": 5, "tap": "btnClose"}, {"at": 20, "device": {}})",
                                 R"(, "landscapeModeType": 2, "bShowHideVideoBtn": true)");

    EXPECT_THAT(trace, Contains(HasSubstr(R"({"e":{"visibility":0}})")));
    EXPECT_THAT(guard_lines(trace), IsEmpty());
}

TEST(CloseGuard, IsShownFiveSecondsAfterTheCountdownOfACustomClose)
{
    // The video plays from 0.3 s on; the twentieth tick of the countdown is 2 s later.
    const Lines trace = auto_run(R"({"at": 1, "script": ["mraid.useCustomClose", true]}, )" + std::string(EndOfPlay));

    EXPECT_THAT(guard_lines(trace),
                ElementsAre(AllOf(HasSubstr(R"("why":"the page draws the close control")"), HasSubstr(R"("t":7.3)"))));
}

TEST(CloseGuard, IsShownFiveSecondsAfterTheCountdownOfAPageInFront)
{
    const Lines trace = auto_run(EndOfPlay, R"(, "bIsWebViewInFront": true, "strWebViewUrl": "http://ad/page.html")");

    EXPECT_THAT(guard_lines(trace),
                ElementsAre(AllOf(HasSubstr(R"("why":"the page draws the close control")"), HasSubstr(R"("t":7.)"))));
}

TEST(CloseGuard, IsShownForAVideoThatNeverLoads)
{
    const Lines trace = auto_run(EndOfPlay, "", R"("loadAfter": 99, )");

    EXPECT_THAT(guard_lines(trace),
                ElementsAre(HasSubstr(R"({"t":30,"what":"guard","do":"show",)"
                                      R"("why":"the video does not move, and the ad cannot be closed"})")));
}

TEST(CloseGuard, IsShownForAStallOfAnAdThatCanOnlyBeClosedAtItsEnd)
{
    const Lines trace = auto_run(EndOfPlay, R"(, "bIsEndedCloseBtn": true)", R"("stalls": [[10, 80]], )");

    // Playback stopped at 10.3 s.
    EXPECT_THAT(guard_lines(trace), ElementsAre(HasSubstr(R"({"t":40.)")));
}

TEST(CloseGuard, IsNotShownForAStallOfAnAdThatCanBeClosed)
{
    EXPECT_THAT(guard_lines(auto_run(EndOfPlay, "", R"("stalls": [[10, 80]], )")), IsEmpty());
}

TEST(CloseGuard, IsShownWhenAnInterruptionTakesTheCloseButtonOffTheScreen)
{
    const Lines trace =
        auto_run(R"({"at": 5, "interrupt": 1}, {"at": 40, "touch": [360, 15]}, )" + std::string(EndOfPlay),
                 R"(, "arrayCloseTrackingUrls": ["http://t/close"])");

    EXPECT_THAT(guard_lines(trace),
                ElementsAre(HasSubstr(R"("why":"the video does not move, and the ad cannot be closed"})"),
                            HasSubstr(R"({"t":40,"what":"guard","do":"close"})")));
    EXPECT_THAT(trace, Contains(HasSubstr("http://t/close")));
}

TEST(CloseGuard, AnInterruptionThatEndsBringsTheCloseButtonBack)
{
    const Lines trace =
        auto_run(R"({"at": 5, "interrupt": 1}, {"at": 25, "interrupt": 0}, {"at": 30, "tap": "btnClose"},
        {"at": 60, "device": {}})");

    EXPECT_THAT(guard_lines(trace), IsEmpty());
    EXPECT_THAT(trace, Contains(AllOf(HasSubstr(R"("t":25)"), HasSubstr(R"("do":"play")"))));
    EXPECT_THAT(trace, Contains(AllOf(HasSubstr(R"("t":30)"), HasSubstr(R"("event":"onhide")"))));
}

/// Script steps, repeated.
std::string again_and_again(double from, double to, double every, const std::string& first, const std::string& second)
{
    std::string steps;
    for (double at = from; at < to; at += every) {
        steps += R"({"at": )" + std::to_string(at) + R"(, "script": )" + first + "}, ";
        steps += R"({"at": )" + std::to_string(at + 0.05) + R"(, "script": )" + second + "}, ";
    }
    return steps + R"({"at": )" + std::to_string(to) + R"(, "device": {}})";
}

TEST(CloseGuard, IsShownForAPageThatPausesTheVideoBetweenTwoTicksOfTheCountdown)
{
    // Each time the video plays for 50 ms, between two ticks of the countdown.
    const Lines trace = auto_run(again_and_again(1, 60, 0.2, R"(["setVideoPlay"])", R"(["setVideoPause"])"));

    EXPECT_THAT(guard_lines(trace), ElementsAre(HasSubstr(R"("why":"the video does not move)")));
}

TEST(CloseGuard, IsShownForAPageThatSeeksTheVideoBackFromItsEnd)
{
    const Lines trace = auto_run(again_and_again(20, 100, 20, R"(["setVideoSeekToTime", 1])", R"(["setVideoPlay"])"),
                                 R"(, "bIsEndedCloseBtn": true)");

    // 19.7 of the 30 seconds have played; the other 10.3 have played at 30.3 s.
    EXPECT_THAT(guard_lines(trace),
                ElementsAre(AllOf(HasSubstr(R"("why":"the video has run for its whole length, and does not end")"),
                                  HasSubstr(R"("t":35.)"))));
}

TEST(CloseGuard, IsNotShownWhileTheReportedTimeMoves)
{
    std::string steps;
    for (int second = 1; second < 60; ++second)
        steps += R"({"at": )" + std::to_string(second) + R"(, "player": {"time": )" + std::to_string(second) + "}}, ";
    const Lines trace = manual_run(R"({"open": 0}, {"at": 1, "player": {"duration": 90, "load": 1}},
        {"at": 1, "player": {"time": 0, "state": 1}}, )" +
                                       steps + R"({"at": 60, "device": {}})",
                                   R"("bIsEndedCloseBtn": true, )", Guarded);

    EXPECT_THAT(guard_lines(trace), IsEmpty());
}

TEST(CloseGuard, DoesNotCountTheTimeAwayFromTheApp)
{
    const Lines trace = auto_run(R"({"at": 2, "app": "background"}, {"at": 60, "app": "foreground"},
        {"at": 60, "app": "active"}, {"at": 89, "device": {}})",
                                 "", R"("loadAfter": 99, )");

    EXPECT_THAT(guard_lines(trace), IsEmpty());
}

TEST(CloseGuard, IsNotShownUnderABrowser)
{
    const std::string browser =
        R"(, "bIsEndedCloseBtn": true, "arrayButtonsInfo": [{"btn_text": "Go", "launch_type": "inapp",)"
        R"( "data": {"u": "http://shop.example/"}}])";
    const Lines trace = auto_run(R"({"at": 2, "tap": "btnActionOne"}, {"at": 90, "device": {}})", browser);

    EXPECT_THAT(guard_lines(trace), IsEmpty());
}

// ----------------------------------------------------------------------------------------------------- guard's button

TEST(CloseGuard, ClosesTheAdOnATouchAtTheTopRight)
{
    const Lines trace = auto_run(R"({"at": 31, "touch": [360, 15]}, {"at": 40, "device": {}})",
                                 R"(, "arrayCloseTrackingUrls": ["http://t/close"])", R"("loadAfter": 99, )");

    EXPECT_THAT(guard_lines(trace), ElementsAre(HasSubstr(R"("do":"show")"), HasSubstr(R"("do":"close")")));
    EXPECT_THAT(trace, Contains(HasSubstr(R"("event":"onhide")")));
    EXPECT_THAT(trace, Contains(AllOf(HasSubstr(R"("what":"request")"), HasSubstr("http://t/close"))));
}

TEST(CloseGuard, FollowsTheDevicesOrientation)
{
    // Held with its top to the left: the viewer's top right is the device's bottom right.
    const Lines trace = auto_run(R"({"at": 31, "device": {"orientation": 3}}, {"at": 32, "touch": [360, 797]},
        {"at": 40, "device": {}})",
                                 "", R"("loadAfter": 99, )");

    EXPECT_THAT(guard_lines(trace), Contains(HasSubstr(R"("do":"close")")));
}

TEST(CloseGuard, ClosesAnAdWhoseCloseButtonHidesTheVideo)
{
    const Lines trace = auto_run(R"({"at": 0.1, "device": {"orientation": 3, "statusBarOrientation": 3}},
        {"at": 31, "touch": [360, 797]}, {"at": 40, "device": {}})",
                                 R"(, "landscapeModeType": 2, "bShowHideVideoBtn": true, "bIsEndedCloseBtn": true,
                                     "arrayCloseTrackingUrls": ["http://t/close"])",
                                 R"("loadAfter": 99, )");

    ASSERT_THAT(guard_lines(trace), Contains(HasSubstr(R"("do":"close")")));
    EXPECT_THAT(trace, Contains(AllOf(HasSubstr(R"("what":"request")"), HasSubstr("http://t/close"))));
}

TEST(CloseGuard, StaysOnceItIsShown)
{
    const Lines trace = auto_run(R"({"at": 1, "script": ["addEventListener", "onclick_closebtn", 1]},
        {"at": 5, "tap": "btnClose"}, {"at": 8, "script": ["removeEventListener", "onclick_closebtn", 1]},
        {"at": 9, "touch": [360, 15]}, {"at": 10, "device": {}})");

    EXPECT_THAT(guard_lines(trace), ElementsAre(HasSubstr(R"("do":"show")"), HasSubstr(R"("do":"close")")));
}

TEST(CloseGuard, IsRemovedWithTheAd)
{
    const Lines trace = auto_run(R"({"at": 1, "script": ["addEventListener", "onclick_closebtn", 1]},
        {"at": 5, "tap": "btnClose"}, {"at": 8, "script": ["MRAIDClose"]}, {"at": 9, "touch": [360, 15]},
        {"at": 10, "device": {}})");

    EXPECT_THAT(guard_lines(trace), ElementsAre(HasSubstr(R"("do":"show")")));
}

TEST(CloseGuard, DoesNotChangeTheController)
{
    const std::string steps = R"({"at": 1, "script": ["addEventListener", "onclick_closebtn", 1]},
        {"at": 5, "tap": "btnClose"}, {"at": 7, "snapshot": true}, {"at": 20, "snapshot": true})";
    const Lines guarded = auto_run(steps);
    Lines without_guard = guarded;
    std::erase_if(without_guard,
                  [](const std::string& line) { return line.find(R"("what":"guard")") != std::string::npos; });
    ASSERT_LT(without_guard.size(), guarded.size());

    EXPECT_EQ(without_guard, auto_run(steps, "", "", ""));
}

} // namespace
} // namespace qoro::test
