#include "host/Session.h"

#include "tests/support/ScenarioRun.h"

#include <gtest/gtest.h>

namespace qoro
{
namespace
{

using test::in_snapshot;
using test::manual_run;
using test::of_kind;
using test::trace_of;
using Lines = std::vector<std::string>;

// ----------------------------------------------------------------------------------------------- before the first step

TEST(SessionSetUp, MakesTheControllersViewWithTheWebViewInItBeforeTheAdOpens)
{
    const Lines trace = manual_run(R"({"snapshot": true})");

    EXPECT_EQ(in_snapshot(trace, "/views/view/frame"), "[0,0,375,812]");
    EXPECT_EQ(in_snapshot(trace, "/views/view/parent"), "null");
    EXPECT_EQ(in_snapshot(trace, "/views/webView/frame"), "[0,0,375,812]");
    EXPECT_EQ(in_snapshot(trace, "/views/webView/parent"), "\"view\"");
    EXPECT_EQ(in_snapshot(trace, "/views/viewBackground/frame"), "[0,0,375,812]");
    EXPECT_EQ(in_snapshot(trace, "/views/viewBackground/parent"), "null");
    EXPECT_EQ(in_snapshot(trace, "/views/windowTempWindow"), "null");
    EXPECT_EQ(in_snapshot(trace, "/ad"), "null");
    EXPECT_EQ(in_snapshot(trace, "/player"), "null");
    EXPECT_EQ(in_snapshot(trace, "/super/listeners"), "{}");
    EXPECT_EQ(in_snapshot(trace, "/timers"), "{}");
}

TEST(SessionSetUp, GivesTheHostsWindowTheScreensSizeAndTheKey)
{
    const Lines trace = manual_run(R"({"snapshot": true})");

    EXPECT_EQ(in_snapshot(trace, "/views/windowDefaultWindow/frame"), "[0,0,375,812]");
    EXPECT_EQ(in_snapshot(trace, "/views/windowDefaultWindow/key"), "true");
    EXPECT_EQ(in_snapshot(trace, "/views/windowDefaultWindow/level"), "0");
    EXPECT_EQ(in_snapshot(trace, "/views/windowDefaultWindow/hidden"), "false");
}

TEST(SessionSetUp, WithoutAKeyWindowTheFirstWindowIsUsed)
{
    const Lines trace = manual_run(R"({"snapshot": true})", "", R"("host": {"keyWindow": false},)");

    EXPECT_EQ(in_snapshot(trace, "/views/windowDefaultWindow/key"), "false");
    EXPECT_EQ(in_snapshot(trace, "/views/windowDefaultWindow/frame"), "[0,0,375,812]");
}

TEST(SessionSetUp, WithoutAScreenEverythingHasNoSize)
{
    const Lines trace = manual_run(R"({"snapshot": true})", "", R"("device": {"screen": null},)");

    EXPECT_EQ(in_snapshot(trace, "/views/view/frame"), "[0,0,0,0]");
    EXPECT_EQ(in_snapshot(trace, "/fields/fScreenHeight"), "0");
}

TEST(SessionSetUp, SetsTheHostsFlags)
{
    const Lines trace =
        manual_run(R"({"snapshot": true})", "",
                   R"("host": {"flags": {"bIsLockOneSide": true, "bIsLockOneSideAndIsPortrait": true}},)");

    EXPECT_EQ(in_snapshot(trace, "/super/bIsLockOneSide"), "true");
    EXPECT_EQ(in_snapshot(trace, "/super/bIsLockOneSideAndIsLandscape"), "false");
    EXPECT_EQ(in_snapshot(trace, "/super/bIsLockOneSideAndIsPortrait"), "true");
}

TEST(SessionSetUp, AParentsWindowIsHiddenAndOfTheScreensSize)
{
    const Lines trace = manual_run(R"({"snapshot": true})", "", R"("host": {"parentWindow": true},)");

    EXPECT_EQ(in_snapshot(trace, "/views/windowAddOnParent/frame"), "[0,0,375,812]");
    EXPECT_EQ(in_snapshot(trace, "/views/windowAddOnParent/hidden"), "true");
}

// ----------------------------------------------------------------------------------------------------- host and parent

TEST(SessionHost, AParentIsNotifiedOfClicksTheImpressionAndTheClose)
{
    const Lines trace = manual_run(R"({"open": 0}, {"call": ["clickRequester"]}, {"call": ["sendImpression"]},
                                      {"call": ["closeAction"]})",
                                   R"("bNeedCloseParent": true,)", R"("host": {"parent": true},)");

