#include "Base/VideoPlayer/VideoImage/VideoImage.h"
#include "tests/base/StartingPoints.h"
#include "tests/support/Views.h"

#include <gmock/gmock.h>

namespace qoro
{
namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

/// In landscape, where the close button hides the video.
void open_with_hide_button(AdSession& session)
{
    show_hide_button(session);
    session.open();
}

// ------------------------------------------------------------------------------------------------------ image and size

TEST(CloseButtonPicture, IsSmallByDefault)
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

TEST(CloseButtonPicture, IsBigWhenTheAdWantsIt)
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

// ------------------------------------------------------------------------------------------------------------ position

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

TEST(CloseButtonPlace, IsNoViewWithoutAPlayer)
{
    AdSession session;
    session.open();
    session->setQoroMoviePlayer(nullptr);

    session->addVideoCloseButton();

    EXPECT_FALSE(session->btnClose.superview());
    EXPECT_FALSE(session->countDownView.superview());
}

TEST(CloseButtonPlace, IsNoViewOnceAMissingHiddenImageIsShown)
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

TEST(CustomClose, TurnedOffLeavesTheTapToTheScriptThatListensForIt)
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

} // namespace
} // namespace qoro
