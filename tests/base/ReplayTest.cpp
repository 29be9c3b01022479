#include "tests/support/AdSession.h"

#include <gmock/gmock.h>

namespace qoro
{
namespace
{

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::IsSupersetOf;
using testing::StartsWith;

void play_to_the_end(AdSession& session)
{
    session.open();
    session.plays();
    session.ends();
    session.forget();
}

void play(AdSession& session)
{
    session.open();
    session.plays();
    session.forget();
}

NSDictionary next_video()
{
    return {{"v_u", "http://ad/next.mp4"}};
}

NSDictionary button(const char* text)
{
    return {{"btn_text", text}};
}

// ----------------------------------------------------------------------------------------------------------- replaying

TEST(VideoReplay, TheReplayButtonSendsEveryNonEmptyAddressOnceInOrder)
{
    AdSession session;
    session.ad().arrayReplayTrackingUrls = {"http://t/1?t={TotalTime}", "", nullptr, 5, "http://t/2"};
    play_to_the_end(session);

    session.tap(session->btnReplay);

    EXPECT_THAT(session.transcript(),
                ElementsAre("request http://t/1?t=30.000000 tracking", "request http://t/2 tracking", "player play"));
}

TEST(VideoReplay, AReplayByThePlayCommandSendsNone)
{
    AdSession session;
    session.ad().arrayReplayTrackingUrls = {"http://t/1"};
    play_to_the_end(session);

    session->setVideoPlay();

    EXPECT_THAT(session.transcript(), ElementsAre("player play"));
}

TEST(VideoReplay, AnAutoReplaySendsNone)
{
    AdSession session;
    session.ad().arrayReplayTrackingUrls = {"http://t/1"};
    session.ad().bIsAutoReplay = true;

    play_to_the_end(session);

    EXPECT_THAT(session.fetched(), IsEmpty());
    EXPECT_TRUE(session->btnReplay.isHidden());
}

TEST(VideoReplay, DuringANextVideosSwapSendsNone)
{
    AdSession session;
    session.ad().arrayReplayTrackingUrls = {"http://t/1"};
    play_to_the_end(session);
    session->bPlayNextVideo = true;

    session.tap(session->btnReplay);

    EXPECT_THAT(session.fetched(), IsEmpty());
    EXPECT_FALSE(session->bPlayNextVideo);
}

TEST(VideoReplay, WithTheButtonsGoneNobodyCountsAsTheButton)
{
    AdSession session;
    session.ad().arrayReplayTrackingUrls = {"http://t/1"};
    play_to_the_end(session);
    session->handleWebViewInFront();

    session->videoReplay(nullptr);

    EXPECT_THAT(session.fetched(), IsEmpty());
}

TEST(VideoReplay, AskedForByAnotherButtonSendsNone)
{
    AdSession session;
    session.ad().arrayReplayTrackingUrls = {"http://t/1"};
    play_to_the_end(session);

    session->videoReplay(session->btnPlayAndPause);

    EXPECT_THAT(session.transcript(), ElementsAre("player play"));
}

TEST(VideoReplay, StartsProgressOverAndForgetsThatTheVideoFinished)
{
    AdSession session;
    session.ad().dicTrackingUrls = {{"start", NSArray::of_strings({"http://t/start"})}};
    play_to_the_end(session);
    session->dicSendTrackingState.setObject("1", "start");

    session.tap(session->btnReplay);

    EXPECT_EQ(as_text(session->dicSendTrackingState), R"({"start":"0"})");
    EXPECT_EQ(session->qoroMoviePlayerStatus, QoroMoviePlayerStatusNone);
}

TEST(VideoReplay, WhileResumingKeepsTheProgressAndTheStatus)
{
    AdSession session;
    session.ad().dicTrackingUrls = {{"start", NSArray::of_strings({"http://t/start"})}};
    play(session);
    session->dicSendTrackingState.setObject("1", "start");
    session->changeMoviePlayerStatus(QoroMoviePlayerStatusResuming);

    session->videoReplay(nullptr);

    EXPECT_EQ(as_text(session->dicSendTrackingState), R"({"start":"1"})");
    EXPECT_EQ(session->qoroMoviePlayerStatus, QoroMoviePlayerStatusResuming);
}

TEST(VideoReplay, LetsEveryPausePointPauseAgain)
{
    AdSession session;
    play_to_the_end(session);
    session->prePauseStatusAtLocation(5);
    session->setPrePauseStatusWithStatus(true, 5);

    session.tap(session->btnReplay);

    EXPECT_EQ(as_text(session->prePauseStatusDict), R"({"5":false})");
}

TEST(VideoReplay, HidesTheReplayButtonAndShowsTheBars)
{
    AdSession session;
    play_to_the_end(session);
    session->setControlBottonInVisible(true);

    session.tap(session->btnReplay);

    EXPECT_TRUE(session->btnReplay.isHidden());
    EXPECT_FALSE(session->viewBottomBackground.isHidden());
}

// ---------------------------------------------------------------------------------------------------------- next video

TEST(CheckCanPlayNextVideo, TheCurrentAddressAndNoneCannot)
{
    AdSession session;
    session.open();

    EXPECT_FALSE(session->checkCanPlayNextVideo("http://ad/v.mp4"));
    EXPECT_FALSE(session->checkCanPlayNextVideo(nullptr));
}

TEST(CheckCanPlayNextVideo, ADifferentAddressCan)
{
    AdSession session;
    session.open();

    EXPECT_TRUE(session->checkCanPlayNextVideo("http://ad/next.mp4"));
    EXPECT_TRUE(session->checkCanPlayNextVideo("HTTP://ad/v.mp4"));
    EXPECT_TRUE(session->checkCanPlayNextVideo(""));
}

TEST(PlayNextVideo, ADifferentAddressReloadsThePlayer)
{
    AdSession session;
    play(session);

    session->playNextVideo(next_video());

    EXPECT_THAT(session.lines("player"), ElementsAre("pause", "drop", "create http://ad/next.mp4 false"));
    EXPECT_EQ(session.ad().strVideoUrl, "http://ad/next.mp4");
    EXPECT_FALSE(session->bIsInitVideoBeginStep);
    EXPECT_TRUE(session->bPlayNextVideo);
}

TEST(PlayNextVideo, TheCurrentAddressKeepsThePlayer)
{
    AdSession session;
    play(session);

    session->playNextVideo({{"v_u", "http://ad/v.mp4"},
                            {"v_tracking", NSDictionary{{"start", NSArray::of_strings({"http://t/next"})}}},
                            {"btns", NSArray{button("Next")}},
                            {"tracking_interval", 2}});

    EXPECT_THAT(session.lines("player"), IsEmpty());
    EXPECT_EQ(as_text(session.ad().dicTrackingUrls), R"({"start":["http://t/next"]})");
    EXPECT_EQ(session->buttonPosMode, ButtonPositionMode_OneButton);
    EXPECT_EQ(session->btnActionOne.title(), "Next");
    EXPECT_EQ(session->timerSendTrackingToServer.timeInterval(), 1.0);
}

TEST(PlayNextVideo, AnAbsentAddressIsADifferentOneAndTheOldPlayerStays)
{
    AdSession session;
    play(session);

    session->playNextVideo(NSDictionary::dictionary());

    EXPECT_FALSE(session.ad().strVideoUrl);
    EXPECT_THAT(session.lines("player"), IsEmpty());
    EXPECT_TRUE(session->qoroMoviePlayer);
}

TEST(PlayNextVideo, AbsentTrackingIsClearedButReplayTrackingStays)
{
    AdSession session;
    session.ad().dicTrackingUrls = {{"start", NSArray::of_strings({"http://t/start"})}};
    session.ad().strVideoTrackingUrl = "http://t/beat";
    session.ad().arrayReplayTrackingUrls = {"http://t/replay"};
    play(session);

    session->playNextVideo(next_video());

    EXPECT_FALSE(session.ad().dicTrackingUrls);
    EXPECT_FALSE(session.ad().strVideoTrackingUrl);
    EXPECT_FALSE(session->bUseVASTTracking);
    EXPECT_EQ(as_text(session.ad().arrayReplayTrackingUrls), R"(["http://t/replay"])");
}

TEST(PlayNextVideo, GivenTrackingReplacesTheOld)
{
    AdSession session;
    session.ad().arrayReplayTrackingUrls = {"http://t/replay"};
    play(session);

    session->playNextVideo({{"v_u", "http://ad/v.mp4"},
                            {"v_tracking", NSDictionary{{"start", NSArray::of_strings({"http://t/next"})}}},
                            {"tracking_u", "http://t/beat"},
                            {"replay_tracking_urls", NSArray{"http://t/again"}}});

    EXPECT_TRUE(session->bUseVASTTracking);
    EXPECT_EQ(session.ad().strVideoTrackingUrl, "http://t/beat");
    EXPECT_EQ(as_text(session.ad().arrayReplayTrackingUrls), R"(["http://t/again"])");
}

TEST(PlayNextVideo, AnEmptyMilestoneTableIsNone)
{
    AdSession session;
    session.ad().dicTrackingUrls = {{"start", NSArray::of_strings({"http://t/start"})}};
    play(session);

    session->playNextVideo({{"v_u", "http://ad/v.mp4"}, {"v_tracking", NSDictionary::dictionary()}});

    EXPECT_FALSE(session->bUseVASTTracking);
}

TEST(PlayNextVideo, AutoCloseIsTakenWhereItIsGiven)
{
    AdSession session;
    session.ad().bIsAutoClose = true;
    play(session);

    session->playNextVideo({{"v_u", "http://ad/v.mp4"}});
    EXPECT_TRUE(session.ad().bIsAutoClose);
    session->playNextVideo({{"v_u", "http://ad/v.mp4"}, {"auto_close", 0}});
    EXPECT_FALSE(session.ad().bIsAutoClose);
    session->playNextVideo({{"v_u", "http://ad/v.mp4"}, {"auto_close", 2}});
    EXPECT_TRUE(session.ad().bIsAutoClose);
}

TEST(PlayNextVideo, NumbersThatComeAsTextsAreReadAsNumbers)
{
    AdSession session;
    play(session);

    session->playNextVideo({{"v_u", "http://ad/v.mp4"}, {"auto_close", "1"}, {"tracking_interval", "2.5"}});
    EXPECT_TRUE(session.ad().bIsAutoClose);
    EXPECT_EQ(session->timerSendTrackingToServer.timeInterval(), 2.5);
    session->playNextVideo({{"v_u", "http://ad/v.mp4"}, {"auto_close", "0"}});
    EXPECT_FALSE(session.ad().bIsAutoClose);
}

TEST(PlayNextVideo, ButtonsThatAreNoListLeaveTheAdWithoutButtons)
{
    AdSession session;
    session.ad().arrayButtonsInfo = {button("Buy")};
    play(session);

    session->playNextVideo({{"v_u", "http://ad/v.mp4"}, {"btns", "Buy"}});

    EXPECT_FALSE(session.ad().arrayButtonsInfo);
    EXPECT_EQ(session->buttonPosMode, 0);
}

TEST(PlayNextVideo, ValuesOfAnotherTypeAreAbsent)
{
    AdSession session;
    session.ad().bIsAutoClose = true;
    session.ad().arrayReplayTrackingUrls = {"http://t/replay"};
    play(session);

    session->playNextVideo({{"v_u", "http://ad/v.mp4"},
                            {"v_tracking", "start"},
                            {"tracking_u", 7},
                            {"replay_tracking_urls", "http://t/again"},
                            {"auto_close", NSArray{0}}});

    EXPECT_FALSE(session.ad().dicTrackingUrls);
    EXPECT_FALSE(session.ad().strVideoTrackingUrl);
    EXPECT_EQ(as_text(session.ad().arrayReplayTrackingUrls), R"(["http://t/replay"])");
    EXPECT_TRUE(session.ad().bIsAutoClose);
}

TEST(PlayNextVideo, AnAbsentIntervalLeavesTheTimer)
{
    AdSession session;
    session.ad().fTrackingInterval = 2.5F;
    play(session);
    session.ad().fTrackingInterval = 7;
    session.let_pass(1);

    session->playNextVideo({{"v_u", "http://ad/v.mp4"}});

    EXPECT_EQ(session->timerSendTrackingToServer.timeInterval(), 2.5);
    EXPECT_EQ(session->timerSendTrackingToServer.fireDate(), 2.5);
}

TEST(PlayNextVideo, AnIntervalStartsTheHeartbeatAnew)
{
    AdSession session;
    play(session);
    session.let_pass(1);

    session->playNextVideo({{"v_u", "http://ad/v.mp4"}, {"tracking_interval", 0.5}});

    EXPECT_EQ(session->timerSendTrackingToServer.timeInterval(), 0.5);
    EXPECT_EQ(session->timerSendTrackingToServer.fireDate(), 1.5);
}

TEST(PlayNextVideo, ForgetsThePausePoints)
{
    AdSession session;
    play(session);
    session->prePauseStatusAtLocation(5);

    session->playNextVideo(next_video());

    EXPECT_FALSE(session->prePauseStatusDict);
}

TEST(PlayNextVideo, StartsTheProgressOver)
{
    AdSession session;
    session.ad().dicTrackingUrls = {{"start", NSArray::of_strings({"http://t/start"})}};
    play(session);
    session->dicSendTrackingState.setObject("1", "start");

    session->playNextVideo(next_video());

    EXPECT_EQ(as_text(session->dicSendTrackingState), R"({"start":"0"})");
}

TEST(PlayNextVideo, AMilestoneThatTheVideoBeforeItDidNotNameKeepsItsState)
{
    AdSession session;
    session.ad().dicTrackingUrls = {{"midpoint", NSArray::of_strings({"http://t/mid"})}};
    play(session);
    session.let_pass(1);
    session->playNextVideo({{"v_u", "http://ad/next.mp4"},
                            {"v_tracking", NSDictionary{{"start", NSArray::of_strings({"http://t/next"})},
                                                        {"midpoint", NSArray::of_strings({"http://t/nextmid"})}}}});
    session.plays();

    session.player_is_at(20);
    session.let_pass(1);

    EXPECT_THAT(session.fetched(), ElementsAre("http://t/nextmid"));
}

TEST(PlayNextVideo, TheNextPlayIsAFirstPlay)
{
    AdSession session;
    play(session);
    session->playNextVideo(next_video());
    session.forget();

    session.plays(12);

    EXPECT_TRUE(session->bIsInitVideoBeginStep);
    EXPECT_FALSE(session->bPlayNextVideo);
    EXPECT_EQ(session->fTotalTime, 12.0F);
}

TEST(PlayNextVideo, BeforeAnyAdIsOpenItLeavesNothing)
{
    AdSession session;
    session.forget();

    session->playNextVideo(next_video());

    EXPECT_FALSE(session->qoroMoviePlayer);
    EXPECT_THAT(session.lines("player"), IsEmpty());
}

// ----------------------------------------------------------------------------------------------------------- reloading

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

TEST(ReloadVideo, SaysNeitherLoadingNorOpened)
{
    AdSession session;
    play(session);

    session->reloadVideo();

    EXPECT_EQ(session.count_of("js video_loading null 0"), 0U);
    EXPECT_THAT(session.lines("notification"), IsEmpty());
    EXPECT_TRUE(session->bIsLoaded);
}

TEST(ReloadVideo, TheCacheIsNotAsked)
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

TEST(ReloadVideo, TheOldPlayersPictureGivesItsPlaceToTheNewOnes)
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
    HostApp host;
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

TEST(VideoReplay, AnAddressOfOneCharacterCountsToo)
{
    HostApp host;
    host.parent = true;
    AdSession session(AdSession::manual_world(), host);
    session.ad().arrayReplayTrackingUrls = {"c", "x"};
    play_to_the_end(session);

    session.tap(session->btnReplay);

    EXPECT_THAT(session.fetched(), ElementsAre("x"));
    EXPECT_THAT(session.lines("parent"), ElementsAre("clickRequester"));
}

} // namespace
} // namespace qoro
