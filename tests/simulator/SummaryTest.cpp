#include "simulator/Summary.h"
#include "simulator/Simulation.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace qoro
{
namespace
{

using Json = nlohmann::json;
using Times = std::vector<double>;

/// An ordinary ad with a manual player: playable at 0.5 s, playing from 0.6 s on.
Scenario scenario(const std::string& ad, const std::string& steps, const std::string& net = "")
{
    return read_scenario(R"({"video": {"mode": "manual"}, "net": {)" + net + R"(}, "ad": {)" + ad +
                             R"("strVideoUrl": "http://ad/v.mp4", "fVideoWidth": 1280, "fVideoHeight": 720,
                            "portraitModeType": 2, "portraitVideoPos": "TOP"},
                            "steps": [{"open": 0}, {"at": 0.5, "player": {"duration": 30, "load": 1}},
                                      {"at": 0.6, "player": {"time": 0, "state": 1}})" +
                             (steps.empty() ? "" : ", " + steps) + "]}",
                         "scenario.json");
}

Summary sum_up(const Scenario& of)
{
    return simulate_and_sum_up(of, TraceFormat::Json, [](std::string_view) {});
}

Json as_json(const Summary& summary)
{
    std::string text;
    append_json(text, summary);
    return Json::parse(text);
}

Json figures(const std::string& ad, const std::string& steps, const std::string& net = "")
{
    return as_json(sum_up(scenario(ad, steps, net)));
}

/// The figures of the tracker of a kind; null without one.
Json tracker(const Json& summary, const Json& kind)
{
    for (const Json& each : summary["trackers"])
        if (each["kind"] == kind)
            return each;
    return nullptr;
}

// ------------------------------------------------------------------------------------------------------------- times

TEST(Summary, HasTheTimeOfTheOpeningAndNullForWhatNeverHappened)
{
    const Scenario late = read_scenario(
        R"({"ad": {}, "steps": [{"at": 2.5, "open": 0}, {"open": 10}, {"at": 4, "open": 0}]})", "scenario.json");
    const Json summary = as_json(sum_up(late));

    EXPECT_EQ(summary["opened"], 2.5) << "the first time";
    for (const char* never : {"closeButtonTappable", "closed", "released", "destroyed", "afterClose"})
        EXPECT_TRUE(summary[never].is_null()) << never;
    EXPECT_EQ(summary["mainThreadBlocked"], 0);
}

TEST(Summary, TheCloseButtonCanBeTappedOneTickAfterThePlayWithoutACountdown)
{
    const Json summary =
        figures(R"("iCloseBtnCountdown": 0, "iBufferingSufferTime": -1,)", R"({"at": 3, "touch": [25, 69]})");

    EXPECT_EQ(summary["closeButtonTappable"], 0.7);
    EXPECT_EQ(summary["closed"], 3) << "a finger at its middle closes the ad";
}

TEST(Summary, TheBufferingWatchdogShowsTheCloseButtonOneTickLate)
{
    // Counted from the player's start, when the ad opens; the countdown is far from its end.
    const Json summary =
        figures(R"("iCloseBtnCountdown": 60, "iBufferingSufferTime": 3,)", R"({"at": 10, "snapshot": true})");

    EXPECT_EQ(summary["closeButtonTappable"], 4);
}

TEST(Summary, ACloseButtonThatTheCreativeTookAwayCanNotBeTapped)
{
    const Json summary = figures(R"("iCloseBtnCountdown": 2, "iBufferingSufferTime": -1,)",
                                 R"({"at": 1, "script": ["MRAIDUseCustomClose", true]}, {"at": 10, "snapshot": true})");

    EXPECT_TRUE(summary["closeButtonTappable"].is_null());
}

TEST(Summary, AStepThatShowsTheCloseButtonCountsAlsoAsTheLast)
{
    const Json summary = figures(R"("iCloseBtnCountdown": 60, "iBufferingSufferTime": -1,)",
                                 R"({"at": 2, "player": {"state": 2}}, {"at": 2.25, "script": ["checkVideoPlay"]})");

    EXPECT_EQ(summary["closeButtonTappable"], 2.25);
}

TEST(Summary, AnAdThatClosesItselfIsClosedAtItsEnd)
{
    const Scenario ends = read_scenario(R"({"video": {"duration": 4}, "ad": {"strVideoUrl": "http://ad/v.mp4",
        "fVideoWidth": 16, "fVideoHeight": 9, "portraitModeType": 2, "portraitVideoPos": "TOP", "bIsAutoStart": true,
        "bIsAutoClose": true, "iBufferingSufferTime": -1}, "steps": [{"open": 0}, {"at": 9, "snapshot": true}]})",
                                        "scenario.json");

    EXPECT_EQ(as_json(sum_up(ends))["closed"], 4.3);
}

