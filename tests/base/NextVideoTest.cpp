#include "tests/base/StartingPoints.h"

#include <gmock/gmock.h>

namespace qoro
{
namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

NSDictionary next_video()
{
    return {{"v_u", "http://ad/next.mp4"}};
}

NSDictionary button(const char* text)
{
    return {{"btn_text", text}};
}

TEST(CheckCanPlayNextVideo, IsFalseForTheCurrentAndANullAddress)
{
    AdSession session;
    session.open();

    EXPECT_FALSE(session->checkCanPlayNextVideo("http://ad/v.mp4"));
    EXPECT_FALSE(session->checkCanPlayNextVideo(nullptr));
}

TEST(CheckCanPlayNextVideo, IsTrueForADifferentAddress)
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

TEST(PlayNextVideo, AnEmptyMilestoneTableCountsAsAbsent)
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

TEST(PlayNextVideo, ButtonsThatAreNotAListLeaveTheAdWithoutButtons)
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

TEST(PlayNextVideo, AnIntervalRestartsTheHeartbeat)
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

TEST(PlayNextVideo, BeforeAnyAdIsOpenItMakesNoPlayer)
{
    AdSession session;
    session.forget();

    session->playNextVideo(next_video());

    EXPECT_FALSE(session->qoroMoviePlayer);
    EXPECT_THAT(session.lines("player"), IsEmpty());
}

} // namespace
} // namespace qoro
