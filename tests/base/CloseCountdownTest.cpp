#include "tests/support/AdSession.h"
#include "tests/support/Views.h"
#include "views/ViewNode.h"

#include <gmock/gmock.h>

namespace qoro
{
namespace
{

using testing::ElementsAre;

// ----------------------------------------------------------------------------------------------------------- countdown

TEST(CountDownView, IsOverTheCloseButtonAndHidden)
{
    AdSession session;

    session.open();

    EXPECT_EQ(session->countDownView.frame(), (CGRect{0, 0, 50, 50}));
    EXPECT_EQ(session->countDownView.seconds(), 5);
    EXPECT_EQ(session->countDownView.node()->ring_width, 3);
    EXPECT_TRUE(session->countDownView.isHidden());
    EXPECT_TRUE(session->countDownView.superview() == session->btnClose.superview());
    EXPECT_TRUE(is_on_top(session->countDownView));
}

TEST(CountDownView, IsMadeAtTheButtonsPositionFiftyPointsWideWhateverTheButtonsSize)
{
    AdSession session;
    session.open();
    session->countDownView = nullptr;
    session->iCountdownCount = 2.5F;
    session->btnClose.setFrame({12, 34, 60, 60});

    session->addCountDownView();

    EXPECT_EQ(session->countDownView.frame(), (CGRect{12, 34, 50, 50}));
    EXPECT_EQ(session->countDownView.seconds(), 2.5);
    EXPECT_TRUE(session->countDownView.isHidden());
}

TEST(CountDownView, IsAddedAfterTheButtonWithALogLineOfItsOwn)
{
    AdSession session;
    session.open();
    session.forget();

    session->addVideoCloseButton();

    EXPECT_THAT(session.transcript(), ElementsAre("log 0 Added Video Close Button", "log 0 Added Count Down View"));
}

TEST(CountDownView, IsReusedUnchanged)
{
    AdSession session;
    session.open();
    const QoroCountDownView first = session->countDownView;
    first.updateWithSeconds(2);
    first.setHidden(false);
    session->btnClose.setFrame({12, 34, 50, 50});

    session->addVideoCloseButton();

    EXPECT_TRUE(session->countDownView == first);
    EXPECT_EQ(first.seconds(), 2);
    EXPECT_EQ(first.frame(), (CGRect{0, 0, 50, 50}));
    EXPECT_FALSE(first.isHidden());
    EXPECT_TRUE(is_on_top(first));
}

TEST(CloseCountdown, OfZeroEndsWithItsFirstTick)
{
    AdSession session;
    session.ad().iCloseBtnCountdown = 0;
    session.open();
    session.plays();

    session.let_pass(0.09);
    EXPECT_TRUE(session->btnClose.isHidden());
    session.let_pass(0.01);
    EXPECT_FALSE(session->btnClose.isHidden());
    EXPECT_FLOAT_EQ(session->iCountdownCount, -0.1F);
}

TEST(CloseCountdown, EndsWithItsLastTenthOrOneTickLaterIfRoundingLeavesARemainder)
{
    struct Countdown {
        int seconds;
        int ticks;
    };
    for (const auto& [seconds, ticks] : {Countdown{1, 10}, {2, 20}, {3, 31}, {5, 51}, {10, 100}, {15, 150}}) {
        AdSession session;
        session.ad().iCloseBtnCountdown = seconds;
        session.open();
        session.plays();

        session.let_pass(0.1 * ticks - 0.01);
        EXPECT_TRUE(session->btnClose.isHidden()) << seconds << " seconds";
        session.let_pass(0.01);
        EXPECT_FALSE(session->btnClose.isHidden()) << seconds << " seconds";
        EXPECT_TRUE(session->countDownView.isHidden()) << seconds << " seconds";
    }
}

TEST(CloseCountdown, StopsItsTimerAtTheEnd)
{
    AdSession session;
    session.open();
    session.plays();

    session.let_pass(6);

    EXPECT_FALSE(session->timerCloseBtnCountdown.isValid());
}

TEST(CloseCountdown, SubtractsATenthAndShowsTheRestInSinglePrecision)
{
    AdSession session;
    session.open();
    session->iCountdownCount = 3;

    session->showCloseButton();

    EXPECT_EQ(session->iCountdownCount, 2.9F);
    EXPECT_EQ(session->countDownView.seconds(), static_cast<double>(2.9F));
}

TEST(CloseCountdown, ATenthInSinglePrecisionExceedsTheSubtractedTenthInDoublePrecision)
{
    AdSession session;
    session.open();
    session->btnClose.setHidden(true);
    session->iCountdownCount = 0.1F;

    session->showCloseButton();

    EXPECT_GT(session->iCountdownCount, 0);
    EXPECT_TRUE(session->btnClose.isHidden());
}

TEST(CloseCountdown, IsSeenWhenTheAdWantsTheWheel)
{
    for (const int wheel : {1, 2, -1}) {
        AdSession session;
        session.ad().iShowProgressWheel = wheel;
        session.open();
        session.plays();
        session->countDownView.setHidden(true);

        session.let_pass(1);

        EXPECT_FALSE(session->countDownView.isHidden()) << "wheel " << wheel;
    }
}

TEST(CloseCountdown, IsNotSeenAnyMoreAtTheEnd)
{
    AdSession session;
    session.ad().iShowProgressWheel = 1;
    session.open();
    session.plays();

    session.let_pass(6);

    EXPECT_TRUE(session->countDownView.isHidden());
}

TEST(CloseCountdown, IsNotSeenUnlessTheAdWantsTheWheel)
{
    AdSession session;
    session.open();
    session.plays();
    session->countDownView.setHidden(false);

    session.let_pass(1);

    EXPECT_TRUE(session->countDownView.isHidden());
}

TEST(CloseButton, AVideoShorterThanTheCountdownCountsOnAfterItsEnd)
{
    AdSession session;
    session.ad().iCloseBtnCountdown = 5;
    session.open();
    session.plays(1);
    session.let_pass(1);
    session.ends();
    session->btnClose.setHidden(true);

    session.let_pass(3);
    EXPECT_TRUE(session->btnClose.isHidden());
    session.let_pass(2);

    EXPECT_FALSE(session->btnClose.isHidden());
}

// -------------------------------------------------------------------------------------------------- buffering watchdog

TEST(BufferingWatchdog, OfZeroShowsTheButtonAfterOneSecond)
{
    AdSession session;
    session.ad().iBufferingSufferTime = 0;
    session.open();

    session.let_pass(0.99);
    EXPECT_TRUE(session->btnClose.isHidden());
    session.let_pass(0.01);
    EXPECT_FALSE(session->btnClose.isHidden());
    EXPECT_EQ(session.count_of("log 4 Buffer Suffer Time's up, show close button."), 1U);
}

TEST(BufferingWatchdog, OfThreeShowsTheButtonWithTheFourthTick)
{
    AdSession session;
    session.ad().iBufferingSufferTime = 3;
    session.open();

    session.let_pass(3.99);
    EXPECT_TRUE(session->btnClose.isHidden());
    session.let_pass(0.01);
    EXPECT_FALSE(session->btnClose.isHidden());
}

TEST(BufferingWatchdog, RunsOnWhileTheVideoPlays)
{
    AdSession session;
    session.ad().iBufferingSufferTime = 1;
    session.ad().iCloseBtnCountdown = 20;
    session.open();
    session.plays();

    session.let_pass(2);

    EXPECT_FALSE(session->btnClose.isHidden());
    EXPECT_TRUE(session->timerCloseBtnCountdown.isValid());
}

TEST(BufferingWatchdog, RunsOnThroughAPauseAndTheEnd)
{
    AdSession session;
    session.ad().iBufferingSufferTime = 3;
    session.ad().iCloseBtnCountdown = 20;
    session.open();
    session.plays();
    session.let_pass(1);
    session.pauses_at(1);
    session.let_pass(1);
    session.plays_on();
    session.ends();

    session.let_pass(1.99);
    EXPECT_TRUE(session->btnClose.isHidden());
    session.let_pass(0.01);
    EXPECT_FALSE(session->btnClose.isHidden());
    EXPECT_EQ(session->iBufferingSufferTime, 0);
}

TEST(BufferingWatchdog, EndsWithItsExpiry)
{
    AdSession session;
    session.ad().iBufferingSufferTime = 0;
    session.open();

    session.let_pass(10);

    EXPECT_FALSE(session->timerBufferSufferTime.isValid());
    EXPECT_EQ(session.count_of("log 4 Buffer Suffer Time's up, show close button."), 1U);
}

TEST(BufferingWatchdog, IsNotStartedForANegativeTime)
{
    AdSession session;
    session.ad().iBufferingSufferTime = -1;
    session.open();

    session.let_pass(60);

    EXPECT_FALSE(session->timerBufferSufferTime);
    EXPECT_TRUE(session->btnClose.isHidden());
}

} // namespace
} // namespace qoro
