#include "tests/hostile/HostileTest.h"

// Pages that prevent their viewer from leaving.

namespace qoro::test
{

TEST_F(HostileTest, APageThatIgnoresTheTapsItTookCanBeLeft)
{
    play("keeps_close.html");
    EXPECT_TRUE(page_is_done());
    the_viewer_touches_close();
    EXPECT_TRUE(ad().hears("onclick_closebtn"));
    the_viewer_leaves_by_the_guard();
}

TEST_F(HostileTest, APageThatHangsWithTheCloseButtonCanBeLeft)
{
    play("hangs.html");
    the_viewer_leaves_by_the_guard();
}

TEST_F(HostileTest, APageThatDrawsNoCloseControlCanBeLeft)
{
    play("custom_close.html");
    EXPECT_TRUE(page_is_done());
    the_viewer_leaves_by_the_guard();
}

TEST_F(HostileTest, APageInFrontThatDrawsNoCloseControlCanBeLeft)
{
    play("harmless.html", {{"bIsWebViewInFront", true}});
    the_viewer_leaves_by_the_guard();
}

TEST_F(HostileTest, APageThatDiesWithTheCloseButtonReturnsIt)
{
    play("keeps_close.html");
    EXPECT_TRUE(page_is_done());
    ASSERT_TRUE(ad().kill_page_process());
    EXPECT_TRUE(ad().reports({{"what", "web"}, {"do", "died"}}));
    the_viewer_leaves();
}

TEST_F(HostileTest, APageThatDiesWithACustomCloseReturnsTheButton)
{
    play("custom_close.html");
    EXPECT_TRUE(page_is_done());
    ASSERT_TRUE(ad().kill_page_process());
    EXPECT_TRUE(ad().reports({{"what", "web"}, {"do", "died"}}));
    the_viewer_leaves();
}

} // namespace qoro::test
