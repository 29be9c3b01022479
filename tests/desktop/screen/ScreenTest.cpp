#include "tests/desktop/screen/ScreenTest.h"

namespace qoro::test
{
namespace
{

// ----------------------------------------------------------------------------------------------------------- view tree

TEST_F(ScreenTest, AViewCoversItsFrame)
{
    window.addSubview(colored({10, 20, 100, 50}, Red));
    open();
    const Shown picture = shown();
    EXPECT_EQ(picture.width, 300);
    EXPECT_EQ(picture.height, 400);
    EXPECT_EQ(picture.box_of(Red), (CGRect{10, 20, 100, 50}));
}

TEST_F(ScreenTest, UncoveredAreasAreBlack)
{
    open();
    EXPECT_EQ(shown().box_of(Black), (CGRect{0, 0, 300, 400}));
}

TEST_F(ScreenTest, NeighboursWithAFractionalEdgeLeaveNoGap)
{
    window.setBackgroundColor(color(Green));
    window.addSubview(colored({0, 0, 300, 168.75}, Red));
    window.addSubview(colored({0, 168.75, 300, 231.25}, Blue));
    open();
    const Shown picture = shown();
    EXPECT_EQ(picture.box_of(Red), (CGRect{0, 0, 300, 169}));
    EXPECT_EQ(picture.box_of(Blue), (CGRect{0, 169, 300, 231}));
}

TEST_F(ScreenTest, LaterSubviewsAreAboveAndBringingToTheFrontIsVisible)
{
    const UIView lower = colored({0, 0, 100, 100}, Red);
    const UIView upper = colored({50, 0, 100, 100}, Blue);
    window.addSubview(lower);
    window.addSubview(upper);
    open();
    EXPECT_EQ(shown().at(75, 50), Blue);
    window.bringSubviewToFront(lower);
    EXPECT_EQ(shown().at(75, 50), Red);
}

TEST_F(ScreenTest, ASubviewIsNotClippedToItsParent)
{
    const UIView parent = colored({100, 100, 50, 50}, Red);
    parent.addSubview(colored({40, 40, 50, 50}, Blue));
    window.addSubview(parent);
    open();
    EXPECT_EQ(shown().box_of(Blue), (CGRect{140, 140, 50, 50}));
}

TEST_F(ScreenTest, AWindowClipsItsViews)
{
    UIWindow small = UIWindow::create({100, 100, 80, 80});
    small.addSubview(colored({-50, -50, 200, 200}, Red));
    small.makeKeyAndVisible();
    open();
    EXPECT_EQ(shown().box_of(Red), (CGRect{100, 100, 80, 80}));
}

TEST_F(ScreenTest, WindowsAreStackedByLevelThenByLastShown)
{
    window.setBackgroundColor(color(Red));
    UIWindow high = UIWindow::create({0, 0, 300, 100});
    high.setWindowLevel(1001);
    high.setBackgroundColor(color(Green));
    high.makeKeyAndVisible();
    UIWindow later = UIWindow::create({0, 0, 300, 200});
    later.setBackgroundColor(color(Blue));
    later.makeKeyAndVisible();
    open();
    const Shown picture = shown();
    EXPECT_EQ(picture.at(150, 50), Green);
    EXPECT_EQ(picture.at(150, 150), Blue);
    EXPECT_EQ(picture.at(150, 250), Red);
}

TEST_F(ScreenTest, AHiddenViewHidesItsSubviewsAndShowsThemAgain)
{
    const UIView parent = colored({0, 0, 100, 100}, Red);
    parent.addSubview(colored({10, 10, 20, 20}, Blue));
    window.addSubview(parent);
    open();
    parent.setHidden(true);
    EXPECT_EQ(shown().box_of(Black), (CGRect{0, 0, 300, 400}));
    parent.setHidden(false);
    EXPECT_EQ(shown().at(20, 20), Blue);
}

TEST_F(ScreenTest, AlphasOfParentsAndColoursMultiply)
{
    window.setBackgroundColor(color(White));
    const UIView parent = UIView::create();
    parent.setFrame({0, 0, 300, 400});
    parent.setAlpha(0.5);
    const UIView child = colored({0, 0, 300, 400}, Black);
    child.setBackgroundColor(color(Black, 0.5));
    parent.addSubview(child);
    window.addSubview(parent);
    open();
    EXPECT_NEAR(static_cast<double>(shown().at(150, 200) & 0xff), 255 * 0.75, 2);
}

TEST_F(ScreenTest, ADestroyedViewDisappearsWithItsWidget)
{
    UIView view = colored({0, 0, 100, 100}, Red);
    window.addSubview(view);
    open();
    GtkWidget* glass = gtk_widget_get_last_child(surface());
    GtkWidget* widget = gtk_widget_get_prev_sibling(glass);
    g_object_add_weak_pointer(G_OBJECT(widget), reinterpret_cast<void**>(&widget));
    view.removeFromSuperview();
    view = nullptr;
    EXPECT_EQ(shown().box_of(Red), CGRect{});
    EXPECT_EQ(widget, nullptr);
}

TEST_F(ScreenTest, ViewsMayOutliveTheScreen)
{
    window.addSubview(colored({0, 0, 100, 100}, Red));
    const auto player = MPMoviePlayerViewController::initWithContentURL(NSURL::URLWithString("http://ad/v.mp4"));
    player.view().setFrame({0, 100, 160, 90});
    window.addSubview(player.view());
    open();
    ASSERT_TRUE(players.latest->on_frame);
    platform.shown_on = nullptr;
    screen.reset();
    EXPECT_FALSE(players.latest->on_frame);
    EXPECT_EQ(players.latest->box_width, 0);
}

// -------------------------------------------------------------------------------------------------------- drawing cost

TEST_F(ScreenTest, NothingIsDrawnWhileNothingChanges)
{
    window.addSubview(colored({0, 0, 100, 100}, Red));
    open();
    EXPECT_TRUE(comes_to_rest());
}

TEST_F(ScreenTest, ManyChangesAtOnceAreOneFrame)
{
    const UIView view = colored({0, 0, 100, 100}, Red);
    window.addSubview(view);
    open();
    ASSERT_TRUE(comes_to_rest());
    for (int i = 0; i < 100; ++i)
        view.setFrame({static_cast<double>(i), 0, 100, 100});
    const int frames = frames_in(0.4);
    EXPECT_GE(frames, 1);
    EXPECT_LE(frames, 5) << "one, and what other programs on the display cause";
}

TEST_F(ScreenTest, ASpinnerTurnsOnlyWhileItIsShown)
{
    const UIView spinner(std::make_shared<ViewNode>(ViewNode::Kind::Spinner));
    spinner.setFrame({100, 100, 40, 40});
    window.addSubview(spinner);
    open();
    let_pass(0.3);
    EXPECT_GE(frames_in(0.5), 4);
    spinner.setHidden(true);
    let_pass(0.3);
    EXPECT_TRUE(comes_to_rest());
}

// -------------------------------------------------------------------------------------------------------------- window

TEST_F(ScreenTest, ClosingTheWindowCallsTheHandlerAndLeavesItOpen)
{
    int asked = 0;
    screen->on_close = [&] { ++asked; };
    open();
    gtk_window_close(screen->window());
    EXPECT_EQ(asked, 1);
    ASSERT_NE(screen->window(), nullptr);
    EXPECT_TRUE(gtk_widget_get_mapped(GTK_WIDGET(screen->window())));
}

TEST_F(ScreenTest, AWindowClosedWithoutAHandlerLeavesAnEmptyScreen)
{
    open();
    gtk_window_close(screen->window());
    EXPECT_EQ(screen->window(), nullptr);
    window.setBackgroundColor(color(Red));
    EXPECT_NE(screen->snapshot_png(picture_path), "");
}

TEST_F(ScreenTest, TheHelpLineIsBelowTheDevice)
{
    screen->set_help("Keys turn the device, change the volume, leave and return, and close the ad. Every one of them.");
    open();
    EXPECT_EQ(surface_width(), 300);
    EXPECT_EQ(gtk_widget_get_height(surface()), 400);
    EXPECT_GT(gtk_widget_get_height(GTK_WIDGET(screen->window())), 410);
}

TEST_F(ScreenTest, ASnapshotThatCannotBeWrittenIsReported)
{
    open();
    EXPECT_NE(screen->snapshot_png("/nowhere/at/all.png"), "");
}

TEST_F(ScreenTest, WithoutAnOpenWindowThereIsNoSnapshot)
{
    EXPECT_NE(screen->snapshot_png(picture_path), "");
}

} // namespace
} // namespace qoro::test
