#include "tests/desktop/screen/ScreenTest.h"

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
