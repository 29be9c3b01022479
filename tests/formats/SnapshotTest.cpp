#include "tests/support/ScenarioRun.h"

#include <gtest/gtest.h>

namespace qoro
{
namespace
{

using test::in_snapshot;
using test::manual_run;
using Lines = std::vector<std::string>;

TEST(Snapshot, NamesAViewsParentAndItsPlace)
{
    const Lines trace = manual_run(R"({"open": 0}, {"snapshot": true})");

    EXPECT_EQ(in_snapshot(trace, "/views/btnMute/parent"), "\"viewBottomBackground\"");
    EXPECT_EQ(in_snapshot(trace, "/views/btnMute/order"), "1");
    EXPECT_EQ(in_snapshot(trace, "/views/view/parent"), "\"windowTempWindow\"");
    EXPECT_EQ(in_snapshot(trace, "/views/windowTempWindow/order"), "null");
}

TEST(Snapshot, CountsSubviewsWithoutANameToo)
{
    const Lines trace = manual_run(R"({"open": 0}, {"snapshot": true})");

    // The volume view is below the page.
    EXPECT_EQ(in_snapshot(trace, "/views/webView/order"), "1");
    EXPECT_EQ(in_snapshot(trace, "/views/volumeSlider/parent"), "\"other\"");
}

TEST(Snapshot, DoesNotCountTheSpinner)
{
    // While the spinner is shown, and after it.
    const Lines loading = manual_run(R"({"open": 0}, {"snapshot": true})");
    const Lines playing = manual_run(R"({"open": 0}, {"player": {"state": 1}}, {"snapshot": true})");

    EXPECT_EQ(in_snapshot(loading, "/views/btnClose/order"), in_snapshot(playing, "/views/btnClose/order"));
}

TEST(Snapshot, AViewInThePlayersViewHasTheMoviePlayerViewAsParent)
{
    const Lines trace = manual_run(R"({"open": 0}, {"snapshot": true})");

    EXPECT_EQ(in_snapshot(trace, "/views/btnClickListener/parent"), "\"moviePlayerView\"");
    EXPECT_EQ(in_snapshot(trace, "/views/playerView"), in_snapshot(trace, "/views/moviePlayerView"));
}

TEST(Snapshot, NamesTheEmbeddedPictureOfAControl)
{
    const Lines trace = manual_run(R"({"open": 0}, {"player": {"state": 1}}, {"snapshot": true})");

    EXPECT_EQ(in_snapshot(trace, "/views/btnPlayAndPause/image"), "\"arrayVideoPauseButton\"");
    EXPECT_EQ(in_snapshot(trace, "/views/imgTopBackgroundColor/image"), "\"arrayTopBackGround\"");
    EXPECT_EQ(in_snapshot(trace, "/views/btnBrandIcon/image"), "null");
}

TEST(Snapshot, LabelsAPictureFromTheNetworkAsFetched)
{
    const Lines trace = manual_run(R"({"open": 0}, {"call": ["setAbilityButtonImage", "btnActionOne", "http://ad/i"]},
                                      {"snapshot": true})",
                                   "", R"("net": {"http://ad/i": {"body64": "/9j/4A=="}},)");

    EXPECT_EQ(in_snapshot(trace, "/views/btnActionOne/image"), "\"fetched\"");
}

TEST(Snapshot, ShowsTheActionsOfTheCloseButton)
{
    const Lines trace =
        manual_run(R"({"open": 0}, {"script": ["addEventListener", "onclick_closebtn", "a"]}, {"snapshot": true})");

    EXPECT_EQ(in_snapshot(trace, "/views/btnClose/targets"), R"(["onclick_closebtn"])");
    EXPECT_EQ(in_snapshot(trace, "/views/btnReplay/targets"), R"(["videoReplay:"])");
    EXPECT_EQ(in_snapshot(trace, "/super/bIsClickCloseButton"), "true");
}

TEST(Snapshot, ShowsTheSecondsOfTheCountdown)
{
    const Lines trace = manual_run(R"({"open": 0}, {"snapshot": true})");

    EXPECT_EQ(in_snapshot(trace, "/views/countDownView/seconds"), "5");
    EXPECT_EQ(in_snapshot(trace, "/views/btnClose/seconds"), "absent");
}

TEST(Snapshot, ShowsTheSecondsOfTheCountdownWithNoMoreDigitsThanTheyHave)
{
    const Lines trace = manual_run(R"({"open": 0}, {"at": 1, "player": {"duration": 30, "load": 1}},
                                      {"at": 1, "player": {"state": 1}}, {"at": 1.15, "snapshot": true})");

    EXPECT_EQ(in_snapshot(trace, "/views/countDownView/seconds"), "4.9");
}

TEST(Snapshot, ShowsATurnedViewsAngleAndUprightBox)
{
    const Lines trace =
        manual_run(R"({"device": {"orientation": 3}}, {"open": 0}, {"snapshot": true})", R"("landscapeModeType": 1,)");

    EXPECT_EQ(in_snapshot(trace, "/views/moviePlayerView/angle"), "1.5707963267948966");
    EXPECT_EQ(in_snapshot(trace, "/views/moviePlayerView/frame"), "[0,0,375,812]");
}

TEST(Snapshot, KeepsBothStoragesOfAFlagApart)
{
    const Lines trace = manual_run(R"({"open": 0}, {"tap": "btnActionOne"}, {"snapshot": true})",
                                   R"("arrayButtonsInfo": [{"btn_text": "Go", "data": {}}],)");

    EXPECT_EQ(in_snapshot(trace, "/fields/_bDoButtonAction"), "true");
    EXPECT_EQ(in_snapshot(trace, "/fields/bDoButtonAction"), "false");
}

TEST(Snapshot, ShowsThePlayersSettingsAndReadings)
{
    const Lines trace = manual_run(
        R"({"open": 0}, {"player": {"time": 2.5, "duration": 30, "load": 3, "state": 2}}, {"snapshot": true})");

    EXPECT_EQ(in_snapshot(trace, "/player"),
              R"({"url":"http://ad/v.mp4","file":false,"autoplay":false,"scalingMode":1,"fullscreen":false,)"
              R"("controlStyle":0,"repeatMode":0,"sourceType":0,"time":2.5,"duration":30,"state":2,"load":3})");
}

TEST(Snapshot, NamesAPlayersFileByItsPath)
{
    const Lines trace = manual_run(R"({"open": 0}, {"snapshot": true})", R"("bIsUseVideoCache": true,)",
                                   R"("host": {"cached": {"http://ad/v.mp4": "/cache/v.mp4"}},)");

    EXPECT_EQ(in_snapshot(trace, "/player/url"), "\"/cache/v.mp4\"");
    EXPECT_EQ(in_snapshot(trace, "/player/file"), "true");
}

TEST(Snapshot, AfterACloseTheListenerTableIsGone)
{
    const Lines trace = manual_run(R"({"open": 0}, {"call": ["closeAction"]}, {"snapshot": true})");

    EXPECT_EQ(in_snapshot(trace, "/super/listeners"), "null");
    EXPECT_EQ(in_snapshot(trace, "/views/btnMute"), "null");
    EXPECT_EQ(in_snapshot(trace, "/fields/dicSendTrackingState"), "null");
}

} // namespace
} // namespace qoro
