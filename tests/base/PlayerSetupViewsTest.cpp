#include "tests/base/StartingPoints.h"

#include <gmock/gmock.h>

namespace qoro
{
namespace
{

TEST(PlayVideo, ThePlayerIsSetUpForTheLayouts)
{
    AdSession session;
    session.ad().portraitVideoPos = TOP;

    session.open();

    const PlayerSettings settings = session->qoroMoviePlayer.settings();
    EXPECT_FALSE(settings.fullscreen);
    EXPECT_FALSE(settings.should_autoplay);
    EXPECT_EQ(settings.repeat_mode, MPMovieRepeatModeNone);
    EXPECT_EQ(settings.control_style, MPMovieControlStyleNone);
    EXPECT_EQ(settings.source_type, MPMovieSourceTypeUnknown);
    EXPECT_TRUE(session->qoroMoviePlayer.view().isOpaque());
    EXPECT_EQ(session->btnClickListener.superview(), session->qoroMoviePlayer.view());
}

TEST(PlayVideo, BeforeAnyLayoutTheViewsFillTheScreenAndTheVideoTheHost)
{
    HostSetup host = unguarded_host();
    host.root_view = CGSize{360, 640};
    AdSession session(AdSession::manual_world(), host);
    session->view().setFrame({1, 2, 3, 4});
    session->webView().setFrame({1, 2, 3, 4});
    // No layout runs during a click-through.
    session->setBDoButtonAction(true);

    session.open();

    EXPECT_EQ(session->view().frame(), (CGRect{0, 0, 375, 812}));
    EXPECT_EQ(session->webView().frame(), (CGRect{0, 0, 375, 812}));
    EXPECT_EQ(session->qoroMoviePlayer.view().frame(), (CGRect{0, 0, 360, 640}));
    EXPECT_EQ(session->qoroMoviePlayer.settings().scaling_mode, MPMovieScalingModeAspectFill);
}

TEST(PlayVideo, WithoutAHostsViewTheVideoHasAZeroFrame)
{
    HostSetup host = unguarded_host();
    host.root_view.reset();
    AdSession session(AdSession::manual_world(), host);
    session->setBDoButtonAction(true);

    session.open();

    EXPECT_EQ(session->qoroMoviePlayer.view().frame(), CGRect{});
}

TEST(PlayVideo, TheViewAndThePageAreSeeThrough)
{
    AdSession session(screen_of(375, 667));

    session.open();

    EXPECT_FALSE(session->view().isOpaque());
    EXPECT_FALSE(session->webView().isOpaque());
    EXPECT_EQ(session->view().backgroundColor(), UIColor::clearColor());
    EXPECT_EQ(session->webView().backgroundColor(), UIColor::clearColor());
}

TEST(PlayVideo, AScreenOf812PointsGetsABlackBackdrop)
{
    AdSession session(screen_of(375, 812));

    session.open();

    EXPECT_EQ(session->view().backgroundColor(), UIColor::colorWithRed(0, 0, 0, 0.7));
}

TEST(PlayVideo, AScreenOf811PointsGetsNoBackdrop)
{
    AdSession session(screen_of(375, 811));

    session.open();

    EXPECT_EQ(session->view().backgroundColor(), UIColor::clearColor());
}

TEST(PlayVideo, AScreenOf813PointsGetsNoBackdrop)
{
    AdSession session(screen_of(375, 813));

    session.open();

    EXPECT_EQ(session->view().backgroundColor(), UIColor::clearColor());
}

TEST(PlayVideo, TheAdsBackgroundColourWins)
{
    AdSession session;
    session.ad().strBackgroundColor = "4294901760";

    session.open();

    EXPECT_EQ(session->view().backgroundColor(), UIColor::colorWithRed(1, 0, 0, 1));
    EXPECT_EQ(session->webView().backgroundColor(), UIColor::clearColor());
    EXPECT_EQ(session->webView().alpha(), 1.0);
}

TEST(PlayVideo, WithoutABackgroundColourThePageIsTransparent)
{
    AdSession session;

    session.open();

    EXPECT_EQ(session->webView().alpha(), 0.0);
}

TEST(PlayVideo, ThePageIsInTheViewAndTheViewInAWindowAboveTheStatusBar)
{
    AdSession session;

    session.open();

    EXPECT_EQ(session->webView().superview(), session->view());
    EXPECT_EQ(session->view().superview(), session->windowTempWindow);
    EXPECT_EQ(session->windowTempWindow.windowLevel(), 1001.0);
}

} // namespace
} // namespace qoro