    EXPECT_EQ(of_kind(trace, "parent"), (Lines{
                                            R"({"t":0,"what":"parent","do":"clickRequester"})",
                                            R"({"t":0,"what":"parent","do":"bIsSendImpression"})",
                                            R"({"t":0,"what":"parent","do":"closeVideoAdUnit","close":true})",
                                        }));
}

TEST(SessionHost, TheDelegatesThatAreSetAreNotifiedOfAFailure)
{
    const Lines trace = manual_run(R"({"call": ["failAdRequest", "no fill"]})", "",
                                   R"("host": {"delegates": ["qoroDelegate", "interstitialDelegate"]},)");

    EXPECT_EQ(of_kind(trace, "kit"),
              (Lines{
                  R"({"t":0,"what":"kit","do":"adFailed","to":"qoroDelegate","error":"no fill"})",
                  R"({"t":0,"what":"kit","do":"adFailed","to":"interstitialDelegate",)"
                  R"("error":"no fill"})",
              }));
}

TEST(SessionHost, APageThatCannotBeFetchedReachesTheDelegatesThroughTheSuperclass)
{
    const Lines trace =
        manual_run(R"({"open": 0}, {"at": 1, "snapshot": true})", R"("strWebViewUrl": "http://ad/gone",)",
                   R"("net": {"http://ad/gone": {"fail": "not found", "after": 0.1}},
                      "host": {"delegates": ["interstitialDelegate"]},)");

    EXPECT_EQ(of_kind(trace, "kit"),
              Lines{R"({"t":0.1,"what":"kit","do":"adFailed","to":"interstitialDelegate","error":"not found"})"});
    EXPECT_EQ(trace[trace.size() - 5], R"({"t":0.1,"what":"super","do":"failAdRequest"})");
}

// --------------------------------------------------------------------------------------------------------------- steps

TEST(SessionSteps, ATapOnAMissingButtonDoesNothing)
{
    const Lines trace = manual_run(R"({"open": 0}, {"call": ["closeAction"]}, {"at": 1, "tap": "btnMute"})");

    EXPECT_EQ(trace.back(), R"({"t":1,"what":"step","n":2,"tap":"btnMute"})");
}

TEST(SessionSteps, ATouchReachesTheViewThatAFingerWouldReach)
{
    const Lines trace = manual_run(R"({"open": 0}, {"player": {"duration": 30, "load": 1, "state": 1}},
                                      {"at": 1, "touch": [350, 230]}, {"touch": [350, 400]})");

    EXPECT_EQ(of_kind(trace, "volume").back(), R"({"t":1,"what":"volume","value":0})");
    EXPECT_EQ(trace.back(), R"({"t":1,"what":"step","n":3,"touch":[350,400],"hit":null})");
}

TEST(SessionSteps, ATouchNamesTheControlOrThePageThatItHits)
{
    const Lines trace = trace_of(R"({"ad": {"strVideoUrl": "http://a/clip.mp4", "strWebViewUrl": "http://a/page.html",
        "fVideoWidth": 320, "fVideoHeight": 180, "portraitVideoPos": "TOP", "portraitModeType": "VIDEO_AND_WEBVIEW",
        "landscapeModeType": "VIDEO_AND_WEBVIEW", "strBackgroundColor": "4279704105", "bIsAutoStart": true,
        "iCloseBtnCountdown": 600, "iBufferingSufferTime": 600},
        "steps": [{"open": 0}, {"at": 1.5, "touch": [187, 150]}, {"at": 10, "touch": [187, 400]},
                  {"touch": [187, 790]}, {"touch": [900, 900]}]})");
    const Lines steps = of_kind(trace, "step");

    ASSERT_EQ(steps.size(), 5U);
    EXPECT_EQ(steps[1], R"({"t":1.5,"what":"step","n":1,"touch":[187,150],"hit":"btnPlayAndPause"})");
    EXPECT_EQ(steps[2], R"({"t":10,"what":"step","n":2,"touch":[187,400],"hit":"page"})");
    EXPECT_EQ(steps[3], R"({"t":10,"what":"step","n":3,"touch":[187,790],"hit":null})");
    EXPECT_EQ(steps[4], R"({"t":10,"what":"step","n":4,"touch":[900,900],"hit":null})");
}

