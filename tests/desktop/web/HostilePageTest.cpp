#include "Places.h"
#include "desktop/DesktopPlatform.h"
#include "desktop/net/Reach.h"
#include "formats/JsonText.h"
#include "host/Session.h"
#include "tests/desktop/net/NamesHere.h"
#include "tests/desktop/web/PageTest.h"

#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>

namespace qoro::test
{
namespace
{

struct NoControls final : SessionControls {
    void bring_news(const MPMoviePlayerController&, const PlayerNews&) override {}
    void change_device(const DeviceChange&) override {}
};

DesktopPlatform::Options silent()
{
    DesktopPlatform::Options options;
    options.silent = true;
    options.device.can_open = std::vector<std::string>{"https:", "tel:", "sms:"};
    return options;
}

std::string replaced(std::string text, const std::string& what, const std::string& by)
{
    return text.replace(text.find(what), what.size(), by);
}

/// An ad whose page is tests/desktop/web/hostile.html. Records everything the platform reports about it.
class HostilePage : public testing::Test, private EventSink
{
protected:
    static void SetUpTestSuite() { ASSERT_TRUE(start_desktop()) << "these tests need a display"; }

    HostilePage()
    {
        std::ofstream(file_) << "a secret";
        platform_.display().show(); // a hidden page loads no video
        platform_.set_event_sink(this);
        const auto ad = std::make_shared<QoroVideoAd>();
        ad->strVideoUrl = server.base() + "ad.mp4";
        ad->fVideoWidth = 320;
        ad->fVideoHeight = 180;
        ad->portraitModeType = VIDEO_AND_WEBVIEW;
        ad->portraitVideoPos = TOP;
        ad->strBackgroundColor = "4279704105";
        session_ = std::make_unique<Session>(platform_, controls_, HostSetup{}, ad);
        platform_.dispatch([&] { session_->open(0); });
        platform_.loop().run_until([&] { return !server.asked.empty(); }, 90);
        server.asked.clear(); // the request for the ad's own video
    }
    ~HostilePage() override
    {
        platform_.set_event_sink(nullptr);
        session_.reset();
        std::filesystem::remove(file_);
    }

    /// Loads the page with an address as its base URL and waits until it has tried everything.
    void show_from(const std::string& address)
    {
        std::ostringstream page;
        page << std::ifstream(QORO_SOURCE_DIR "/tests/desktop/web/hostile.html").rdbuf();
        std::string html = replaced(page.str(), "mraid.js", script_library_address);
        html =
            replaced(replaced(html, "\"SERVER\"", "\"" + server.base() + "\""), "\"FILE\"", "\"file://" + file_ + "\"");
        show(html, address, "too many");
    }

    /// Loads a page with an address as its base URL and waits for a report of "web" or "mraid" that contains `last`.
    void show(const std::string& html, const std::string& address, const std::string& last)
    {
        platform_.dispatch([&] {
            session_->controller()->strBaseUrl = address;
            session_->controller()->webView().loadHTMLString(html, NSURL::URLWithString(address));
        });
        EXPECT_TRUE(platform_.loop().run_until([&] { return has("web", last) || has("mraid", last); }, 90)) << all();
    }

    bool has(const std::string& what, const std::string& part) const { return count(what, part) > 0; }
    std::ptrdiff_t count(const std::string& what, const std::string& part) const
    {
        return std::count_if(lines.begin(), lines.end(), [&](const std::string& line) {
            return line.starts_with(what + " ") && line.find(part) != std::string::npos;
        });
    }
    std::string all() const
    {
        std::string text;
        for (const std::string& line : lines)
            text += "  " + line + "\n";
        return text;
    }

    /// The requests the server received, except those for the ad's own video, which is retried because it fails.
    std::vector<std::string> asked_by_page() const
    {
        std::vector<std::string> asked = server.asked;
        std::erase(asked, "/ad.mp4");
        return asked;
    }

    std::vector<std::string> lines;
    LocalServer server;
    /// Allows the local server, as for an ad whose video is on this machine.
    const NamedHosts named{{server.base()}};

private:
    void receive(const Event& event) override
    {
        describe(event, [this](std::string_view what, std::span<const Field> fields) {
            std::string line(what);
            for (const Field& field : fields) {
                line += " ";
                append_json(line, field.content);
            }
            lines.push_back(line);
        });
    }

