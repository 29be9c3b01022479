#include "desktop/net/AdServer.h"
#include "desktop/net/ContentType.h"
#include "tests/desktop/net/RawHttp.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <fstream>

using namespace qoro;
using qoro::test::converse;

namespace fs = std::filesystem;

namespace
{
class AdServerTest : public testing::Test
{
protected:
    AdServerTest()
    {
        std::string pattern = (fs::temp_directory_path() / "qoro-ad-XXXXXX").string();
        root = mkdtemp(pattern.data());
        fs::create_directories(root / "ad" / "sub");
        write("secret.txt", "secret");
        write("ad/page.html", "<p>page</p>");
        write("ad/sub/a file.txt", "deep");
        write("ad/clip.mp4", "0123456789");
        fs::create_symlink(root / "secret.txt", root / "ad" / "way-out.txt");
        fs::create_symlink(root, root / "ad" / "way-up");
        fs::create_symlink("page.html", root / "ad" / "inside.html");
        server = std::make_unique<AdServer>(AdServerContent{.folder = (root / "ad").string(), .script = "library"});
        server->set_trackers({"/t/start", "/t/at/{CurrentTime}/x"});
    }
    ~AdServerTest() override { fs::remove_all(root); }

    void write(const std::string& name, const std::string& content) const
    {
        std::ofstream(root / name, std::ios::binary) << content;
    }

    std::string ask(const std::string& method, const std::string& target, const std::string& more = "") const
    {
        const int port = test::port_of(server->base());
        return converse(port, method + " " + target + " HTTP/1.1\r\nHost: 127.0.0.1:" + std::to_string(port) +
                                  "\r\nConnection: close\r\n" + more + "\r\n");
    }
    std::string get(const std::string& target, const std::string& more = "") const { return ask("GET", target, more); }

    fs::path root;
    std::unique_ptr<AdServer> server;
};

std::string status_of(const std::string& answer)
{
    return answer.substr(0, std::string("HTTP/1.1 200").size());
}

std::string body_of(const std::string& answer)
{
    return answer.substr(answer.find("\r\n\r\n") + 4);
}

bool has_header(const std::string& answer, const std::string& header)
{
    return answer.find("\r\n" + header + "\r\n") != std::string::npos;
}
} // namespace

TEST_F(AdServerTest, ATrackersAnswerClosesItsConnection)
{
    const int port = test::port_of(server->base());
    const std::string answer =
        converse(port, "GET /t/start HTTP/1.1\r\nHost: 127.0.0.1:" + std::to_string(port) + "\r\n\r\n");
    EXPECT_EQ(status_of(answer), "HTTP/1.1 204");
    EXPECT_NE(answer.find("\r\nConnection: close\r\n"), std::string::npos) << answer;
}

TEST_F(AdServerTest, ServesAFileOfTheFolderWithItsType)
{
    const std::string answer = get("/page.html");
    EXPECT_EQ(status_of(answer), "HTTP/1.1 200");
    EXPECT_EQ(body_of(answer), "<p>page</p>");
    EXPECT_TRUE(has_header(answer, "Content-Type: text/html; charset=utf-8")) << answer;
    EXPECT_TRUE(has_header(answer, "Content-Length: 11")) << answer;
}

TEST_F(AdServerTest, TheQueryDoesNotChooseTheFile)
{
    EXPECT_EQ(body_of(get("/page.html?cache=../secret.txt")), "<p>page</p>");
}

TEST_F(AdServerTest, EscapesInAPathAreDecoded)
{
    EXPECT_EQ(body_of(get("/sub/a%20file.txt")), "deep");
}