TEST(SessionSteps, ACommandThatReturnsAValueIsFollowedByIt)
{
    const Lines trace = manual_run(R"({"open": 0}, {"player": {"duration": 30.7, "load": 1, "state": 1}},
                                      {"script": ["getVideoTotalTime"]}, {"script": ["addEventListener", "onhide", "a"]},
                                      {"script": ["removeEventListener", "onhide", "a"]},
                                      {"call": ["checkCanOrientation"]})");

    EXPECT_EQ(of_kind(trace, "return"), (Lines{
                                            R"({"t":0,"what":"return","command":"getVideoTotalTime","value":30})",
                                            R"({"t":0,"what":"return","command":"removeEventListener","value":1})",
                                            R"({"t":0,"what":"return","command":"checkCanOrientation","value":false})",
                                        }));
}

TEST(SessionSteps, ComingBackMarksThePlayerAsResumingAndLaysTheAdOut)
{
    const Lines trace = manual_run(R"({"open": 0}, {"at": 1, "app": "background"}, {"at": 2, "app": "foreground"},
                                      {"snapshot": true}, {"at": 3, "app": "active"})");

    EXPECT_EQ(in_snapshot(trace, "/fields/qoroMoviePlayerStatus"), "1");
    EXPECT_EQ(of_kind(trace, "super").at(1), R"({"t":3,"what":"super","do":"checkViewSizeAfterOpenOtherApp"})");
}

TEST(SessionSteps, AnInterruptionPausesThePlayer)
{
    const Lines trace = manual_run(R"({"open": 0}, {"at": 1, "interrupt": 1})");

    EXPECT_EQ(trace.back(), R"({"t":1,"what":"player","do":"pause"})");
}

TEST(SessionSteps, AVolumeOfTheDeviceReachesTheScript)
{
    const Lines trace = manual_run(R"({"open": 0}, {"player": {"duration": 30, "load": 1, "state": 1}},
                                      {"at": 1.5, "device": {"outputVolume": 0}}, {"at": 1.6, "snapshot": true})");

    EXPECT_EQ(of_kind(trace, "js").back(),
              R"({"t":1.5,"what":"js","event":"video_volumechange","data":{"e":{"volume":"0"}},"listeners":0})");
}

TEST(SessionSteps, AListenerGetsTheEventsItRegisteredFor)
{
    const Lines trace = manual_run(R"({"open": 0}, {"script": ["addEventListener", "video_pause", "a"]},
                                      {"script": ["addEventListener", "video_pause", "b"]},
                                      {"player": {"state": 2}}, {"snapshot": true})");

    EXPECT_EQ(in_snapshot(trace, "/super/listeners"), R"({"video_pause":2})");
    EXPECT_EQ(of_kind(trace, "js").back(), R"({"t":0,"what":"js","event":"video_pause","data":null,"listeners":2})");
}

// ------------------------------------------------------------------------------------------------------------- release

TEST(SessionRelease, AnAdThatWasNeverOpenedIsDestroyedAtOnce)
{
    const Lines trace = manual_run(R"({"release": true}, {"at": 1, "open": 0}, {"snapshot": true})");

    EXPECT_EQ(trace, (Lines{
                         R"({"t":0,"what":"notification","name":"zulixInAppADWillBeOpen","info":null})",
                         R"({"t":0,"what":"device","orientation":1})",
                         R"({"t":0,"what":"step","n":0,"release":true})",
                         R"({"t":0,"what":"released"})",
                         R"({"t":1,"what":"step","n":1,"open":0})",
                         R"({"t":1,"what":"step","n":2,"snapshot":true})",
                     }));
}

TEST(SessionRelease, TheAdsOwnWindowKeepsItUntilItIsClosed)
{
    const Lines trace = manual_run(R"({"open": 0}, {"release": true}, {"at": 3, "player": {"duration": 90, "state": 1}},
                                      {"at": 60, "device": {"orientation": 1}})",
                                   R"("iCloseBtnCountdown": 1,)");

    EXPECT_TRUE(of_kind(trace, "released").empty());
    EXPECT_EQ(of_kind(trace, "js").back(),
              R"({"t":60,"what":"js","event":"video_timeupdate","data":{"e":{"current_time":"0"}},"listeners":0})");
}

