#include "tests/support/AdSession.h"
#include "tests/support/ScenarioRun.h"

#include <gmock/gmock.h>

// The commands of a page's script while the ad cannot carry them out, and the replay that it can ask for.

namespace qoro
{
namespace
{

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr const char* Hidden = "the video is hidden behind the page";

/// An ad whose page is an end card: its full-screen portrait video hides at the end.
class EndCardTest : public testing::Test
{
protected:
    EndCardTest()
    {
        session.ad().strWebViewUrl = "http://ad/page.html";
        session.ad().portraitVideoPos = FULL;
        session.ad().bIsHideFullPortraitVideoAtEnd = true;
        session.ad().arrayReplayTrackingUrls = NSArray{"http://t/replay"};
        session.ad().dicTrackingUrls = NSDictionary{{"start", NSArray{"http://t/start"}}};
        session.ad().arrayPrePauseLocations = NSArray{12};
        session.open();
        session.plays();
    }

    void end()
    {
        session.ends();
        session.let_pass(0);
        session.forget();
    }
    std::string refusal(const std::string& command, const NSArray& arguments = {})
    {
        return session.script_says(command, arguments).error.text();
    }

    AdSession session;
};

TEST_F(EndCardTest, APlayCommandIsAnsweredWithTheReasonAndTheControllerStaysSilent)
{
    end();
    ASSERT_TRUE(session->qoroMoviePlayer.view().isHidden());

    EXPECT_EQ(refusal("setVideoPlay"), Hidden);

    EXPECT_THAT(session.transcript(), IsEmpty());
}

TEST_F(EndCardTest, ReplayPlaysTheVideoAndShowsItAgain)
{
    end();

    EXPECT_EQ(refusal("replay"), "");
    EXPECT_THAT(session.lines("player"), ElementsAre("play"));
    session.plays_on();

    EXPECT_FALSE(session->qoroMoviePlayer.view().isHidden());
    EXPECT_THAT(session.events(), Contains("video_play"));
    EXPECT_THAT(session.events(), Contains(R"(video_visibilitychange {"e":{"visibility":1}})"));
}

TEST_F(EndCardTest, ReplayRestartsTheMilestonesAndSendsNoReplayTracker)
{
    end();

    session.script_says("replay");

    EXPECT_EQ(session->dicSendTrackingState["start"].string().text(), "0");
    EXPECT_THAT(session.fetched(), Not(Contains("http://t/replay"))) << "only for the ad's own replay button";
}

TEST_F(EndCardTest, AVideoThatHasNotEndedIsNotReplayed)
{
    session.forget();

    EXPECT_EQ(refusal("replay"), "the video has not ended");

    EXPECT_THAT(session.transcript(), ElementsAre("web refused command replay: the video has not ended 1"));
}

TEST_F(EndCardTest, MutingAHiddenVideoIsAnsweredWithTheReason)
{
    ASSERT_FALSE(session->bIsMute);
    end();

    EXPECT_EQ(refusal("setVideoMute"), Hidden);

    EXPECT_FALSE(session->bIsMute);
    EXPECT_THAT(session.transcript(), IsEmpty());
}

TEST_F(EndCardTest, ACommandThatAsksForThePresentStateIsNotRefused)
{
    end();

    EXPECT_EQ(refusal("setVideoPause"), "");
    EXPECT_EQ(refusal("setVideoUnmute"), "");
    EXPECT_EQ(refusal("checkVideoPlay"), "");
    EXPECT_EQ(refusal("getVideoTotalTime"), "");
}

TEST_F(EndCardTest, AVisibleVideoAcceptsEveryCommand)
{
    EXPECT_EQ(refusal("setVideoPause"), "");
    session.pauses_at(3);
    EXPECT_EQ(refusal("setVideoPlay"), "");
    EXPECT_EQ(refusal("setVideoMute"), "");
    EXPECT_EQ(refusal("setVideoUnmute"), "");
    EXPECT_EQ(refusal("setVideoSeekToTime", {2}), "");
}

TEST_F(EndCardTest, AVideoThatTheViewerHasLeftIsNamedAsTheReason)
{
    session.player_reports_state(MPMoviePlaybackStatePaused);
    session.player_reports_finish(MPMovieFinishReasonUserExited);
    ASSERT_FALSE(session->qoroMoviePlayer);

    EXPECT_EQ(refusal("setVideoPlay"), "the ad has no video");
    EXPECT_EQ(refusal("setVideoSeekToTime", {2}), "the ad has no video");
    EXPECT_EQ(refusal("replay"), "the ad has no video");
}

TEST_F(EndCardTest, AClosedAdAnswersEveryCommandSo)
{
    session.script_says("MRAIDClose");

    for (const std::string command : {"setVideoPlay", "getVideoTotalTime", "checkVideoPlay", "replay"})
        EXPECT_EQ(refusal(command), "the ad has closed") << command;
    EXPECT_EQ(refusal("addEventListener", {"video_play", 1}), "the ad has closed");
}

TEST_F(EndCardTest, AMistakeInTheCallIsNamedBeforeTheState)
{
    session.script_says("MRAIDClose");

    EXPECT_EQ(refusal("setVideoSeekToTime"), "setVideoSeekToTime takes 1 arguments, not 0");
    EXPECT_EQ(refusal("setVideoDance"), "unknown command setVideoDance");
}

TEST_F(EndCardTest, TheSameAddressAsNextVideoClearsTheTrackersAndPlaysNothing)
{
    end();

    EXPECT_EQ(refusal("playNextVideo", {NSDictionary{{"v_u", "http://ad/v.mp4"}}}), "");

    EXPECT_FALSE(session.ad().dicTrackingUrls);
    EXPECT_THAT(session.lines("player"), IsEmpty());
    EXPECT_TRUE(session->qoroMoviePlayer.view().isHidden());
}

TEST(ReplayStep, AScenarioPlaysAnEndCardsVideoAgain)
{
    const auto trace = test::trace_of(R"({
        "video": {"duration": 3},
        "ad": {"strVideoUrl": "http://ad/v.mp4", "strWebViewUrl": "http://ad/p.html", "fVideoWidth": 16, "fVideoHeight": 9, "portraitVideoPos": "FULL",
               "portraitModeType": "VIDEO_AND_WEBVIEW", "bIsHideFullPortraitVideoAtEnd": true, "bIsAutoStart": true},
        "steps": [{"open": 0}, {"at": 2, "script": ["replay"]}, {"at": 5, "script": ["setVideoPlay"]},
                  {"at": 6, "script": ["replay"]}, {"at": 20, "snapshot": true}]})");

    const auto plays = test::of_kind(trace, "js");
    EXPECT_EQ(std::ranges::count_if(plays, [](const auto& line) { return line.find("video_play") != line.npos; }), 2);
    EXPECT_EQ(std::ranges::count_if(plays, [](const auto& line) { return line.find("video_ended") != line.npos; }), 2);
    EXPECT_THAT(test::of_kind(trace, "web"), ElementsAre(R"({"t":2,"what":"web","do":"refused","kind":"command",)"
                                                         R"("detail":"replay: the video has not ended","times":1})"));
    EXPECT_THAT(trace, Contains(HasSubstr(R"("t":6,"what":"player","do":"play")")));
}

} // namespace
} // namespace qoro
