#include "tests/support/AdSession.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace qoro
{
namespace
{

using testing::ElementsAre;

TEST(StopUpdateTimer, CallsTheSuperclassAndStopsThePlayersTimers)
{
    AdSession session;
    session.open();
    session.plays();
    session->checkDeviceOrientation();
    session.forget();

    session->stopUpdateTimer();
    session.let_pass(30);

    EXPECT_THAT(session.transcript(), ElementsAre("super stopUpdateTimer"));
    EXPECT_FALSE(session->timerCheckDeviceOrientation);
    EXPECT_FALSE(session->timerUpdateRemainderTime);
    EXPECT_FALSE(session->timerCloseBtnCountdown);
    EXPECT_FALSE(session->timerSendTrackingToServer);
    EXPECT_FALSE(session->timerSetControllerButtonHide);
}

/// A timer's target. Only the timer retains it, so its destruction shows that the timer was stopped.
struct StoppedTimer : Object {
    StoppedTimer(std::vector<std::string>& into, const char* timer) : stopped(into), name(timer) {}
    ~StoppedTimer() override { stopped.emplace_back(name); }

    std::vector<std::string>& stopped;
    const char* name;
};

TEST(StopUpdateTimer, StopsSixTimersInTheirOrderAndForgetsThem)
{
    using Ad = QoroVideoWebViewController;
    constexpr std::pair<const char*, NSTimer Ad::*> timers[] = {
        {"timerCheckDeviceOrientation", &Ad::timerCheckDeviceOrientation},
        {"timerUpdateRemainderTime", &Ad::timerUpdateRemainderTime},
        {"timerCloseBtnCountdown", &Ad::timerCloseBtnCountdown},
        {"timerCheckVideoPlay", &Ad::timerCheckVideoPlay},
        {"timerSendTrackingToServer", &Ad::timerSendTrackingToServer},
        {"timerSetControllerButtonHide", &Ad::timerSetControllerButtonHide},
    };
    AdSession session;
    std::vector<std::string> stopped;
    std::vector<std::string> expected;
    for (const auto& [name, timer] : timers) {
        const auto target = std::make_shared<StoppedTimer>(stopped, name);
        const Action nothing(target.get(), name, [](Object&, const Cause&) {});
        session.controller().*timer = NSTimer::scheduledTimerWithTimeInterval(1, nothing, true);
        expected.emplace_back(name);
    }

    session->stopUpdateTimer();

    EXPECT_EQ(stopped, expected);
    for (const auto& [name, timer] : timers)
        EXPECT_FALSE(session.controller().*timer) << name;
}

TEST(StopUpdateTimer, LeavesTheBufferingAndLoadedTimersRunning)
{
    AdSession session;
    session.ad().iBufferingSufferTime = 5;
    session.open();

    session->stopUpdateTimer();

    EXPECT_TRUE(session->timerBufferSufferTime.isValid());
    EXPECT_TRUE(session->timerVideoLoaded.isValid());
}

} // namespace
} // namespace qoro
