#include "desktop/DesktopPlatform.h"

#include "platform/QoroAdManager.h"
#include "tests/desktop/net/RawHttp.h"
#include "tests/desktop/support/Desktop.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>

using namespace qoro;
using namespace qoro::test;

namespace
{
using Clock = std::chrono::steady_clock;

DesktopPlatform::Options silent_options()
{
    DesktopPlatform::Options options;
    options.silent = true;
    options.allow_private_network = true; // the test servers are on loopback
    return options;
}

class DesktopPlatformEndTest : public testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(start_desktop()) << "these tests need a display"; }

    static void send_tracker(DesktopPlatform& platform, const std::string& address)
    {
        const PlatformScope scope(platform);
        QoroAdManager::sharedInstance().connectToServerWithRequest(address, {}, {}, false, RequestPurpose::Tracking);
    }
};
} // namespace

TEST_F(DesktopPlatformEndTest, LastMomentTrackersAreSentAndTheirRedirectsFollowed)
{
    std::atomic<int> redirected = 0;
    std::atomic<int> counted = 0;
    RawServer server([&](const auto& head, const auto& connection) {
        if (head.starts_with("GET /count ")) {
            ++counted;
            connection.send("HTTP/1.1 204 No Content\r\nConnection: close\r\n\r\n");
        } else {
            ++redirected;
            connection.send("HTTP/1.1 302 Found\r\nLocation: /count\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
        }
    });
    auto platform = std::make_unique<DesktopPlatform>(silent_options());
    for (int i = 0; i < 20; ++i)
        send_tracker(*platform, server.base() + "/close");

    platform.reset();

    EXPECT_EQ(redirected, 20);
    EXPECT_EQ(counted, 20);
}

TEST_F(DesktopPlatformEndTest, AnUnansweredTrackerDelaysTheEndByTwoSecondsAtMost)
{
    RawServer silent([](const auto&, const auto& connection) { connection.wait_for_close(); });
    auto platform = std::make_unique<DesktopPlatform>(silent_options());
    send_tracker(*platform, silent.base() + "/close");
    const auto begun = Clock::now();

    platform.reset();

    EXPECT_LT(Clock::now() - begun, std::chrono::seconds(4)) << "two, and what a busy machine adds";
}
