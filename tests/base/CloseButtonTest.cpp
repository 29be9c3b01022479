#include "Base/VideoPlayer/VideoImage/VideoImage.h"
#include "tests/support/AdSession.h"
#include "tests/support/Views.h"
#include "views/ViewNode.h"

#include <gmock/gmock.h>

namespace qoro
{
namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

/// Held in landscape, where the close button serves to hide the video.
void open_with_hide_button(AdSession& session)
{
    session.ad().landscapeModeType = VIDEO_AND_WEBVIEW;
    session.ad().bShowHideVideoBtn = true;
    session.rotate(UIDeviceOrientationLandscapeLeft);
    session.open();
}

// ---------------------------------------------------------------------------------------------------- picture and size

TEST(CloseButtonPicture, IsSmallUnlessTheAdSaysBig)
{
    AdSession session;
    session.open();

    EXPECT_EQ(picture_of(session->btnClose), arrayVideoCloseButton);
    EXPECT_EQ(session->btnClose.frame(), (CGRect{0, 0, 50, 50}));

    session.ad().closeBtnSize = SMALL;
    session->setVideoCloseButtonImage();

    EXPECT_EQ(picture_of(session->btnClose), arrayVideoCloseButton);
    EXPECT_EQ(session->btnClose.frame(), (CGRect{0, 0, 50, 50}));
}

TEST(CloseButtonPicture, IsBigWhenTheAdSaysSo)
{
    AdSession session;
    session.ad().closeBtnSize = BIG;

    session.open();

    EXPECT_EQ(picture_of(session->btnClose), arrayVideoBigCloseButton);
    EXPECT_EQ(session->btnClose.frame(), (CGRect{0, 0, 60, 60}));
}

TEST(CloseButtonPicture, KeepsTheButtonsPlace)
{
    AdSession session;
    session.open();
    session->btnClose.setFrame({12, 34, 1, 1});

    session->setVideoCloseButtonImage();

    EXPECT_EQ(session->btnClose.frame(), (CGRect{12, 34, 50, 50}));
}

TEST(CloseButtonPicture, IsTheHideButtonInLandscapeOverAPage)
{
    AdSession session;
    session.ad().closeBtnSize = BIG;

    open_with_hide_button(session);

    EXPECT_EQ(picture_of(session->btnClose), arrayHideVideo);
    EXPECT_EQ(session->btnClose.frame(), (CGRect{0, 0, 44, 44}));
}

TEST(CloseButtonPicture, IsNoHideButtonWithoutFullScreen)
{
    AdSession session;
    open_with_hide_button(session);
    session->bIsFullScreen = false;

    session->setVideoCloseButtonImage();

    EXPECT_EQ(picture_of(session->btnClose), arrayVideoCloseButton);
}

TEST(CloseButtonPicture, IsNoHideButtonWithoutAPageInLandscape)
{
    AdSession session;
    open_with_hide_button(session);
    session.ad().landscapeModeType = ONLY_VIDEO;

    session->setVideoCloseButtonImage();

    EXPECT_EQ(picture_of(session->btnClose), arrayVideoCloseButton);
}

TEST(CloseButtonPicture, IsNoHideButtonUnlessTheAdWantsIt)
{
    AdSession session;
    open_with_hide_button(session);
    session.ad().bShowHideVideoBtn = false;

    session->setVideoCloseButtonImage();

    EXPECT_EQ(picture_of(session->btnClose), arrayVideoCloseButton);
}

TEST(CloseButtonPicture, IsNoHideButtonWithoutAPlayer)
{
    AdSession session;
    open_with_hide_button(session);
    session->setQoroMoviePlayer(nullptr);

    session->setVideoCloseButtonImage();

    EXPECT_EQ(picture_of(session->btnClose), arrayVideoCloseButton);
}

TEST(CloseButtonPicture, IsNoHideButtonForAHiddenVideo)
{
    AdSession session;
    open_with_hide_button(session);
    session->qoroMoviePlayer.view().setHidden(true);

    session->setVideoCloseButtonImage();

    EXPECT_EQ(picture_of(session->btnClose), arrayVideoCloseButton);
}

TEST(CloseButtonPicture, IsNoHideButtonWhileTheHiddenImageShowsOrIsMissing)
{
    AdSession session;
    open_with_hide_button(session);

    session->miImageView.setHidden(false);
    session->setVideoCloseButtonImage();
    EXPECT_EQ(picture_of(session->btnClose), arrayVideoCloseButton);

    session->miImageView = nullptr;
    session->setVideoCloseButtonImage();
    EXPECT_EQ(picture_of(session->btnClose), arrayVideoCloseButton);
}

TEST(CloseButtonPicture, GivesTheButtonItsTap)
{
    AdSession session;
    session.open();
    session->btnClose.removeAllTargets();

    session->setVideoCloseButtonImage();

    ASSERT_EQ(session->btnClose.targets().size(), 1U);
    EXPECT_EQ(session->btnClose.targets()[0].name(), "closeAction");
}

// ----------------------------------------------------------------------------------------------------- where it stands

TEST(CloseButtonPlace, IsTheVideoAtTheTop)
{
    AdSession session;
    session.open();

    EXPECT_TRUE(session->btnClose.superview() == session->qoroMoviePlayer.view());
}

TEST(CloseButtonPlace, IsTheVideoAtTheTopEvenWhenItIsHidden)
{
    AdSession session;
    session.open();
    session->qoroMoviePlayer.view().setHidden(true);

    session->addVideoCloseButton();

    EXPECT_TRUE(session->btnClose.superview() == session->qoroMoviePlayer.view());
}

TEST(CloseButtonPlace, IsThePageForAVideoElsewhere)
{
    AdSession session;
    session.ad().portraitVideoPos = BOTTOM;
    session.open();

    EXPECT_TRUE(session->btnClose.superview() == session->webView());
}

TEST(CloseButtonPlace, IsTheFullVideoWhileItCanBeSeen)
{
    AdSession session;
    session.ad().portraitVideoPos = FULL;
    session.open();

    EXPECT_TRUE(session->btnClose.superview() == session->qoroMoviePlayer.view());
}

TEST(CloseButtonPlace, IsThePageWhileTheFullVideoIsHidden)
{
    AdSession session;
    session.ad().portraitVideoPos = FULL;
    session.open();
    session->qoroMoviePlayer.view().setHidden(true);

    session->addVideoCloseButton();

    EXPECT_TRUE(session->btnClose.superview() == session->webView());
}

TEST(CloseButtonPlace, IsTheVideoForAnAdOfVideoAloneOnAnUprightDevice)
{
    AdSession session;
    session.ad().portraitModeType = ONLY_VIDEO;
    session.ad().portraitVideoPos = BOTTOM;
    session.open();

    EXPECT_TRUE(session->btnClose.superview() == session->qoroMoviePlayer.view());
}

TEST(CloseButtonPlace, IsThePageForAnAdOfVideoAloneOnADeviceThatLiesFlat)
{
    AdSession session;
    session.ad().portraitModeType = ONLY_VIDEO;
    session.ad().portraitVideoPos = BOTTOM;
    session.rotate(UIDeviceOrientationFaceUp);
    session.open();

    EXPECT_TRUE(session->btnClose.superview() == session->webView());
}

TEST(CloseButtonPlace, IsTheVideoInLandscapeAndThePageOnceItIsHidden)
{
    AdSession session;
    session.ad().portraitVideoPos = BOTTOM;
    open_with_hide_button(session);
    EXPECT_TRUE(session->btnClose.superview() == session->qoroMoviePlayer.view());

    session->qoroMoviePlayer.view().setHidden(true);
    session->addVideoCloseButton();

    EXPECT_TRUE(session->btnClose.superview() == session->webView());
}

TEST(CloseButtonPlace, IsNoneWithoutAPlayer)
{
    AdSession session;
    session.open();
    session->setQoroMoviePlayer(nullptr);

    session->addVideoCloseButton();

    EXPECT_FALSE(session->btnClose.superview());
    EXPECT_FALSE(session->countDownView.superview());
}

TEST(CloseButtonPlace, IsNoneOnceAHiddenImageShowsThatIsMissing)
{
    AdSession session;
    session.open();
    session->isShowMI = true;
    session->miImageView = nullptr;

    session->addVideoCloseButton();

    EXPECT_FALSE(session->btnClose.superview());
}

TEST(CloseButtonPlace, IsTheHiddenImageOnceThatShows)
{
    AdSession session;
    session.open();
    session->countDownView.removeFromSuperview();
    session->isShowMI = true;
    session.forget();

    session->addVideoCloseButton();

    EXPECT_TRUE(session->btnClose.superview() == session->miImageView);
    EXPECT_FALSE(session->btnClose.isHidden());
    EXPECT_FALSE(session->countDownView.superview());
    EXPECT_THAT(session.transcript(), ElementsAre("log 0 Added Video Close Button"));
}

// ---------------------------------------------------------------------------------------------------------- countdown

TEST(CountDownView, LiesOverTheCloseButtonHidden)
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

TEST(CountDownView, IsMadeWhereTheButtonStandsFiftyPointsWideWhateverTheButtonsSize)
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

TEST(CountDownView, IsUsedAgainAsItIs)
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

TEST(CloseCountdown, EndsWithItsLastTenthOrWhereTheRoundingLeavesAnythingWithTheNextTick)
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

TEST(CloseCountdown, TakesATenthOffAndShowsWhatItKeepsInSinglePrecision)
{
    AdSession session;
    session.open();
    session->iCountdownCount = 3;

    session->showCloseButton();

    EXPECT_EQ(session->iCountdownCount, 2.9F);
    EXPECT_EQ(session->countDownView.seconds(), static_cast<double>(2.9F));
}

TEST(CloseCountdown, ATenthOfSinglePrecisionIsMoreThanTheTenthOfDoublePrecisionThatIsTakenOff)
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

TEST(CloseCountdown, IsNotSeenOtherwise)
{
    AdSession session;
    session.open();
    session.plays();
    session->countDownView.setHidden(false);

    session.let_pass(1);

    EXPECT_TRUE(session->countDownView.isHidden());
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

TEST(BufferingWatchdog, OfANegativeTimeIsNone)
{
    AdSession session;
    session.ad().iBufferingSufferTime = -1;
    session.open();

    session.let_pass(60);

    EXPECT_FALSE(session->timerBufferSufferTime);
    EXPECT_TRUE(session->btnClose.isHidden());
}

// -------------------------------------------------------------------------------------------------------- custom close

TEST(CustomClose, TakesTheButtonOffTheScreen)
{
    AdSession session;
    session.open();

    session.script_says("MRAIDUseCustomClose", {true});

    EXPECT_TRUE(session->bIsUseVideoCustomClose);
    EXPECT_TRUE(session->btnClose);
    EXPECT_FALSE(session->btnClose.superview());
}

TEST(CustomClose, TurnedOffLaysTheAdOutAgainWithTheButton)
{
    AdSession session;
    session.open();
    session.script_says("MRAIDUseCustomClose", {true});
    session.forget();

    session.script_says("MRAIDUseCustomClose", {false});

    EXPECT_EQ(session.count_of(R"(js video_orientation {"orientation":"portrait"} 0)"), 1U);
    EXPECT_TRUE(session->btnClose.superview() == session->qoroMoviePlayer.view());
}

TEST(CustomClose, TurnedOnLaysNothingOut)
{
    AdSession session;
    session.open();
    session.forget();

    session.script_says("MRAIDUseCustomClose", {true});

    EXPECT_THAT(session.transcript(), IsEmpty());
}

TEST(CustomClose, TurnedOffKeepsTheTapWithTheScriptThatHasAskedForIt)
{
    AdSession session;
    session.open();
    session.script_says("addEventListener", {"onclick_closebtn", "1"});
    session.script_says("MRAIDUseCustomClose", {true});

    session.script_says("MRAIDUseCustomClose", {false});

    EXPECT_EQ(session->btnClose.targets()[0].name(), "onclick_closebtn");
}

TEST(CustomClose, TakesTheButtonAwayWithEachNewPicture)
{
    AdSession session;
    session.open();
    session->bIsUseVideoCustomClose = true;

    session->setVideoCloseButtonImage();

    EXPECT_FALSE(session->btnClose.superview());
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

TEST(CloseButton, IsOnAFullVideoOnADeviceHeldInLandscapeToo)
{
    AdSession session;
    session.ad().portraitVideoPos = FULL;
    session.rotate(UIDeviceOrientationLandscapeLeft);
    session.open();

    session->setPortraitModeScreen();

    EXPECT_TRUE(session->bIsPortraitNow);
    EXPECT_EQ(session->btnClose.superview(), session->qoroMoviePlayer.view());
}

} // namespace
} // namespace qoro
