#include "tests/base/StartingPoints.h"

#include <gmock/gmock.h>

namespace qoro
{
namespace
{

TEST(RemoveBtnClose, WithoutAPlayerTheButtonStays)
{
    AdSession session;
    session.open();
    session->qoroMoviePlayer = nullptr;

    session->removeBtnClose();

    EXPECT_TRUE(session->btnClose.superview());
}

TEST(RemoveBtnClose, InPortraitTheButtonLeavesTheScreenButIsKept)
{
    AdSession session;
    session.open();

    session->removeBtnClose();

    EXPECT_TRUE(session->btnClose);
    EXPECT_FALSE(session->btnClose.superview());
}

TEST(RemoveBtnClose, CustomCloseInLandscapeLeavesTheButtonThatHidesTheVideo)
{
    AdSession session;
    show_hide_button(session);
    session.open();

    session->MRAIDUseCustomClose(true);

    EXPECT_TRUE(session->btnClose.superview());
}

TEST(RemoveBtnClose, OnceTheVideoIsHiddenTheLandscapeButtonIsRemovedToo)
{
    AdSession session;
    show_hide_button(session);
    session.open();
    session->qoroMoviePlayer.view().setHidden(true);

    session->removeBtnClose();

    EXPECT_FALSE(session->btnClose.superview());
}

TEST(RemoveBtnClose, AnAdLaunchedInLandscapeLeftCountsAsLandscape)
{
    AdSession session;
    has_hide_button(session);
    session.ad().launchOrientation = UIDeviceOrientationLandscapeLeft;
    session.open();

    session->removeBtnClose();

    EXPECT_TRUE(session->btnClose.superview());
}

TEST(RemoveBtnClose, AnAdLaunchedInLandscapeRightDoesNotCountAsLandscape)
{
    AdSession session;
    has_hide_button(session);
    session.ad().launchOrientation = UIDeviceOrientationLandscapeRight;
    session.open();

    session->removeBtnClose();

    EXPECT_FALSE(session->btnClose.superview());
}

TEST(RemoveBtnClose, EitherLandscapeSideOfTheDeviceCounts)
{
    for (const int side : {UIDeviceOrientationLandscapeLeft, UIDeviceOrientationLandscapeRight}) {
        AdSession session;
        has_hide_button(session);
        session.rotate(side);
        session.open();

        session->removeBtnClose();

        EXPECT_TRUE(session->btnClose.superview()) << "device " << side;
    }
}

TEST(RemoveBtnClose, InLandscapeTheButtonIsRemovedUnlessItHidesTheVideo)
{
    AdSession session;
    show_hide_button(session);
    session.open();
    session.ad().bShowHideVideoBtn = false;

    session->removeBtnClose();

    EXPECT_TRUE(session->btnClose);
    EXPECT_FALSE(session->btnClose.superview());
}

TEST(RemoveBtnClose, WithoutAPortraitArrangementItCountsAsLandscape)
{
    AdSession session;
    session.ad().portraitModeType = {};
    has_hide_button(session);
    session.open();

    session->removeBtnClose();

    EXPECT_TRUE(session->btnClose.superview());
}

TEST(RemoveBtnClose, AnUprightDeviceIsNotLandscapeAlthoughTheAdHasThatArrangement)
{
    AdSession session;
    has_hide_button(session);
    session.open();

    session->removeBtnClose();

    EXPECT_FALSE(session->btnClose.superview());
}

TEST(RemoveBtnClose, ALandscapeStatusBarCountsInALockedHost)
{
    for (const UIInterfaceOrientation side :
         {UIInterfaceOrientationLandscapeRight, UIInterfaceOrientationLandscapeLeft}) {
        AdSession session;
        has_hide_button(session);
        session.open();
        session.turn_status_bar(side);
        session->bIsLockOneSide = true;

        session->removeBtnClose();

        EXPECT_TRUE(session->btnClose.superview()) << "status bar " << side;
    }
}

TEST(RemoveBtnClose, ALandscapeStatusBarInAHostThatIsNotLockedDoesNotCount)
{
    AdSession session;
    has_hide_button(session);
    session.open();
    session.turn_status_bar(UIInterfaceOrientationLandscapeRight);

    session->removeBtnClose();

    EXPECT_FALSE(session->btnClose.superview());
}

TEST(RemoveBtnClose, ALandscapeDeviceDoesNotCountForAnAdWithoutThatArrangement)
{
    AdSession session;
    show_hide_button(session);
    session.ad().landscapeModeType = VideoAdMode{};
    session.open();

    session->removeBtnClose();

    EXPECT_FALSE(session->btnClose.superview());
}

TEST(RemoveBtnClose, ALandscapeArrangementOfTheVideoAloneHasNoButtonThatHidesIt)
{
    AdSession session;
    show_hide_button(session);
    session.ad().landscapeModeType = ONLY_VIDEO;
    session.open();

    session->removeBtnClose();

    EXPECT_FALSE(session->btnClose.superview());
}

TEST(RemoveBtnClose, ALockedHostWithAnUprightStatusBarDoesNotCount)
{
    AdSession session;
    has_hide_button(session);
    session.open();
    session->bIsLockOneSide = true;

    session->removeBtnClose();

    EXPECT_FALSE(session->btnClose.superview());
}

} // namespace
} // namespace qoro
