#include "tests/support/AdSession.h"

#include <gtest/gtest.h>

namespace qoro
{
namespace
{

bool bars_are_hidden(const AdSession& session)
{
    return session->viewTopBackground.isHidden() && session->viewBottomBackground.isHidden();
}

bool bars_are_shown(const AdSession& session)
{
    return !session->viewTopBackground.isHidden() && !session->viewBottomBackground.isHidden();
}

TEST(ControlBar, HidesWithItsPlayButton)
{
    AdSession session;
    session.open();

    session->setControlBottonInVisible(true);

    EXPECT_TRUE(bars_are_hidden(session));
    EXPECT_TRUE(session->btnPlayAndPause.isHidden());
    EXPECT_TRUE(session->bIsHideControlbutton);
}

TEST(ControlBar, ThePlayButtonFollowsTheBarsUntilTheVideoHasEnded)
{
    for (const bool ended : {false, true}) {
        for (const bool hidden : {false, true}) {
            AdSession session;
            session.open();
            session->bIsPlayFinish = ended;

            session->setControlBottonInVisible(hidden);

            EXPECT_EQ(session->viewTopBackground.isHidden(), hidden);
            EXPECT_EQ(session->viewBottomBackground.isHidden(), hidden);
            EXPECT_EQ(session->bIsHideControlbutton, hidden);
            EXPECT_EQ(session->btnPlayAndPause.isHidden(), ended || hidden) << "ended " << ended;
        }
    }
}

TEST(ControlBar, ShownDuringPlaybackItLeavesThePlayButtonVisible)
{
    AdSession session;
    session.open();
    session.plays();

    session->setControlBottonInVisible(false);

    EXPECT_TRUE(bars_are_shown(session));
    EXPECT_FALSE(session->btnPlayAndPause.isHidden());
    EXPECT_FALSE(session->bIsHideControlbutton);
}

TEST(ControlBar, HidesThreeSecondsAfterTheFirstPlay)
{
    AdSession session;
    session.open();
    session.plays();

    session.let_pass(2.9);
    EXPECT_TRUE(bars_are_shown(session));
    session.let_pass(0.1);
    EXPECT_TRUE(bars_are_hidden(session));
}

TEST(ControlBar, ATouchShowsItAgain)
{
    AdSession session;
    session.open();
    session.plays();
    session.let_pass(3);

    session.tap(session->btnClickListener);

    EXPECT_TRUE(bars_are_shown(session));
    EXPECT_EQ(session->timerSetControllerButtonHide.fireDate(), 6.0);
    EXPECT_EQ(session->timerSetControllerButtonHide.timeInterval(), 3.0);
    EXPECT_FALSE(session->timerSetControllerButtonHide.repeats());
}

TEST(ControlBar, ATouchEveryTwoSecondsKeepsIt)
{
    AdSession session;
    session.open();
    session.plays();

    session.let_pass(2);
    session.tap(session->btnClickListener);
    session.let_pass(2);
    session.tap(session->btnClickListener);
    session.let_pass(2);
    EXPECT_TRUE(bars_are_shown(session));
    session.tap(session->btnClickListener);
    session.let_pass(2);
    EXPECT_TRUE(bars_are_shown(session));
}

TEST(ControlBar, ATouchNeverHidesIt)
{
    AdSession session;
    session.open();
    session.plays();

    session.tap(session->btnClickListener);
    session.tap(session->btnClickListener);

    EXPECT_TRUE(bars_are_shown(session));
}

TEST(ControlBar, OfAPausedVideoStays)
{
    AdSession session;
    session.open();
    session.plays();
    session.pauses_at(1);

    session.let_pass(10);

    EXPECT_TRUE(bars_are_shown(session));
    EXPECT_FALSE(session->timerSetControllerButtonHide.isValid());
}

TEST(ControlBar, AfterTheEndATouchStartsNoTimerAndThePlayButtonStaysHidden)
{
    AdSession session;
    session.open();
    session.plays();
    session.ends();

    session.tap(session->btnClickListener);

    EXPECT_TRUE(bars_are_shown(session));
    EXPECT_FALSE(session->timerSetControllerButtonHide);
    EXPECT_TRUE(session->btnPlayAndPause.isHidden());
}

TEST(ControlBar, ShownAfterTheEndItLeavesThePlayButtonHiddenAndStartsNoTimer)
{
    AdSession session;
    session.open();
    session.plays();
    session.ends();

    session->setControlBottonToVisible();

    EXPECT_TRUE(bars_are_shown(session));
    EXPECT_TRUE(session->btnPlayAndPause.isHidden());
    EXPECT_FALSE(session->timerSetControllerButtonHide);
}

TEST(ControlBar, DoesNotHideAfterTheEnd)
{
    AdSession session;
    session.open();
    session.plays();
    session->bIsPlayFinish = true;

    session->setControlButtonHide();

    EXPECT_TRUE(bars_are_shown(session));
}

} // namespace
} // namespace qoro
