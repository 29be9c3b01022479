#include "simulator/Simulation.h"
#include "tests/support/ScenarioRun.h"

#include <gtest/gtest.h>
#include <thread>

namespace qoro
{
namespace
{

using test::in_snapshot;
using test::manual_run;
using test::of_kind;
using test::trace_of;
using Lines = std::vector<std::string>;

constexpr std::string_view Example = R"({
  "net": {"http://ad/page.html": {"body": "<head></head>mraid.js", "after": 0.2}},
  "video": {"mode": "manual"},
  "ad": {"strVideoUrl": "http://ad/v.mp4", "fVideoWidth": 1280, "fVideoHeight": 720, "portraitModeType": 2,
         "portraitVideoPos": "TOP", "iCloseBtnCountdown": 5, "iBufferingSufferTime": -1,
         "strWebViewUrl": "http://ad/page.html", "dicTrackingUrls": {"start": ["http://t/start?at={CurrentTime}"]},
         "arrayMuteTrackingUrls": ["http://t/mute"]},
  "steps": [
    {"open": 0},
    {"at": 0.5, "player": {"duration": 30, "load": 1}},
    {"at": 0.6, "player": {"time": 0, "state": 1}},
    {"at": 2.0, "tap": "btnMute"},
    {"at": 6.0, "snapshot": true}
  ]
})";

TEST(Simulation, TracesAWholeSessionInOrder)
{
    const Lines trace = trace_of(Example);
    const Lines until_mute(trace.begin(), trace.begin() + 38);

    EXPECT_EQ(
        until_mute,
        (Lines{
            R"({"t":0,"what":"notification","name":"zulixInAppADWillBeOpen","info":null})",
            R"({"t":0,"what":"device","orientation":1})",
            R"({"t":0,"what":"step","n":0,"open":0})",
            R"({"t":0,"what":"request","url":"http://ad/page.html","for":"page"})",
            R"({"t":0,"what":"js","event":"video_loading","data":null,"listeners":0})",
            R"({"t":0,"what":"player","do":"create","url":"http://ad/v.mp4","file":false})",
            R"({"t":0,"what":"log","level":1,"message":"Ad view add on custom window"})",
            R"({"t":0,"what":"js","event":"video_orientation","data":{"orientation":"portrait"},"listeners":0})",
            R"({"t":0,"what":"js","event":"video_visibilitychange","data":{"e":{"visibility":1}},"listeners":0})",
            R"({"t":0,"what":"js","event":"video_orientation","data":{"e":{"orientation":"portrait"}},"listeners":0})",
            R"({"t":0,"what":"super","do":"showProgressbar","x":167,"y":85})",
            R"({"t":0,"what":"log","level":0,"message":"Added Video Close Button"})",
            R"({"t":0,"what":"log","level":0,"message":"Added Count Down View"})",
            R"({"t":0,"what":"notification","name":"NotifyOpenVideoExResult","info":{"Result":"1"}})",
            R"({"t":0.2,"what":"log","level":0,"message":"send imp policy 0"})",
            R"({"t":0.2,"what":"page","html":"<head><script type=\"text/javascript\" charset=\"utf-8\" )"
            R"(src=\"kit://script.js\"></script></head>mraid.js","base":"http://ad/page.html"})",
            R"({"t":0.3,"what":"js","event":"video_orientation","data":{"orientation":"portrait"},"listeners":0})",
            R"({"t":0.3,"what":"js","event":"video_visibilitychange","data":{"e":{"visibility":1}},"listeners":0})",
            R"({"t":0.3,"what":"js","event":"video_orientation","data":{"e":{"orientation":"portrait"}},"listeners":0})",
            R"({"t":0.3,"what":"super","do":"showProgressbar","x":167,"y":85})",
            R"({"t":0.3,"what":"log","level":0,"message":"Added Video Close Button"})",
            R"({"t":0.3,"what":"log","level":0,"message":"Added Count Down View"})",
            R"({"t":0.5,"what":"step","n":1,"player":{"duration":30,"load":1}})",
            R"({"t":0.5,"what":"volume","value":0.6})",
            R"({"t":0.5,"what":"js","event":"video_loaded","data":null,"listeners":0})",
            R"({"t":0.6,"what":"step","n":2,"player":{"time":0,"state":1}})",
            R"({"t":0.6,"what":"js","event":"video_play","data":null,"listeners":0})",
            R"({"t":0.6,"what":"super","do":"stopProgressbar"})",
            R"({"t":0.6,"what":"log","level":1,"message":"video play"})",
            R"({"t":0.6,"what":"js","event":"video_orientation","data":{"e":{"orientation":"portrait"}},"listeners":0})",
            R"({"t":0.6,"what":"js","event":"video_visibilitychange","data":{"e":{"visibility":1}},"listeners":0})",
            R"({"t":1.6,"what":"request","url":"http://t/start?at=0.000000","for":"tracking"})",
            R"({"t":1.6,"what":"js","event":"video_timeupdate","data":{"e":{"current_time":"0"}},"listeners":0})",
            R"({"t":1.6,"what":"log","level":0,"message":"didSendTracking"})",
            R"({"t":2,"what":"step","n":3,"tap":"btnMute"})",
            R"({"t":2,"what":"volume","value":0})",
            R"({"t":2,"what":"request","url":"http://t/mute","for":"tracking"})",
            R"({"t":2,"what":"js","event":"video_volumechange","data":{"e":{"volume":"0"}},"listeners":0})",
        }));
}

