#include "tests/desktop/screen/ScreenTest.h"

#include "desktop/screen/WidgetSource.h"
#include "desktop/web/WebKitEngineFactory.h"

namespace qoro::test
{
namespace
{

struct DeafListener : WebListener {
    void did_start_load() override {}
    void did_finish_load() override {}
    bool should_start_load(const NSURL&, int) override { return false; }
    ScriptAnswer message(const ScriptMessage&) override { return {}; }
    void died(const std::string&) override {}
};

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
    /// Whether GTK delivers input at a point to the page.
    bool page_gets(CGPoint point)
    {
        GtkWidget* picked = gtk_widget_pick(surface(), point.x, point.y, GTK_PICK_DEFAULT);
        GtkWidget* page_widget = page.node()->web->widget_source()->widget();
        return picked == page_widget || (picked && gtk_widget_is_ancestor(picked, page_widget));
    }

    DeafListener listener;
    WebKitEngineFactory engines{platform};
    UIWebView page;
};

TEST_F(PageOnScreen, ThePageIsInTheSnapshot)
{
    open();
    show_page("<body style='background: #00ff00'>");
    EXPECT_TRUE(comes_to_show({150, 300}, Green));
    EXPECT_EQ(shown().at(150, 50), Black);
}

TEST_F(PageOnScreen, ATransparentPageShowsWhatIsBelowIt)
{
    window.setBackgroundColor(color(Red));
    page.setOpaque(false);
    open();
    show_page("<body style='margin: 0'><div style='background: #00ff00; width: 50px; height: 50px'></div>");
    EXPECT_TRUE(comes_to_show({25, 125}, Green));
    EXPECT_EQ(shown().at(150, 300), Red);
}

TEST_F(PageOnScreen, MovementOnATransparentPageLeavesNoTrail)
{
    page.setOpaque(false);
    open();
    show_page("<body style='margin: 0'><div id='box' style='position: absolute; background: #00ff00; width: 20px; "
              "height: 20px'></div><script>let x = 0; const step = () => { x = Math.min(x + 5, 250); "
              "box.style.left = x + 'px'; requestAnimationFrame(step); }; step();</script>");
    ASSERT_TRUE(comes_to_show({265, 110}, Green));
    EXPECT_EQ(shown().box_of(Green), (CGRect{250, 100, 20, 20}));
}

TEST_F(PageOnScreen, AnOpaquePageIsWhiteWhereItPaintsNothing)
{
    window.setBackgroundColor(color(Red));
    open();
    show_page("<p></p>");
    EXPECT_TRUE(comes_to_show({150, 300}, White));
}

TEST_F(PageOnScreen, ATurnedPageIsUprightOnTheTurnedDevice)
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

TEST_F(PageOnScreen, ThePageGetsOnlyTheInputOnIt)
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

TEST_F(PageOnScreen, AnEmptyViewOverThePageBlocksItsTouches)
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

TEST_F(PageOnScreen, AHiddenPageContinuesWhenShownAgain)
{
    open();
    show_page("<body style='background: #00ff00'>");
    ASSERT_TRUE(comes_to_show({150, 300}, Green));
    page.setHidden(true);
    EXPECT_EQ(shown().at(150, 300), Black);
    page.setHidden(false);
    EXPECT_TRUE(comes_to_show({150, 300}, Green));
}

TEST_F(PageOnScreen, AFadedOutPageIsUpToDateWhenShownAgain)
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

} // namespace
} // namespace qoro::test
