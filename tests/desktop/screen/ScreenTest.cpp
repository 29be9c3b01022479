#include "desktop/screen/Screen.h"

#include "desktop/images/GdkImages.h"
#include "desktop/screen/PictureSource.h"
#include "desktop/screen/WidgetSource.h"
#include "desktop/web/WebKitEngineFactory.h"
#include "platform/MediaPlayer.h"
#include "tests/desktop/support/BarePlatform.h"
#include "tests/desktop/support/Desktop.h"

#include <gtest/gtest.h>
#include <gtk/gtk.h>

#include <filesystem>

namespace qoro::test
{
namespace
{

using Rgb = std::uint32_t;
constexpr Rgb Black = 0x000000;
constexpr Rgb Red = 0xff0000;
constexpr Rgb Green = 0x00ff00;
constexpr Rgb Blue = 0x0000ff;
constexpr Rgb White = 0xffffff;

UIColor color(Rgb rgb, double alpha = 1)
{
    return UIColor::colorWithRed((rgb >> 16) / 255.0, (rgb >> 8 & 0xff) / 255.0, (rgb & 0xff) / 255.0, alpha);
}

/// What a snapshot shows.
class Shown
{
public:
    explicit Shown(const std::string& path)
    {
        GdkTexture* texture = gdk_texture_new_from_filename(path.c_str(), nullptr);
        width = gdk_texture_get_width(texture);
        height = gdk_texture_get_height(texture);
        pixels_.resize(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
        gdk_texture_download(texture, reinterpret_cast<guchar*>(pixels_.data()), static_cast<gsize>(width) * 4);
        g_object_unref(texture);
    }

    Rgb at(int x, int y) const
    {
        return pixels_[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)] &
               0xffffff;
    }
    /// The smallest box around every pixel of a colour.
    CGRect box_of(Rgb rgb) const
    {
        int left = width, top = height, right = 0, bottom = 0;
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                if (at(x, y) == rgb) {
                    left = std::min(left, x);
                    top = std::min(top, y);
                    right = std::max(right, x + 1);
                    bottom = std::max(bottom, y + 1);
                }
        if (right == 0)
            return {};
        return {static_cast<double>(left), static_cast<double>(top), static_cast<double>(right - left),
                static_cast<double>(bottom - top)};
    }

    int width = 0;
    int height = 0;

private:
    std::vector<std::uint32_t> pixels_;
};

VideoFrame plain_frame(int width, int height, Rgb rgb)
{
    VideoFrame frame{width, height, static_cast<std::size_t>(width) * 4, nullptr};
    const std::vector<std::uint32_t> pixels(static_cast<std::size_t>(width) * static_cast<std::size_t>(height),
                                            0xff000000 | rgb);
    frame.pixels = {g_bytes_new(pixels.data(), pixels.size() * 4), g_bytes_unref};
    return frame;
}

/// A player with one picture, which fits 16:9 into whatever box it is shown in.
struct StillPlayer : PlayerEngine, PictureSource {
    void apply(const PlayerSettings&) override {}
    void play() override {}
    void pause() override {}
    void seek(double) override {}
    double current_time() const override { return 0; }
    double duration() const override { return 0; }
    int load_state() const override { return 0; }
    int playback_state() const override { return 0; }

    void set_picture_size(int width_px, int height_px) override
    {
        if (width_px == box_width && height_px == box_height)
            return;
        box_width = width_px;
        box_height = height_px;
        show(Blue);
    }
    VideoFrame latest_frame() const override { return frame; }

    void show(Rgb rgb)
    {
        const int width = std::min(box_width, box_height * 16 / 9);
        frame = width > 0 ? plain_frame(width, width * 9 / 16, rgb) : VideoFrame();
        if (on_frame)
            on_frame();
    }

    int box_width = -1;
    int box_height = -1;
    VideoFrame frame;
};

struct StillPlayers : PlayerFactory {
    std::unique_ptr<PlayerEngine> make_player(const NSURL&, PlayerListener&) override
    {
        auto player = std::make_unique<StillPlayer>();
        latest = player.get();
        return player;
    }
    StillPlayer* latest = nullptr;
};

struct DeafListener : WebListener {
    void did_start_load() override {}
    void did_finish_load() override {}
    bool should_start_load(const NSURL&, int) override { return false; }
    ScriptAnswer message(const ScriptMessage&) override { return {}; }
    void died(const std::string&) override {}
};

struct Target : Object {
    void tapped() { ++taps; }
    int taps = 0;
};

class ScreenTest : public testing::Test
{
protected:
    static void SetUpTestSuite() { ASSERT_TRUE(start_desktop()) << "these tests need a display"; }