// ---------------------------------------------------------------------------------------------------------- trackers

TEST(Summary, CountsEachTrackerOfTheAdEvenIfUnsent)
{
    const Json summary = figures(R"("dicTrackingUrls": {"start": ["http://t/start?at={CurrentTime}", "http://t/too"],
                                    "complete": ["http://t/complete"]},
                                    "arrayMuteTrackingUrls": ["http://t/mute"],)",
                                 R"({"at": 2, "tap": "btnMute"}, {"at": 2.25, "tap": "btnMute"},
                                    {"at": 2.5, "tap": "btnMute"})");

    ASSERT_EQ(summary["trackers"].size(), 4U);
    EXPECT_EQ(
        tracker(summary, "start"),
        Json({{"kind", "start"}, {"url", "http://t/start?at={CurrentTime}"}, {"count", 1}, {"sent", Times{1.6}}}));
    EXPECT_EQ(tracker(summary, "complete")["count"], 0);
    EXPECT_EQ(tracker(summary, "complete")["sent"], Json::array());
    EXPECT_EQ(tracker(summary, "mute")["sent"], (Times{2, 2.5}));
}

TEST(Summary, ATrackerIsRecognisedWhateverItsMacrosExpandTo)
{
    const Scenario beats = read_scenario(R"({"video": {"duration": 3.5}, "ad": {"strVideoUrl": "http://ad/v.mp4",
        "fVideoWidth": 16, "fVideoHeight": 9, "portraitModeType": 2, "portraitVideoPos": "TOP", "bIsAutoStart": true,
        "iBufferingSufferTime": -1, "strVideoTrackingUrl": "http://t/{Zulix-Guid}?at={CurrentTime}&end",
        "fTrackingInterval": 1}, "steps": [{"open": 0}, {"at": 9, "snapshot": true}]})",
                                         "scenario.json");

    const Json summary = as_json(sum_up(beats));
    ASSERT_EQ(summary["trackers"].size(), 1U);
    EXPECT_EQ(tracker(summary, "heartbeat")["sent"], (Times{1.3, 2.3, 3.3}));
}

TEST(Summary, AnAddressThatFitsTwoTrackersCountsForTheMoreSpecificOne)
{
    const Json summary = figures(R"("arrayMuteTrackingUrls": ["http://t/{CurrentTime}"],
                                    "arrayCloseTrackingUrls": ["http://t/close?at={CurrentTime}"],)",
                                 R"({"at": 2, "call": ["closeAction"]})");

    EXPECT_EQ(tracker(summary, "mute")["count"], 0);
    EXPECT_EQ(tracker(summary, "close")["count"], 1);
}

TEST(Summary, TheSameAddressInTwoListsIsOneTrackerOfBothKinds)
{
    const Json summary = figures(R"("arrayMuteTrackingUrls": ["http://t/sound"],
                                    "arrayUnmuteTrackingUrls": ["http://t/sound"],)",
                                 R"({"at": 2, "tap": "btnMute"}, {"at": 3, "tap": "btnMute"})");

    ASSERT_EQ(summary["trackers"].size(), 1U);
    EXPECT_EQ(tracker(summary, "mute, unmute")["sent"], (Times{2, 3}));
}

