#include "tests/hostile/HostileTest.h"

// Pages that navigate away, reach for this machine, or do what requires a viewer's touch.

namespace qoro::test
{

TEST_F(HostileTest, AHarmlessPageConnectsOnlyToItsOwnServer)
{
    play("harmless.html");
    EXPECT_TRUE(page_is_done());
    EXPECT_EQ(spoken_to_others(), "");
    EXPECT_TRUE(internet().was_asked("203.0.113.1/harmless.html")) << "who is asked is seen";
    EXPECT_TRUE(internet().contacted().contains("203.0.113.1:80")) << "who is spoken to is seen";
    the_viewer_leaves();
}

TEST_F(HostileTest, APageCannotNavigateAway)
{
    play("navigation.html");
    EXPECT_TRUE(page_is_done());
    for (const char* way : {"href", "assign", "replace", "form", "link", "refresh"})
        EXPECT_TRUE(refused("navigation", std::string(Elsewhere) + "/by-" + way)) << way;
    EXPECT_EQ(spoken_to_others(), "");
    the_viewer_leaves();
}

TEST_F(HostileTest, APageCannotReachThisMachine)
{
    play("loopback.html");
    EXPECT_TRUE(page_is_done());
    for (const char* address : {"http://127.0.0.1/fetch", "http://localhost/fetch", "http://[::1]/fetch",
                                "http://127.0.0.1/image", "http://127.0.0.1/frame", "ws://127.0.0.1/socket"})
        EXPECT_TRUE(refused(std::string(address).ends_with("frame") ? "navigation" : "request", address)) << address;
    EXPECT_EQ(spoken_to_others(), "");
    the_viewer_leaves();
}

TEST_F(HostileTest, APageCannotReachPrivateNetworks)
{
    play("private.html");
    EXPECT_TRUE(page_is_done());
    for (const char* host : {"10.0.0.1", "172.16.0.1", "192.168.1.1", "169.254.169.254", "[fc00::1]"}) {
        EXPECT_TRUE(refused("request", "http://" + std::string(host) + "/fetch")) << host;
        EXPECT_TRUE(refused("request", "http://" + std::string(host) + "/image")) << host;
        EXPECT_TRUE(refused("request", "ws://" + std::string(host) + "/socket")) << host;
        EXPECT_TRUE(refused("command", std::string(host) + "/video.mp4")) << host;
    }
    EXPECT_EQ(spoken_to_others(), "");
    the_viewer_leaves();
}

TEST_F(HostileTest, APageCannotReachThisMachineByAServersRedirect)
{
    play("redirected.html");
    EXPECT_TRUE(page_is_done());
    EXPECT_TRUE(internet().was_asked("203.0.113.1/to-this-machine")) << "there was a redirect to follow";
    EXPECT_EQ(spoken_to_others(), "");
    the_viewer_leaves();
}

TEST_F(HostileTest, APageCannotForgeATouch)
{
    play("forged_touch.html");
    EXPECT_TRUE(page_is_done());
    EXPECT_TRUE(ad().reports({{"what", "mraid"}, {"do", "refused"}, {"command", "open"}}));
    for (const nlohmann::json& line : ad().trace())
        EXPECT_NE(line["what"], "openURL") << line;
    EXPECT_EQ(spoken_to_others(), "");
    the_viewer_leaves();
}

TEST_F(HostileTest, APageOpensNoWindowAndDownloadsNothing)
{
    play("popups.html");
    EXPECT_TRUE(page_is_done());
    EXPECT_TRUE(refused("window", std::string(Elsewhere) + "/by-script"));
    // As a navigation where the script runs within an event of the ad, which WebKit takes for the viewer's.
    EXPECT_TRUE(refused("", std::string(Elsewhere) + "/by-link"));
    EXPECT_EQ(spoken_to_others(), "");
    the_viewer_leaves();
}

// ------------------------------------------------------------------------------------------------------------- servers

TEST_F(HostileTest, AServerCannotRedirectItsPageToThisMachine)
{
    play("to-this-machine");
    EXPECT_TRUE(ad().reports({{"what", "log"}, {"message", "InApp failAdRequest"}}));
    EXPECT_EQ(spoken_to_others(), "");
    the_viewer_leaves();
}

TEST_F(HostileTest, AServerCannotRedirectATrackerToThisMachine)
{
    play("harmless.html", {{"dicTrackingUrls", {{"start", {"http://203.0.113.1/to-this-machine?start"}}}}});
    EXPECT_TRUE(ad().eventually([&] { return internet().was_asked("203.0.113.1/to-this-machine?start"); }));
    EXPECT_TRUE(page_is_done());
    EXPECT_EQ(spoken_to_others(), "");
    the_viewer_leaves();
}

} // namespace qoro::test