TEST_F(AdServerTest, NothingOutsideTheFolderIsServed)
{
    EXPECT_EQ(status_of(get("/../secret.txt")), "HTTP/1.1 404");
    EXPECT_EQ(status_of(get("/sub/../../secret.txt")), "HTTP/1.1 404");
    EXPECT_EQ(status_of(get("/%2e%2e/secret.txt")), "HTTP/1.1 404");
    EXPECT_EQ(status_of(get("/..%2fsecret.txt")), "HTTP/1.1 404");
    EXPECT_EQ(status_of(get("//etc/hostname")), "HTTP/1.1 404");
    EXPECT_EQ(status_of(get("/%00")), "HTTP/1.1 404");
    EXPECT_EQ(status_of(get("/%zz")), "HTTP/1.1 400");
}

TEST_F(AdServerTest, NoSymbolicLinkLeadsOutOfTheFolder)
{
    EXPECT_EQ(status_of(get("/way-out.txt")), "HTTP/1.1 404");
    EXPECT_EQ(status_of(get("/way-up/secret.txt")), "HTTP/1.1 404");
    EXPECT_EQ(status_of(get("/way-up/ad/page.html")), "HTTP/1.1 200");
    EXPECT_EQ(body_of(get("/inside.html")), "<p>page</p>");
}

TEST_F(AdServerTest, AFolderIsNotListed)
{
    EXPECT_EQ(status_of(get("/")), "HTTP/1.1 404");
    EXPECT_EQ(status_of(get("/sub")), "HTTP/1.1 404");
    EXPECT_EQ(status_of(get("/sub/")), "HTTP/1.1 404");
}

TEST_F(AdServerTest, ARequestWithAnotherHostNameIsRefused)
{
    const int port = test::port_of(server->base());
    const std::string answer =
        converse(port, "GET /page.html HTTP/1.1\r\nHost: rebound.example:" + std::to_string(port) +
                           "\r\nConnection: close\r\n\r\n");
    EXPECT_EQ(status_of(answer), "HTTP/1.1 403");
}

TEST_F(AdServerTest, HeadGivesTheSizeAndNoBody)
{
    const std::string answer = ask("HEAD", "/clip.mp4");
    EXPECT_EQ(status_of(answer), "HTTP/1.1 200");
    EXPECT_TRUE(has_header(answer, "Content-Length: 10")) << answer;
    EXPECT_TRUE(has_header(answer, "Accept-Ranges: bytes")) << answer;
    EXPECT_EQ(body_of(answer), "");
}

TEST_F(AdServerTest, ARangeIsServedAlone)
{
    const std::string answer = get("/clip.mp4", "Range: bytes=2-4\r\n");
    EXPECT_EQ(status_of(answer), "HTTP/1.1 206");
    EXPECT_TRUE(has_header(answer, "Content-Range: bytes 2-4/10")) << answer;
    EXPECT_TRUE(has_header(answer, "Content-Type: video/mp4")) << answer;
    EXPECT_EQ(body_of(answer), "234");
}

TEST_F(AdServerTest, ARangeMayBeOpenAtItsEndOrCountFromTheEnd)
{
    EXPECT_EQ(body_of(get("/clip.mp4", "Range: bytes=7-\r\n")), "789");
    EXPECT_EQ(body_of(get("/clip.mp4", "Range: bytes=-2\r\n")), "89");
    EXPECT_EQ(body_of(get("/clip.mp4", "Range: bytes=8-99\r\n")), "89");
}

TEST_F(AdServerTest, ARangeBeyondTheFileIsRefused)
{
    const std::string answer = get("/clip.mp4", "Range: bytes=10-12\r\n");
    EXPECT_EQ(status_of(answer), "HTTP/1.1 416");
    EXPECT_TRUE(has_header(answer, "Content-Range: bytes */10")) << answer;
}

TEST_F(AdServerTest, ALargeFileArrivesWhole)
{
    std::string large;
    for (int i = 0; i < 300000; ++i)
        large += static_cast<char>('a' + i % 23);
    write("ad/large.bin", large);
    EXPECT_EQ(body_of(get("/large.bin")), large);
    EXPECT_EQ(body_of(get("/large.bin", "Range: bytes=100000-299998\r\n")), large.substr(100000, 199999));
}