TEST(SessionRelease, ATimerKeepsAClosedAdUntilItHasFired)
{
    const Lines trace = manual_run(R"({"open": 0}, {"at": 1, "call": ["closeAction"]}, {"release": true},
                                      {"at": 9, "device": {"orientation": 3}})");

    // The timer for the loaded state, which a close does not stop, fires at 1.5 s.
    EXPECT_EQ(of_kind(trace, "released"), Lines{R"({"t":1.5,"what":"released"})"});
}

TEST(SessionRelease, AnUnansweredRequestKeepsAClosedAdUntilItsAnswer)
{
    const Lines trace =
        manual_run(R"({"open": 0}, {"at": 2, "call": ["closeAction"]}, {"release": true},
                                      {"at": 9, "device": {"orientation": 3}})",
                   R"("arrayCloseTrackingUrls": ["http://t/close"],)", R"("net": {"http://t/close": {"after": 4}},)");

    EXPECT_EQ(of_kind(trace, "released"), Lines{R"({"t":6,"what":"released"})"});
}

TEST(SessionRelease, HostCallsAfterwardsDoNothing)
{
    const Lines trace = manual_run(R"({"open": 0}, {"release": true}, {"at": 0.5, "tap": "btnMute"},
                                      {"script": ["setVideoPlay"]}, {"call": ["closeAction"]})");
    const Lines last(trace.end() - 3, trace.end());

    EXPECT_EQ(last, (Lines{
                        R"({"t":0.5,"what":"step","n":2,"tap":"btnMute"})",
                        R"({"t":0.5,"what":"step","n":3,"script":["setVideoPlay"]})",
                        R"({"t":0.5,"what":"step","n":4,"call":["closeAction"]})",
                    }));
}

// ------------------------------------------------------------------------------------------------------------ screens

TEST(SessionScreens, ClosingTheBrowserEndsTheClickThrough)
{
    const Lines trace = manual_run(
        R"({"open": 0}, {"tap": "btnActionOne"}, {"at": 1, "call": ["closeInAppWebView"]}, {"snapshot": true})",
        R"("arrayButtonsInfo": [{"btn_text": "Go", "launch_type": "inapp",
                                 "data": {"u": "http://shop/", "show_nav_bar": true}}],)");

    EXPECT_EQ(of_kind(trace, "kit"),
              (Lines{
                  R"({"t":0,"what":"kit","do":"browser.create"})",
                  R"({"t":0,"what":"kit","do":"addExtraView"})",
                  R"({"t":0,"what":"kit","do":"browser.expand","url":"http://shop/","customClose":false,"navBar":true,)"
                  R"("progressBar":false,"height":812,"width":375,)"
                  R"("background":[0.12549019607843137,0.12549019607843137,0.12549019607843137,0.8],)"
                  R"("session":1700000000,"sequence":7})",
              }));
    EXPECT_EQ(in_snapshot(trace, "/fields/_bDoButtonAction"), "false");
}

TEST(SessionScreens, ATabletsStorePageIsPresentedAndDismissed)
{
    const Lines trace = manual_run(R"({"open": 0}, {"player": {"state": 2}},
                                      {"at": 1, "call": ["didDismissStoreViewController"]})",
                                   R"("strStoreId": "42", "strCampaignId": "c",)", R"("device": {"phone": false},)");

    EXPECT_EQ(of_kind(trace, "kit"), (Lines{
                                         R"({"t":0,"what":"kit","do":"store.create","ids":["42","c",null,null]})",
                                         R"({"t":0,"what":"kit","do":"store.present"})",
                                         R"({"t":1,"what":"kit","do":"store.dismiss"})",
                                     }));
}

TEST(SessionScreens, DismissingAPhonesStorePageClosesTheAd)
{
    const Lines trace = manual_run(R"({"open": 0}, {"at": 1, "call": ["didDismissStoreViewController"]},
                                      {"snapshot": true})",
                                   R"("strStoreId": "42",)");

    EXPECT_EQ(of_kind(trace, "js").back(), R"({"t":1,"what":"js","event":"onhide","data":null,"listeners":0})");
    EXPECT_EQ(in_snapshot(trace, "/views/appStoreWindow"), "null");
}

TEST(SessionScreens, DismissingAMissingStorePageIsHarmless)
{
    const Lines phone = manual_run(R"({"call": ["didDismissStoreViewController"]})");
    const Lines tablet =
        manual_run(R"({"call": ["didDismissStoreViewController"]})", "", R"("device": {"phone": false},)");

    EXPECT_EQ(of_kind(phone, "fault").size() + of_kind(tablet, "fault").size(), 0U);
}

} // namespace
} // namespace qoro
