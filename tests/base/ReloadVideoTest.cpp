#include "tests/base/StartingPoints.h"

#include <gmock/gmock.h>

namespace qoro
{
namespace
{

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

TEST(ReloadVideo, WithoutAnAddressDoesNothing)
{
    AdSession session;
    play(session);
    session.ad().strVideoUrl = nullptr;

    session->reloadVideo();

    EXPECT_THAT(session.transcript(), IsEmpty());
}

TEST(ReloadVideo, RunsItsStepsInOrder)
{
    AdSession session;
    session.ad().strBrandIconUrl = "http://ad/icon.png";
    session.open();
    session.forget();

    session->reloadVideo();

    EXPECT_THAT(session.transcript(), ElementsAre("player pause", "player drop", "player create http://ad/v.mp4 false",
                                                  "fetch http://ad/icon.png brandIcon",
                                                  R"(js video_orientation {"orientation":"portrait"} 0)",
                                                  R"(js video_visibilitychange {"e":{"visibility":1}} 0)",
                                                  R"(js video_orientation {"e":{"orientation":"portrait"}} 0)",
                                                  "super showProgressbar 167 85", "log 0 Added Video Close Button",
                                                  "log 0 Added Count Down View"));
}

TEST(ReloadVideo, SendsNeitherLoadingNorOpened)
{
    AdSession session;
    play(session);

    session->reloadVideo();

    EXPECT_EQ(session.count_of("js video_loading null 0"), 0U);
    EXPECT_THAT(session.lines("notification"), IsEmpty());
    EXPECT_TRUE(session->bIsLoaded);
}

TEST(ReloadVideo, TheCacheIsNotUsed)
{
    World world = AdSession::manual_world();
    world.cached["http://ad/v.mp4"] = "/cache/v.mp4";
    AdSession session(world);
    session.ad().bIsUseVideoCache = true;
    play(session);

    session->reloadVideo();

    EXPECT_THAT(session.lines("player"), Contains("create http://ad/v.mp4 false"));
}

TEST(ReloadVideo, KeepsTheVolumePlumbingAndTheRememberedVolume)
{
    AdSession session;
    play(session);
    const UISlider slider = session->volumeSlider;
    session.set_volume(0.2F);

    session->reloadVideo();

    EXPECT_EQ(session->volumeSlider, slider);
    EXPECT_EQ(session->fDefaultVolume, 0.6F);
}

TEST(ReloadVideo, ThePlayerIsSetUpAsAFileWithItsOwnAutoplay)
{
    AdSession session;
    session.ad().bIsAutoStart = false;
    play(session);

    session->reloadVideo();

    const PlayerSettings settings = session->qoroMoviePlayer.settings();
    EXPECT_TRUE(settings.should_autoplay);
    EXPECT_EQ(settings.source_type, MPMovieSourceTypeFile);
    EXPECT_EQ(settings.repeat_mode, MPMovieRepeatModeNone);
    EXPECT_EQ(settings.control_style, MPMovieControlStyleNone);
    EXPECT_EQ(session->btnClickListener.superview(), session->qoroMoviePlayer.view());
}

TEST(ReloadVideo, TheCloseButtonStaysVisible)
{
    AdSession session;
    play(session);
    session->btnClose.setHidden(false);

    session->reloadVideo();

    EXPECT_FALSE(session->btnClose.isHidden());
}

TEST(ReloadVideo, TheNewPlayerIsObservedInTheOldOnesPlace)
{
    AdSession session;
    play(session);
    const std::size_t before = NSNotificationCenter::defaultCenter().count_of(&session.controller());
    session->reloadVideo();
    session.forget();

    session.player_reports_finish(MPMovieFinishReasonPlaybackError);

    EXPECT_EQ(NSNotificationCenter::defaultCenter().count_of(&session.controller()), before);
    EXPECT_THAT(session.lines("player"), ElementsAre("play"));
}

TEST(ReloadVideo, TheTotalTimeIsTheNewPlayersAtOnce)
{
    AdSession session;
    play(session);

    session->reloadVideo();

    EXPECT_EQ(session->fTotalTime, 0.0F);
}

TEST(ReloadVideo, TheVideoIsPlacedAfreshAndTheBarsAreToHide)
{
    AdSession session;
    play(session);
    session->fPortraitModeVideoPosY = 300;
    session.let_pass(10);

    session->reloadVideo();

    EXPECT_EQ(session->fPortraitModeVideoPosY, 44.0F);
    EXPECT_EQ(session->timerSetControllerButtonHide.fireDate(), 13.0);
    EXPECT_THAT(session.events(), Contains(StartsWith("video_orientation")));
}

TEST(ReloadVideo, TheNewPlayersPictureReplacesTheOldOnes)
{
    AdSession session;
    play(session);
    const UIView before = session->qoroMoviePlayer.view();
    session->webView().addSubview(before);

    session->reloadVideo();

    EXPECT_FALSE(before.superview());
    EXPECT_EQ(session->viewTopBackground.superview(), session->qoroMoviePlayer.view());
    EXPECT_EQ(session->btnPlayAndPause.superview(), session->qoroMoviePlayer.view());
}

TEST(ReloadVideo, BeforeAnyLayoutTheVideoFillsTheHost)
{
    HostSetup host = unguarded_host();
    host.root_view = CGSize{360, 640};
    AdSession session(AdSession::manual_world(), host);
    play(session);
    // No layout runs during a click-through.
    session->setBDoButtonAction(true);

    session->reloadVideo();

    EXPECT_EQ(session->qoroMoviePlayer.view().frame(), (CGRect{0, 0, 360, 640}));
    EXPECT_EQ(session->qoroMoviePlayer.settings().scaling_mode, MPMovieScalingModeAspectFill);
}

TEST(ReloadVideo, AfterAnEndTheBarsAreToHideToo)
{
    AdSession session;
    play(session);
    session.ends();

    session->reloadVideo();

    EXPECT_TRUE(session->timerSetControllerButtonHide.isValid());
}

} // namespace
} // namespace qoro
