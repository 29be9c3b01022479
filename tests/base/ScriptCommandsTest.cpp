#include "tests/base/StartingPoints.h"
#include "tests/support/AdSession.h"

#include <gmock/gmock.h>

namespace qoro
{
namespace
{

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

TEST(ScriptCommands, AddEventListenerRecordsAListener)
{
    AdSession session;

    const ScriptAnswer answer = session.script_says("addEventListener", {"video_play", "l-1", "c-1"});

    EXPECT_FALSE(answer.error);
    EXPECT_TRUE(answer.value.is_null());
    EXPECT_EQ(as_text(session->dicEventListener), R"({"video_play":[["l-1","c-1"]]})");
}

TEST(ScriptCommands, AListenersIdReplacesAnAbsentCallback)
{
    AdSession session;

    session.script_says("addEventListener", {"video_play", "l-1"});
    session.script_says("addEventListener", {"video_pause", "l-2", nullptr});

    EXPECT_EQ(as_text(session->dicEventListener), R"({"video_play":[["l-1","l-1"]],"video_pause":[["l-2","l-2"]]})");
}

TEST(ScriptCommands, RemoveEventListenerAnswersWhetherAnythingWasRemoved)
{
    AdSession session;
    session.script_says("addEventListener", {"video_play", "l-1"});

    EXPECT_EQ(session.script_says("removeEventListener", {"video_play", "l-1"}).value, Value(1));
    EXPECT_EQ(session.script_says("removeEventListener", {"video_play", "l-1"}).value, Value(0));
}

TEST(ScriptCommands, MRAIDCloseClosesTheAd)
{
    AdSession session;
    play(session);

    session.script_says("MRAIDClose");

    EXPECT_FALSE(session->qoroMoviePlayer);
}

TEST(ScriptCommands, MRAIDUseCustomCloseTakesTheCloseButtonAway)
{
    AdSession session;
    play(session);

    session.script_says("MRAIDUseCustomClose", {true});

    EXPECT_TRUE(session->bIsUseVideoCustomClose);
    EXPECT_FALSE(session->btnClose.superview());
}

TEST(ScriptCommands, SetVideoPlayPlays)
{
    AdSession session;
    session.open();
    session.forget();

    session.script_says("setVideoPlay");

    EXPECT_THAT(session.lines("player"), ElementsAre("play"));
}

TEST(ScriptCommands, SetVideoPausePauses)
{
    AdSession session;
    play(session);

    session.script_says("setVideoPause");

    EXPECT_THAT(session.lines("player"), ElementsAre("pause"));
}

TEST(ScriptCommands, SetVideoMuteAndUnmuteTurnTheSound)
{
    AdSession session;
    play(session);

    session.script_says("setVideoMute");
    session.script_says("setVideoUnmute");

    EXPECT_THAT(session.lines("volume"), ElementsAre("0", "0.6"));
}

TEST(ScriptCommands, SetVideoSeekToTimeSeeks)
{
    AdSession session;
    play(session);

    session.script_says("setVideoSeekToTime", {12.5});

    EXPECT_THAT(session.lines("player"), ElementsAre("seek 12.5"));
}

TEST(ScriptCommands, ATimeWrittenAsTextIsRead)
{
    AdSession session;
    play(session);

    session.script_says("setVideoSeekToTime", {"12.5"});

    EXPECT_THAT(session.lines("player"), ElementsAre("seek 12.5"));
}

TEST(ScriptCommands, ATimeThatIsNoNumberReadsAsZero)
{
    AdSession session;
    play(session);

    session.script_says("setVideoSeekToTime", {NSDictionary{{"seconds", 3}}});

    EXPECT_THAT(session.lines("player"), ElementsAre("seek 0"));
}

TEST(ScriptCommands, GetVideoTotalTimeAnswersWholeSeconds)
{
    AdSession session;
    session.open();
    session.plays(29.9);

    EXPECT_EQ(session.script_says("getVideoTotalTime").value, Value(29));
}

TEST(ScriptCommands, GetVideoIsMuteAnswersTheMuteState)
{
    AdSession session;
    play(session);

    EXPECT_EQ(session.script_says("getVideoIsMute").value, Value(false));
}

TEST(ScriptCommands, CheckVideoPlayShowsTheCloseButtonOfAVideoThatDoesNotPlay)
{
    AdSession session;
    session.open();

    session.script_says("checkVideoPlay");

    EXPECT_FALSE(session->btnClose.isHidden());
}

TEST(ScriptCommands, PlayNextVideoSwapsTheVideo)
{
    AdSession session;
    play(session);

    session.script_says("playNextVideo", {NSDictionary{{"v_u", "http://ad/next.mp4"}}});

    EXPECT_EQ(session.ad().strVideoUrl, "http://ad/next.mp4");
}

TEST(ScriptCommands, CheckCanPlayNextVideoAnswersWhetherTheAddressDiffers)
{
    AdSession session;
    session.open();

    EXPECT_EQ(session.script_says("checkCanPlayNextVideo", {"http://ad/next.mp4"}).value, Value(true));
    EXPECT_EQ(session.script_says("checkCanPlayNextVideo", {"http://ad/v.mp4"}).value, Value(false));
    EXPECT_EQ(session.script_says("checkCanPlayNextVideo", {nullptr}).value, Value(false));
}

TEST(ScriptCommands, CancelPrePauseLocationsLeavesAnEmptyList)
{
    AdSession session;
    session.ad().arrayPrePauseLocations = {5};
    session.open();

    session.script_says("cancelPrePauseLocations");

    EXPECT_TRUE(session.ad().arrayPrePauseLocations);
    EXPECT_EQ(session.ad().arrayPrePauseLocations.count(), 0U);
}

TEST(ScriptCommands, ChangeOrientationLaysTheVideoOut)
{
    AdSession session;
    session.open();

    session.script_says("changeOrientation", {"landscape"});

    EXPECT_TRUE(session->bIsVideoOrientationLandscape);
}

TEST(ScriptCommands, AnOrientationThatIsNoTextIsIgnored)
{
    AdSession session;
    session.open();
    session.forget();

    const ScriptAnswer answer = session.script_says("changeOrientation", {3});

    EXPECT_FALSE(answer.error);
    EXPECT_THAT(session.events(), IsEmpty());
}

TEST(ScriptCommands, AnUnknownCommandAnswersAnError)
{
    AdSession session;

    const ScriptAnswer answer = session.script_says("dealloc");

    EXPECT_TRUE(answer.error.contains("dealloc"));
    EXPECT_TRUE(answer.value.is_null());
}

TEST(ScriptCommands, TooFewArgumentsAnswerAnErrorAndDoNothing)
{
    AdSession session;
    play(session);

    const ScriptAnswer answer = session.script_says("setVideoSeekToTime");

    EXPECT_TRUE(answer.error.contains("setVideoSeekToTime"));
    EXPECT_THAT(session.transcript(), ElementsAre(HasSubstr("web refused command")));
}

TEST(ScriptCommands, SuperfluousArgumentsAreIgnored)
{
    AdSession session;
    play(session);

    const ScriptAnswer answer = session.script_says("setVideoSeekToTime", {3, 4});

    EXPECT_FALSE(answer.error);
    EXPECT_THAT(session.lines("player"), ElementsAre("seek 3"));
}

TEST(ScriptCommands, WithoutTheirArgumentsTheErrorSaysHowManyTheyTake)
{
    AdSession session;

    EXPECT_EQ(session.script_says("addEventListener", {"video_play"}).error,
              "addEventListener takes 2 arguments, not 1");
    EXPECT_EQ(session.script_says("removeEventListener", {"video_play"}).error,
              "removeEventListener takes 2 arguments, not 1");
    EXPECT_EQ(session.script_says("setVideoSeekToTime").error, "setVideoSeekToTime takes 1 arguments, not 0");
}

} // namespace
} // namespace qoro