    ScreenTest()
    {
        platform.shown_on = screen.get();
        platform.player_factory = &players;
        platform.image_decoder = &images;
        platform.device_facts.screen = CGSize{300, 400};
        window = UIWindow::create({0, 0, 300, 400});
        window.makeKeyAndVisible();
    }
    ~ScreenTest() override
    {
        platform.shown_on = nullptr;
        std::filesystem::remove(picture_path);
    }

    void open()
    {
        screen->show();
        ASSERT_TRUE(platform.loop().run_until(
            [&] { return gtk_widget_get_mapped(GTK_WIDGET(screen->window())) && surface_width() > 0; }, 10));
    }
    Shown shown()
    {
        EXPECT_TRUE(screen->snapshot_png(picture_path));
        return Shown(picture_path);
    }
    void turn(int device_orientation)
    {
        platform.device_orientation = device_orientation;
        screen->needs_display();
    }
    void let_pass(double seconds)
    {
        platform.loop().run_until([] { return false; }, seconds);
    }

    static UIView colored(const CGRect& frame, Rgb rgb)
    {
        UIView view = UIView::create();
        view.setFrame(frame);
        view.setBackgroundColor(color(rgb));
        return view;
    }

    GtkWidget* surface() const { return gtk_widget_get_first_child(gtk_window_get_child(screen->window())); }
    int surface_width() const { return gtk_widget_get_width(surface()); }

    /// A finger that goes down, perhaps moves, and goes up.
    void touch_screen(CGPoint from, CGPoint to)
    {
        GListModel* controllers = gtk_widget_observe_controllers(surface());
        auto* finger = static_cast<GObject*>(g_list_model_get_item(controllers, 0));
        g_signal_emit_by_name(finger, "drag-begin", from.x, from.y);
        g_signal_emit_by_name(finger, "drag-update", to.x - from.x, to.y - from.y);
        g_signal_emit_by_name(finger, "drag-end", to.x - from.x, to.y - from.y);
        g_object_unref(finger);
        g_object_unref(controllers);
    }
    void tap(CGPoint point) { touch_screen(point, point); }

    /// Frames that the window draws while time passes.
    int frames_in(double seconds)
    {
        int frames = 0;
        GdkFrameClock* clock = gtk_widget_get_frame_clock(surface());
        const gulong counting =
            g_signal_connect_swapped(clock, "after-paint", G_CALLBACK(+[](int* count) { ++*count; }), &frames);
        let_pass(seconds);
        g_signal_handler_disconnect(clock, counting);
        return frames;
    }

