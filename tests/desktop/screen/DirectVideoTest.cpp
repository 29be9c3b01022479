#include "tests/desktop/screen/ScreenTest.h"

#include <cairo-xlib.h>
#include <gdk/x11/gdkx.h>

namespace qoro::test
{
namespace
{

/// What the X server shows, of which snapshots know nothing.
class DirectVideoTest : public ScreenTest
{
protected:
    void add_video(const CGRect& frame)
    {
        video = MPMoviePlayerViewController::initWithContentURL(NSURL::URLWithString("http://ad/v.mp4"));
        video.view().setFrame(frame);
        window.addSubview(video.view());
    }
    void open_and_rest()
    {
        open();
        ASSERT_TRUE(comes_to_rest());
    }
    /// @return number of frames that GTK has drawn for it
    int show(Rgb rgb)
    {
        players.latest->show(rgb);
        return frames_in(0.1);
    }
    GdkSurface* x_window() const { return gtk_native_get_surface(GTK_NATIVE(screen->window())); }
    ::Display* connection() const { return gdk_x11_display_get_xdisplay(gtk_widget_get_display(surface())); }
    /// A pixel of the window.
    Rgb on_screen(int x, int y)
    {
        XImage* image = XGetImage(connection(), gdk_x11_surface_get_xid(x_window()), x, y, 1, 1, AllPlanes, ZPixmap);
        const Rgb pixel = static_cast<Rgb>(XGetPixel(image, 0, 0)) & 0xffffff;
        XDestroyImage(image);
        return pixel;
    }

