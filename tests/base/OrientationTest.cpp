#include "tests/base/StartingPoints.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace qoro
{
namespace
{

using testing::IsEmpty;

// ---------------------------------------------------------------------------------------------------------- status bar

TEST(StatusBarTurn, LaysTheAdOutAgain)
{
    AdSession session;
    session.open();
    session.forget();

    session.turn_status_bar(UIInterfaceOrientationLandscapeLeft);

    EXPECT_EQ(session.count_of(PortraitLayout), 1U);
}

TEST(StatusBarTurn, IsIgnoredWhileAStorePageBelongsToTheAd)
{
    AdSession session;
    session.ad().strStoreId = "42";
    session.open();
    session.forget();

    session.turn_status_bar(UIInterfaceOrientationLandscapeLeft);

    EXPECT_THAT(session.transcript(), IsEmpty());
}

TEST(StatusBarProbe, ReturnsAndRemembersWhetherTheStatusBarIsHidden)
{
    World world = AdSession::manual_world();
    world.device.status_bar_hidden = true;
    AdSession hidden(world);

    EXPECT_TRUE(hidden->ckeckIsStatusbarHide());
    EXPECT_TRUE(hidden->bDefaultStatusBarHidden);

    const AdSession shown;
    EXPECT_FALSE(shown->ckeckIsStatusbarHide());
    EXPECT_FALSE(shown->bDefaultStatusBarHidden);
}

// --------------------------------------------------------------------------------------------------- queries and calls

TEST(CheckCanOrientation, FromLandscapeLeftRequiresAPortraitMode)
{
    AdSession session;
    session.open();
    session.rotate(UIDeviceOrientationLandscapeLeft);

    EXPECT_TRUE(session->checkCanOrientation());
    session.ad().portraitModeType = VideoAdMode{};
    EXPECT_FALSE(session->checkCanOrientation());
}

TEST(CheckCanOrientation, FromPortraitRequiresALandscapeMode)
{
    AdSession session;
    session.open();

    EXPECT_FALSE(session->checkCanOrientation());
    session.ad().landscapeModeType = ONLY_VIDEO;
    EXPECT_TRUE(session->checkCanOrientation());
}

TEST(CheckCanOrientation, FromLandscapeRightOrUpsideDownIsFalse)
{
    AdSession session;
    has_both_modes(session);
    session.open();

    session.rotate(UIDeviceOrientationLandscapeRight);
    EXPECT_FALSE(session->checkCanOrientation());
    session.rotate(UIDeviceOrientationPortraitUpsideDown);
    EXPECT_FALSE(session->checkCanOrientation());
}

TEST(ChangeOrientation, IsObeyedWithoutALandscapeModeToo)
{
    AdSession session;
    session.open();

    session.script_says("changeOrientation", {"landscape"});
    EXPECT_FALSE(session->bIsPortraitNow);
    session.script_says("changeOrientation", {"portrait"});
    EXPECT_TRUE(session->bIsPortraitNow);
}

TEST(ChangeOrientation, IsObeyedDuringAClickThroughToo)
{
    AdSession session;
    session.open();
    session->setBDoButtonAction(true);

    session.script_says("changeOrientation", {"landscape"});

    EXPECT_FALSE(session->bIsPortraitNow);
}

TEST(ChangeOrientation, OnlyRunsTheLayout)
{
    AdSession session;
    session.open();
    session->viewBackground.setHidden(true);
    session->setControlBottonInVisible(true);

    session.script_says("changeOrientation", {"portrait"});

    EXPECT_TRUE(session->viewBackground.isHidden());
    EXPECT_TRUE(session->bIsHideControlbutton);
}

TEST(ChangeOrientation, IsComparedLetterByLetter)
{
    AdSession session;
    session.open();
    session.forget();

    session.script_says("changeOrientation", {"Landscape"});

    EXPECT_THAT(session.transcript(), IsEmpty());
    EXPECT_TRUE(session->bIsPortraitNow);
}

TEST(InterfaceRotation, BeforeTheFirstPlayForcesPortrait)
{
    AdSession session;
    session.open();
    session.rotate(UIDeviceOrientationLandscapeLeft);
    session.forget();

    session->didRotateFromInterfaceOrientation(UIInterfaceOrientationPortrait);

    EXPECT_EQ(session.lines("device"), std::vector<std::string>{"1"});
    EXPECT_EQ(UIDevice::orientation(), UIDeviceOrientationPortrait);
}

TEST(InterfaceRotation, AfterTheFirstPlayForcesNothing)
{
    AdSession session;
    session.open();
    session.plays();
    session.forget();

    session->didRotateFromInterfaceOrientation(UIInterfaceOrientationPortrait);

    EXPECT_THAT(session.transcript(), IsEmpty());
}

} // namespace
} // namespace qoro
