#include "tests/support/AdSession.h"
#include "tests/support/Views.h"

#include <gmock/gmock.h>

namespace qoro
{
namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* PngSignature = "\x89PNG\r\n\x1a\n";
constexpr const char* PortraitLayout = R"(js video_orientation {"orientation":"portrait"} 0)";

World with_image(double after = 0)
{
    World world = AdSession::manual_world();
    world.net["http://ad/mi.png"].body = PngSignature;
    world.net["http://ad/mi.png"].after = after;
    return world;
}

void open_with_hidden_image(AdSession& session)
{
    session.ad().strMIUrl = "http://ad/mi.png";
    session.open();
    session.forget();
}

void toggle_sound(AdSession& session, int times)
{
    for (int time = 0; time < times; ++time)
        session.tap(session->btnMute);
}

TEST(HiddenImage, BeginsHiddenAndBlack)
{
    AdSession session;

    EXPECT_TRUE(session->miImageView.isHidden());
    EXPECT_EQ(session->miImageView.backgroundColor(), UIColor::blackColor());
    EXPECT_EQ(session->miImageView.contentMode(), UIViewContentModeScaleAspectFit);
    EXPECT_TRUE(session->miImageView.isUserInteractionEnabled());
}

TEST(HiddenImage, WithoutAnAddressNothingIsCounted)
{
    AdSession session;
    session.open();

    toggle_sound(session, 9);

    EXPECT_EQ(session->miWatchDog, 0);
    EXPECT_FALSE(session->isShowMI);
}

TEST(HiddenImage, WithoutAWebAddressNothingIsCounted)
{
    AdSession session;
    session.ad().strMIUrl = "ftp://ad/mi.png";
    session.open();

    toggle_sound(session, 9);
    session.let_pass(0);

    EXPECT_EQ(session->miWatchDog, 0);
    EXPECT_THAT(session.lines("fetch"), IsEmpty());
}

TEST(HiddenImage, TheFirstTwoTogglesOnlyCount)
{
    AdSession session(with_image());
    open_with_hidden_image(session);

    toggle_sound(session, 2);
    session.let_pass(1);

    EXPECT_EQ(session->miWatchDog, 2);
    EXPECT_THAT(session.lines("fetch"), IsEmpty());
}

TEST(HiddenImage, TheThirdFetchesItOnceInTheBackground)
{
    AdSession session(with_image());
    open_with_hidden_image(session);

    toggle_sound(session, 3);
    EXPECT_THAT(session.lines("fetch"), IsEmpty());
    session.let_pass(0);

    EXPECT_THAT(session.lines("fetch"), ElementsAre("http://ad/mi.png hiddenImage"));
    EXPECT_TRUE(session->miImageView.image());
    EXPECT_TRUE(session->miImageView.isHidden());
}

TEST(HiddenImage, TheFourthToTheSeventhOnlyCount)
{
    AdSession session(with_image());
    open_with_hidden_image(session);

    toggle_sound(session, 7);
    session.let_pass(1);

    EXPECT_EQ(session->miWatchDog, 7);
    EXPECT_EQ(session.lines("fetch").size(), 1U);
    EXPECT_TRUE(session->miImageView.isHidden());
    EXPECT_EQ(session.count_of(PortraitLayout), 0U);
}

TEST(HiddenImage, TheEighthRevealsItWithTheCloseButton)
{
    AdSession session(with_image());
    open_with_hidden_image(session);

    toggle_sound(session, 8);

    EXPECT_FALSE(session->miImageView.isHidden());
    EXPECT_TRUE(session->isShowMI);
    EXPECT_FALSE(session.ad().strMIUrl);
    EXPECT_EQ(session.count_of(PortraitLayout), 1U);
    EXPECT_TRUE(session->btnClose.superview() == session->miImageView);
    EXPECT_FALSE(session->btnClose.isHidden());
    EXPECT_EQ(session->miImageView.frame(), (CGRect{0, 44, 375, 210.9375}));
}

TEST(HiddenImage, RevealedItPausesTheVideo)
{
    AdSession session(with_image());
    open_with_hidden_image(session);
    // Loading the video also sets the sound once, which counts.
    session.plays();
    EXPECT_EQ(session->miWatchDog, 1);

    toggle_sound(session, 7);

    EXPECT_THAT(session.lines("player"), ElementsAre("pause"));
}

TEST(HiddenImage, ANinthToggleDoesNothingMore)
{
    AdSession session(with_image());
    open_with_hidden_image(session);
    toggle_sound(session, 8);
    session.forget();

    toggle_sound(session, 1);

    EXPECT_EQ(session->miWatchDog, 8);
    EXPECT_EQ(session.count_of(PortraitLayout), 0U);
}

TEST(HiddenImage, AFurtherOneIsRevealedByTheNextToggleAndNotFetched)
{
    AdSession session(with_image());
    open_with_hidden_image(session);
    toggle_sound(session, 8);
    session.let_pass(0);
    session.ad().strMIUrl = "http://ad/further.png";
    session.forget();

    toggle_sound(session, 1);
    session.let_pass(0);

    EXPECT_EQ(session->miWatchDog, 9);
    EXPECT_FALSE(session.ad().strMIUrl);
    EXPECT_EQ(session.count_of(PortraitLayout), 1U);
    EXPECT_THAT(session.lines("fetch"), IsEmpty());
}

TEST(HiddenImage, TogglesThatAreRefusedWhileThePageShowsAreNotCounted)
{
    AdSession session(with_image());
    open_with_hidden_image(session);
    session->bHideVideoToShowWebViewInLandscapeMode = true;

    toggle_sound(session, 3);

    EXPECT_EQ(session->miWatchDog, 0);
}

TEST(HiddenImage, DuringAClickThroughIsRevealedByTheNextLayoutOnly)
{
    AdSession session(with_image());
    open_with_hidden_image(session);
    session->setBDoButtonAction(true);

    toggle_sound(session, 8);
    EXPECT_TRUE(session->isShowMI);
    EXPECT_TRUE(session->miImageView.isHidden());

    session->setBDoButtonAction(false);
    session->checkVideoSize();
    EXPECT_FALSE(session->miImageView.isHidden());
}

TEST(HiddenImage, ThatArrivesLateFillsTheBlackView)
{
    AdSession session(with_image(5));
    open_with_hidden_image(session);
    toggle_sound(session, 8);
    EXPECT_FALSE(session->miImageView.isHidden());
    EXPECT_FALSE(session->miImageView.image());

    session.let_pass(5);

    EXPECT_TRUE(session->miImageView.image());
}

TEST(HiddenImage, ThatCannotBeFetchedIsNotTriedAgain)
{
    World world = with_image();
    world.net["http://ad/mi.png"].ok = false;
    AdSession session(world);
    open_with_hidden_image(session);

    toggle_sound(session, 8);
    session.let_pass(1);

    EXPECT_EQ(session.lines("fetch").size(), 1U);
    EXPECT_FALSE(session->miImageView.image());
    EXPECT_FALSE(session->miImageView.isHidden());
}

TEST(HiddenImage, WithUndecodableDataLeavesTheViewBlack)
{
    World world = with_image();
    world.net["http://ad/mi.png"].body = "<html>";
    AdSession session(world);
    open_with_hidden_image(session);

    toggle_sound(session, 3);
    session.let_pass(1);

    EXPECT_FALSE(session->miImageView.image());
}

TEST(HiddenImage, ThatArrivesAfterTheAdWasDestroyedChangesNothing)
{
    AdSession session(with_image(5));
    session->qoroVideoAdInfo = std::make_shared<QoroVideoAd>();
    session->qoroVideoAdInfo->strMIUrl = "http://ad/mi.png";
    session->_prepareMI();
    session->_prepareMI();
    session->_prepareMI();
    session.release();
    EXPECT_EQ(session.count_of("released"), 1U);

    session.let_pass(10);

    EXPECT_THAT(session.lines("fetch"), ElementsAre("http://ad/mi.png hiddenImage"));
}

TEST(HiddenImage, GivesTheCloseButtonItsTapAndMovesItOntoItself)
{
    AdSession session;
    session.open();
    session->btnClose.removeAllTargets();
    session->isShowMI = true;

    session->_HailMI({0, 44, 375, 200}, true);

    ASSERT_EQ(session->btnClose.targets().size(), 1U);
    EXPECT_EQ(session->btnClose.targets()[0].name(), "closeAction");
    EXPECT_TRUE(session->btnClose.superview() == session->miImageView);
}

TEST(HiddenImage, PausesTheVideoBeforeItTakesTheCloseButton)
{
    AdSession session;
    session.open();
    session.plays();
    session->isShowMI = true;
    session.forget();

    session->_HailMI({0, 44, 375, 200}, true);

    EXPECT_THAT(session.transcript(), ElementsAre("player pause", "log 0 Added Video Close Button"));
}

TEST(HiddenImage, StaysShownAndPausesAgainWithEveryLayout)
{
    AdSession session(with_image());
    open_with_hidden_image(session);
    toggle_sound(session, 8);
    session.plays();
    session->miImageView.setHidden(true);
    session.forget();

    session->checkVideoSize();

    EXPECT_FALSE(session->miImageView.isHidden());
    EXPECT_THAT(session.lines("player"), ElementsAre("pause"));
    EXPECT_TRUE(session->btnClose.superview() == session->miImageView);
}

TEST(HiddenImage, IsTurnedWithTheLandscapeVideo)
{
    AdSession session;
    session.open();
    session.rotate(UIDeviceOrientationLandscapeRight);

    session->_HailMI({0, 0, 375, 812}, false);
    EXPECT_EQ(session->miImageView.transform().angle, -QuarterTurn);
    EXPECT_EQ(session->miImageView.frame(), (CGRect{0, 0, 375, 812}));

    for (const int other : {UIDeviceOrientationUnknown, UIDeviceOrientationPortrait, UIDeviceOrientationLandscapeLeft,
                            UIDeviceOrientationFaceUp}) {
        session.rotate(other);
        session->_HailMI({0, 0, 375, 812}, false);
        EXPECT_EQ(session->miImageView.transform().angle, QuarterTurn) << other;
    }
}

TEST(HiddenImage, IsUprightInPortrait)
{
    AdSession session;
    session.open();
    session->_HailMI({0, 0, 375, 812}, false);

    session->_HailMI({0, 44, 375, 200}, true);

    EXPECT_EQ(session->miImageView.transform().angle, 0);
    EXPECT_EQ(session->miImageView.frame(), (CGRect{0, 44, 375, 200}));
}

TEST(HiddenImage, KeepsItsTurnInAHostLockedToLandscapeFromIOS8On)
{
    AdSession session;
    session.open();
    session->bIsLockOneSideAndIsLandscape = true;
    session->miImageView.setTransform(CGAffineTransformMakeRotation(HalfTurn));

    session->_HailMI({0, 0, 812, 375}, false);
    EXPECT_EQ(session->miImageView.transform().angle, HalfTurn);

    session->bIsMoreThaniOS8 = false;
    session->_HailMI({0, 0, 812, 375}, false);
    EXPECT_EQ(session->miImageView.transform().angle, QuarterTurn);
}

TEST(HiddenImage, IsUprightInPortraitInAHostLockedToLandscapeToo)
{
    AdSession session;
    session.open();
    session->bIsLockOneSideAndIsLandscape = true;
    session->miImageView.setTransform(CGAffineTransformMakeRotation(HalfTurn));

    session->_HailMI({0, 44, 375, 200}, true);

    EXPECT_EQ(session->miImageView.transform().angle, 0);
}

} // namespace
} // namespace qoro