    const std::string picture_path =
        std::filesystem::temp_directory_path() / ("qoro-screen-" + std::to_string(getpid()) + ".png");
    BarePlatform platform;
    PlatformScope scope{platform};
    StillPlayers players;
    GdkImages images;
    std::unique_ptr<Screen> screen = std::make_unique<Screen>(platform);
    UIWindow window;
};

// ------------------------------------------------------------------------------------------------------- the tree

TEST_F(ScreenTest, a_view_covers_its_frame)
{
    window.addSubview(colored({10, 20, 100, 50}, Red));
    open();
    const Shown picture = shown();
    EXPECT_EQ(picture.width, 300);
    EXPECT_EQ(picture.height, 400);
    EXPECT_EQ(picture.box_of(Red), (CGRect{10, 20, 100, 50}));
}

TEST_F(ScreenTest, what_nothing_covers_is_black)
{
    open();
    EXPECT_EQ(shown().box_of(Black), (CGRect{0, 0, 300, 400}));
}

TEST_F(ScreenTest, neighbours_with_a_broken_edge_leave_no_gap)
{
    window.setBackgroundColor(color(Green));
    window.addSubview(colored({0, 0, 300, 168.75}, Red));
    window.addSubview(colored({0, 168.75, 300, 231.25}, Blue));
    open();
    const Shown picture = shown();
    EXPECT_EQ(picture.box_of(Red), (CGRect{0, 0, 300, 169}));
    EXPECT_EQ(picture.box_of(Blue), (CGRect{0, 169, 300, 231}));
}

TEST_F(ScreenTest, later_subviews_lie_above_and_bringing_to_the_front_is_seen)
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

TEST_F(ScreenTest, a_subview_reaches_out_of_its_parent)
{
    const UIView parent = colored({100, 100, 50, 50}, Red);
    parent.addSubview(colored({40, 40, 50, 50}, Blue));
    window.addSubview(parent);
    open();
    EXPECT_EQ(shown().box_of(Blue), (CGRect{140, 140, 50, 50}));
}

TEST_F(ScreenTest, a_window_cuts_what_reaches_out_of_it)
{
    UIWindow small = UIWindow::create({100, 100, 80, 80});
    small.addSubview(colored({-50, -50, 200, 200}, Red));
    small.makeKeyAndVisible();
    open();
    EXPECT_EQ(shown().box_of(Red), (CGRect{100, 100, 80, 80}));
}

TEST_F(ScreenTest, windows_lie_by_level_then_by_last_shown)
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

TEST_F(ScreenTest, a_hidden_view_hides_its_subviews_and_comes_back_whole)
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

TEST_F(ScreenTest, alphas_of_parents_and_colours_multiply)
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

TEST_F(ScreenTest, a_view_that_is_gone_is_not_shown_and_takes_its_widget_along)
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

TEST_F(ScreenTest, views_outlive_the_screen_unharmed)
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

// ------------------------------------------------------------------------------------------------ the held device

/// An ad as the landscape layout leaves it: turned by a quarter, red at its upper left, blue at its lower right.
class HeldScreenShown : public ScreenTest
{
protected:
    void show_ad_turned_by(double angle)
    {
        const UIView ad = UIView::create();
        ad.setTransform(CGAffineTransformMakeRotation(angle));
        ad.setFrame({0, 0, 300, 400});
        ad.setBackgroundColor(color(White));
        ad.addSubview(colored({0, 0, 40, 20}, Red));
        ad.addSubview(colored({360, 280, 40, 20}, Blue));
        window.addSubview(ad);
    }
};

TEST_F(HeldScreenShown, an_ad_turned_for_landscape_left_stands_upright_there)
{
    show_ad_turned_by(QuarterTurn);
    turn(UIDeviceOrientationLandscapeLeft);
    open();
    const Shown picture = shown();
    EXPECT_EQ(picture.width, 400);
    EXPECT_EQ(picture.height, 300);
    EXPECT_EQ(picture.box_of(Red), (CGRect{0, 0, 40, 20}));
    EXPECT_EQ(picture.box_of(Blue), (CGRect{360, 280, 40, 20}));
}

TEST_F(HeldScreenShown, an_ad_turned_for_landscape_right_stands_upright_there)
{
    show_ad_turned_by(-QuarterTurn);
    turn(UIDeviceOrientationLandscapeRight);
    open();
    const Shown picture = shown();
    EXPECT_EQ(picture.box_of(Red), (CGRect{0, 0, 40, 20}));
    EXPECT_EQ(picture.box_of(Blue), (CGRect{360, 280, 40, 20}));
}

TEST_F(HeldScreenShown, an_ad_turned_on_a_device_held_upright_lies_on_its_side)
{
    show_ad_turned_by(QuarterTurn);
    open();
    const Shown picture = shown();
    EXPECT_EQ(picture.width, 300);
    EXPECT_EQ(picture.box_of(Red), (CGRect{280, 0, 20, 40}));
    EXPECT_EQ(picture.box_of(Blue), (CGRect{0, 360, 20, 40}));
}

TEST_F(HeldScreenShown, a_device_upside_down_shows_everything_so)
{
    window.addSubview(colored({0, 0, 40, 20}, Red));
    turn(UIDeviceOrientationPortraitUpsideDown);
    open();
    EXPECT_EQ(shown().box_of(Red), (CGRect{260, 380, 40, 20}));
}

TEST_F(HeldScreenShown, the_window_follows_the_turn)
{
    open();
    EXPECT_EQ(surface_width(), 300);
    turn(UIDeviceOrientationLandscapeLeft);
    EXPECT_TRUE(platform.loop().run_until([&] { return surface_width() == 400; }, 10));
    turn(UIDeviceOrientationPortrait);
    EXPECT_TRUE(platform.loop().run_until([&] { return surface_width() == 300; }, 10));
}

TEST_F(HeldScreenShown, a_device_larger_than_the_monitor_is_shown_smaller_and_pictured_whole)
{
    platform.device_facts.screen = CGSize{1500, 3000};
    window.setFrame({0, 0, 1500, 3000});
    window.addSubview(colored({1000, 1000, 400, 500}, Red));
    open();
    EXPECT_LT(surface_width(), 1500);
    const Shown picture = shown();
    EXPECT_EQ(picture.width, 1500);
    EXPECT_EQ(picture.box_of(Red), (CGRect{1000, 1000, 400, 500}));
}

// -------------------------------------------------------------------------------------------------- what views draw

/// A picture of two colours, the left half red and the right half blue.
UIImage two_colours(int width, int height)
{
    GdkPixbuf* pixels = gdk_pixbuf_new(GDK_COLORSPACE_RGB, TRUE, 8, width, height);
    gdk_pixbuf_fill(pixels, 0xff0000ff);
    GdkPixbuf* right = gdk_pixbuf_new_subpixbuf(pixels, width / 2, 0, width - width / 2, height);
    gdk_pixbuf_fill(right, 0x0000ffff);
    char* bytes = nullptr;
    gsize size = 0;
    gdk_pixbuf_save_to_buffer(pixels, &bytes, &size, "png", nullptr, nullptr);
    const UIImage image = UIImage::imageWithData(NSData(std::string(bytes, size)));
    g_free(bytes);
    g_object_unref(right);
    g_object_unref(pixels);
    return image;
}

TEST_F(ScreenTest, a_buttons_image_is_stretched_over_it)
{
    UIButton button = UIButton::create();
    button.setFrame({50, 50, 100, 40});
    button.setBackgroundImage(two_colours(20, 20));
    window.addSubview(button);
    open();
    const Shown picture = shown();
    EXPECT_EQ(picture.at(51, 51), Red);
    EXPECT_EQ(picture.at(148, 88), Blue);
    EXPECT_EQ(picture.at(49, 60), Black);
    EXPECT_EQ(picture.at(150, 60), Black);
}

TEST_F(ScreenTest, a_new_image_replaces_the_old_one)
{
    UIButton button = UIButton::create();
    button.setFrame({0, 0, 40, 40});
    button.setBackgroundImage(two_colours(40, 40));
    window.addSubview(button);
    open();
    EXPECT_EQ(shown().at(5, 5), Red);
    button.setBackgroundImage(nullptr);
    EXPECT_EQ(shown().at(5, 5), Black);
}

TEST_F(ScreenTest, an_image_view_that_keeps_the_shape_shows_the_image_in_its_middle)
{
    UIImageView view = UIImageView::create();
    view.setFrame({0, 0, 100, 200});
    view.setContentMode(UIViewContentModeScaleAspectFit);
    view.setImage(two_colours(50, 50));
    window.addSubview(view);
    open();
    const Shown picture = shown();
    EXPECT_EQ(picture.at(2, 48), Black);
    EXPECT_EQ(picture.at(2, 52), Red);
    EXPECT_EQ(picture.at(98, 147), Blue);
    EXPECT_EQ(picture.at(98, 152), Black);
}

TEST_F(ScreenTest, a_label_draws_its_text_in_its_colour_within_its_box)
{
    UILabel label = UILabel::create();
    label.setFrame({20, 40, 80, 30});
    label.setText("\u2588\u2588"); // full blocks
    label.setTextColor(color(Green));
    window.addSubview(label);
    open();
    const CGRect ink = shown().box_of(Green);
    EXPECT_GE(ink.x, 20);
    EXPECT_GE(ink.y, 40);
    EXPECT_GT(ink.width, 10);
    EXPECT_LE(ink.y + ink.height, 70);
}

TEST_F(ScreenTest, a_label_aligned_to_the_right_ends_at_its_right_edge)
{
    UILabel label = UILabel::create();
    label.setFrame({0, 0, 200, 30});
    label.setText("\u2588");
    label.setTextAlignment(NSTextAlignmentRight);
    label.setTextColor(color(Green));
    window.addSubview(label);
    open();
    const CGRect ink = shown().box_of(Green);
    EXPECT_GT(ink.x, 150);
    EXPECT_NEAR(ink.x + ink.width, 200, 3);
}

TEST_F(ScreenTest, a_label_of_many_lines_breaks_between_letters)
{
    UILabel label = UILabel::create();
    label.setFrame({0, 0, 40, 200});
    label.setText("\u2588\u2588\u2588\u2588\u2588\u2588");
    label.setLineBreakMode(NSLineBreakByCharWrapping);
    label.setNumberOfLines(0);
    label.setTextColor(color(Green));
    window.addSubview(label);
    open();
    const CGRect ink = shown().box_of(Green);
    EXPECT_LE(ink.width, 40);
    EXPECT_GT(ink.height, 30);
}

TEST_F(ScreenTest, a_buttons_title_stands_in_its_middle)
{
    UIButton button = UIButton::create();
    button.setFrame({100, 100, 100, 60});
    button.setTitle("\u2588");
    button.titleLabel().setTextColor(color(Green));
    button.titleLabel().setTextAlignment(NSTextAlignmentRight);
    window.addSubview(button);
    open();
    const CGRect ink = shown().box_of(Green);
    EXPECT_NEAR(ink.x + ink.width / 2, 150, 2);
}

TEST_F(ScreenTest, a_countdown_draws_what_is_left_of_its_ring)
{
    const auto countdown = std::make_shared<ViewNode>(ViewNode::Kind::CountDown);
    countdown->seconds_full = 4;
    countdown->seconds = 1; // a quarter is left: the last one before the top, on the left
    countdown->ring_width = 6;
    const UIView view(countdown);
    view.setFrame({100, 100, 100, 100});
    window.addSubview(view);
    open();
    const Shown picture = shown();
    EXPECT_EQ(picture.at(150 - 33, 150 - 32), White);
    EXPECT_NE(picture.at(150 + 33, 150 - 32), White);
    EXPECT_NE(picture.at(150 - 33, 150 + 32), White);
    EXPECT_EQ(picture.at(100, 100), Black); // beside the disc
}

TEST_F(ScreenTest, a_countdown_over_white_has_a_white_ring_between_dark_rim_and_dark_disc)
{
    window.setBackgroundColor(color(White));
    const auto countdown = std::make_shared<ViewNode>(ViewNode::Kind::CountDown);
    countdown->seconds_full = 5;
    countdown->seconds = 5;
    countdown->ring_width = 3;
    const UIView view(countdown);
    view.setFrame({100, 100, 50, 50});
    window.addSubview(view);
    open();
    const Shown picture = shown();
    EXPECT_EQ(picture.at(99, 125), White); // beside it
    EXPECT_LT(picture.at(100, 125) & 0xff, 0x60U);
    EXPECT_EQ(picture.at(102, 125), White);
    EXPECT_EQ(picture.at(103, 125), White);
    EXPECT_LT(picture.at(106, 125) & 0xff, 0x60U);
    EXPECT_LT(picture.at(110, 125) & 0xff, 0x60U);
}

// ------------------------------------------------------------------------------------------------------- the video

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

TEST_F(VideoOnScreen, its_player_is_asked_for_pictures_of_the_size_shown)
{
    add_video({0, 0, 300, 168.75});
    open();
    EXPECT_EQ(player().box_width, 300);
    EXPECT_EQ(player().box_height, 169);
}

TEST_F(VideoOnScreen, turned_with_the_device_its_pictures_are_upright)
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

TEST_F(VideoOnScreen, turned_on_its_side_its_picture_is_too)
{
    add_video({});
    video.view().setTransform(CGAffineTransformMakeRotation(QuarterTurn));
    video.view().setFrame({0, 0, 300, 400});
    open();
    EXPECT_EQ(player().box_width, 400);
    EXPECT_EQ(shown().box_of(Blue), (CGRect{38, 0, 225, 400}));
}

TEST_F(VideoOnScreen, the_picture_stands_in_the_middle_on_black)
{
    window.setBackgroundColor(color(White));
    add_video({0, 0, 160, 200});
    open();
    const Shown picture = shown();
    EXPECT_EQ(picture.box_of(Blue), (CGRect{0, 55, 160, 90}));
    EXPECT_EQ(picture.at(80, 10), Black);
}

TEST_F(VideoOnScreen, beside_the_picture_a_clear_view_shows_what_lies_beneath)
{
    window.setBackgroundColor(color(White));
    add_video({0, 0, 160, 200});
    video.view().setBackgroundColor(UIColor::clearColor());
    open();
    EXPECT_EQ(shown().at(80, 10), White);
}

TEST_F(VideoOnScreen, a_new_picture_is_drawn)
{
    add_video({0, 0, 160, 90});
    open();
    EXPECT_EQ(shown().at(80, 45), Blue);
    player().show(Green);
    EXPECT_EQ(shown().at(80, 45), Green);
}

TEST_F(VideoOnScreen, while_hidden_no_picture_is_asked_for)
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

TEST_F(VideoOnScreen, behind_a_parent_that_has_faded_away_no_picture_is_asked_for)
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

TEST_F(VideoOnScreen, outside_the_tree_no_picture_is_asked_for)
{
    add_video({0, 0, 160, 90});
    open();
    video.view().removeFromSuperview();
    let_pass(0.1);
    EXPECT_EQ(player().box_width, 0);
}

TEST_F(VideoOnScreen, a_picture_that_comes_after_its_player_went_harms_nothing)
{
    add_video({0, 0, 160, 90});
    open();
    const UIView view = video.view();
    video = nullptr;
    EXPECT_EQ(shown().box_of(Blue), CGRect{});
}

// ------------------------------------------------------------------------------------------------- what drawing costs

TEST_F(ScreenTest, nothing_is_drawn_while_nothing_changes)
{
    window.addSubview(colored({0, 0, 100, 100}, Red));
    open();
    let_pass(0.5);
    EXPECT_EQ(frames_in(0.4), 0);
}

TEST_F(ScreenTest, many_changes_at_once_are_one_frame)
{
    const UIView view = colored({0, 0, 100, 100}, Red);
    window.addSubview(view);
    open();
    let_pass(0.5);
    for (int i = 0; i < 100; ++i)
        view.setFrame({static_cast<double>(i), 0, 100, 100});
    const int frames = frames_in(0.4);
    EXPECT_GE(frames, 1);
    EXPECT_LE(frames, 2);
}

TEST_F(ScreenTest, a_spinner_turns_only_while_it_is_shown)
{
    const UIView spinner(std::make_shared<ViewNode>(ViewNode::Kind::Spinner));
    spinner.setFrame({100, 100, 40, 40});
    window.addSubview(spinner);
    open();
    let_pass(0.3);
    EXPECT_GE(frames_in(0.5), 4);
    spinner.setHidden(true);
    let_pass(0.3);
    EXPECT_EQ(frames_in(0.4), 0);
}

// --------------------------------------------------------------------------------------------------------- touches

class TouchedScreen : public ScreenTest
{
protected:
    TouchedScreen()
    {
        button.setFrame({100, 100, 50, 50});
        button.addTarget(action<&Target::tapped>(target.get(), "tapped"));
        window.addSubview(button);
    }

