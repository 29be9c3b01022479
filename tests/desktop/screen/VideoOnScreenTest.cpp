#include "tests/desktop/screen/ScreenTest.h"

namespace qoro::test
{
namespace
{

class VideoOnScreen : public ScreenTest
{
protected:
    void add_video(const CGRect& frame)
    {
        video = MPMoviePlayerViewController::initWithContentURL(NSURL::URLWithString("http://ad/v.mp4"));
        video.view().setFrame(frame);
        window.addSubview(video.view());
    }
    StillPlayer& player() { return *players.latest; }

    MPMoviePlayerViewController video;
};

TEST_F(VideoOnScreen, ItsPlayerMakesPicturesOfTheSizeShown)
{
    add_video({0, 0, 300, 168.75});
    open();
    EXPECT_EQ(player().box_width, 300);
    EXPECT_EQ(player().box_height, 169);
}

TEST_F(VideoOnScreen, TurnedWithTheDeviceItsPicturesAreUpright)
{
    add_video({});
    video.view().setTransform(CGAffineTransformMakeRotation(QuarterTurn));
    video.view().setFrame({0, 0, 300, 400});
    turn(UIDeviceOrientationLandscapeLeft);
    open();
    EXPECT_EQ(player().box_width, 400);
    EXPECT_EQ(player().box_height, 300);
    EXPECT_EQ(shown().box_of(Blue), (CGRect{0, 37, 400, 225}));
}

TEST_F(VideoOnScreen, TurnedOnItsSideItsPictureIsToo)
{
    add_video({});
    video.view().setTransform(CGAffineTransformMakeRotation(QuarterTurn));
    video.view().setFrame({0, 0, 300, 400});
    open();
    EXPECT_EQ(player().box_width, 400);
    EXPECT_EQ(shown().box_of(Blue), (CGRect{38, 0, 225, 400}));
}

TEST_F(VideoOnScreen, ThePictureIsCentredOnBlack)
{
    window.setBackgroundColor(color(White));
    add_video({0, 0, 160, 200});
    open();
    const Shown picture = shown();
    EXPECT_EQ(picture.box_of(Blue), (CGRect{0, 55, 160, 90}));
    EXPECT_EQ(picture.at(80, 10), Black);
}

TEST_F(VideoOnScreen, BesideThePictureATransparentViewShowsWhatIsBelow)
{
    window.setBackgroundColor(color(White));
    add_video({0, 0, 160, 200});
    video.view().setBackgroundColor(UIColor::clearColor());
    open();
    EXPECT_EQ(shown().at(80, 10), White);
}

TEST_F(VideoOnScreen, ANewPictureIsDrawn)
{
    add_video({0, 0, 160, 90});
    open();
    EXPECT_EQ(shown().at(80, 45), Blue);
    player().show(Green);
    EXPECT_EQ(shown().at(80, 45), Green);
}

TEST_F(VideoOnScreen, WhileHiddenNoPictureIsRequested)
{
    add_video({0, 0, 160, 90});
    open();
    video.view().setHidden(true);
    let_pass(0.1);
    EXPECT_EQ(player().box_width, 0);
    video.view().setHidden(false);
    let_pass(0.1);
    EXPECT_EQ(player().box_width, 160);
}

TEST_F(VideoOnScreen, InAFadedOutParentNoPictureIsRequested)
{
    const UIView parent = UIView::create();
    parent.setFrame({0, 0, 300, 400});
    window.addSubview(parent);
    add_video({0, 0, 160, 90});
    parent.addSubview(video.view());
    open();
    parent.setAlpha(0);
    let_pass(0.1);
    EXPECT_EQ(player().box_width, 0);
}

TEST_F(VideoOnScreen, OutsideTheTreeNoPictureIsRequested)
{
    add_video({0, 0, 160, 90});
    open();
    video.view().removeFromSuperview();
    let_pass(0.1);
    EXPECT_EQ(player().box_width, 0);
}

TEST_F(VideoOnScreen, AfterItsPlayersDestructionNoPictureIsShown)
{
    add_video({0, 0, 160, 90});
    open();
    const UIView view = video.view();
    video = nullptr;
    EXPECT_EQ(shown().box_of(Blue), CGRect{});
}

} // namespace
} // namespace qoro::test