TEST(Simulation, ShowsTheWholeStateInASnapshot)
{
    const Lines trace = trace_of(Example);

    EXPECT_EQ(in_snapshot(trace, "/fields/bIsMute"), "true");
    EXPECT_EQ(in_snapshot(trace, "/fields/fDefaultVolume"), "0.6");
    EXPECT_EQ(in_snapshot(trace, "/super/strBaseUrl"), R"("http://ad/page.html")");
    EXPECT_EQ(in_snapshot(trace, "/timers/timerUpdateRemainderTime"), R"({"interval":1,"repeats":true,"due":6.6})");
    EXPECT_EQ(in_snapshot(trace, "/views/btnMute"),
              R"({"frame":[325,0,50,50],"hidden":false,"angle":0,"alpha":1,"parent":"viewBottomBackground","order":1,)"
              R"("background":null,"image":"arrayVideoSoundOffButton","text":null,"targets":["setMute"]})");
}

TEST(Simulation, EndsWhileAPageForcesTheOrientation)
{
    const Lines trace = trace_of(R"({
      "ad": {"strVideoUrl": "http://ad/v.mp4", "portraitModeType": 2, "landscapeModeType": 2, "strStoreId": "99"},
      "steps": [
        {"open": 0},
        {"at": 7, "script": ["mraid.load"]},
        {"at": 7, "script": ["mraid.setOrientationProperties", {"forceOrientation": "landscape"}]},
        {"at": 8, "snapshot": true}
      ]
    })");

    ASSERT_FALSE(trace.empty());
    EXPECT_NE(trace.back().find("snapshot"), std::string::npos);
}

TEST(Simulation, GivesTheSameBytesEveryTime)
{
    const Scenario scenario = read_scenario(Example, "scenario.json");

    EXPECT_EQ(simulate(scenario), simulate(scenario));
}

TEST(Simulation, GivesTheSameBytesOnManyThreadsAtOnce)
{
    const Scenario scenario = read_scenario(Example, "scenario.json");
    const std::string alone = simulate(scenario);
    std::vector<std::string> traces(4);
    std::vector<std::thread> threads;
    threads.reserve(traces.size());
    for (std::string& trace : traces)
        threads.emplace_back([&scenario, &trace] { trace = simulate(scenario); });
    for (std::thread& thread : threads)
        thread.join();

    EXPECT_EQ(traces, (std::vector<std::string>{alone, alone, alone, alone}));
}