TEST_F(AdServerTest, AnEmptyFileIsServed)
{
    write("ad/empty.txt", "");
    const std::string answer = get("/empty.txt");
    EXPECT_EQ(status_of(answer), "HTTP/1.1 200");
    EXPECT_EQ(body_of(answer), "");
}

TEST_F(AdServerTest, TheScriptLibraryIsServedForEveryMraidScriptThatIsNotAFile)
{
    EXPECT_EQ(body_of(get("/qoro-player.js")), "library");
    EXPECT_EQ(body_of(get("/sub/mraid.js")), "library");
    EXPECT_TRUE(has_header(get("/mraid.js"), "Content-Type: text/javascript; charset=utf-8"));
    EXPECT_EQ(body_of(ask("HEAD", "/mraid.js")), "");
    write("ad/mraid.js", "its own");
    EXPECT_EQ(body_of(get("/mraid.js")), "its own");
}

TEST_F(AdServerTest, ATrackerIsAnsweredWithoutABodyAndRecordedAsItWasSent)
{
    EXPECT_EQ(status_of(get("/t/start?at=0.000000&app=Host%20App")), "HTTP/1.1 204");
    EXPECT_EQ(status_of(get("/t/at/12.5/x")), "HTTP/1.1 204");
    const auto hits = server->hits();
    ASSERT_EQ(hits.size(), 2u);
    EXPECT_EQ(hits[0].method, "GET");
    EXPECT_EQ(hits[0].target, "/t/start?at=0.000000&app=Host%20App");
    EXPECT_EQ(hits[0].status, 204u);
    EXPECT_TRUE(hits[0].tracker);
    EXPECT_LE(hits[0].time, hits[1].time);
    EXPECT_EQ(hits[1].target, "/t/at/12.5/x");
}

TEST_F(AdServerTest, AnythingElseIsNotFoundAndRecordedToo)
{
    EXPECT_EQ(status_of(get("/t/other")), "HTTP/1.1 404");
    const auto hits = server->hits();
    ASSERT_EQ(hits.size(), 1u);
    EXPECT_EQ(hits[0].status, 404u);
    EXPECT_FALSE(hits[0].tracker);
}

TEST_F(AdServerTest, FilesAreOnlyRead)
{
    EXPECT_EQ(status_of(ask("DELETE", "/page.html")), "HTTP/1.1 405");
    EXPECT_EQ(status_of(ask("POST", "/page.html", "Content-Length: 0\r\n")), "HTTP/1.1 405");
    EXPECT_TRUE(fs::exists(root / "ad" / "page.html"));
}

TEST_F(AdServerTest, ReportsAHitOnce)
{
    std::atomic<int> hits = 0;
    AdServer reporting({.folder = (root / "ad").string(), .script = ""},
                       [&hits](const AdServerHit& hit) { hits += hit.tracker ? 1 : 100; });
    reporting.set_trackers({"/t"});
    const int port = test::port_of(reporting.base());
    converse(port, "GET /t HTTP/1.1\r\nHost: 127.0.0.1:" + std::to_string(port) + "\r\nConnection: close\r\n\r\n");
    EXPECT_EQ(hits, 1);
}

TEST_F(AdServerTest, AMissingFolderIsAnErrorWithAReason)
{
    const AdServer nowhere({.folder = (root / "no").string(), .script = ""});
    EXPECT_FALSE(nowhere.listens());
    EXPECT_EQ(nowhere.base(), "");
    EXPECT_EQ(nowhere.error(), "No such file or directory");
}

TEST(ContentTypeTest, DependsOnTheExtensionWhateverItsCase)
{
    EXPECT_STREQ(content_type_of("/a/CLIP.MP4"), "video/mp4");
    EXPECT_STREQ(content_type_of("icon.png"), "image/png");
    EXPECT_STREQ(content_type_of("/a.html/b"), "application/octet-stream");
    EXPECT_STREQ(content_type_of(""), "application/octet-stream");
}
