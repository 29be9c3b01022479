#include "platform/Foundation.h"
#include "platform/MediaPlayer.h"
#include "tests/support/RecordingPlatform.h"

#include <gtest/gtest.h>

#include <thread>

using namespace qoro;
using qoro::test::RecordingPlatform;

namespace
{

using Lines = std::vector<std::string>;

struct Counter {
    int count = 0;
};

struct Aware {
    explicit Aware(Platform& on_platform) : platform(&on_platform) {}
    Platform* platform;
};

Lines ended;
Platform* platform_at_the_end = nullptr;
struct Earlier {
    ~Earlier() { ended.push_back("earlier"); }
};
struct Later {
    ~Later()
    {
        ended.push_back("later");
        platform_at_the_end = Platform::current_or_null();
    }
};

struct Ear : Object {
    void hear(const NSNotification& notification)
    {
        heard.push_back(std::string(notification.name));
        object = notification.object;
        type = notification.userInfo[AVAudioSessionInterruptionTypeKey].intValue();
        platform = Platform::current_or_null();
    }
    void reject(const NSNotification&) { throw PlatformFault{"replace", "out of range"}; }

    void listen_for(std::string_view name)
    {
        NSNotificationCenter::defaultCenter().addObserver(action<&Ear::hear>(this, "hear:"), name);
    }

    Lines heard;
    const void* object = nullptr;
    int type = -1;
    Platform* platform = nullptr;
};

} // namespace

TEST(APlatform, BelongsToTheThreadThatMadeItCurrent)
{
    RecordingPlatform platform;
    Platform* elsewhere = &platform;

    std::thread([&] { elsewhere = Platform::current_or_null(); }).join();

    EXPECT_EQ(Platform::current_or_null(), &platform);
    EXPECT_EQ(elsewhere, nullptr);
}

TEST(APlatform, RestoresThePreviousOneAtTheEndOfItsScope)
{
    RecordingPlatform outer;
    {
        const RecordingPlatform inner;
        EXPECT_EQ(&Platform::current(), &inner);
    }

    EXPECT_EQ(&Platform::current(), &outer);
}

TEST(APlatform, HasOneSharedObjectOfAType)
{
    RecordingPlatform platform;
    RecordingPlatform other;

    platform.shared<Counter>().count = 7;

    EXPECT_EQ(platform.shared<Counter>().count, 7);
    EXPECT_EQ(other.shared<Counter>().count, 0);
}

TEST(APlatform, PassesItselfToSharedObjectsThatTakeIt)
{
    RecordingPlatform platform;
    const RecordingPlatform other;

    EXPECT_EQ(platform.shared<Aware>().platform, &platform);
}

TEST(APlatform, DestroysItsSharedObjectsInReverseOrder)
{
    ended.clear();
    RecordingPlatform platform;
    platform.shared<Earlier>();
    platform.shared<Later>();

    platform.drop_shared();

    EXPECT_EQ(ended, (Lines{"later", "earlier"}));
}

TEST(APlatform, IsCurrentWhileItsSharedObjectsAreDestroyed)
{
    RecordingPlatform platform;
    platform.shared<Later>();
    const RecordingPlatform other;

    platform.drop_shared();

    EXPECT_EQ(platform_at_the_end, &platform);
    EXPECT_EQ(Platform::current_or_null(), &other);
}

TEST(APlatform, RecordsRejectionsAndContinues)
{
    RecordingPlatform platform;
    bool went_on = false;

    platform.dispatch([] { throw PlatformFault{"insertString", "Range or index out of bounds"}; });
    platform.dispatch([&] { went_on = true; });

    EXPECT_EQ(platform.transcript, Lines{"fault operation=insertString message=Range or index out of bounds"});
    EXPECT_TRUE(went_on);
}

TEST(APlatform, ReportsItsNewsAsNotifications)
{
    RecordingPlatform platform;
    const auto ear = std::make_shared<Ear>();
    ear->listen_for("AVSystemController_SystemVolumeDidChangeNotification");
    ear->listen_for("UIApplicationDidChangeStatusBarFrameNotification");
    ear->listen_for("UIApplicationWillEnterForegroundNotification");
    ear->listen_for("UIApplicationDidBecomeActiveNotification");

    platform.output_volume_changed();
    platform.status_bar_frame_changed();
    platform.application_will_enter_foreground();
    platform.application_did_become_active();

    EXPECT_EQ(ear->heard,
              (Lines{"AVSystemController_SystemVolumeDidChangeNotification",
                     "UIApplicationDidChangeStatusBarFrameNotification", "UIApplicationWillEnterForegroundNotification",
                     "UIApplicationDidBecomeActiveNotification"}));
    EXPECT_EQ(platform.transcript, Lines{});
}

TEST(APlatform, ReportsInterruptionsInTheAudioSessionsName)
{
    RecordingPlatform platform;
    const auto ear = std::make_shared<Ear>();
    ear->listen_for("AVAudioSessionInterruptionNotification");

    platform.audio_interrupted(AVAudioSessionInterruptionTypeBegan);

    EXPECT_EQ(ear->type, 1);
    EXPECT_EQ(ear->object, AVAudioSession::sharedInstance());
}

TEST(APlatform, IsCurrentWhileItReports)
{
    RecordingPlatform platform;
    const auto ear = std::make_shared<Ear>();
    ear->listen_for("AVSystemController_SystemVolumeDidChangeNotification");
    const RecordingPlatform other;

    platform.output_volume_changed();

    EXPECT_EQ(ear->platform, &platform);
}

TEST(AnAction, RetainsItsTargetUntilTheEndOfTheCall)
{
    struct Leaver : Object {
        void leave()
        {
            self->reset();
            still_there = !weak_from_this().expired();
            *outcome = still_there;
        }
        std::shared_ptr<Leaver>* self = nullptr;
        bool* outcome = nullptr;
        bool still_there = false;
    };
    bool outcome = false;
    auto leaver = std::make_shared<Leaver>();
    leaver->self = &leaver;
    leaver->outcome = &outcome;
    const Action leave = action<&Leaver::leave>(leaver.get(), "leave");

    leave();

    EXPECT_TRUE(outcome);
    EXPECT_EQ(leave.target(), nullptr);
}

TEST(AnAction, OfADestroyedTargetDoesNothing)
{
    auto ear = std::make_shared<Ear>();
    const Action reject = action<&Ear::reject>(ear.get(), "reject:");
    ear.reset();

    EXPECT_NO_THROW(reject());
    EXPECT_NO_THROW(Action()());
}

TEST(AnAction, EqualsByTargetAndName)
{
    const auto one = std::make_shared<Ear>();
    const auto other = std::make_shared<Ear>();

    EXPECT_EQ(action<&Ear::hear>(one.get(), "hear:"), action<&Ear::hear>(one.get(), "hear:"));
    EXPECT_FALSE(action<&Ear::hear>(one.get(), "hear:") == action<&Ear::hear>(other.get(), "hear:"));
    EXPECT_FALSE(action<&Ear::hear>(one.get(), "hear:") == action<&Ear::hear>(one.get(), "listen:"));
}