TEST(Simulation, DoesNotChangeItsScenario)
{
    const Scenario scenario = read_scenario(
        R"({"ad": {"strVideoUrl": "http://ad/v.mp4", "fVideoWidth": 16, "fVideoHeight": 9, "portraitModeType": 2,
                   "portraitVideoPos": "TOP", "bIsAutoStart": true, "dicTrackingUrls": {"start": ["http://t/s"]},
                   "dicProgressTrackingUrls": {"1": ["http://t/1"]}, "arrayPrePauseLocations": [2]},
            "steps": [{"open": 0}, {"at": 9, "script": ["cancelPrePauseLocations"]}]})",
        "scenario.json");

    simulate(scenario);

    EXPECT_EQ(scenario.ad->dicProgressTrackingUrls.count(), 1U);
    EXPECT_EQ(scenario.ad->arrayPrePauseLocations.count(), 1U);
}

TEST(Simulation, RunsEverythingDueAtOrBeforeAStepsTimeBeforeTheStep)
{
    const Lines trace = manual_run(R"({"open": 0}, {"at": 1.5, "snapshot": true})");

    // The controller treats the video as loaded after exactly 1.5 s.
    EXPECT_EQ(in_snapshot(trace, "/fields/bIsLoaded"), "true");
}

TEST(Simulation, RunsNothingAfterTheLastStep)
{
    const Lines trace = trace_of(R"({"net": {"http://t/close": {"after": 1}}, "video": {"mode": "manual"},
        "ad": {"strVideoUrl": "http://ad/v.mp4", "fVideoWidth": 16, "fVideoHeight": 9, "portraitModeType": 2,
               "portraitVideoPos": "TOP", "arrayCloseTrackingUrls": ["http://t/close"]},
        "steps": [{"open": 0}, {"at": 1, "call": ["closeAction"]}]})");

    EXPECT_EQ(of_kind(trace, "request").back(), R"({"t":1,"what":"request","url":"http://t/close","for":"tracking"})");
    EXPECT_EQ(trace.back(), R"({"t":1,"what":"player","do":"drop"})");
}

TEST(Simulation, PlaysAVideoToItsEndWithoutSteps)
{
    const Lines trace = trace_of(R"({"video": {"duration": 4},
        "ad": {"strVideoUrl": "http://ad/v.mp4", "fVideoWidth": 16, "fVideoHeight": 9, "portraitModeType": 2,
               "portraitVideoPos": "TOP", "bIsAutoStart": true, "iBufferingSufferTime": -1,
               "dicTrackingUrls": {"complete": ["http://t/complete"]}},
        "steps": [{"open": 0}, {"at": 10, "snapshot": true}]})");

    EXPECT_EQ(of_kind(trace, "console"),
              Lines{R"({"t":4.3,"what":"console","message":"playbackFinished. Reason: Playback Ended 4.000000"})"});
    EXPECT_EQ(of_kind(trace, "request"),
              Lines{R"({"t":4.3,"what":"request","url":"http://t/complete","for":"tracking"})"});
    EXPECT_EQ(in_snapshot(trace, "/player/time"), "4");
    EXPECT_EQ(in_snapshot(trace, "/fields/videoState"), "4");
}

TEST(Simulation, TracesARejectedPageRewriteAndContinues)
{
    const Lines trace = trace_of(R"({"net": {"http://ad/p": {"body": "mraid.js without a head"}},
        "video": {"mode": "manual"},
        "ad": {"strVideoUrl": "http://ad/v.mp4", "strWebViewUrl": "http://ad/p", "fVideoWidth": 16, "fVideoHeight": 9,
               "portraitModeType": 2, "portraitVideoPos": "TOP"},
        "steps": [{"open": 0}, {"at": 1, "snapshot": true}]})");

    EXPECT_EQ(of_kind(trace, "fault").size(), 1U);
    EXPECT_TRUE(of_kind(trace, "page").empty());
    EXPECT_EQ(of_kind(trace, "snapshot").size(), 1U);
}

TEST(Simulation, WritesANumberThatIsNotFiniteAsNull)
{
    const Lines trace = trace_of(R"({"video": {"mode": "manual"},
        "ad": {"strVideoUrl": "http://ad/v.mp4", "fVideoWidth": 0, "fVideoHeight": 9, "portraitModeType": 2,
               "portraitVideoPos": "TOP"},
        "steps": [{"open": 0}, {"snapshot": true}]})");

    EXPECT_EQ(in_snapshot(trace, "/fields/fVideoHeight"), "null");
}

} // namespace
} // namespace qoro
