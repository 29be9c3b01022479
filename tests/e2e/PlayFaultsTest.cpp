#include "Places.h"
#include "tests/desktop/media/VideoServer.h"
#include "tests/e2e/PlayedAd.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <ostream>
#include <string>
#include <thread>

// Faults around an ad, tested with the real program: its trace reports the fault, and the viewer can leave.

namespace qoro::test
{

namespace
{

const std::string DemoAd = QORO_SOURCE_DIR "/examples/demo/ad.json";

std::string clip()
{
    std::ifstream file(QORO_SOURCE_DIR "/tests/desktop/media/clips/colours.mp4", std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// Whether none of the processes is running; waits briefly for orphans to notice and exit.
bool all_gone(const std::vector<int>& processes)
{
    const auto until = std::chrono::steady_clock::now() + std::chrono::duration<double>(PlayedAd::Patience);
    for (const int process : processes)
        while (true) {
            std::ifstream stat("/proc/" + std::to_string(process) + "/stat");
            const std::string line{std::istreambuf_iterator<char>(stat), {}};
            const std::size_t name_end = line.rfind(") ");
            if (name_end == std::string::npos || line[name_end + 2] == 'Z')
                break;
            if (std::chrono::steady_clock::now() > until) {
                ADD_FAILURE() << "still runs: " << line;
                return false;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
    return true;
}

// ------------------------------------------------------------------------------------------- faulty videos and pages

/// The content of the ad's server, and what the trace reports.
struct Fault {
    const char* name;
    VideoServer::Answer video;
    VideoServer::Answer page;
    VideoServer::Answer icon;
    /// Members and values of trace lines, all of which must appear.
    std::vector<nlohmann::json> reports;
    /// Whether the server runs.
    bool server_lives = true;

    friend void PrintTo(const Fault& fault, std::ostream* out) { *out << fault.name; }
};

VideoServer::Answer whole_video()
{
    return {.body = clip()};
}

VideoServer::Answer page_of(const std::string& html)
{
    return {.body = html, .type = "text/html"};
}

const VideoServer::Answer GoodPage = page_of("<html><head></head><body>mraid.js</body></html>");
const VideoServer::Answer Missing{.body = "there is no such thing", .status = 404, .type = "text/plain"};
const VideoServer::Answer NoImage{.body = "not an image at all", .type = "image/png"};

VideoServer::Answer video_that(void (*is_changed)(VideoServer::Answer& video))
{
    VideoServer::Answer video = whole_video();
    is_changed(video);
    return video;
}

const nlohmann::json Plays{{"what", "js"}, {"event", "video_play"}};
const nlohmann::json Loaded{{"what", "js"}, {"event", "video_loaded"}};
const nlohmann::json LacksData{{"what", "log"}, {"message", "video interrupted"}};
const nlohmann::json Fails{{"what", "player"}, {"do", "failed"}};
const nlohmann::json PageFails{{"what", "log"}, {"message", "InApp failAdRequest"}};
const nlohmann::json ShowsNothing{{"what", "page"}, {"html", nullptr}};
const nlohmann::json Rejected{{"what", "fault"}};
const nlohmann::json AsksForTheIcon{{"what", "fetch"}, {"for", "brandIcon"}};

std::vector<Fault> faults()
{
    return {
        {"AServerThatStallsAtTheBeginning",
         video_that([](auto& video) { video.holds_at = video.body.size() * 3 / 10; }),
         GoodPage,
         Missing,
         {Loaded}},
        {"AServerThatStallsInMidFile",
         video_that([](auto& video) { video.holds_at = video.body.size() * 7 / 10; }),
         GoodPage,
         Missing,
         {Plays, LacksData}},
        {"AServerThatHangsUpInMidFile",
         video_that([](auto& video) { video.cuts_at = video.body.size() * 6 / 10; }),
         GoodPage,
         Missing,
         {Plays, Fails}},
        {"HalfAFile",
         video_that([](auto& video) { video.body.resize(video.body.size() * 6 / 10); }),
         GoodPage,
         Missing,
         {Plays, Fails}},
        {"AServerThatNeverAnswers",
         {.body = "x", .silent = true},
         {.body = "x", .silent = true},
         Missing,
         {{{"what", "request"}, {"for", "page"}}}},
        {"AMissingVideo", Missing, GoodPage, Missing, {Fails}},
        {"APageInsteadOfAVideo", page_of("<html>Sorry</html>"), GoodPage, Missing, {Fails}},
        {"AVideoThatIsSaidToBeText",
         video_that([](auto& video) { video.type = "text/plain"; }),
         GoodPage,
         Missing,
         {Plays}},
        {"AMissingPage", whole_video(), Missing, Missing, {Plays, PageFails}},
        {"AnImageInsteadOfAPage",
         whole_video(),
         {.body = "\x89PNG\r\n\x1a\n\xff", .type = "image/png"},
         Missing,
         {Plays, ShowsNothing}},
        {"APageThatIsNotUtf8",
         whole_video(),
         page_of("<html><head></head>\xe4\xf6\xfc</html>"),
         Missing,
         {Plays, ShowsNothing}},
        {"APageThatNamesTheLibraryWithoutAHead",
         whole_video(),
         page_of("<script src='mraid.js'></script>"),
         Missing,
         {Plays, Rejected}},
        {"AnImageThatIsNone", whole_video(), GoodPage, NoImage, {Plays, AsksForTheIcon}},
        {"ADeadServer", {}, {}, {}, {Fails, PageFails, AsksForTheIcon}, false},
    };
}

class PlayFaultTest : public testing::TestWithParam<Fault>
{
};

bool holds(const nlohmann::json& line, const nlohmann::json& members)
{
    for (const auto& [key, value] : members.items())
        if (!line.contains(key) || line[key] != value)
            return false;
    return true;
}

std::string ad_file(const std::string& folder, const VideoServer& server)
{
    const nlohmann::json ad{
        {"strVideoUrl", server.address("/v.mp4")},
        {"strWebViewUrl", server.address("/page.html")},
        {"strBrandIconUrl", server.address("/icon.png")},
        {"fVideoWidth", 320},
        {"fVideoHeight", 180},
        {"portraitModeType", 2},
        {"landscapeModeType", 2},
        {"portraitVideoPos", "TOP"},
        {"bIsAutoStart", true},
        {"strBackgroundColor", "4279704105"},
        // No close button appears: the viewer has the host's own control.
        {"iCloseBtnCountdown", 3600},
        {"iBufferingSufferTime", -1},
        {"arrayCloseTrackingUrls", {"t/close"}},
    };
    const std::string path = folder + "/ad.json";
    std::ofstream(path) << ad;
    return path;
}

} // namespace

TEST_P(PlayFaultTest, IsReportedAndTheViewerLeavesByEscape)
{
    const Fault fault = GetParam();
    const std::string folder = std::filesystem::path(testing::TempDir()) / (std::string("fault-") + fault.name);
    std::filesystem::create_directories(folder);
    auto server = std::make_unique<VideoServer>();
    server->serve("/v.mp4", fault.video);
    server->serve("/page.html", fault.page);
    server->serve("/icon.png", fault.icon);
    const std::string file = ad_file(folder, *server);
    if (!fault.server_lives)
        server.reset();

    PlayedAd ad({file});
    for (const nlohmann::json& expected : fault.reports)
        EXPECT_TRUE(ad.wait_for([&](const nlohmann::json& line) { return holds(line, expected); }).is_object())
            << "never reported: " << expected << "\n"
            << ad.complaints();
    ad.press("Escape");

    EXPECT_EQ(ad.exit_status(), 0) << ad.complaints();
    EXPECT_EQ(ad.hits_of("/t/close"), 1);
    std::filesystem::remove_all(folder);
}

INSTANTIATE_TEST_SUITE_P(Each, PlayFaultTest, testing::ValuesIn(faults()),
                         [](const auto& fault) { return std::string(fault.param.name); });

// ------------------------------------------------------------------------------------------------------- processes

TEST(PlayProcessesTest, AKilledPageIsReportedTheVideoContinuesAndTheViewerLeaves)
{
    PlayedAd ad({DemoAd});
    ASSERT_TRUE(ad.reaches_second(1)) << ad.complaints();
    ASSERT_TRUE(ad.page_hears("video_timeupdate")) << "the page has loaded";

    ASSERT_TRUE(ad.kill_page_process());

    const nlohmann::json died = ad.wait_for([](const nlohmann::json& line) {
        return holds(line, {{"what", "web"}, {"do", "died"}});
    });
    ASSERT_TRUE(died.is_object());
    EXPECT_NE(died.value("reason", ""), "");
    EXPECT_TRUE(ad.reaches_second(3)) << "the video goes on";
    ad.press("Escape");
    EXPECT_EQ(ad.exit_status(), 0) << ad.complaints();
    EXPECT_EQ(ad.hits_of("/t/close"), 1);
}

TEST(PlayProcessesTest, AFloodOfMessagesBlocksNeitherTheVideoNorTheViewer)
{
    const std::string folder = std::filesystem::path(testing::TempDir()) / "busy-page";
    std::filesystem::create_directories(folder);
    VideoServer server;
    server.serve("/v.mp4", whole_video());
    server.serve("/page.html", page_of(R"(<html><head></head><body>mraid.js<script>
const many = JSON.stringify({ command: "note", args: [Object.fromEntries([...Array(6500).keys()].map(n => [n, 0]))] });
(function again() {
    for (let n = 0; n < 1000; ++n)
        qoroBridge(many, () => {});
    setTimeout(again, 0);
})();
</script></body></html>)"));
    PlayedAd ad({ad_file(folder, server)});

    const auto refused = [](const nlohmann::json& line) {
        return holds(line, {{"what", "web"}, {"do", "refused"}, {"kind", "message"}});
    };
    EXPECT_TRUE(ad.wait_for(refused).is_object()) << ad.complaints();
    EXPECT_TRUE(ad.reaches_second(2)) << ad.complaints();
    ad.press("Escape");

    EXPECT_EQ(ad.exit_status(), 0) << ad.complaints();
    EXPECT_EQ(ad.hits_of("/t/close"), 1);
    std::filesystem::remove_all(folder);
}

TEST(PlayProcessesTest, APageIsNotifiedWhenTheHostEndsItsAd)
{
    const std::string folder = std::filesystem::path(testing::TempDir()) / "last-news";
    std::filesystem::create_directories(folder);
    VideoServer server;
    server.serve("/v.mp4", whole_video());
    server.serve("/page.html", page_of(R"(<html><head></head><body>mraid.js<script>
mraid.addEventListener("stateChange", state => mraid.expand(state));
</script></body></html>)"));
    const std::string file = folder + "/ad.json";
    // No tracker, which the program would wait for.
    std::ofstream(file) << nlohmann::json{{"strVideoUrl", server.address("/v.mp4")},
                                          {"strWebViewUrl", server.address("/page.html")},
                                          {"fVideoWidth", 320},
                                          {"fVideoHeight", 180},
                                          {"portraitModeType", 2},
                                          {"landscapeModeType", 2},
                                          {"portraitVideoPos", "TOP"},
                                          {"strBackgroundColor", "4279704105"}};
    PlayedAd ad({file});
    ASSERT_TRUE(ad.reports({{"what", "mraid"}, {"do", "refused"}, {"arguments", {"default"}}})) << ad.complaints();

    ad.terminate();

    EXPECT_EQ(ad.exit_status(), 0) << ad.complaints();
    EXPECT_TRUE(ad.reports({{"what", "mraid"}, {"do", "refused"}, {"arguments", {"hidden"}}}));
    std::filesystem::remove_all(folder);
}

TEST(PlayProcessesTest, AfterAnOrdinaryCloseNothingIsLeftRunning)
{
    PlayedAd ad({DemoAd});
    ASSERT_TRUE(ad.page_hears("video_timeupdate")) << ad.complaints();
    const std::vector<int> processes = ad.processes();
    ASSERT_GT(processes.size(), 1U) << "the page has a process of its own";

    ad.press("Escape");

    EXPECT_EQ(ad.exit_status(), 0) << ad.complaints();
    EXPECT_TRUE(all_gone(processes));
    EXPECT_EQ(ad.processes(), std::vector<int>{});
}

TEST(PlayProcessesTest, TheSystemsRequestToEndClosesTheAdAndLeavesNothingRunning)
{
    PlayedAd ad({DemoAd});
    ASSERT_TRUE(ad.page_hears("video_timeupdate")) << ad.complaints();
    const std::vector<int> processes = ad.processes();

    ad.terminate();

    EXPECT_EQ(ad.exit_status(), 0) << ad.complaints();
    EXPECT_EQ(ad.hits_of("/t/close"), 1);
    EXPECT_TRUE(all_gone(processes));
    EXPECT_EQ(ad.processes(), std::vector<int>{});
}

TEST(PlayProcessesTest, AKilledProgramLeavesNothingRunning)
{
    PlayedAd ad({DemoAd});
    ASSERT_TRUE(ad.page_hears("video_timeupdate")) << ad.complaints();
    const std::vector<int> processes = ad.processes();

    kill(processes.front(), SIGKILL);

    EXPECT_EQ(ad.exit_status(), -1);
    EXPECT_TRUE(all_gone(processes));
}

} // namespace qoro::test
