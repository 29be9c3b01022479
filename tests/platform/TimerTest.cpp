#include "platform/Foundation.h"
#include "tests/support/RecordingPlatform.h"

#include <gtest/gtest.h>

using namespace qoro;
using qoro::test::RecordingPlatform;

namespace
{

using Moments = std::vector<double>;

struct Clockwork : Object {
    explicit Clockwork(RecordingPlatform& on_platform) : platform(on_platform) {}

    ~Clockwork() override
    {
        if (platform_at_the_end)
            *platform_at_the_end = Platform::current_or_null();
    }

    void note() { moments.push_back(platform.loop().now()); }
    void note_validity() { was_valid = timer.isValid(); }
    void stop()
    {
        note();
        timer.invalidate();
    }
    void note_elsewhere() { *elsewhere = platform.loop().now(); }
    void reject() { throw PlatformFault{"replace", "out of range"}; }
    void ask_for_platform() { current = Platform::current_or_null(); }

    RecordingPlatform& platform;
    NSTimer timer;
    Moments moments;
    bool was_valid = true;
    double* elsewhere = nullptr;
    Platform** platform_at_the_end = nullptr;
    Platform* current = nullptr;
};

class Timers : public testing::Test
{
protected:
    template <auto member>
    void start(double interval, bool repeats)
    {
        clockwork->timer =
            NSTimer::scheduledTimerWithTimeInterval(interval, action<member>(clockwork.get(), "clockwork"), repeats);
    }

    RecordingPlatform platform;
    std::shared_ptr<Clockwork> clockwork = std::make_shared<Clockwork>(platform);
};

} // namespace

TEST_F(Timers, RepeatUntilTheyAreStopped)
{
    start<&Clockwork::note>(0.5, true);

    platform.let_pass(1.2);
    clockwork->timer.invalidate();
    platform.let_pass(5);

    EXPECT_EQ(clockwork->moments, (Moments{0.5, 1.0}));
    EXPECT_FALSE(clockwork->timer.isValid());
}

TEST_F(Timers, OfOneShotFireOnce)
{
    start<&Clockwork::note>(3, false);

    platform.let_pass(10);

    EXPECT_EQ(clockwork->moments, Moments{3});
}

TEST_F(Timers, OfOneShotAreNoLongerValidWhenTheirActionRuns)
{
    start<&Clockwork::note_validity>(1, false);

    platform.let_pass(1);

    EXPECT_FALSE(clockwork->was_valid);
}

TEST_F(Timers, CanBeStoppedByTheirOwnAction)
{
    start<&Clockwork::stop>(0.5, true);

    platform.let_pass(5);

    EXPECT_EQ(clockwork->moments, Moments{0.5});
    EXPECT_EQ(platform.loop().pending(), 0U);
}

TEST_F(Timers, KeepTheirTargetWhileTheyRun)
{
    const std::weak_ptr<Clockwork> target = clockwork;
    start<&Clockwork::note>(1, true);
    const NSTimer timer = clockwork->timer;

    clockwork.reset();
    platform.let_pass(1.5);

    EXPECT_FALSE(target.expired());
    timer.invalidate();
    EXPECT_TRUE(target.expired());
}

TEST_F(Timers, OfOneShotReleaseTheirTargetOnceTheyHaveFired)
{
    const std::weak_ptr<Clockwork> target = clockwork;
    start<&Clockwork::note>(1, false);

    clockwork.reset();
    EXPECT_FALSE(target.expired());
    platform.let_pass(1);

    EXPECT_TRUE(target.expired());
}

TEST_F(Timers, OfOneShotFireEvenAsTheOnlyOwnerOfTheirTarget)
{
    double fired_at = 0;
    clockwork->elsewhere = &fired_at;
    start<&Clockwork::note_elsewhere>(1, false);

    clockwork.reset();
    platform.let_pass(5);

    EXPECT_EQ(fired_at, 1);
}

TEST_F(Timers, MayBeTheOnlyOwnerOfTheTargetThatStopsThem)
{
    const std::weak_ptr<Clockwork> target = clockwork;
    start<&Clockwork::stop>(1, true);

    clockwork.reset();
    platform.let_pass(1);

    EXPECT_TRUE(target.expired());
}

TEST_F(Timers, StoppedByTheirTargetReleaseItWithinTheEvent)
{
    Platform* at_the_end = nullptr;
    clockwork->platform_at_the_end = &at_the_end;
    start<&Clockwork::stop>(1, true);
    clockwork.reset();
    const RecordingPlatform other;

    platform.let_pass(1);

    EXPECT_EQ(at_the_end, &platform);
}

TEST(ARunningTimer, ReleasesItsTargetWithThePlatform)
{
    auto platform = std::make_unique<RecordingPlatform>();
    auto clockwork = std::make_shared<Clockwork>(*platform);
    const std::weak_ptr<Clockwork> target = clockwork;
    clockwork->timer =
        NSTimer::scheduledTimerWithTimeInterval(1, action<&Clockwork::note>(clockwork.get(), "clockwork"), true);

    clockwork.reset();
    EXPECT_FALSE(target.expired());
    platform.reset();

    EXPECT_TRUE(target.expired());
}

TEST_F(Timers, ReportTheirNextFireDate)
{
    start<&Clockwork::note>(0.5, true);

    EXPECT_EQ(clockwork->timer.fireDate(), 0.5);
    platform.let_pass(0.5);
    EXPECT_EQ(clockwork->timer.fireDate(), 1.0);
    clockwork->timer.invalidate();
    EXPECT_EQ(clockwork->timer.fireDate(), 0);
    EXPECT_EQ(clockwork->timer.timeInterval(), 0.5);
    EXPECT_TRUE(clockwork->timer.repeats());
}

TEST_F(Timers, ThatAreNullDoNothingAndReadZero)
{
    const NSTimer none;

    none.invalidate();

    EXPECT_FALSE(none);
    EXPECT_FALSE(none.isValid());
    EXPECT_FALSE(none.repeats());
    EXPECT_EQ(none.timeInterval(), 0);
    EXPECT_EQ(none.fireDate(), 0);
}

TEST_F(Timers, ContinueAfterARejectedAction)
{
    start<&Clockwork::reject>(1, true);

    platform.let_pass(2);

    EXPECT_EQ(platform.transcript, (std::vector<std::string>{"fault operation=replace message=out of range",
                                                             "fault operation=replace message=out of range"}));
}

TEST_F(Timers, FireOnThePlatformThatTheyWereMadeOn)
{
    start<&Clockwork::ask_for_platform>(1, false);
    RecordingPlatform other;

    platform.let_pass(1);

    EXPECT_EQ(clockwork->current, &platform);
    EXPECT_EQ(Platform::current_or_null(), &other);
}
