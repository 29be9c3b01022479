#pragma once

#include "desktop/images/GdkImages.h"
#include "desktop/media/PictureSource.h"
#include "desktop/screen/Screen.h"
#include "platform/MediaPlayer.h"
#include "tests/desktop/support/BarePlatform.h"
#include "tests/desktop/support/Desktop.h"
#include "views/ViewNode.h"

#include <gtest/gtest.h>
#include <gtk/gtk.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace qoro::test
{

using Rgb = std::uint32_t;
constexpr Rgb Black = 0x000000;
constexpr Rgb Red = 0xff0000;
constexpr Rgb Green = 0x00ff00;
constexpr Rgb Blue = 0x0000ff;
constexpr Rgb White = 0xffffff;

inline UIColor color(Rgb rgb, double alpha = 1)
{
    return UIColor::colorWithRed((rgb >> 16) / 255.0, (rgb >> 8 & 0xff) / 255.0, (rgb & 0xff) / 255.0, alpha);
}

/// A snapshot of the screen, read from a picture file.
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
    /// The bounding box of all pixels of a colour.
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

inline VideoFrame plain_frame(int width, int height, Rgb rgb)
{
    VideoFrame frame{width, height, static_cast<std::size_t>(width) * 4, nullptr};
    const std::vector<std::uint32_t> pixels(static_cast<std::size_t>(width) * static_cast<std::size_t>(height),
                                            0xff000000 | rgb);
    frame.pixels = {g_bytes_new(pixels.data(), pixels.size() * 4), g_bytes_unref};
    return frame;
}

/// A player with a single frame, which it scales to 16:9 within its box.
struct StillPlayer : PlayerEngine, PictureSource {
    void apply(const PlayerSettings&) override {}
    void play() override {}
    void pause() override {}
    void seek(double) override {}
    double current_time() const override { return 0; }
    double duration() const override { return 0; }
    MPMovieLoadState load_state() const override { return MPMovieLoadStateUnknown; }
    MPMoviePlaybackState playback_state() const override { return MPMoviePlaybackStateStopped; }
    PictureSource* pictures() override { return this; }

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

/// A screen of 300 by 400 points in its own toplevel window, with one window of the kit.
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
            [&] { return gtk_widget_get_mapped(GTK_WIDGET(screen->window())) && surface_width() > 0; }, 90));
    }
    Shown shown()
    {
        EXPECT_EQ(screen->snapshot_png(picture_path), "");
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

    /// A touch from its start to its end, possibly with a move.
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

    /// The number of frames that the window draws within a time.
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

    /// Whether nothing is drawn for a while. Other programs on the display may cause single frames before that, such as
    /// by taking the focus.
    bool comes_to_rest()
    {
        constexpr int attempts = 20;
        for (int attempt = 0; attempt < attempts; ++attempt)
            if (frames_in(0.4) == 0)
                return true;
        return false;
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

} // namespace qoro::test