    std::shared_ptr<Target> target = std::make_shared<Target>();
    UIButton button = UIButton::create();
};

TEST_F(TouchedScreen, a_tap_on_a_button_runs_its_target_once)
{
    open();
    tap({125, 125});
    EXPECT_EQ(target->taps, 1);
}

TEST_F(TouchedScreen, a_tap_beside_it_does_not)
{
    open();
    tap({99, 125});
    EXPECT_EQ(target->taps, 0);
}

TEST_F(TouchedScreen, a_finger_that_leaves_the_button_does_not_tap_it)
{
    open();
    touch_screen({125, 125}, {160, 125});
    EXPECT_EQ(target->taps, 0);
}

TEST_F(TouchedScreen, a_finger_that_comes_from_elsewhere_does_not_tap_it)
{
    open();
    touch_screen({10, 10}, {125, 125});
    EXPECT_EQ(target->taps, 0);
}

TEST_F(TouchedScreen, on_a_turned_device_the_button_is_tapped_where_it_is_seen)
{
    turn(UIDeviceOrientationLandscapeLeft);
    open();
    tap({125, 300 - 125});
    EXPECT_EQ(target->taps, 1);
    turn(UIDeviceOrientationLandscapeRight);
    let_pass(0.1);
    tap({400 - 125, 125});
    EXPECT_EQ(target->taps, 2);
}

TEST_F(TouchedScreen, a_pressed_button_that_shows_touches_glows)
{
    button.setBackgroundColor(color(Blue));
    button.setShowsTouchWhenHighlighted(true);
    open();
    GListModel* controllers = gtk_widget_observe_controllers(surface());
    auto* finger = static_cast<GObject*>(g_list_model_get_item(controllers, 0));
    g_signal_emit_by_name(finger, "drag-begin", 125.0, 125.0);
    EXPECT_NE(shown().at(125, 125), Blue);
    g_signal_emit_by_name(finger, "drag-end", 0.0, 0.0);
    EXPECT_EQ(shown().at(125, 125), Blue);
    g_object_unref(finger);
    g_object_unref(controllers);
}

TEST_F(TouchedScreen, a_button_that_goes_while_it_is_touched_is_not_tapped)
{
    open();
    GListModel* controllers = gtk_widget_observe_controllers(surface());
    auto* finger = static_cast<GObject*>(g_list_model_get_item(controllers, 0));
    g_signal_emit_by_name(finger, "drag-begin", 125.0, 125.0);
    button.removeFromSuperview();
    g_signal_emit_by_name(finger, "drag-end", 0.0, 0.0);
    EXPECT_EQ(target->taps, 0);
    g_object_unref(finger);
    g_object_unref(controllers);
}

// -------------------------------------------------------------------------------------------------------- keyboard

class KeyboardOnScreen : public TouchedScreen
{
protected:
    KeyboardOnScreen()
    {
        button.setAccessibilityLabel("First");
        second.setFrame({100, 200, 50, 50});
        second.addTarget(action<&Target::tapped>(second_target.get(), "tapped"));
        window.addSubview(second);
    }

