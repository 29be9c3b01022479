#include "Places.h"
#include "tests/e2e/Picture.h"
#include "tests/e2e/PlayedAd.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <system_error>
#include <unistd.h>
#include <utility>
#include <vector>

// What the program loads and starts for an ad, and in which order.

namespace qoro::test
{

namespace
{

bool has_graphics_card()
{
    std::error_code failed;
    return std::filesystem::exists("/dev/dri", failed) || std::filesystem::exists("/dev/nvidiactl", failed);
}

/// An ad with a video and no page.
class PlayStart : public testing::Test
{
protected:
    PlayStart()
    {
        std::filesystem::create_directories(folder);
        std::filesystem::copy_file(QORO_SOURCE_DIR "/tests/desktop/media/clips/colours.mp4", folder + "/clip.mp4",
                                   std::filesystem::copy_options::overwrite_existing);
        std::ofstream(folder + "/ad.json") << R"({"strVideoUrl": "clip.mp4", "fVideoWidth": 16, "fVideoHeight": 9,
            "portraitModeType": 2, "portraitVideoPos": "TOP", "bIsAutoStart": true})";
    }
    ~PlayStart() override { std::filesystem::remove_all(folder); }

    /// Gives the ad a page below the video, which begins 255 points below the screen's top.
    void add_page(const std::string& html) const
    {
        std::ofstream(folder + "/page.html") << html;
        std::ofstream(folder + "/ad.json") << R"({"strVideoUrl": "clip.mp4", "strWebViewUrl": "page.html",
            "fVideoWidth": 16, "fVideoHeight": 9, "portraitModeType": 2, "portraitVideoPos": "TOP",
            "bIsAutoStart": true, "strBackgroundColor": "4278190080"})";
    }

    std::string ad() const { return folder + "/ad.json"; }
    std::string points_file() const { return folder + "/start.jsonl"; }

    /// When the points that --trace-startup has recorded were reached, in seconds.
    std::map<std::string, double> points() const
    {
        std::map<std::string, double> found;
        std::ifstream file(points_file());
        for (std::string line; std::getline(file, line) && !file.eof();) {
            const nlohmann::json point = nlohmann::json::parse(line);
            found.emplace(point["what"], point["monotonic"]);
        }
        return found;
    }

    const std::string folder = testing::TempDir() + "play-start-" + std::to_string(getpid());
};

/// The files that a process has mapped.
std::string maps_of(int process)
{
    std::ifstream file("/proc/" + std::to_string(process) + "/maps");
    return {std::istreambuf_iterator<char>(file), {}};
}

} // namespace

TEST_F(PlayStart, AnAdWithoutAPageNeedsNoWebEngineNoGraphicsDriverAndNoOtherProcess)
{
    PlayedAd played({ad()});
    ASSERT_TRUE(played.reaches_second(1)) << played.complaints();
    EXPECT_EQ(played.processes().size(), 1U);
    const std::string mapped = maps_of(played.process());
    ASSERT_NE(mapped.find("libgtk-4"), std::string::npos) << "the player's own process is another one";
    for (const char* library : {"libwebkitgtk", "libjavascriptcoregtk", "libLLVM", "swrast_dri"})
        EXPECT_EQ(mapped.find(library), std::string::npos) << library;
}

TEST_F(PlayStart, AVideoIsDecodedWithoutLibavfilterAndLibavformat)
{
    PlayedAd played({ad()});
    ASSERT_TRUE(played.reaches_second(1)) << played.complaints();
    const std::string mapped = maps_of(played.process());
    ASSERT_NE(mapped.find("libavcodec"), std::string::npos) << "another decoder plays";
    for (const char* library : {"libavfilter", "libavformat", "libgstlibav"})
        EXPECT_EQ(mapped.find(library), std::string::npos) << library;
}

TEST_F(PlayStart, ItsStepsAreWrittenDown)
{
    PlayedAd played({ad(), "--trace-startup", points_file()});
    ASSERT_TRUE(played.reaches_second(1)) << played.complaints();

    std::map<std::string, double> at = points();
    for (const auto& [first, then] :
         std::vector<std::pair<const char*, const char*>>{{"linked", "input read"},
                                                          {"input read", "toolkit started"},
                                                          {"input read", "media framework started"},
                                                          {"toolkit started", "platform ready"},
                                                          {"platform ready", "window shown"},
                                                          {"platform ready", "video requested"},
                                                          {"video requested", "first picture decoded"},
                                                          {"window shown", "first picture drawn"},
                                                          {"first picture decoded", "first picture drawn"}}) {
        ASSERT_TRUE(at.contains(first)) << first;
        ASSERT_TRUE(at.contains(then)) << then;
        EXPECT_LE(at[first], at[then]) << first << ", " << then;
    }
    EXPECT_FALSE(at.contains("page begun")) << "the ad has no page";
}

// On a slow machine the page waits half a second at most.
TEST_F(PlayStart, APageBeginsAfterTheFirstPicture)
{
    add_page("<html><head></head><body>page</body></html>");
    PlayedAd played({ad(), "--trace-startup", points_file()});
    ASSERT_TRUE(played.eventually([&] {
        const auto reached = points();
        return reached.contains("page loaded") && reached.contains("first picture decoded");
    }));

    std::map<std::string, double> at = points();
    EXPECT_LT(at["page begun"], at["page loaded"]);
    const bool waited_in_vain = at["page begun"] - at["ad opened"] >= 0.5;
    EXPECT_TRUE(waited_in_vain || at["first picture decoded"] <= at["page begun"]);
}

TEST_F(PlayStart, AnAdWithAPageNeedsNoGraphicsDriverWithoutAGraphicsCard)
{
    if (has_graphics_card())
        GTEST_SKIP() << "this machine has a graphics card";
    add_page("<html><head></head><body>page</body></html>");
    PlayedAd played({ad(), "--trace-startup", points_file()});
    ASSERT_TRUE(played.eventually([&] { return points().contains("page loaded"); })) << played.complaints();

    const std::string mapped = maps_of(played.process());
    ASSERT_NE(mapped.find("libwebkitgtk"), std::string::npos) << "the page is in another program";
    for (const char* library : {"libLLVM", "swrast_dri"})
        EXPECT_EQ(mapped.find(library), std::string::npos) << library;
}

TEST_F(PlayStart, MovementOnAPageLeavesNoTrail)
{
    add_page("<html><head></head><body style='margin: 0'><div id='box' style='position: absolute; top: 100px; "
             "background: #00ff00; width: 20px; height: 20px'></div><script>let x = 0; const step = () => { "
             "x = Math.min(x + 5, 250); box.style.left = x + 'px'; requestAnimationFrame(step); }; step();"
             "</script></body></html>");
    PlayedAd played({ad()});
    const Colour green{0, 255, 0};
    double trail = -1;
    EXPECT_TRUE(played.shows([&](const Picture& screen) {
        trail = screen.share_of(green, 0, 340, 245, 60);
        return alike(screen.at(260, 365), green);
    })) << played.complaints();
    EXPECT_EQ(trail, 0);
}

TEST_F(PlayStart, AFileThatCannotBeWrittenIsNamed)
{
    PlayedAd played({ad(), "--trace-startup", folder + "/missing/start.jsonl"});
    EXPECT_EQ(played.exit_status(), 2);
    EXPECT_NE(played.complaints().find("/missing/start.jsonl: No such file or directory"), std::string::npos)
        << played.complaints();
}

} // namespace qoro::test
