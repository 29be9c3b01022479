#include "tests/support/RecordingPlatform.h"
#include "views/ViewNode.h"

#include <gtest/gtest.h>

using namespace qoro;
using qoro::test::RecordingPlatform;

namespace
{

using Lines = std::vector<std::string>;

struct Page : WebListener {
    void did_start_load() override {}
    void did_finish_load() override {}
    bool should_start_load(const NSURL&, int) override { return true; }
    ScriptAnswer message(const ScriptMessage&) override { return {}; }
    void died(const std::string&) override {}
};

struct TheWebView : testing::Test {
    RecordingPlatform platform;
    Page page;
    UIWebView view = UIWebView::create(page);
};

} // namespace

TEST_F(TheWebView, LoadsAPageAndReportsIt)
{
    view.loadHTMLString("<p>hello", NSURL::URLWithString("http://ad/page.html"));

    EXPECT_EQ(platform.web->html, "<p>hello");
    EXPECT_EQ(view.requestURL().absoluteString(), "http://ad/page.html");
    EXPECT_EQ(platform.transcript, Lines{"page html=<p>hello base=http://ad/page.html"});
}

TEST_F(TheWebView, LoadsANullPageToo)
{
    view.loadHTMLString(nullptr, nullptr);

    EXPECT_FALSE(platform.web->html);
    EXPECT_EQ(platform.transcript, Lines{"page html=null base=null"});
}

TEST_F(TheWebView, PassesOnEventsAndItsScaling)
{
    view.callListeners("video_play", {}, nullptr);
    view.setScalesPageToFit(true);

    EXPECT_EQ(platform.web->events, Lines{"video_play"});
    EXPECT_TRUE(platform.web->scales);
}

TEST_F(TheWebView, DoesNothingWhenItIsNull)
{
    const UIWebView none;

    none.loadHTMLString("<p>", nullptr);
    none.callListeners("video_play", {}, nullptr);
    none.setScalesPageToFit(true);

    EXPECT_FALSE(none.requestURL());
    EXPECT_EQ(platform.transcript, Lines{});
}
