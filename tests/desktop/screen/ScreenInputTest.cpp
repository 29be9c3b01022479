#include "tests/desktop/screen/ScreenTest.h"

#include <gdk/x11/gdkx.h>

#include <cmath>

namespace qoro::test
{
namespace
{

// ------------------------------------------------------------------------------------------------------------- touches

struct Target : Object {
    void tapped() { ++taps; }
    int taps = 0;
};

class TouchedScreen : public ScreenTest
{
protected:
    TouchedScreen()
    {
        button.setFrame({100, 100, 50, 50});
        button.addTarget(action<&Target::tapped>(target.get(), "tapped"));
        window.addSubview(button);
    }

    std::uint64_t hit_tests() { return platform.shared<WindowList>().hit_tests; }
    /// Moves the X server's pointer to a point of the surface, from another point: without a motion there is no event.
    void move_pointer(CGPoint point)
    {
        place_pointer({point.x - 20, point.y});
        place_pointer(point);
    }
    /// Moves the pointer and waits until the screen has received the motion.
    void place_pointer(CGPoint point)
    {
        GtkNative* native = GTK_NATIVE(screen->window());
        double left = 0;
        double top = 0;
        gtk_native_get_surface_transform(native, &left, &top);
        const graphene_point_t in_surface =
            GRAPHENE_POINT_INIT(static_cast<float>(point.x), static_cast<float>(point.y));
        graphene_point_t in_window;
        ASSERT_TRUE(gtk_widget_compute_point(surface(), GTK_WIDGET(native), &in_surface, &in_window));
        const std::uint64_t before = hit_tests();
        xdotool("mousemove --window " + std::to_string(gdk_x11_surface_get_xid(gtk_native_get_surface(native))) + " " +
                std::to_string(std::lround(static_cast<double>(in_window.x) + left)) + " " +
                std::to_string(std::lround(static_cast<double>(in_window.y) + top)));
        ASSERT_TRUE(platform.loop().run_until([&] { return hit_tests() > before; }, 30));
    }
    static void xdotool(const std::string& arguments)
    {
        int status = 0;
        ASSERT_TRUE(g_spawn_command_line_sync(("xdotool " + arguments).c_str(), nullptr, nullptr, &status, nullptr));
        ASSERT_EQ(status, 0);
    }

    std::shared_ptr<Target> target = std::make_shared<Target>();
    UIButton button = UIButton::create();
};

TEST_F(TouchedScreen, ATapOnAButtonRunsItsTargetOnce)
{
    open();
    tap({125, 125});
    EXPECT_EQ(target->taps, 1);
}

TEST_F(TouchedScreen, ATapBesideTheButtonDoesNotRunIt)
{
    open();
    tap({99, 125});
    EXPECT_EQ(target->taps, 0);
}

TEST_F(TouchedScreen, AFingerThatLeavesTheButtonDoesNotTapIt)
{
    open();
    touch_screen({125, 125}, {160, 125});
    EXPECT_EQ(target->taps, 0);
}

TEST_F(TouchedScreen, AFingerThatEntersTheButtonDoesNotTapIt)
{
    open();
    touch_screen({10, 10}, {125, 125});
    EXPECT_EQ(target->taps, 0);
}

TEST_F(TouchedScreen, OnATurnedDeviceTheButtonIsTappedWhereItIsSeen)
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

TEST_F(TouchedScreen, APressedButtonThatShowsTouchesGlows)
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

TEST_F(TouchedScreen, AButtonRemovedDuringATouchIsNotTapped)
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

TEST_F(TouchedScreen, APressAndAReleaseAreHitTestedOnceEachAtMost)
{
    open();
    move_pointer({125, 125});
    const std::uint64_t before = hit_tests();
    xdotool("click 1");
    ASSERT_TRUE(platform.loop().run_until([&] { return target->taps == 1; }, 30));
    EXPECT_LE(hit_tests() - before, 2U);
}

TEST_F(TouchedScreen, AViewThatCoversTheButtonDuringATouchPreventsTheTap)
{
    const UIView sheet = UIView::create();
    sheet.setFrame({0, 0, 300, 400});
    sheet.setHidden(true);
    window.addSubview(sheet);
    button.setBackgroundColor(color(Blue));
    button.setShowsTouchWhenHighlighted(true);
    const auto glows = [this] { return shown().at(125, 125) != Blue; };
    open();
    move_pointer({125, 125});
    xdotool("mousedown 1");
    ASSERT_TRUE(platform.loop().run_until(glows, 30));
    sheet.setHidden(false);
    xdotool("mouseup 1");
    ASSERT_TRUE(platform.loop().run_until([&] { return !glows(); }, 30));
    EXPECT_EQ(target->taps, 0);
}

// ------------------------------------------------------------------------------------------------------------ keyboard

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

TEST_F(KeyboardOnScreen, SpaceAndEnterUseTheFocusedControl)
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

TEST_F(KeyboardOnScreen, AKeyIsHitTestedOnce)
{
    open();
    ASSERT_TRUE(tab());
    const std::uint64_t before = hit_tests();
    key(GDK_KEY_space);
    EXPECT_EQ(target->taps, 1);
    EXPECT_EQ(hit_tests() - before, 1U);
}

TEST_F(KeyboardOnScreen, AHeldKeyUsesTheControlOnce)
{
    open();
    ASSERT_TRUE(tab());
    key(GDK_KEY_space, false);
    key(GDK_KEY_space, false);
    EXPECT_EQ(target->taps, 0);
    key(GDK_KEY_space);
    EXPECT_EQ(target->taps, 1);
}

TEST_F(KeyboardOnScreen, WithoutAFocusedControlTheKeysDoNothing)
{
    button.setHidden(true);
    second.setHidden(true);
    open();
    EXPECT_FALSE(tab());
    key(GDK_KEY_space);
    EXPECT_EQ(target->taps + second_target->taps, 0);
}

TEST_F(KeyboardOnScreen, TheKeyboardReachesOnlyControlsThatAFingerReaches)
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

TEST_F(KeyboardOnScreen, AFocusRingSurroundsTheFocusedControl)
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

TEST_F(KeyboardOnScreen, ATouchRemovesTheFocusRing)
{
    open();
    ASSERT_TRUE(tab());
    tap({10, 10});
    EXPECT_FALSE(has_ring({152, 125}));
}

TEST_F(KeyboardOnScreen, AControlShownAgainRegainsTheFocus)
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

} // namespace
} // namespace qoro::test