    bool tab(bool forward = true)
    {
        return gtk_widget_child_focus(GTK_WIDGET(screen->window()),
                                      forward ? GTK_DIR_TAB_FORWARD : GTK_DIR_TAB_BACKWARD);
    }
    void key(unsigned keyval, bool let_go = true)
    {
        GtkEventController* keys = bubbling_keys();
        gboolean taken = FALSE;
        g_signal_emit_by_name(keys, "key-pressed", keyval, 0U, 0, &taken);
        if (let_go)
            g_signal_emit_by_name(keys, "key-released", keyval, 0U, 0);
        g_object_unref(keys);
    }
    bool has_ring(CGPoint at) { return shown().at(static_cast<int>(at.x), static_cast<int>(at.y)) == White; }

    std::shared_ptr<Target> second_target = std::make_shared<Target>();
    UIButton second = UIButton::create();

private:
    GtkEventController* bubbling_keys() const
    {
        GListModel* controllers = gtk_widget_observe_controllers(GTK_WIDGET(screen->window()));
        GtkEventController* found = nullptr;
        for (unsigned n = 0; n < g_list_model_get_n_items(controllers); ++n) {
            auto* each = static_cast<GtkEventController*>(g_list_model_get_item(controllers, n));
            if (!found && GTK_IS_EVENT_CONTROLLER_KEY(each) &&
                gtk_event_controller_get_propagation_phase(each) == GTK_PHASE_BUBBLE)
                found = each;
            else
                g_object_unref(each);
        }
        g_object_unref(controllers);
        return found;
    }
};

TEST_F(KeyboardOnScreen, the_space_bar_and_enter_use_the_control_that_has_the_keyboard)
{
    open();
    ASSERT_TRUE(tab());
    key(GDK_KEY_space);
    EXPECT_EQ(target->taps, 1);
    ASSERT_TRUE(tab());
    key(GDK_KEY_Return);
    EXPECT_EQ(second_target->taps, 1);
    ASSERT_TRUE(tab(false));
    key(GDK_KEY_KP_Enter);
    EXPECT_EQ(target->taps, 2);
}

TEST_F(KeyboardOnScreen, a_key_that_is_held_down_uses_the_control_once)
{
    open();
    ASSERT_TRUE(tab());
    key(GDK_KEY_space, false);
    key(GDK_KEY_space, false);
    EXPECT_EQ(target->taps, 0);
    key(GDK_KEY_space);
    EXPECT_EQ(target->taps, 1);
}

TEST_F(KeyboardOnScreen, without_a_control_the_keys_use_nothing)
{
    button.setHidden(true);
    second.setHidden(true);
    open();
    EXPECT_FALSE(tab());
    key(GDK_KEY_space);
    EXPECT_EQ(target->taps + second_target->taps, 0);
}

TEST_F(KeyboardOnScreen, what_a_finger_cannot_reach_the_keyboard_does_not_either)
{
    const UIView sheet = UIView::create();
    sheet.setFrame({0, 0, 300, 180});
    window.addSubview(sheet);
    open();
    ASSERT_TRUE(tab());
    ASSERT_TRUE(tab());
    key(GDK_KEY_space);
    EXPECT_EQ(target->taps, 0);
    EXPECT_EQ(second_target->taps, 1);
}

TEST_F(KeyboardOnScreen, a_ring_stands_around_the_control_that_has_the_keyboard)
{
    open();
    EXPECT_FALSE(has_ring({152, 125}));
    ASSERT_TRUE(tab());
    EXPECT_TRUE(has_ring({152, 125}));
    EXPECT_FALSE(has_ring({152, 225}));
    ASSERT_TRUE(tab());
    EXPECT_FALSE(has_ring({152, 125}));
    EXPECT_TRUE(has_ring({152, 225}));
}

TEST_F(KeyboardOnScreen, a_finger_takes_the_ring_away)
{
    open();
    ASSERT_TRUE(tab());
    tap({10, 10});
    EXPECT_FALSE(has_ring({152, 125}));
}

TEST_F(KeyboardOnScreen, a_control_that_comes_back_has_the_keyboard_again)
{
    open();
    ASSERT_TRUE(tab());
    button.setHidden(true);
    shown();
    button.setHidden(false);
    shown();
    key(GDK_KEY_space);
    EXPECT_EQ(target->taps, 1);
}

// -------------------------------------------------------------------------------------------------------- the page

class PageOnScreen : public ScreenTest
{
protected:
    PageOnScreen()
    {
        platform.web_engine_factory = &engines;
        page = UIWebView::create(listener);
        page.setFrame({0, 100, 300, 300});
        window.addSubview(page);
    }
    ~PageOnScreen() override
    {
        window = nullptr;
        page = nullptr;
    }

