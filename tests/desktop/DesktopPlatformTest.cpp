#include "desktop/DesktopPlatform.h"

#include "Places.h"
#include "platform/MediaPlayer.h"
#include "platform/QoroAdManager.h"
#include "tests/desktop/media/SoundServer.h"
#include "tests/desktop/net/RawHttp.h"
#include "tests/desktop/support/Desktop.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

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

namespace
{
/// The root of a window; records its calls, and the notifications that concern an application.
class Root : public UIViewController
{
public:
    void viewDidAppear(bool) override { calls.emplace_back("appears"); }
    void didRotateFromInterfaceOrientation(UIInterfaceOrientation from) override
    {
        calls.push_back("rotated from " + std::to_string(from));
    }
    void became_active() { calls.emplace_back("active"); }
    void bar_turned() { calls.emplace_back("bar"); }
    void interrupted(const NSNotification& notification)
    {
        calls.push_back("interruption " +
                        std::to_string(notification.userInfo[AVAudioSessionInterruptionTypeKey].intValue()));
    }

    std::vector<std::string> calls;
};

using Calls = std::vector<std::string>;

class DesktopPlatformReportTest : public testing::Test, protected PlayerListener
{
protected:
    void SetUp() override { ASSERT_TRUE(start_desktop()) << "these tests need a display"; }

    /// Makes the platform with a window for the root.
    void open(bool silent)
    {
        DesktopPlatform::Options options;
        options.silent = silent;
        platform = std::make_unique<DesktopPlatform>(options);
        scope.emplace(*platform);
        root = std::make_shared<Root>();
        root->loadView();
        window = UIWindow::create({0, 0, 375, 812});
        window.setRootViewController(root);
        NSNotificationCenter& news = NSNotificationCenter::defaultCenter();
        news.addObserver(action<&Root::became_active>(root.get(), "became_active"),
                         UIApplicationDidBecomeActiveNotification);
        news.addObserver(action<&Root::bar_turned>(root.get(), "bar_turned"),
                         UIApplicationDidChangeStatusBarFrameNotification);
        news.addObserver(action<&Root::interrupted>(root.get(), "interrupted"), AVAudioSessionInterruptionNotification);
    }
    void TearDown() override
    {
        window = nullptr;
        root.reset();
        scope.reset();
        platform.reset();
    }
    bool until(const std::function<bool()>& condition)
    {
        constexpr double Deadline = 90;
        const TimerId turns = platform->loop().start_timer(0.01, true, [] {});
        const bool holds = platform->loop().run_until(condition, Deadline);
        platform->loop().stop_timer(turns);
        return holds;
    }
    void let_events_pass()
    {
        bool passed = false;
        platform->loop().post([&passed] { passed = true; });
        until([&passed] { return passed; });
    }
    void load_state_changed() override {}
    void playback_state_changed() override {}
    void finished(MPMovieFinishReason) override {}

    std::unique_ptr<DesktopPlatform> platform;
    std::optional<PlatformScope> scope;
    std::shared_ptr<Root> root;
    UIWindow window;
};
} // namespace

TEST_F(DesktopPlatformReportTest, AControllerOnTheScreenIsNotifiedOfAReturnToTheAppAndOfARotation)
{
    open(true);
    window.setHidden(false);

    platform->device().hold(UIDeviceOrientationLandscapeLeft);
    platform->leave_app();
    platform->return_to_app();
    platform->device().turn(UIDeviceOrientationPortrait);
    let_events_pass();

    EXPECT_EQ(root->calls, (Calls{"bar", "active", "appears", "bar", "rotated from 3"}));
}

TEST_F(DesktopPlatformReportTest, AControllerInAHiddenWindowIsNotifiedOfNeither)
{
    open(true);

    platform->leave_app();
    platform->return_to_app();
    platform->device().turn(UIDeviceOrientationLandscapeLeft);
    let_events_pass();

    EXPECT_EQ(root->calls, (Calls{"active", "bar"}));
}

TEST_F(DesktopPlatformReportTest, ACallInterruptsTheSoundUntilItEnds)
{
    SoundServer sound;
    ASSERT_TRUE(sound.runs());
    open(false);
    const auto video = platform->players().make_player(
        NSURL::fileURLWithPath(QORO_SOURCE_DIR "/tests/desktop/media/clips/colours.mp4"), *this);
    ASSERT_TRUE(until([&] { return video->current_time() > 0.2; }));
    EXPECT_EQ(root->calls, Calls{});

    sound.begin_call();
    ASSERT_TRUE(until([&] { return !root->calls.empty(); }));
    video->pause();
    sound.end_call();
    ASSERT_TRUE(until([&] { return root->calls.size() > 1; }));

    EXPECT_EQ(root->calls, (Calls{"interruption 1", "interruption 0"}));
}

TEST_F(DesktopPlatformEndTest, AnExceptionOfPostedWorkIsAFaultAndTheLoopContinues)
{
    struct Faults final : EventSink {
        void receive(const Event& event) override
        {
            if (const auto* fault = std::get_if<event::Faulted>(&event))
                messages.emplace_back(fault->message.view());
        }
        std::vector<std::string> messages;
    } faults;
    DesktopPlatform platform(silent_options());
    platform.set_event_sink(&faults);
    bool continued = false;
    platform.loop().post([] { throw std::runtime_error("a mistake of the host"); });
    platform.loop().post([&continued] { continued = true; });

    EXPECT_TRUE(platform.loop().run_until([&continued] { return continued; }, 60));

    EXPECT_EQ(faults.messages, std::vector<std::string>{"a mistake of the host"});
    platform.set_event_sink(nullptr);
}
