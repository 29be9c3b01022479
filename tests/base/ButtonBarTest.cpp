#include "Base/VideoPlayer/VideoImage/VideoImage.h"
#include "tests/support/AdSession.h"
#include "tests/support/Views.h"

#include <gmock/gmock.h>

#include <vector>

namespace qoro
{
namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* PngSignature = "\x89PNG\r\n\x1a\n";

World measured_texts()
{
    World world = AdSession::manual_world();
    world.text["Buy now!"] = {80.3, 17.9};
    world.text["More"] = {49.5, 20.5};
    world.text["Brand"] = {52.25, 23.5};
    return world;
}

NSDictionary button(const char* title)
{
    return {{"btn_text", title}, {"data", NSDictionary{{"u", "http://l/"}}}};
}

// -------------------------------------------------------------------------------------------------- bar construction

TEST(ButtonBar, FetchesTheBrandIconWhileItIsBuilt)
{
    World world = AdSession::manual_world();
    world.net["http://ad/icon.png"].body = PngSignature;
    AdSession session(world);
    session.ad().strBrandIconUrl = "http://ad/icon.png";

    session.open();

    EXPECT_THAT(session.lines("fetch"), ElementsAre("http://ad/icon.png brandIcon"));
    EXPECT_TRUE(session->btnBrandIcon.backgroundImage());
    EXPECT_FALSE(session->btnBrandIcon.isHidden());
}

TEST(ButtonBar, ABrandIconThatCannotBeFetchedLeavesAnEmptyVisibleButton)
{
    World world = AdSession::manual_world();
    world.net["http://ad/icon.png"].ok = false;
    AdSession session(world);
    session.ad().strBrandIconUrl = "http://ad/icon.png";

    session.open();

    EXPECT_FALSE(session->btnBrandIcon.backgroundImage());
    EXPECT_FALSE(session->btnBrandIcon.isHidden());
}

TEST(ButtonBar, WithoutABrandIconNothingIsFetchedAndTheButtonIsHidden)
{
    AdSession session;

    session.open();

    EXPECT_THAT(session.lines("fetch"), IsEmpty());
    EXPECT_TRUE(session->btnBrandIcon.isHidden());
}

TEST(ButtonBar, TheBrandTextIsAsLargeAsItMeasures)
{
    AdSession session(measured_texts());
    session.ad().strBrandText = "Brand";

    session.open();

    EXPECT_EQ(session->labelBrandText.text(), "Brand");
    EXPECT_EQ(session->labelBrandText.frame(), (CGRect{812.0F / 7.0F + 25.0F, 5, 52.25, 23.5}));
}

TEST(ButtonBar, WithoutABrandTextTheLabelIsHidden)
{
    AdSession session;
    session.open();
    session->labelBrandText.setHidden(false);

    session->setButtonBarToScreen(false);

    EXPECT_TRUE(session->labelBrandText.isHidden());
    EXPECT_FALSE(session->labelBrandText.text());
}

TEST(ButtonBar, TheTopBarHoldsItsShadeAndTheBrand)
{
    AdSession session;

    session.open();

    EXPECT_THAT(session->viewTopBackground.subviews(),
                ElementsAre(UIView(session->imgTopBackgroundColor), UIView(session->btnBrandIcon),
                            UIView(session->labelBrandText)));
    EXPECT_EQ(session->imgTopBackgroundColor.image().data().bytes(), arrayTopBackGround);
    EXPECT_EQ(session->viewTopBackground.backgroundColor(), UIColor::clearColor());
}

TEST(ButtonBar, HiddenActionButtonsAreBetweenTheShadeAndTheBrand)
{
    AdSession session;
    session.ad().bIsHideActionButton = true;

    session.open();

    EXPECT_THAT(session->viewTopBackground.subviews(),
                ElementsAre(UIView(session->imgTopBackgroundColor), session->viewButtonBackground,
                            UIView(session->btnBrandIcon), UIView(session->labelBrandText)));
}

TEST(ButtonBar, TheBottomBarHoldsItsShadeMuteAndScale)
{
    AdSession session;

    session.open();

    EXPECT_THAT(session->viewBottomBackground.subviews(),
                ElementsAre(UIView(session->imgBottomBackgroundColor), UIView(session->btnMute),
                            UIView(session->btnScreenScale)));
    EXPECT_EQ(session->imgBottomBackgroundColor.image().data().bytes(), arrayBottomBackGround);
    EXPECT_EQ(session->viewBottomBackground.backgroundColor(), UIColor::clearColor());
}

TEST(ButtonBar, TheVideoHoldsTheBarsBelowTheButtonsBelowThePanel)
{
    AdSession session;
    session.open();
    session->btnReplay.setHidden(false);
    session->viewButtonBackground.setBackgroundColor(UIColor::blackColor());

    session->setButtonBarToScreen(false);

    const std::vector<UIView> over_video = session->qoroMoviePlayer.view().subviews();
    ASSERT_GE(over_video.size(), 5U);
    EXPECT_THAT(std::vector(over_video.end() - 5, over_video.end()),
                ElementsAre(session->viewTopBackground, session->viewBottomBackground, UIView(session->btnPlayAndPause),
                            UIView(session->btnReplay), session->viewButtonBackground));
    EXPECT_TRUE(session->btnReplay.isHidden());
    EXPECT_EQ(session->viewButtonBackground.backgroundColor(), UIColor::clearColor());
}

TEST(ButtonBar, WithoutAPlayerTheBarsAndThePanelHaveNoParent)
{
    AdSession session;
    session.open();
    session->setQoroMoviePlayer(nullptr);

    session->setButtonBarToScreen(false);

    EXPECT_FALSE(session->viewTopBackground.superview());
    EXPECT_FALSE(session->viewBottomBackground.superview());
    EXPECT_FALSE(session->viewButtonBackground.superview());
}

TEST(ButtonBar, TheReturnToVideoButtonIsOnThePage)
{
    AdSession session;

    session.open();

    EXPECT_TRUE(session->btnReturnToVideo.superview() == session->webView());
}

TEST(ButtonBar, AtTheStartTheCloseButtonIsHiddenAndHasNoParent)
{
    AdSession session;
    session.open();
    session->btnClose.setHidden(false);

    session->setButtonBarToScreen(false);

    EXPECT_TRUE(session->btnClose.isHidden());
    EXPECT_FALSE(session->btnClose.superview());
}

TEST(ButtonBar, ForANextVideoTheCloseButtonStaysVisible)
{
    AdSession session;
    session.open();
    session->btnClose.setHidden(false);

    session->setButtonBarToScreen(true);

    EXPECT_FALSE(session->btnClose.isHidden());
    EXPECT_FALSE(session->btnClose.superview());
}

// ----------------------------------------------------------------------------------------------------- fixed controls

TEST(ButtonPosition, InPortraitTheControlsFollowTheBand)
{
    AdSession session;

    session.open();

    EXPECT_EQ(session->btnReplay.frame(), (CGRect{162.5, 80.46875, 50, 50}));
    EXPECT_EQ(session->btnPlayAndPause.frame(), (CGRect{162.5, 80.46875, 50, 50}));
    EXPECT_EQ(session->viewTopBackground.frame(), (CGRect{0, 0, 375, 70}));
    EXPECT_EQ(session->viewBottomBackground.frame(), (CGRect{0, 160.9375, 375, 50}));
    EXPECT_EQ(session->imgTopBackgroundColor.frame(), (CGRect{0, 0, 375, 50}));
    EXPECT_EQ(session->imgBottomBackgroundColor.frame(), (CGRect{0, 0, 375, 50}));
}

TEST(ButtonPosition, WithoutAScaleButtonMuteIsAtTheRightEnd)
{
    AdSession session;

    session.open();

    EXPECT_EQ(session->btnMute.frame(), (CGRect{325, 0, 50, 50}));
}

TEST(ButtonPosition, AScaleButtonPushesMuteToTheLeft)
{
    AdSession session;
    session.ad().landscapeModeType = ONLY_VIDEO;

    session.open();

    EXPECT_EQ(session->btnMute.frame(), (CGRect{275, 0, 50, 50}));
    EXPECT_EQ(session->btnScreenScale.frame(), (CGRect{325, 0, 50, 50}));
}

TEST(ButtonPosition, ThePlayButtonIsBroughtToTheFrontOfTheVideo)
{
    AdSession session;
    session.open();
    session->qoroMoviePlayer.view().addSubview(session->viewTopBackground);

    session->setButtonPosition();

    EXPECT_TRUE(is_on_top(session->btnPlayAndPause));
}

/// Opens an ad with a landscape layout only.
void open_landscape(AdSession& session)
{
    session.ad().portraitModeType = VideoAdMode{};
    session.ad().landscapeModeType = ONLY_VIDEO;
    session.open();
}

TEST(ButtonPosition, InLandscapeTheControlsAreSmallerAndFollowTheTurnedScreen)
{
    AdSession session;
    session.rotate(UIDeviceOrientationLandscapeLeft);

    open_landscape(session);

    EXPECT_EQ(session->btnPlayAndPause.frame(), (CGRect{384, 165.5, 44, 44}));
    EXPECT_EQ(session->viewTopBackground.frame(), (CGRect{0, 0, 812, 70}));
    EXPECT_EQ(session->viewBottomBackground.frame(), (CGRect{0, 331, 812, 44}));
    EXPECT_EQ(session->imgTopBackgroundColor.frame(), (CGRect{0, 0, 812, 44}));
    EXPECT_EQ(session->imgBottomBackgroundColor.frame(), (CGRect{0, 0, 812, 44}));
    EXPECT_EQ(session->btnMute.frame(), (CGRect{768, 0, 44, 44}));
}

TEST(ButtonPosition, InLandscapeOnAnUprightDeviceTheExtentsAreSwapped)
{
    AdSession session;

    open_landscape(session);

    EXPECT_EQ(session->viewTopBackground.frame(), (CGRect{0, 0, 812, 70}));
    EXPECT_EQ(session->viewBottomBackground.frame(), (CGRect{0, 331, 812, 44}));
}

TEST(ButtonPosition, InLandscapeThatDoesNotFillTheScreenTheExtentsStay)
{
    AdSession session;
    open_landscape(session);
    session->bIsFullScreen = false;

    session->setButtonPosition();

    EXPECT_EQ(session->viewTopBackground.frame(), (CGRect{0, 0, 375, 70}));
}

TEST(ButtonPosition, TheOrientationAtTheLayoutCountsNotTheCurrentOne)
{
    AdSession session;
    open_landscape(session);
    session.rotate(UIDeviceOrientationLandscapeLeft);

    session->setButtonPosition();

    // The screen is now 812 by 375, which the portrait layout swaps.
    EXPECT_EQ(session->viewTopBackground.frame(), (CGRect{0, 0, 375, 70}));
}

/// A host locked to landscape on a device held upright; its screen is 812 wide.
World locked_host()
{
    World world = AdSession::manual_world();
    world.device.facts.screen = CGSize{812, 375};
    world.device.status_bar_orientation = UIInterfaceOrientationLandscapeRight;
    return world;
}

TEST(ButtonPosition, InAHostLockedToLandscapeTheControlsFollowTheScreen)
{
    AdSession session(locked_host());

    open_landscape(session);

    EXPECT_EQ(session->viewTopBackground.frame(), (CGRect{0, 0, 812, 70}));
    EXPECT_EQ(session->viewBottomBackground.frame(), (CGRect{0, 331, 812, 44}));
}

TEST(ButtonPosition, InAHostLockedToLandscapeBeforeIOS8TheExtentsAreSwapped)
{
    World world = locked_host();
    world.device.facts.ios8 = false;
    AdSession session(world);

    open_landscape(session);

    EXPECT_EQ(session->viewTopBackground.frame(), (CGRect{0, 0, 375, 70}));
    EXPECT_EQ(session->viewBottomBackground.frame(), (CGRect{0, 768, 375, 44}));
}

// ------------------------------------------------------------------------------------------------------ action panel

TEST(ActionPanel, OneTitledButtonIsMeasured)
{
    AdSession session(measured_texts());
    session.ad().arrayButtonsInfo = {button("Buy+now%21")};

    session.open();

    EXPECT_EQ(session->btnActionOne.frame(), (CGRect{0, 8, 91, 18}));
    EXPECT_EQ(session->viewButtonBackground.frame(), (CGRect{276, 3, 91, 28}));
}

TEST(ActionPanel, TwoTitledButtonsAreStacked)
{
    AdSession session(measured_texts());
    session.ad().arrayButtonsInfo = {button("Buy+now%21"), button("More")};

    session.open();

    EXPECT_EQ(session->btnActionOne.frame(), (CGRect{0, 8, 91, 18}));
    EXPECT_EQ(session->btnActionTwo.frame(), (CGRect{31, 39, 60, 18}));
    EXPECT_EQ(session->viewButtonBackground.frame(), (CGRect{276, 3, 91, 56}));
}

TEST(ActionPanel, WithoutButtonsNoFrameIsTouched)
{
    AdSession session;
    session.open();
    session->btnActionOne.setFrame({1, 2, 3, 4});
    session->btnActionTwo.setFrame({5, 6, 7, 8});
    session->viewButtonBackground.setFrame({9, 10, 11, 12});

    session->setButtonPosition();

    EXPECT_EQ(session->btnActionOne.frame(), (CGRect{1, 2, 3, 4}));
    EXPECT_EQ(session->btnActionTwo.frame(), (CGRect{5, 6, 7, 8}));
    EXPECT_EQ(session->viewButtonBackground.frame(), (CGRect{9, 10, 11, 12}));
}

TEST(ActionPanel, OneUntitledButtonIsASquare)
{
    AdSession session;
    session.open();
    session->buttonPosMode = ButtonPositionMode_OneButton;

    session->setButtonPosition();

    EXPECT_EQ(session->btnActionOne.frame(), (CGRect{0, 0, 50, 50}));
    EXPECT_EQ(session->btnActionTwo.frame(), CGRect{});
    EXPECT_EQ(session->viewButtonBackground.frame(), (CGRect{60, 0, 60, 60}));
}

TEST(ActionPanel, TwoUntitledButtonsAreSideBySide)
{
    AdSession session;
    session.open();
    session->buttonPosMode = ButtonPositionMode_TwoButton;

    session->setButtonPosition();

    EXPECT_EQ(session->btnActionTwo.frame(), (CGRect{60, 0, 50, 50}));
    EXPECT_EQ(session->viewButtonBackground.frame(), (CGRect{60, 0, 60, 115}));
}

// ------------------------------------------------------------------------------------------------- restoring the video

/// In landscape, with a page behind the video.
void open_landscape_over_page(AdSession& session)
{
    session.ad().landscapeModeType = VIDEO_AND_WEBVIEW;
    session.ad().bShowHideVideoBtn = true;
    session.rotate(UIDeviceOrientationLandscapeLeft);
    session.open();
}

TEST(ReturnToVideo, IsOfferedInLandscapeOverAPage)
{
    AdSession session;

    open_landscape_over_page(session);

    EXPECT_FALSE(session->btnReturnToVideo.isHidden());
    EXPECT_EQ(session->btnReturnToVideo.frame(), (CGRect{768, 0, 44, 44}));
}

TEST(ReturnToVideo, IsNotOfferedOverNoPage)
{
    AdSession session;
    open_landscape_over_page(session);
    session.ad().landscapeModeType = ONLY_VIDEO;

    session->setButtonPosition();

    EXPECT_TRUE(session->btnReturnToVideo.isHidden());
}

TEST(ReturnToVideo, IsNotOfferedInPortrait)
{
    AdSession session;
    session.ad().landscapeModeType = VIDEO_AND_WEBVIEW;
    session.ad().bShowHideVideoBtn = true;

    session.open();

    EXPECT_TRUE(session->btnReturnToVideo.isHidden());
    EXPECT_EQ(session->btnReturnToVideo.frame(), (CGRect{325, 0, 50, 50}));
}

TEST(ReturnToVideo, IsNotOfferedWhereTheAdDoesNotWantIt)
{
    AdSession session;
    open_landscape_over_page(session);
    session.ad().bShowHideVideoBtn = false;

    session->setButtonPosition();

    EXPECT_TRUE(session->btnReturnToVideo.isHidden());
}

TEST(ReturnToVideo, IsNotOfferedUnderAPageInFront)
{
    AdSession session;
    open_landscape_over_page(session);
    session.ad().bIsWebViewInFront = true;

    session->setButtonPosition();

    EXPECT_TRUE(session->btnReturnToVideo.isHidden());
}

// ------------------------------------------------------------------------------------ full portrait video in landscape

TEST(SidewaysButtonPosition, InALockedHostTheControlsArePlacedForLandscape)
{
    AdSession session(measured_texts());
    session.ad().portraitVideoPos = FULL;
    session.ad().arrayButtonsInfo = {button("Buy+now%21")};
    session->bIsLockOneSide = true;

    session.open();

    EXPECT_EQ(session->viewTopBackground.frame(), (CGRect{0, 0, 375, 70}));
    EXPECT_EQ(session->viewBottomBackground.frame(), (CGRect{0, 325, 375, 50}));
    EXPECT_EQ(session->viewButtonBackground.frame(), (CGRect{716, 0, 91, 28}));
    EXPECT_EQ(session->btnPlayAndPause.center(), (CGPoint{406, 187.5}));
    EXPECT_EQ(session->btnReplay.center(), (CGPoint{406, 187.5}));
    EXPECT_EQ(session->btnMute.frame(), (CGRect{762, 0, 50, 50}));
}

TEST(SidewaysButtonPosition, ADeviceHeldInEitherLandscapeSwapsTheExtents)
{
    for (const int side : {UIDeviceOrientationLandscapeLeft, UIDeviceOrientationLandscapeRight}) {
        SCOPED_TRACE(side);
        AdSession session;
        session.ad().portraitVideoPos = FULL;
        session.rotate(side);

        session.open();

        // The screen is now rotated: 812 by 375.
        EXPECT_EQ(session->viewBottomBackground.frame(), (CGRect{0, 762, 812, 50}));
        EXPECT_EQ(session->btnPlayAndPause.center(), (CGPoint{187.5, 406}));
        EXPECT_EQ(session->btnMute.frame(), (CGRect{325, 0, 50, 50}));
    }
}

TEST(SidewaysButtonPosition, AnUprightDeviceInAnUnlockedHostCountsAsUpright)
{
    AdSession session;
    session.ad().portraitVideoPos = FULL;

    session.open();

    EXPECT_EQ(session->viewBottomBackground.frame(), (CGRect{0, 762, 375, 50}));
    EXPECT_EQ(session->btnPlayAndPause.center(), (CGPoint{187.5, 406}));
}

TEST(SidewaysButtonPosition, ABandOnALandscapeDeviceCountsAsUpright)
{
    AdSession session;
    session.ad().fVideoWidth = 1624;
    session.ad().fVideoHeight = 750;
    session.rotate(UIDeviceOrientationLandscapeLeft);

    session.open();

    EXPECT_EQ(session->viewBottomBackground.frame(), (CGRect{0, 325, 812, 50}));
}

TEST(SidewaysButtonPosition, ThePanelIsAsLargeAsTheFirstOfTwoTitles)
{
    AdSession session(measured_texts());
    session.ad().portraitVideoPos = FULL;
    session.ad().arrayButtonsInfo = {button("More"), button("Buy+now%21")};
    session->bIsLockOneSide = true;

    session.open();

    EXPECT_EQ(session->viewButtonBackground.frame(), (CGRect{747, 0, 60, 31}));
    EXPECT_EQ(session->btnActionTwo.frame(), (CGRect{0, 42, 91, 21}));
}

TEST(SidewaysButtonPosition, WithoutButtonsThePanelHasOnlyItsMargins)
{
    AdSession session;
    session.ad().portraitVideoPos = FULL;
    session->bIsLockOneSide = true;

    session.open();

    EXPECT_EQ(session->viewButtonBackground.frame(), (CGRect{797, 0, 10, 10}));
}

TEST(SidewaysButtonPosition, AHostLockedToPortraitCountsAsUpright)
{
    AdSession session;
    session.ad().portraitVideoPos = FULL;
    session->bIsLockOneSide = true;
    session->bIsLockOneSideAndIsPortrait = true;

    session.open();

    EXPECT_EQ(session->viewBottomBackground.frame(), (CGRect{0, 762, 375, 50}));
}

TEST(ButtonBar, WithoutButtonsALeftoverTitleMovesNothing)
{
    AdSession session;
    session.ad().arrayButtonsInfo = {NSDictionary{{"btn_text", "Buy"}}};
    session.open();
    session->buttonPosMode = {};
    session->btnActionOne.setFrame({1, 2, 3, 4});

    session->setButtonPosition();

    EXPECT_EQ(session->btnActionOne.frame(), (CGRect{1, 2, 3, 4}));
}

} // namespace
} // namespace qoro
