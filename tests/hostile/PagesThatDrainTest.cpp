#include "tests/hostile/HostileTest.h"

// Pages that use up resources: memory, requests, the host's processor time.

namespace qoro::test
{

class HostileDrainTest : public HostileTest, public testing::WithParamInterface<const char*>
{
};

TEST_P(HostileDrainTest, APageThatExhaustsMemoryIsEndedAndTheAdContinues)
{
    play(GetParam());
    EXPECT_TRUE(ad().reports({{"what", "web"}, {"do", "died"}}));
    // The limit, one second of overshoot, and the processes besides the page's.
    EXPECT_LT(memory().others(), 1280 * Megabyte);
    the_viewer_leaves();
}

INSTANTIATE_TEST_SUITE_P(By, HostileDrainTest, testing::Values("arrays.html", "canvas.html", "workers.html"),
                         [](const auto& page) {
                             const std::string name = page.param;
                             return name.substr(0, name.find('.'));
                         });

TEST_F(HostileTest, AFloodOfMessagesDoesNotBlockTheAd)
{
    play("messages.html");
    EXPECT_TRUE(refused("message"));
    EXPECT_LT(memory().program_growth(), MostGrowth);
    the_viewer_leaves();
}

TEST_F(HostileTest, AHeartbeatWithoutAPauseIsBounded)
{
    const std::string beat = "http://" + std::string(Stranger) + "/beat";
    play("harmless.html", {{"strVideoTrackingUrl", beat}, {"fTrackingInterval", 1e-9}, {"dicTrackingUrls", nullptr}});
    EXPECT_TRUE(ad().reports({{"what", "kit"}, {"do", "request.refused"}}));
    EXPECT_TRUE(internet().was_asked(std::string(Stranger) + "/beat")) << "some go out";
    the_viewer_leaves();
}

TEST_F(HostileTest, AnAddressWithAZeroByteDoesNotEndTheProgram)
{
    play("harmless.html", {{"strVideoUrl", "clip.mp4?%00"}});
    the_viewer_leaves();
}

} // namespace qoro::test