    MPMoviePlayerViewController video;
};

TEST_F(DirectVideoTest, ANewPictureNeedsNoFrameOfTheToolkit)
{
    add_video({10, 20, 160, 90});
    open_and_rest();
    for (const Rgb rgb : {Green, Red, White, Blue, Green}) {
        EXPECT_EQ(show(rgb), 0);
        for (const auto& [x, y] : {std::pair{10, 20}, std::pair{169, 20}, std::pair{10, 109}, std::pair{169, 109}})
            EXPECT_EQ(on_screen(x, y), rgb);
        EXPECT_EQ(on_screen(9, 20), Black);
        EXPECT_EQ(on_screen(170, 109), Black);
        EXPECT_EQ(on_screen(10, 19), Black);
        EXPECT_EQ(on_screen(10, 110), Black);
    }
}

TEST_F(DirectVideoTest, WhatLiesOverTheVideoStaysOverIt)
{
    add_video({0, 20, 160, 90});
    window.addSubview(colored({20, 30, 40, 40}, Red));
    UIView faded = colored({100, 0, 40, 400}, White);
    faded.setAlpha(0.5);
    window.addSubview(faded);
    open_and_rest();
    EXPECT_EQ(show(Green), 0);
    EXPECT_EQ(on_screen(20, 30), Red);
    EXPECT_EQ(on_screen(59, 69), Red);
    EXPECT_EQ(on_screen(60, 69), Green);
    EXPECT_EQ(on_screen(99, 50), Green);
    const Rgb mixed = on_screen(100, 50);
    EXPECT_NEAR(mixed >> 16, 128, 1);
    EXPECT_EQ(mixed >> 8 & 0xff, 255U);
    EXPECT_NEAR(mixed & 0xff, 128, 1);
}

TEST_F(DirectVideoTest, AChangeOverTheVideoIsSeenWithTheNextPicture)
{
    add_video({0, 20, 160, 90});
    UIView above = colored({20, 30, 40, 40}, Red);
    window.addSubview(above);
    open_and_rest();
    show(Green);
    above.setFrame({50, 30, 40, 40});
    players.latest->show(Blue);
    ASSERT_TRUE(comes_to_rest());
    EXPECT_EQ(on_screen(25, 50), Blue);
    EXPECT_EQ(on_screen(55, 50), Red);
    EXPECT_EQ(show(Green), 0);
    EXPECT_EQ(on_screen(25, 50), Green);
    EXPECT_EQ(on_screen(55, 50), Red);
}

TEST_F(DirectVideoTest, APictureDoesNotWaitForAChangeOfLooks)
{
    add_video({0, 20, 160, 90});
    UIView above = colored({20, 30, 40, 40}, Red);
    window.addSubview(above);
    open_and_rest();
    show(Green);
    above.setBackgroundColor(color(White));
    players.latest->show(Blue);
    EXPECT_EQ(on_screen(100, 50), Blue);
    ASSERT_TRUE(comes_to_rest());
    EXPECT_EQ(on_screen(100, 50), Blue);
    EXPECT_EQ(on_screen(25, 50), White);
    EXPECT_EQ(show(Green), 0);
    EXPECT_EQ(on_screen(25, 50), White);
    EXPECT_EQ(on_screen(100, 50), Green);
}

TEST_F(DirectVideoTest, APictureDoesNotWaitForWhatMovesOverIt)
{
    add_video({0, 20, 160, 90});
    UIView above = colored({20, 30, 40, 40}, Red);
    window.addSubview(above);
    open_and_rest();
    show(Green);
    above.setFrame({50, 30, 40, 40});
    players.latest->show(Blue);
    // What has moved is where it was until the toolkit draws.
    EXPECT_EQ(on_screen(25, 50), Red);
    EXPECT_EQ(on_screen(100, 50), Blue);
    ASSERT_TRUE(comes_to_rest());
    EXPECT_EQ(on_screen(25, 50), Blue);
    EXPECT_EQ(on_screen(85, 50), Red);
}

TEST_F(DirectVideoTest, APictureAfterAFrameDoesNotWaitForWhatMovesOverIt)
{
    add_video({0, 20, 160, 90});
    UIView above = colored({20, 30, 40, 40}, Red);
    window.addSubview(above);
    open_and_rest();
    players.latest->show(Green);
    above.setBackgroundColor(color(White));
    players.latest->show(Blue);
    ASSERT_TRUE(platform.loop().run_until([&] { return on_screen(25, 50) == White; }, 10));
    // The move waits for the picture that follows so soon.
    above.setFrame({50, 30, 40, 40});
    players.latest->show(Green);
    EXPECT_EQ(on_screen(25, 50), White);
    EXPECT_EQ(on_screen(100, 50), Green);
    ASSERT_TRUE(comes_to_rest());
    EXPECT_EQ(on_screen(25, 50), Green);
    EXPECT_EQ(on_screen(85, 50), White);
}

TEST_F(DirectVideoTest, AVideoThatMovesWaitsForTheToolkit)
{
    add_video({0, 20, 160, 90});
    open_and_rest();
    show(Green);
    video.view().setFrame({0, 200, 160, 90});
    players.latest->show(Blue);
    EXPECT_NE(on_screen(100, 50), Black);
    EXPECT_EQ(on_screen(100, 230), Black);
    ASSERT_TRUE(comes_to_rest());
    EXPECT_EQ(on_screen(100, 50), Black);
    EXPECT_EQ(on_screen(100, 230), Blue);
    EXPECT_EQ(show(Red), 0);
    EXPECT_EQ(on_screen(100, 230), Red);
}

TEST_F(DirectVideoTest, AVideoThatMovesBetweenPicturesWaitsForTheToolkit)
{
    add_video({0, 20, 160, 90});
    open_and_rest();
    // The move waits for the picture that follows so soon.
    players.latest->show(Green);
    video.view().setFrame({0, 200, 160, 90});
    players.latest->show(Blue);
    EXPECT_NE(on_screen(100, 50), Black);
    EXPECT_EQ(on_screen(100, 230), Black);
    ASSERT_TRUE(comes_to_rest());
    EXPECT_EQ(on_screen(100, 50), Black);
    EXPECT_EQ(on_screen(100, 230), Blue);
}

TEST_F(DirectVideoTest, AChangeElsewhereLeavesTheLatestPicture)
{
    add_video({0, 20, 160, 90});
    open_and_rest();
    show(Green);
    window.addSubview(colored({0, 100, 300, 100}, Red));
    ASSERT_TRUE(comes_to_rest());
    EXPECT_EQ(on_screen(50, 50), Green);
    EXPECT_EQ(on_screen(50, 105), Red);
    EXPECT_EQ(shown().at(50, 50), Green);
}

TEST_F(DirectVideoTest, AChangeOfAHiddenViewNeedsNoFrame)
{
    add_video({0, 20, 160, 90});
    UIView hidden = colored({0, 0, 300, 400}, Red);
    hidden.setHidden(true);
    window.addSubview(hidden);
    open_and_rest();
    show(Green);
    // A change waits for the next picture while pictures come: again where this machine was too slow for that.
    double took = 0;
    int frames = 0;
    do {
        ASSERT_TRUE(comes_to_rest());
        const double began = platform.loop().now();
        players.latest->show(Red);
        hidden.setBackgroundColor(color(White));
        players.latest->show(Blue);
        took = platform.loop().now() - began;
        frames = frames_in(0.1);
    } while (took > 0.04);
    EXPECT_EQ(frames, 0);
    EXPECT_EQ(on_screen(50, 50), Blue);
    hidden.setHidden(false);
    players.latest->show(Green);
    ASSERT_TRUE(comes_to_rest());
    EXPECT_EQ(on_screen(50, 50), White);
}

TEST_F(DirectVideoTest, ALostPictureIsRestored)
{
    add_video({0, 20, 160, 90});
    open_and_rest();
    show(Green);
    XClearArea(connection(), gdk_x11_surface_get_xid(x_window()), 0, 0, 0, 0, True);
    ASSERT_TRUE(platform.loop().run_until([&] { return on_screen(50, 50) == Green; }, 10));
    ASSERT_TRUE(comes_to_rest());
    EXPECT_EQ(on_screen(50, 50), Green);
}

TEST_F(DirectVideoTest, AHiddenVideoIsNotSeen)
{
    add_video({0, 20, 160, 90});
    open_and_rest();
    show(Green);
    video.view().setHidden(true);
    ASSERT_TRUE(comes_to_rest());
    show(Red);
    EXPECT_EQ(on_screen(50, 50), Black);
}

TEST_F(DirectVideoTest, AFadedTurnedOrCutVideoIsTheToolkits)
{
    add_video({0, 20, 160, 90});
    open_and_rest();
    video.view().setAlpha(0.5);
    ASSERT_TRUE(comes_to_rest());
    EXPECT_GT(show(Green), 0);
    EXPECT_NEAR(on_screen(50, 50) >> 8 & 0xff, 128, 1);

    video.view().setAlpha(1);
    video.view().setTransform(CGAffineTransformMakeRotation(QuarterTurn));
    ASSERT_TRUE(comes_to_rest());
    EXPECT_GT(show(Red), 0);

    video.view().setTransform(CGAffineTransformMakeRotation(0));
    video.view().setFrame({-80, 20, 160, 90});
    ASSERT_TRUE(comes_to_rest());
    EXPECT_GT(show(Blue), 0);
    EXPECT_EQ(on_screen(0, 50), Blue);
    EXPECT_EQ(on_screen(79, 50), Blue);
    EXPECT_EQ(on_screen(80, 50), Black);
}

} // namespace
} // namespace qoro::test
