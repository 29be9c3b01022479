#include "tests/desktop/web/PageTest.h"

namespace qoro::test
{
namespace
{

/// A page of the in-app browser (PageKind::Browsed).
class BrowsedPageTest : public PageTest
{
protected:
    BrowsedPageTest() { engine = factory.make_web_engine(recorder, PageKind::Browsed); }

    /// Serves and loads a page, and waits until it has loaded.
    void browse(const std::string& html)
    {
        server.pages["/page.html"] = {"text/html; charset=utf-8", html};
        engine->load_address(NSURL::URLWithString(server.base() + "page.html"));
        wait_for("finish");
    }
    /// Waits for a title, the only output of a script without the bridge.
    void wait_for_title(const std::string& title)
    {
        const bool came = platform.loop().run_until([&] { return engine->page_state().title == title; }, 90);
        ASSERT_TRUE(came) << engine->page_state().title;
    }
};

TEST_F(BrowsedPageTest, FindsNeitherTheLibraryNorTheBridge)
{
    browse("<title>?</title><script src='kit://script.js'></script><script>"
           "document.title = [typeof qoroPlayer, typeof window.qoroBridge]</script>");
    wait_for_title("undefined,undefined");
}

TEST_F(BrowsedPageTest, AsksForAScriptedTelephoneLinkAsForNoLink)
{
    browse("<title>?</title><a href='tel:123'>x</a><script>document.querySelector('a').click();"
           "setTimeout(() => { document.title = 'still here'; }, 200)</script>");
    wait_for_title("still here");
    EXPECT_TRUE(recorder.has("ask 5 tel:123"));
    EXPECT_FALSE(recorder.has("ask 0 tel:123"));
}

TEST_F(BrowsedPageTest, MayLeadToAnotherPage)
{
    recorder.allow_loads = true;
    server.pages["/other.html"] = {"text/html", "<title>other</title>"};
    browse("<title>first</title><script>onload = () => setTimeout(() => { location = '/other.html'; }, 50)</script>");
    wait_for_title("other");
    EXPECT_EQ(engine->page_state().address.absoluteString(), server.base() + "other.html");
}

TEST_F(BrowsedPageTest, CannotReadFiles)
{
    browse("<title>?</title><img src='file:///etc/hostname' onload='document.title = \"read\"' "
           "onerror='document.title = \"refused\"'>");
    wait_for_title("refused");
}

TEST_F(BrowsedPageTest, FromARemoteServerCannotLeadToThisMachine)
{
    recorder.allow_loads = true;
    server.pages["/secret.html"] = {"text/html", "a secret"};
    engine->load_html("<script>setTimeout(() => location = '" + server.base() + "secret.html', 100)</script>",
                      NSURL::URLWithString("http://elsewhere.example/"));
    wait_for("finish");

    ASSERT_TRUE(platform.loop().run_until([&] { return !recorder.refusals.empty(); }, 90));
    EXPECT_EQ(recorder.refusals[0], "navigation " + server.base() + "secret.html");
    EXPECT_TRUE(server.asked.empty());
}

TEST_F(BrowsedPageTest, WhoseProcessIsKilledIsReportedAndCanBeReloaded)
{
    browse("<title>here</title>");
    recorder.heard.clear();
    webkit_web_view_terminate_web_process(web_view_of(*engine));
    wait_for("died: the page's process was ended");
    EXPECT_FALSE(engine->page_state().has_content);

    engine->reload();
    wait_for("finish");
    EXPECT_TRUE(engine->page_state().has_content);
}

TEST_F(BrowsedPageTest, ThatAnswersWithADownloadFailsAndSavesNothing)
{
    server.pages["/file"] = {"application/octet-stream", "bytes"};
    engine->load_address(NSURL::URLWithString(server.base() + "file"));
    wait_for("fail");
    EXPECT_FALSE(engine->page_state().has_content);
}

} // namespace
} // namespace qoro::test