    void show_page(const std::string& html) { page.loadHTMLString(html, NSURL::URLWithString("http://127.0.0.1:9/")); }
    bool comes_to_show(CGPoint point, Rgb rgb)
    {
        return platform.loop().run_until(
            [&] { return shown().at(static_cast<int>(point.x), static_cast<int>(point.y)) == rgb; }, 15);
    }
    /// Whether GTK gives what happens at a point to the page.
    bool page_gets(CGPoint point)
    {
        GtkWidget* picked = gtk_widget_pick(surface(), point.x, point.y, GTK_PICK_DEFAULT);
        GtkWidget* page_widget = dynamic_cast<WidgetSource&>(*page.node()->web).widget();
        return picked == page_widget || (picked && gtk_widget_is_ancestor(picked, page_widget));
    }

    DeafListener listener;
    WebKitEngineFactory engines{platform};
    UIWebView page;
};

TEST_F(PageOnScreen, the_page_is_in_the_picture)
{
    open();
    show_page("<body style='background: #00ff00'>");
    EXPECT_TRUE(comes_to_show({150, 300}, Green));
    EXPECT_EQ(shown().at(150, 50), Black);
}

TEST_F(PageOnScreen, a_page_that_is_not_opaque_lets_what_lies_beneath_through)
{
    window.setBackgroundColor(color(Red));
    page.setOpaque(false);
    open();
    show_page("<body style='margin: 0'><div style='background: #00ff00; width: 50px; height: 50px'></div>");
    EXPECT_TRUE(comes_to_show({25, 125}, Green));
    EXPECT_EQ(shown().at(150, 300), Red);
}

TEST_F(PageOnScreen, what_moves_on_a_clear_page_leaves_no_trail)
{
    page.setOpaque(false);
    open();
    show_page("<body style='margin: 0'><div id='box' style='position: absolute; background: #00ff00; width: 20px; "
              "height: 20px'></div><script>let x = 0; const step = () => { x = Math.min(x + 5, 250); "
              "box.style.left = x + 'px'; requestAnimationFrame(step); }; step();</script>");
    ASSERT_TRUE(comes_to_show({265, 110}, Green));
    EXPECT_EQ(shown().box_of(Green), (CGRect{250, 100, 20, 20}));
}

TEST_F(PageOnScreen, an_opaque_page_is_white_where_it_paints_nothing)
{
    window.setBackgroundColor(color(Red));
    open();
    show_page("<p></p>");
    EXPECT_TRUE(comes_to_show({150, 300}, White));
}

TEST_F(PageOnScreen, a_turned_page_stands_upright_on_the_turned_device)
{
    page.setTransform(CGAffineTransformMakeRotation(QuarterTurn));
    page.setFrame({0, 0, 300, 400});
    turn(UIDeviceOrientationLandscapeLeft);
    open();
    show_page("<body style='margin: 0; background: #0000ff'><div style='background: #00ff00; width: 60px; "
              "height: 30px'></div>");
    ASSERT_TRUE(comes_to_show({10, 10}, Green));
    EXPECT_EQ(shown().box_of(Green), (CGRect{0, 0, 60, 30}));
}

TEST_F(PageOnScreen, the_page_gets_what_happens_on_it_alone)
{
    const UIButton button = UIButton::create();
    button.setFrame({0, 100, 50, 50});
    window.addSubview(button);
    open();
    let_pass(0.1);
    EXPECT_TRUE(page_gets({150, 300}));
    EXPECT_FALSE(page_gets({25, 125}));
    EXPECT_FALSE(page_gets({150, 50}));
}

TEST_F(PageOnScreen, a_view_without_a_picture_keeps_the_page_from_being_touched)
{
    const UIView sheet = UIView::create();
    sheet.setFrame({0, 0, 300, 400});
    window.addSubview(sheet);
    open();
    let_pass(0.1);
    EXPECT_FALSE(page_gets({150, 300}));
    sheet.setUserInteractionEnabled(false);
    EXPECT_TRUE(page_gets({150, 300}));
}

TEST_F(PageOnScreen, a_hidden_page_goes_on_where_it_was)
{
    open();
    show_page("<body style='background: #00ff00'>");
    ASSERT_TRUE(comes_to_show({150, 300}, Green));
    page.setHidden(true);
    EXPECT_EQ(shown().at(150, 300), Black);
    page.setHidden(false);
    EXPECT_TRUE(comes_to_show({150, 300}, Green));
}

TEST_F(PageOnScreen, a_page_that_was_faded_away_comes_back_up_to_date)
{
    page.setAlpha(0);
    open();
    show_page("<body style='background: #ff0000'><script>setTimeout(() => document.body.style.background = '#00ff00', "
              "300)</script>");
    let_pass(1);
    EXPECT_EQ(shown().at(150, 300), Black);
    page.setAlpha(1);
    EXPECT_TRUE(comes_to_show({150, 300}, Green));
}

// ------------------------------------------------------------------------------------------------------ the window

TEST_F(ScreenTest, closing_the_window_asks_and_leaves_it_open)
{
    int asked = 0;
    screen->on_close = [&] { ++asked; };
    open();
    gtk_window_close(screen->window());
    EXPECT_EQ(asked, 1);
    ASSERT_NE(screen->window(), nullptr);
    EXPECT_TRUE(gtk_widget_get_mapped(GTK_WIDGET(screen->window())));
}

TEST_F(ScreenTest, a_window_closed_without_asking_leaves_a_screen_that_shows_nothing)
{
    open();
    gtk_window_close(screen->window());
    EXPECT_EQ(screen->window(), nullptr);
    window.setBackgroundColor(color(Red));
    EXPECT_FALSE(screen->snapshot_png(picture_path));
}

TEST_F(ScreenTest, the_help_line_stands_under_the_device)
{
    screen->set_help("Keys turn the device, change the volume, leave and return, and close the ad. Every one of them.");
    open();
    EXPECT_EQ(surface_width(), 300);
    EXPECT_EQ(gtk_widget_get_height(surface()), 400);
    EXPECT_GT(gtk_widget_get_height(GTK_WIDGET(screen->window())), 410);
}

TEST_F(ScreenTest, a_picture_that_cannot_be_written_is_reported)
{
    open();
    EXPECT_FALSE(screen->snapshot_png("/nowhere/at/all.png"));
}

TEST_F(ScreenTest, without_an_open_window_there_is_no_picture)
{
    EXPECT_FALSE(screen->snapshot_png(picture_path));
}

} // namespace
} // namespace qoro::test