TEST(Summary, NamesTrackersByWhatTheyReport)
{
    const Json summary = figures(R"("dicTrackingUrls": {"start": ["http://t/start"]},
                                    "dicProgressTrackingUrls": {"8": ["http://t/8"]},
                                    "arrayButtonsInfo": [{"btn_text": "a", "btn_tracking_urls": ["http://t/a", "c"]},
                                                         {"btn_text": "b", "btn_tracking_urls": ["http://t/b"]}],)",
                                 "");

    EXPECT_EQ(tracker(summary, "progress 8")["url"], "http://t/8");
    EXPECT_EQ(tracker(summary, "button 1 click")["url"], "http://t/a");
    EXPECT_EQ(tracker(summary, "button 2 click")["url"], "http://t/b");
    EXPECT_EQ(summary["trackers"].size(), 4U) << "\"c\" is no address";
}

TEST(Summary, AnAddressThatIsNotTheAdsHasNoKind)
{
    // A next video has its own trackers; the first replay button of a next video starts it, and is not reported.
    const Json summary = figures(R"("arrayReplayTrackingUrls": ["http://t/mine"],)",
                                 R"({"at": 2, "script": ["playNextVideo", {"v_u": "http://ad/2.mp4",
                                        "replay_tracking_urls": ["http://t/again"]}]},
                                    {"at": 3, "tap": "btnReplay"}, {"at": 4, "tap": "btnReplay"},
                                    {"at": 5, "tap": "btnReplay"})");

    EXPECT_EQ(tracker(summary, nullptr)["url"], "http://t/again");
    EXPECT_EQ(tracker(summary, nullptr)["sent"], (Times{4, 5}));
    EXPECT_EQ(tracker(summary, "replay")["count"], 0);
}

// -------------------------------------------------------------------------------------------------------- main thread

TEST(Summary, TheMainThreadIsBlockedForTheDelaysOfSynchronousFetchesSummed)
{
    const Json summary =
        figures(R"("strBrandIconUrl": "http://ad/icon.png", "arrayMuteTrackingUrls": ["http://t/mute"],)",
                R"({"at": 1, "call": ["setAbilityButtonImage", "btnReplay", "http://ad/b.png"]},
                                    {"at": 2, "call": ["setAbilityButtonImage", "btnReplay", "http://ad/b.png"]},
                                    {"at": 3, "tap": "btnMute"}, {"at": 9, "snapshot": true})",
                R"("http://ad/icon.png": {"after": 0.1}, "http://ad/b.png": {"fail": "gone", "after": 0.2},
                                    "http://t/mute": {"after": 4})");

    EXPECT_EQ(summary["mainThreadBlocked"], 0.5) << "0.1 + 0.2 + 0.2, the tracker's answer being waited for by nobody";
}

// -------------------------------------------------------------------------------------------------------- left behind

TEST(Summary, AnOpenAdHasItsTimersObserversWindowAndListeners)
{
    const Json summary = figures(R"("iCloseBtnCountdown": 60, "iBufferingSufferTime": 60,)",
                                 R"({"at": 1, "script": ["addEventListener", "video_play", 1]},
                                    {"at": 1, "script": ["addEventListener", "video_play", 2]},
                                    {"at": 1, "script": ["addEventListener", "video_pause", 1]},
                                    {"at": 1.25, "snapshot": true})");

    EXPECT_TRUE(summary["afterClose"].is_null());
    const Json& left = summary["atEnd"];
    const std::vector<std::string> timers = left["timers"];
    for (const char* runs :
         {"timerUpdateRemainderTime", "timerCloseBtnCountdown", "timerBufferSufferTime", "timerSendTrackingToServer"})
        EXPECT_EQ(std::ranges::count(timers, runs), 1) << runs;
    EXPECT_EQ(left["observers"], 9) << "four for the application and the volume, five for the player";
    EXPECT_EQ(left["windows"], 1) << "its temporary one";
    EXPECT_EQ(left["listeners"], 3);
    EXPECT_EQ(left["controller"], "held");
}

