#include "tests/desktop/screen/ScreenTest.h"

#include <gmock/gmock.h>

#include <vector>

namespace qoro::test
{
namespace
{

struct Target : Object {
    void tapped() { ++taps; }
    int taps = 0;
};

/// An application's window of 600 by 400 points with a button and an entry, which has the focus, and a screen that can
/// cover it. The device has 300 by 400 points.
class CoveredWindow : public ScreenTest
{
protected:
    CoveredWindow()
    {
        host = GTK_WINDOW(gtk_window_new());
        content = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
        entry = gtk_entry_new();
        gtk_box_append(GTK_BOX(content), gtk_button_new_with_label("Show ad"));
        gtk_box_append(GTK_BOX(content), entry);
        gtk_window_set_title(host, "The application");
        gtk_window_set_default_size(host, 600, 400);
        gtk_window_set_child(host, content);
        g_object_add_weak_pointer(G_OBJECT(host), reinterpret_cast<gpointer*>(&host));
        gtk_window_present(host);
        gtk_widget_grab_focus(entry);
        screen = std::make_unique<Screen>(platform, host);
        platform.shown_on = screen.get();
        window.addSubview(colored({0, 0, 300, 400}, Red));
    }
    ~CoveredWindow() override
    {
        platform.shown_on = nullptr;
        screen.reset();
        if (host)
            gtk_window_destroy(host);
    }

    void cover()
    {
        ASSERT_TRUE(platform.loop().run_until([&] { return screen->room() == CGSize{600, 400}; }, 90));
        open();
        ASSERT_TRUE(platform.loop().run_until([&] { return surface_width() == 600; }, 90));
    }
    std::string title() const { return gtk_window_get_title(host); }
    bool content_has_focus() const
    {
        GtkWidget* focus = gtk_window_get_focus(host);
        return focus && gtk_widget_is_ancestor(focus, content);
    }
    /// The number of event controllers of the application's window.
    unsigned controllers() const
    {
        GListModel* all = gtk_widget_observe_controllers(GTK_WIDGET(host));
        const unsigned count = g_list_model_get_n_items(all);
        g_object_unref(all);
        return count;
    }

    GtkWindow* host = nullptr;
    GtkWidget* content = nullptr;
    GtkWidget* entry = nullptr;
};

TEST_F(CoveredWindow, ShowsItsOwnContentUntilItIsCovered)
{
    EXPECT_EQ(gtk_window_get_child(host), content);
    EXPECT_EQ(screen->window(), nullptr);
}

TEST_F(CoveredWindow, ShowsTheScreenInPlaceOfItsContent)
{
    cover();

    EXPECT_EQ(screen->window(), host);
    EXPECT_EQ(gtk_widget_get_root(content), nullptr) << "neither a key nor a screen reader reaches it";
    EXPECT_EQ(shown().at(150, 200), Red);
}

TEST_F(CoveredWindow, KeepsItsSize)
{
    cover();

    EXPECT_EQ(gtk_widget_get_width(GTK_WIDGET(host)), 600);
    EXPECT_EQ(surface_width(), 600);
}

TEST_F(CoveredWindow, HasItsContentFocusAndTitleBackAfterwards)
{
    ASSERT_TRUE(platform.loop().run_until([&] { return content_has_focus(); }, 90));
    GtkWidget* const focus = gtk_window_get_focus(host);
    const unsigned before = controllers();
    cover();
    screen->set_title("An ad");
    EXPECT_EQ(title(), "An ad");

    screen->hide();

    EXPECT_EQ(gtk_window_get_child(host), content);
    EXPECT_EQ(gtk_window_get_focus(host), focus);
    EXPECT_EQ(title(), "The application");
    EXPECT_EQ(controllers(), before);
    EXPECT_EQ(screen->window(), nullptr);
}

TEST_F(CoveredWindow, CanBeCoveredAgain)
{
    cover();
    screen->hide();
    platform.loop().run_until([&] { return gtk_widget_get_mapped(content) != 0; }, 90);

    cover();

    EXPECT_EQ(shown().at(150, 200), Red);
}

TEST_F(CoveredWindow, IsUncoveredByTheEndOfTheScreen)
{
    cover();

    platform.shown_on = nullptr;
    screen.reset();

    EXPECT_EQ(gtk_window_get_child(host), content);
}

TEST_F(CoveredWindow, WithoutContentHasNoneAfterwards)
{
    gtk_window_set_child(host, nullptr);
    screen->show();

    screen->hide();

    EXPECT_EQ(gtk_window_get_child(host), nullptr);
}

TEST_F(CoveredWindow, ThatIsDestroyedEndsTheScreen)
{
    cover();

    gtk_window_destroy(host);

    EXPECT_EQ(screen->window(), nullptr);
    screen->show();
    EXPECT_EQ(screen->window(), nullptr);
}

TEST_F(CoveredWindow, ThatIsDestroyedBeforehandIsNotCovered)
{
    gtk_window_destroy(host);

    screen->show();

    EXPECT_EQ(screen->window(), nullptr);
}

TEST_F(CoveredWindow, PlacesTheScaledDeviceInItsMiddle)
{
    platform.device_facts.screen = CGSize{150, 200};
    cover();
    const auto target = std::make_shared<Target>();
    const UIButton button = UIButton::create();
    button.setFrame({0, 0, 150, 200});
    button.addTarget(action<&Target::tapped>(target.get(), "tapped"));
    window.addSubview(button);

    // Twice as large: 300 points of the surface's 600.
    for (const double x : {149, 151, 449, 451})
        tap({x, 200});

    EXPECT_EQ(target->taps, 2);
}

TEST_F(CoveredWindow, ReportsThatItBecameHigherThanWide)
{
    // Wide as the window.
    platform.device_orientation = UIDeviceOrientationLandscapeLeft;
    platform.bar_orientation = UIInterfaceOrientationLandscapeRight;
    std::vector<bool> turns;
    screen->on_turned = [&](bool wide) { turns.push_back(wide); };
    cover();

    gtk_window_set_default_size(host, 300, 600);

    ASSERT_TRUE(platform.loop().run_until([&] { return !turns.empty(); }, 90));
    EXPECT_THAT(turns, testing::ElementsAre(false));
}

} // namespace
} // namespace qoro::test
