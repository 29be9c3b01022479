#include "tests/support/AdSession.h"

#include <gmock/gmock.h>

namespace qoro
{
namespace
{

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

void track(AdSession& session)
{
    session.ad().arrayMuteTrackingUrls = NSArray::of_strings({"http://t/mute"});
    session.ad().arrayUnmuteTrackingUrls = NSArray::of_strings({"http://t/unmute"});
    session.ad().arrayPauseTrackingUrls = NSArray::of_strings({"http://t/pause"});
}

void play(AdSession& session)
{
    session.open();
    session.plays();
    session.let_pass(0);
    session.forget();
}

TEST(SetPlayOrPause, APlayingVideoIsPaused)
{
    AdSession session;
    play(session);

    session.tap(session->btnPlayAndPause);

    EXPECT_THAT(session.transcript(), ElementsAre("player pause"));
}

TEST(SetPlayOrPause, APausedVideoIsPlayedAndItsProgressContinues)
{
    AdSession session;
    session.ad().dicTrackingUrls = {{"start", NSArray::of_strings({"http://t/start"})}};
    play(session);
    session->checkSendVideoTracking();
    session.pauses_at(3);
    session.forget();

    session.tap(session->btnPlayAndPause);

    EXPECT_THAT(session.transcript(), ElementsAre("player play"));
    EXPECT_EQ(as_text(session->dicSendTrackingState), R"({"start":"1"})");
}

TEST(SetPlayOrPause, AfterTheEndTheVideoIsReplayed)
{
    AdSession session;
    play(session);
    session.ends();
    session.forget();

    session.tap(session->btnPlayAndPause);

    EXPECT_THAT(session.lines("player"), ElementsAre("play"));
    EXPECT_TRUE(session->btnReplay.isHidden());
    EXPECT_EQ(session->qoroMoviePlayerStatus, QoroMoviePlayerStatusNone);
}

TEST(SetPlayOrPause, WithoutAPlayerIsRefused)
{
    AdSession session;
    session->bIsPlayFinish = true;
    session->btnReplay.setHidden(false);
    session.forget();

    session->setPlayOrPause();

    EXPECT_THAT(session.transcript(), IsEmpty());
    EXPECT_FALSE(session->btnReplay.isHidden());
}

TEST(SetPlayOrPause, WhileTheVideoIsHiddenInPortraitIsRefused)
{
    AdSession session;
    play(session);
    session->bHideVideoToShowWebViewInPortraitMode = true;

    session->setPlayOrPause();

    EXPECT_THAT(session.transcript(), IsEmpty());
}

TEST(SetPlayOrPause, WhileTheVideoIsHiddenInLandscapeIsRefused)
{
    AdSession session;
    play(session);
    session->bHideVideoToShowWebViewInLandscapeMode = true;

    session->setPlayOrPause();

    EXPECT_THAT(session.transcript(), IsEmpty());
}

TEST(SetMute, MutingTurnsTheVolumeToZeroAndTracksIt)
{
    AdSession session;
    track(session);
    play(session);

    session.tap(session->btnMute);

    EXPECT_THAT(session.transcript(), ElementsAre("volume 0", "request http://t/mute tracking"));
    EXPECT_TRUE(session->bIsMute);
    EXPECT_EQ(session->btnMute.backgroundImage().data().length(), 1367U);
}

TEST(SetMute, UnmutingRestoresTheRememberedVolumeAndTracksIt)
{
    AdSession session;
    track(session);
    play(session);
    session.tap(session->btnMute);
    session.forget();

    session.tap(session->btnMute);

    EXPECT_THAT(session.transcript(), ElementsAre("volume 0.6", "request http://t/unmute tracking"));
    EXPECT_FALSE(session->bIsMute);
    EXPECT_EQ(session->btnMute.backgroundImage().data().length(), 1180U);
}

TEST(SetMute, UnmutingWithoutARememberedVolumeSetsHalf)
{
    AdSession session;
    play(session);
    session->fDefaultVolume = 0;
    session.tap(session->btnMute);
    session.forget();

    session.tap(session->btnMute);

    EXPECT_THAT(session.lines("volume"), ElementsAre("0.5"));
}

TEST(SetMute, TheReportedChangeAgreesWithTheToggle)
{
    AdSession session;
    play(session);

    session.tap(session->btnMute);
    session.let_pass(0);

    EXPECT_TRUE(session->bIsMute);
    EXPECT_THAT(session.events(), ElementsAre(R"(video_volumechange {"e":{"volume":"0"}})"));
}

TEST(SetMute, BeforeTheFirstPlayNothingIsTracked)
{
    AdSession session;
    track(session);
    session.open();
    session.player_reports_load(MPMovieLoadStatePlayable);

    session.tap(session->btnMute);

    EXPECT_THAT(session.fetched(), IsEmpty());
}

TEST(SetMute, WithoutTheVolumePlumbingIsRefused)
{
    AdSession session;

    session->setMute();

    EXPECT_TRUE(session->bIsMute);
}

TEST(SetMute, WhileTheVideoIsHiddenInLandscapeIsRefused)
{
    AdSession session;
    play(session);
    session->bHideVideoToShowWebViewInLandscapeMode = true;

    session->setMute();

    EXPECT_FALSE(session->bIsMute);
    EXPECT_THAT(session.transcript(), IsEmpty());
}

TEST(SetMute, WhileTheVideoIsHiddenInPortraitIsRefused)
{
    AdSession session;
    play(session);
    session->bHideVideoToShowWebViewInPortraitMode = true;

    session->setMute();

    EXPECT_FALSE(session->bIsMute);
    EXPECT_THAT(session.transcript(), IsEmpty());
}

TEST(SetMute, WithoutASliderOnlyFlagImageAndTrackingChange)
{
    World world = AdSession::manual_world();
    world.device.volume_slider = false;
    AdSession session(world);
    track(session);
    play(session);

    session->setMute();

    EXPECT_THAT(session.transcript(), ElementsAre("request http://t/mute tracking"));
    EXPECT_TRUE(session->bIsMute);
    EXPECT_EQ(session->btnMute.backgroundImage().data().length(), 1367U);
}

TEST(SetVideoMute, TwiceTracksOnce)
{
    AdSession session;
    track(session);
    play(session);

    session->setVideoMute();
    session->setVideoMute();

    EXPECT_THAT(session.fetched(), ElementsAre("http://t/mute"));
}

TEST(SetVideoUnmute, OnAnUnmutedVideoDoesNothing)
{
    AdSession session;
    track(session);
    play(session);

    session->setVideoUnmute();

    EXPECT_THAT(session.transcript(), IsEmpty());
}

TEST(SetVideoPlay, WhilePlayingDoesNothing)
{
    AdSession session;
    play(session);

    session->setVideoPlay();

    EXPECT_THAT(session.transcript(), IsEmpty());
}

TEST(SetVideoPlay, WhileTheVideoIsHiddenBehindThePageIsRefused)
{
    AdSession session;
    play(session);
    session.pauses_at(3);
    session->bHideVideoToShowWebViewInPortraitMode = true;
    session.forget();

    session->setVideoPlay();

    EXPECT_THAT(session.transcript(), IsEmpty());
}

TEST(SetVideoPause, WhilePausedDoesNothing)
{
    AdSession session;
    play(session);
    session.pauses_at(3);
    session->setControlBottonInVisible(true);
    session.forget();

    session->setVideoPause();

    EXPECT_THAT(session.transcript(), IsEmpty());
    EXPECT_TRUE(session->bIsHideControlbutton);
}

TEST(SetVideoPause, WhilePlayingPausesAndShowsTheBars)
{
    AdSession session;
    play(session);
    session->setControlBottonInVisible(true);

    session->setVideoPause();

    EXPECT_THAT(session.lines("player"), ElementsAre("pause"));
    EXPECT_FALSE(session->bIsHideControlbutton);
    EXPECT_FALSE(session->viewTopBackground.isHidden());
}

TEST(SetVideoSeekToTime, SeeksAndPushesTheBarsHidingBack)
{
    AdSession session;
    play(session);
    session.let_pass(2);
    session.forget();

    session->setVideoSeekToTime(12.5F);

    EXPECT_THAT(session.transcript(), ElementsAre("player seek 12.5"));
    EXPECT_EQ(session->timerSetControllerButtonHide.fireDate(), 5.0);
    EXPECT_EQ(session->qoroMoviePlayerStatus, QoroMoviePlayerStatusSeeking);
}

TEST(SetVideoSeekToTime, WhileResumingLeavesNoStatusSoThatThePauseIsTracked)
{
    AdSession session;
    track(session);
    play(session);
    session.pauses_at(3);
    session.return_to_app();
    session.forget();

    session->setVideoSeekToTime(3);
    session.pauses_at(3);

    EXPECT_EQ(session->qoroMoviePlayerStatus, QoroMoviePlayerStatusNone);
    EXPECT_THAT(session.fetched(), ElementsAre("http://t/pause"));
}

TEST(SetVideoSeekToTime, TheTimeIsThatOfSinglePrecision)
{
    AdSession session;
    play(session);

    session->setVideoSeekToTime(0.1F);

    EXPECT_EQ(session->qoroMoviePlayer.currentPlaybackTime(), static_cast<double>(0.1F));
}

TEST(GetVideoTotalTime, IsTruncated)
{
    AdSession session;
    session.open();
    session.plays(29.9);

    EXPECT_EQ(session->getVideoTotalTime(), 29);
}

TEST(GetVideoTotalTime, BeforeTheFirstPlayItIsReadFromThePlayerAndKept)
{
    AdSession session;
    session.open();
    session.player_lasts(12.75);

    EXPECT_EQ(session->getVideoTotalTime(), 12);
    EXPECT_EQ(session->fTotalTime, 12.75F);
}

TEST(GetVideoTotalTime, AKnownTotalWins)
{
    AdSession session;
    session.open();
    session.plays(29.9);
    session->fTotalTime = 10.5F;

    EXPECT_EQ(session->getVideoTotalTime(), 10);
}

TEST(GetVideoTotalTime, WithoutAPlayerIsZero)
{
    AdSession session;
    session->fTotalTime = 10.5F;

    EXPECT_EQ(session->getVideoTotalTime(), 0);
}

TEST(CheckVideoPlay, AVideoThatDoesNotPlayShowsCloseButtonAndBars)
{
    AdSession session;
    session.open();
    session->btnClose.setHidden(true);
    session->setControlBottonInVisible(true);

    session->checkVideoPlay();

    EXPECT_FALSE(session->btnClose.isHidden());
    EXPECT_FALSE(session->bIsHideControlbutton);
}

TEST(CheckVideoPlay, APlayingVideoShowsNothing)
{
    AdSession session;
    play(session);
    session->btnClose.setHidden(true);

    session->checkVideoPlay();

    EXPECT_TRUE(session->btnClose.isHidden());
}

TEST(VolumeChanged, ToZeroByTheHardwareMutesWithoutTracking)
{
    AdSession session;
    track(session);
    play(session);

    session.set_volume(0);

    EXPECT_TRUE(session->bIsMute);
    EXPECT_EQ(session->btnMute.backgroundImage().data().length(), 1367U);
    EXPECT_THAT(session.transcript(), ElementsAre(R"(js video_volumechange {"e":{"volume":"0"}} 0)"));
}

TEST(VolumeChanged, ToAnythingElseUnmutesAndLeavesTheRememberedVolume)
{
    AdSession session;
    track(session);
    play(session);
    session.set_volume(0);
    session.forget();

    session.set_volume(0.01F);

    EXPECT_FALSE(session->bIsMute);
    EXPECT_EQ(session->btnMute.backgroundImage().data().length(), 1180U);
    EXPECT_EQ(session->fDefaultVolume, 0.6F);
    EXPECT_THAT(session.transcript(), ElementsAre(R"(js video_volumechange {"e":{"volume":"1"}} 0)"));
}

TEST(VolumeChanged, WithoutASliderReadsAsMuted)
{
    World world = AdSession::manual_world();
    world.device.volume_slider = false;
    AdSession session(world);
    play(session);

    session.set_volume(0.8F);

    EXPECT_TRUE(session->bIsMute);
    EXPECT_THAT(session.events(), ElementsAre(R"(video_volumechange {"e":{"volume":"0"}})"));
}

TEST(VolumeChanged, BeforeThePlumbingIsBuiltDoesNothing)
{
    AdSession session;
    session.forget();

    session.set_volume(0.1F);

    EXPECT_THAT(session.transcript(), IsEmpty());
    EXPECT_TRUE(session->bIsMute);
}

TEST(TotalTime, OfLessThanASecondIsNotReadAgain)
{
    AdSession session;
    session.open();
    session->fTotalTime = 0.5F;
    session.player_lasts(30);

    EXPECT_EQ(session->getVideoTotalTime(), 0);
    EXPECT_EQ(session->fTotalTime, 0.5F);
}

} // namespace
} // namespace qoro
