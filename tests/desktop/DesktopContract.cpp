#include "Places.h"
#include "tests/contract/PageContract.h"
#include "tests/contract/PlayerContract.h"
#include "tests/contract/VolumeContract.h"
#include "tests/desktop/support/Desktop.h"

#include "desktop/DesktopPlatform.h"
#include "desktop/cache/VideoCache.h"
#include "desktop/cache/VideoDownload.h"
#include "desktop/screen/WidgetSource.h"
#include "tests/desktop/app/Command.h"
#include "tests/desktop/media/SoundServer.h"
#include "tests/desktop/media/VideoServer.h"
#include "views/ViewNode.h"

#include <webkit/webkit.h>

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>

// The platform contract on the desktop: real servers, a real page, and a sound server for the tests of the volume.

namespace qoro::test
{

namespace
{

/// Seconds. Every wait is far shorter; only a hang reaches this.
constexpr double Patience = 90;
/// Seconds. run_until() evaluates its condition after each iteration only; a timer of this interval forces iterations.
constexpr double Turn = 0.005;
/// Port 9 (discard, RFC 863), on which no usual machine runs a server.
constexpr const char* NobodyThere = "http://127.0.0.1:9/";

/// The test video of VideoSeconds (4 s). The last two seconds require the second half of the file.
std::string clip()
{
    std::ifstream file(QORO_SOURCE_DIR "/tests/desktop/media/clips/colours.mp4", std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// Does nothing: real players report their own state, and a real device cannot be changed.
struct NoControls final : SessionControls {
    void bring_news(const MPMoviePlayerController&, const PlayerNews&) override {}
    void change_device(const DeviceChange&) override {}
};

/// Starts a sound server if the test needs the volume. Must run before the platform is created.
std::unique_ptr<SoundServer> sound_for(const ContractNeeds& needs)
{
    if (needs.volume)
        return std::make_unique<SoundServer>();
    without_sound_server();
    return nullptr;
}

DesktopPlatform::Options options_for(const ContractNeeds& needs, const ScratchFolder& scratch)
{
    DesktopPlatform::Options options;
    options.silent = true;
    options.allow_private_network = true; // the test servers are on loopback
    options.video_cache.folder = scratch.path("videos");
    options.calendar = {.folder = scratch.path("calendar"), .allowed = needs.calendar};
    options.last_requests_seconds = 0;    // some test servers never answer
    options.system_volume = needs.volume; // the tests change it through the sound server
    return options;
}

class DesktopContract final : public ContractPlatform
{
public:
    explicit DesktopContract(const ContractNeeds& needs)
        : sound_(sound_for(needs)), platform_(options_for(needs, scratch_))
    {
        VideoServer::Answer video;
        video.body = clip();
        if (needs.clip == Clip::Stalling)
            video.holds_at = video.body.size() * 7 / 10;
        if (needs.clip == Clip::Breaking || needs.clip == Clip::Broken)
            video.cuts_at = video.body.size() * 6 / 10;
        server_.serve("/v.mp4", video);
        server_.serve("/found", {.body = FoundBody, .type = "text/plain"});
        server_.serve("/silent", {.body = "", .silent = true});
        server_.serve("/page.html", {.body = "<html><head></head><body>mraid.js</body></html>", .type = "text/html"});
        if (needs.copy) {
            VideoCache cache({.folder = scratch_.path("videos")});
            EXPECT_EQ(VideoDownload().fetch(cache, copied_address()).error, "");
        }
        if (sound_) {
            EXPECT_TRUE(sound_->runs());
            // PulseVolume subscribes to volume changes from within the loop.
            let_pass(0.2);
        }
    }

    Platform& platform() override { return platform_; }
    SessionControls& controls() override { return controls_; }

    bool until(const std::function<bool()>& condition) override
    {
        const TimerId turns = platform_.loop().start_timer(Turn, true, [] {});
        const bool holds = platform_.loop().run_until(condition, Patience);
        platform_.loop().stop_timer(turns);
        return holds;
    }
    void let_pass(double seconds) override
    {
        platform_.loop().run_until([] { return false; }, seconds);
    }

    NSURL video() override { return NSURL::URLWithString(server_.address("/v.mp4")); }
    void data_comes_again() override { server_.release(); }
    void it_can_be_played_again() override { server_.serve("/v.mp4", {.body = clip()}); }

    std::string address(Address what) override
    {
        switch (what) {
        case Address::Found:
            return server_.address("/found");
        case Address::NotFound:
            return server_.address("/missing");
        case Address::NobodyThere:
            return NobodyThere;
        case Address::Silent:
            return server_.address("/silent");
        }
        std::abort();
    }

    std::string copied_address() override { return server_.address("/v.mp4"); }

    void viewer_sets_volume(float volume) override
    {
        sound_->pactl("set-sink-volume nothing " + std::to_string(std::lround(volume * 100)) + "%");
    }

    std::string slow_page() override { return "<img src='" + server_.address("/silent") + "'>"; }

    std::string page_address() override { return server_.address("/page.html"); }
    bool script_starts(QoroVideoWebViewController& ad) override
    {
        const double end = platform_.loop().now() + Patience;
        while (run(ad, "if (document.readyState !== 'complete') throw 0; qoroPlayer; window.heard = {};"
                       "window.all = [];") == std::nullopt) {
            if (platform_.loop().now() > end)
                return false;
            let_pass(Turn);
        }
        return true;
    }
    void script_listens(QoroVideoWebViewController& ad, const std::string& event) override
    {
        const std::string name = "'" + event + "'";
        EXPECT_TRUE(run(ad, "heard[" + name + "] = data => { all.push(" + name + " + ' ' + JSON.stringify(data)); };" +
                                "await qoroPlayer.addEventListener(" + name + ", heard[" + name + "]);"));
    }
    void script_stops_listening(QoroVideoWebViewController& ad, const std::string& event) override
    {
        const std::string name = "'" + event + "'";
        EXPECT_TRUE(run(ad, "await qoroPlayer.removeEventListener(" + name + ", heard[" + name + "]);"));
    }
    std::optional<std::string> script_says(QoroVideoWebViewController& ad, const std::string& message) override
    {
        // Bypasses the script library, which sends only well-formed messages.
        return run(ad, "const said = " + message +
                           "; const sent = Array.isArray(said) && said.length ? {command: said[0], args: said.slice(1)}"
                           " : said; return await new Promise((done, refused) =>"
                           " qoroBridge(JSON.stringify(sent) ?? '', (error, json) =>"
                           " error === null ? done(json) : refused(new Error(error))));");
    }
    std::vector<std::string> script_heard(QoroVideoWebViewController& ad) override
    {
        std::vector<std::string> lines;
        std::istringstream text(run(ad, "return all.map(line => line + '\\n').join('');").value_or("the page is gone"));
        for (std::string line; std::getline(text, line);)
            lines.push_back(line);
        return lines;
    }

private:
    struct Result {
        bool came = false;
        std::optional<std::string> text;
    };

    /// Runs the body of an asynchronous function in the ad's page.
    /// @return its return value as text; absent if it throws
    std::optional<std::string> run(QoroVideoWebViewController& ad, const std::string& body)
    {
        GtkWidget* const frame = ad.webView().node()->web->widget_source()->widget();
        EXPECT_TRUE(until([&] { return gtk_widget_get_first_child(frame); })) << "no page has begun";
        auto* view = WEBKIT_WEB_VIEW(gtk_widget_get_first_child(frame));
        // Shared with the callback: if the page never answers, the result outlives this call.
        auto* shared = new std::shared_ptr<Result>(std::make_shared<Result>());
        const std::shared_ptr<Result> result = *shared;
        webkit_web_view_call_async_javascript_function(
            view, body.data(), static_cast<gssize>(body.size()), nullptr, nullptr, nullptr, nullptr,
            [](GObject* of, GAsyncResult* finished, void* data) {
                const std::unique_ptr<std::shared_ptr<Result>> into(static_cast<std::shared_ptr<Result>*>(data));
                JSCValue* value =
                    webkit_web_view_call_async_javascript_function_finish(WEBKIT_WEB_VIEW(of), finished, nullptr);
                (*into)->came = true;
                if (!value)
                    return;
                char* text = jsc_value_to_string(value);
                (*into)->text = text;
                g_free(text);
                g_object_unref(value);
            },
            shared);
        EXPECT_TRUE(until([&] { return result->came; })) << body;
        return result->text;
    }

    const ScratchFolder scratch_;
    const std::unique_ptr<SoundServer> sound_;
    VideoServer server_;
    NoControls controls_;
    DesktopPlatform platform_;
};

std::unique_ptr<ContractPlatform> make(const ContractNeeds& needs)
{
    const bool started = start_desktop();
    EXPECT_TRUE(started) << "these tests need a display";
    return std::make_unique<DesktopContract>(needs);
}

constexpr ContractKind DesktopKind{"Desktop", make};

} // namespace

INSTANTIATE_TEST_SUITE_P(On, LoopContract, testing::Values(DesktopKind), name_of_kind);
INSTANTIATE_TEST_SUITE_P(On, PlayerContract, testing::Values(DesktopKind), name_of_kind);
INSTANTIATE_TEST_SUITE_P(On, VolumeContract, testing::Values(DesktopKind), name_of_kind);
INSTANTIATE_TEST_SUITE_P(On, FetchContract, testing::Values(DesktopKind), name_of_kind);
INSTANTIATE_TEST_SUITE_P(On, CacheContract, testing::Values(DesktopKind), name_of_kind);
INSTANTIATE_TEST_SUITE_P(On, CalendarContract, testing::Values(DesktopKind), name_of_kind);
INSTANTIATE_TEST_SUITE_P(On, TextContract, testing::Values(DesktopKind), name_of_kind);
INSTANTIATE_TEST_SUITE_P(On, PageContract, testing::Values(DesktopKind), name_of_kind);
INSTANTIATE_TEST_SUITE_P(On, BrowserContract, testing::Values(DesktopKind), name_of_kind);
INSTANTIATE_TEST_SUITE_P(On, ScriptContract, testing::Values(DesktopKind), name_of_kind);

} // namespace qoro::test