    const std::string file_ =
        (std::filesystem::temp_directory_path() / ("qoro-hostile-" + std::to_string(getpid()) + ".txt")).string();
    NoControls controls_;
    DesktopPlatform platform_{silent()};
    std::unique_ptr<Session> session_;
};

TEST_F(HostilePage, GetsNothingAndEachRefusalIsTraced)
{
    show_from("http://ads.example/hostile.html");

    for (const char* call : {R"("open" ["https://shop.example/by-click"])", R"("open" ["tel:+49301234"])",
                             R"("open" ["sms:+49301234?body=x"])", R"("playVideo" ["https://shop.example/video.mp4"])",
                             R"("createCalendarEvent")", R"("storePicture")"})
        EXPECT_TRUE(has("mraid", std::string(R"("refused" )") + call)) << call;
    EXPECT_TRUE(has("mraid", "\"open open open playVideo createCalendarEvent storePicture\""))
        << "the page hears of each as an error";
    for (const char* path : {"img", "script", "style", "fetch", "xhr", "beacon", "events", "worker", "video.mp4"})
        EXPECT_TRUE(has("web", R"("refused" "request" ")" + server.base() + path)) << path;
    EXPECT_TRUE(has("web", R"("refused" "request" ")" + replaced(server.base(), "http", "ws") + "socket"));
    EXPECT_TRUE(has("web", R"("refused" "navigation" ")" + server.base() + "frame"));
    for (const char* element : {"?img", "?script", "?frame", "?fetch", "?xhr"})
        EXPECT_TRUE(has("web", element)) << element;
    EXPECT_TRUE(has("web", R"("window" "https://popup.example/by-script")"));
    EXPECT_TRUE(has("web", R"("window" "https://popup.example/by-link")"));
    for (const std::string& address :
         {std::string("https://away.example/by-link"), std::string("https://away.example/by-script"),
          std::string("data:text/html,gone"), std::string("http://ads.example/by-name.html"),
          server.base() + "by-script", std::string("about:srcdoc"), std::string("about:blank#x"),
          std::string("about:blank?x"), std::string("about:blank#y"), std::string("about:blank"),
          std::string("http://ads.example/hostile.html#posted"), std::string("data:application/octet-stream,x")})
        EXPECT_TRUE(has("web", R"("refused" "navigation" ")" + address + "\"")) << address;
    EXPECT_EQ(count("web", R"("refused" "navigation" "http://ads.example/hostile.html")"), 4)
        << "href, assign, replace and a link";
    EXPECT_FALSE(has("web", "#part"));
    for (const char* kind : {R"("dialog" "won")", R"("dialog" "won?")", R"("dialog" "print")"})
        EXPECT_TRUE(has("web", std::string(R"("refused" )") + kind)) << kind;
    for (const char* video : {"?video", "next.mp4", "http://127.0.0.{Zulix-Seq}/track",
                              "http://\xEF\xBC\x91\xEF\xBC\x92\xEF\xBC\x97.0.0.1/track", "http://%6cocalhost/track"})
        EXPECT_TRUE(has("web", video)) << video;
    EXPECT_TRUE(has("web", R"("refused" "message" "it is none of the script library's")"));
    EXPECT_TRUE(has("mraid", "still here#part")) << "the page stands where it stood";

    EXPECT_THAT(asked_by_page(), testing::IsEmpty());
    EXPECT_FALSE(has("openURL", ""));
    EXPECT_FALSE(has("super", "createCalendarEvent"));
    if (HasFailure())
        ADD_FAILURE() << all();
}

TEST_F(HostilePage, ThatBecomesAFramesetIsNotReplacedByWhatItsServerSends)
{
    server.pages["/hostile.html"] = {"text/html", "<script>qoroBridge(JSON.stringify("
                                                  "{command: 'evil', args: []}), () => {})</script>"};
    show("<!DOCTYPE html><html><head><script src='" + std::string(script_library_address) +
             "'></script></head><body><script>onload = () => setTimeout(() => {"
             "document.documentElement.replaceChild(document.createElement('frameset'), document.body);"
             "location.hash = 'y'; setTimeout(() => mraid.expand('still here'), 500); }, 100);"
             "</script></body></html>",
         server.base() + "hostile.html", "still here");

    EXPECT_TRUE(has("web", R"("refused" "navigation" ")" + server.base() + "hostile.html")) << all();
    EXPECT_FALSE(has("web", "evil")) << all();
}

/// A page that requests something from a host in every possible way and then reports. On a busy machine the web engine
/// occasionally loses an answer, so the page waits at most ten seconds.
std::string asking(const std::string& host)
{
    return "<!DOCTYPE html><html><head><script src='" + std::string(script_library_address) +
           "'></script></head><body><img src='http://" + host + "/img'><script src='http://" + host +
           "/script'></script><script>const quiet = () => {};"
           "const socket = new WebSocket('ws://" +
           host +
           "/socket'), over = new Promise(done => { socket.onerror = socket.onclose = done; });"
           "const worker = new Worker(URL.createObjectURL(new Blob([`fetch('http://" +
           host +
           "/worker', {mode: 'no-cors'}).catch(() => 0).then(() => postMessage(0))`])));"
           "const heard = new Promise(done => { worker.onmessage = done; });"
           "Promise.all([over, heard, fetch('http://" +
           host +
           "/fetch', {mode: 'no-cors'}).catch(quiet)]).then(() => mraid.expand('all asked'));"
           "setTimeout(() => mraid.expand('all asked'), 10000);"
           "</script></body></html>";
}

TEST_F(HostilePage, ReachesNothingByANameThatResolvesToThisMachine)
{
    const NamesHere names;
    const std::string nas = replaced(replaced(server.base(), "http://127.0.0.1", "nas.example"), "/", "");
    show(asking(nas), "http://ads.example/page.html", "all asked");

    EXPECT_THAT(asked_by_page(), testing::IsEmpty());
    EXPECT_TRUE(has("web", R"("refused" "request" "http://)" + nas + ", which is 127.0.0.1:")) << all();
}

TEST_F(HostilePage, OfThisMachineReachesItByNameToo)
{
    const NamesHere names;
    const std::string nas = replaced(replaced(server.base(), "http://127.0.0.1", "nas.example"), "/", "");
    show(asking(nas), server.base() + "page.html", "all asked");

    for (const char* path : {"/img", "/script", "/fetch", "/worker", "/socket"})
        EXPECT_TRUE(std::find(server.asked.begin(), server.asked.end(), path) != server.asked.end()) << path << all();
}

TEST_F(HostilePage, ReachesNothingThatAnEarlierPageWasAllowed)
{
    const NamesHere names;
    const std::string nas = replaced(replaced(server.base(), "http://127.0.0.1", "nas.example"), "/", "");
    show(asking(nas), server.base() + "page.html", "all asked");
    server.asked.clear();
    lines.clear();

    show(asking(nas), "http://ads.example/page.html", "all asked");

    EXPECT_THAT(asked_by_page(), testing::IsEmpty());
}

TEST_F(HostilePage, ReachesTheMachineThatItComesFrom)
{
    server.pages["/hostile.html"] = {"text/html", "<script>qoroBridge(JSON.stringify("
                                                  "{command: 'evil', args: []}), () => {})</script>"};
    show_from(server.base() + "hostile.html");

    for (const char* path :
         {"/img", "/script", "/style", "/fetch", "/xhr", "/beacon", "/worker", "/video.mp4", "/socket", "/hidden"})
        EXPECT_TRUE(std::find(server.asked.begin(), server.asked.end(), path) != server.asked.end()) << path;
    EXPECT_LE(std::count(server.asked.begin(), server.asked.end(), "/hostile.html"), 1)
        << "its server can't send another in its place; a frame may ask, and gets nothing";
    EXPECT_FALSE(has("web", "evil"));
    EXPECT_FALSE(has("web", R"("refused" "request" "http)"));
}

} // namespace
} // namespace qoro::test