TEST(Summary, ACloseLeavesTheBufferingTimerRunning)
{
    const Json summary = figures(R"("iBufferingSufferTime": 20, "arrayCloseTrackingUrls": ["http://t/close"],)",
                                 R"({"at": 1, "script": ["addEventListener", "video_play", 1]},
                                    {"at": 3, "call": ["closeAction"]})",
                                 R"("http://t/close": {"after": 1})");

    const Json left{{"timers", {"timerBufferSufferTime"}},
                    {"observers", 0},
                    {"windows", 0},
                    {"listeners", 0},
                    {"requests", 1},
                    {"controller", "held"}};
    EXPECT_EQ(summary["afterClose"], left);
    EXPECT_EQ(summary["atEnd"], left) << "nothing runs after the last step";
}

TEST(Summary, ACloseLeavesTheLoadedTimerRunning)
{
    const Scenario waits = read_scenario(R"({"video": {"mode": "manual"}, "ad": {"strVideoUrl": "http://ad/v.mp4",
        "fVideoWidth": 16, "fVideoHeight": 9, "portraitModeType": 2, "portraitVideoPos": "TOP",
        "iBufferingSufferTime": -1}, "steps": [{"open": 0}, {"at": 1, "call": ["closeAction"]}, {"at": 2, "snapshot": true}]})",
                                         "scenario.json");
    const Json summary = as_json(sum_up(waits));

    EXPECT_EQ(summary["afterClose"]["timers"], Json({"timerVideoLoaded"}));
    EXPECT_EQ(summary["atEnd"]["timers"], Json::array()) << "it has fired at 1.5 s";
}

TEST(Summary, AReleasedControllerIsRetainedUntilItsTimerHasRunOut)
{
    const std::string ad = R"("iBufferingSufferTime": 20,)";
    const std::string closes = R"({"at": 3, "call": ["closeAction"]}, {"at": 4, "release": true}, )";
    const Json soon = figures(ad, closes + R"({"at": 10, "snapshot": true})");
    const Json late = figures(ad, closes + R"({"at": 40, "snapshot": true})");

    EXPECT_EQ(soon["released"], 4);
    EXPECT_TRUE(soon["destroyed"].is_null());
    EXPECT_EQ(soon["atEnd"]["controller"], "kept");
    // One second for each count from 20 to 0, and one more.
    EXPECT_EQ(late["destroyed"], 21);
    EXPECT_EQ(late["atEnd"]["controller"], "gone");
    EXPECT_EQ(late["atEnd"]["timers"], Json::array());
}

TEST(Summary, AnUnreferencedControllerIsDestroyedWithItsClose)
{
    // Released by the host; its own window retains it until the close.
    const Json summary =
        figures(R"("iBufferingSufferTime": -1, "iCloseBtnCountdown": 0,)",
                R"({"at": 3, "release": true}, {"at": 4, "touch": [25, 69]}, {"at": 5, "snapshot": true})");

    EXPECT_EQ(summary["closed"], 4);
    EXPECT_EQ(summary["destroyed"], 4);
    EXPECT_EQ(summary["afterClose"]["controller"], "gone");
}

