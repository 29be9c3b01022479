#include "kit/PagePlace.h"

#include "tests/support/RecordingPlatform.h"

#include <gtest/gtest.h>

namespace qoro
{
namespace
{

constexpr CGSize Screen{375, 812};

struct PagePlaceTest : testing::Test, WebListener {
    test::RecordingPlatform platform;
    UIWindow window = UIWindow::create({0, 0, 375, 812});
    UIView ad = UIView::create();
    UIWebView page = UIWebView::create(*this);

    PagePlaceTest()
    {
        window.makeKeyAndVisible();
        ad.setFrame({0, 0, 375, 812});
        window.addSubview(ad);
        page.setFrame({0, 200, 375, 400});
        ad.addSubview(page);
    }
    PagePlace place(double scale = 1) { return place_of_page(*page.node(), Screen, scale); }

    void did_start_load() override {}
    void did_finish_load() override {}
    bool should_start_load(const NSURL&, int) override { return false; }
    ScriptAnswer message(const ScriptMessage&) override { return {}; }
    void died(const std::string&) override {}
};

TEST_F(PagePlaceTest, AnUncoveredPageIsFullyExposed)
{
    EXPECT_EQ(place().screen, Screen);
    EXPECT_EQ(place().position, (CGRect{0, 200, 375, 400}));
    EXPECT_EQ(place().visible, (CGRect{0, 0, 375, 400}));
    EXPECT_EQ(place().exposed_percentage, 100);
}

TEST_F(PagePlaceTest, PartsOffTheScreenAreNotExposed)
{
    page.setFrame({-75, 712, 375, 400});

    EXPECT_EQ(place().position, (CGRect{-75, 712, 375, 400}));
    EXPECT_EQ(place().visible, (CGRect{75, 0, 300, 100}));
    EXPECT_EQ(place().exposed_percentage, 20);
}

TEST_F(PagePlaceTest, AWindowClipsThePage)
{
    window.setFrame({0, 0, 375, 300});

    EXPECT_EQ(place().visible, (CGRect{0, 0, 375, 100}));
    EXPECT_EQ(place().exposed_percentage, 25);
}

TEST_F(PagePlaceTest, ATurnedPageHasTheScreenTurnedWithIt)
{
    page.setTransform(CGAffineTransformMakeRotation(QuarterTurn));
    page.setFrame({0, 44, 375, 812});

    EXPECT_EQ(place().screen, (CGSize{812, 375}));
    EXPECT_EQ(place().position, (CGRect{44, 0, 812, 375}));
    EXPECT_EQ(place().visible, (CGRect{0, 0, 768, 375}));
}

TEST_F(PagePlaceTest, AScaledPageIsMeasuredInItsOwnPoints)
{
    const PagePlace shrunk = place(0.5);

    EXPECT_EQ(shrunk.screen, (CGSize{750, 1624}));
    EXPECT_EQ(shrunk.position, (CGRect{0, 400, 750, 800}));
    EXPECT_EQ(shrunk.visible, (CGRect{0, 0, 750, 800}));
    EXPECT_EQ(shrunk.exposed_percentage, 100);
}

TEST_F(PagePlaceTest, AHiddenTransparentEmptyOrDetachedPageIsNotExposed)
{
    ad.setHidden(true);
    EXPECT_FALSE(place().visible);
    ad.setHidden(false);
    page.setAlpha(0);
    EXPECT_FALSE(place().visible);
    page.setAlpha(1);
    page.setFrame({0, 0, 375, 0});
    EXPECT_FALSE(place().visible);
    page.setFrame({0, 0, 375, 400});
    ASSERT_TRUE(place().visible);
    page.removeFromSuperview();
    EXPECT_FALSE(place().visible);
    EXPECT_EQ(place().exposed_percentage, 0);
}

TEST_F(PagePlaceTest, AnotherPageOverItHidesItOnlyWhenItIsOpaqueAndCoversEverything)
{
    const UIWebView browser = UIWebView::create(*this);
    browser.setFrame({0, 0, 375, 812});
    ad.addSubview(browser);
    EXPECT_FALSE(place().visible);

    browser.setOpaque(false);
    EXPECT_TRUE(place().visible);
    browser.setOpaque(true);
    browser.setFrame({0, 0, 375, 599});
    EXPECT_TRUE(place().visible);
    browser.setFrame({0, 0, 375, 600});
    browser.setHidden(true);
    EXPECT_TRUE(place().visible);
}

TEST_F(PagePlaceTest, APageInAWindowAboveHidesItToo)
{
    const UIWindow above = UIWindow::create({0, 0, 375, 812});
    const UIWebView browser = UIWebView::create(*this);
    browser.setFrame({0, 0, 375, 812});
    above.addSubview(browser);
    above.makeKeyAndVisible();
    EXPECT_FALSE(place().visible);

    window.makeKeyAndVisible();
    EXPECT_TRUE(place().visible);
}

} // namespace
} // namespace qoro