TEST(Summary, HidingTheVideoDoesNotCountAsAClose)
{
    const Scenario hides = read_scenario(R"({"device": {"statusBarOrientation": 3},
        "host": {"autorotates": [1, 3, 4]}, "video": {"mode": "manual"},
        "ad": {"strVideoUrl": "http://ad/v.mp4", "strWebViewUrl": "http://ad/p", "fVideoWidth": 16, "fVideoHeight": 9,
               "portraitModeType": 2, "landscapeModeType": 2, "portraitVideoPos": "TOP", "bShowHideVideoBtn": true},
        "steps": [{"device": {"orientation": 3}}, {"open": 0}, {"at": 0.5, "player": {"duration": 30, "load": 1}},
                  {"at": 0.6, "player": {"state": 1}}, {"at": 2, "call": ["closeAction"]},
                  {"at": 3, "call": ["closeAction"]}]})",
                                         "scenario.json");
    std::string trace;
    const Summary summary =
        simulate_and_sum_up(hides, TraceFormat::Json, [&trace](std::string_view line) { trace += line; });

    EXPECT_NE(trace.find(R"({"t":2,"what":"js","event":"onhide")"), std::string::npos)
        << "though the script receives the event";
    EXPECT_EQ(as_json(summary)["closed"], 3) << "the second one finds the video hidden";
}

// --------------------------------------------------------------------------------------------------- complete summary

TEST(Summary, ChangesNothingInTheTrace)
{
    const Scenario of =
        scenario(R"("iCloseBtnCountdown": 1, "iBufferingSufferTime": 2, "strBrandText": "b",
                                    "arrayCloseTrackingUrls": ["http://t/close"],)",
                 R"({"at": 5, "snapshot": true}, {"at": 6, "touch": [25, 69]}, {"at": 6, "release": true},
                                    {"at": 9, "snapshot": true})");
    std::string watched;
    simulate_and_sum_up(of, TraceFormat::Json, [&watched](std::string_view line) { watched += line; });

    EXPECT_EQ(watched, simulate(of));
}

TEST(Summary, TheTableShowsTheSameFigures)
{
    std::string table;
    append_table(table, sum_up(scenario(R"("iCloseBtnCountdown": 0, "iBufferingSufferTime": 20,
                                           "dicTrackingUrls": {"start": ["http://t/s?at={CurrentTime}"]},
                                           "arrayMuteTrackingUrls": ["http://t/m"],)",
                                        R"({"at": 3, "touch": [25, 69]}, {"at": 3.25, "release": true})")));

    EXPECT_EQ(table, R"(Summary
  ad opened                       at 0 s
  close button could be tapped    at 0.7 s
  ad closed                       at 3 s
  host released the controller    at 3.25 s
  controller destroyed            never
  main thread blocked             0 s, by synchronous fetches

  Tracker  Sent  Address                      At (s)
  mute        0  http://t/m
  start       1  http://t/s?at={CurrentTime}  1.6

  Left behind   after the close            at the end
  timers        1 (timerBufferSufferTime)  1 (timerBufferSufferTime)
  observers     0                          0
  windows       0                          0
  listeners     0                          0
  requests      0                          0
  controller    held by the host           kept, though released
)");
}

TEST(Summary, TheTableShowsAnAdThatNeverClosed)
{
    std::string table;
    append_table(table, sum_up(scenario("", "")));

    EXPECT_NE(table.find("ad closed                       never\n"), std::string::npos) << table;
    EXPECT_NE(table.find("Trackers: none\n"), std::string::npos) << table;
    EXPECT_NE(table.find("at the end (the ad was not closed)\n"), std::string::npos) << table;
}

TEST(Summary, TheTableCountsUnlistedTimes)
{
    Summary summary;
    summary.trackers.push_back({"heartbeat", "http://t/b", {}});
    for (std::int64_t second = 1; second <= 30; ++second)
        summary.trackers[0].sent.push_back(second * 1'000'000);
    std::string table;
    append_table(table, summary);

    EXPECT_NE(table.find("heartbeat    30  http://t/b  1  2  3  4  5  6  7  8  9  10  11  … 30\n"), std::string::npos)
        << table;
}

} // namespace
} // namespace qoro
