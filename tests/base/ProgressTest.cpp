#include "tests/support/AdSession.h"

#include <gmock/gmock.h>

#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace qoro
{
namespace
{

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

void track_milestones(AdSession& session)
{
    session.ad().dicTrackingUrls = {{"start", NSArray::of_strings({"http://t/start"})},
                                    {"firstQuartile", NSArray::of_strings({"http://t/first"})},
                                    {"midpoint", NSArray::of_strings({"http://t/mid"})},
                                    {"thirdQuartile", NSArray::of_strings({"http://t/third"})},
                                    {"complete", NSArray::of_strings({"http://t/complete"})}};
}

void play(AdSession& session, double duration = 30)
{
    session.open();
    session.plays(duration);
}

/// Runs a query as soon as a click is counted, to check which events precede the count.
struct AskingParent : QoroPhoneGapViewController {
    void clickRequester() override { answer = ask(); }

    std::function<std::string()> ask;
    std::string answer;
};

TEST(InitSendTrackingState, KeepsStatesThatTheAdDoesNotName)
{
    AdSession session;
    session.ad().dicTrackingUrls = {{"start", NSArray::of_strings({"http://t/start"})}};
    session.open();
    session->dicSendTrackingState.setObject("1", "start");
    session->dicSendTrackingState.setObject("1", "midpoint");

    session->initSendTrackingState();

    EXPECT_EQ(as_text(session->dicSendTrackingState), R"({"start":"0","midpoint":"1"})");
}

TEST(StartTrackingInterval, MilestonesAreCheckedEachSecondWhateverTheInterval)
{
    AdSession session;
    track_milestones(session);
    session.open();

    session->startTrackingInterval(7);

    EXPECT_EQ(session->timerSendTrackingToServer.timeInterval(), 1.0);
    EXPECT_TRUE(session->timerSendTrackingToServer.repeats());
}

TEST(StartTrackingInterval, AHeartbeatHasTheGivenPeriod)
{
    AdSession session;
    session.open();

    session->startTrackingInterval(0.5F);

    EXPECT_EQ(session->timerSendTrackingToServer.timeInterval(), 0.5);
}

TEST(StartTrackingInterval, AnIntervalThatIsNotPositiveIsThreeSeconds)
{
    AdSession session;
    session.open();

    session->startTrackingInterval(0);
    EXPECT_EQ(session->timerSendTrackingToServer.timeInterval(), 3.0);
    session->startTrackingInterval(-1);
    EXPECT_EQ(session->timerSendTrackingToServer.timeInterval(), 3.0);
}

TEST(StartTrackingInterval, NotANumberIsUsedAsItIsAndNeverFires)
{
    AdSession session;
    session.ad().strVideoTrackingUrl = "http://t/beat";
    play(session);

    session->startTrackingInterval(std::numeric_limits<float>::quiet_NaN());
    session.let_pass(60);

    EXPECT_TRUE(session->timerSendTrackingToServer.isValid());
    EXPECT_THAT(session.fetched(), IsEmpty());
}

TEST(StartTrackingInterval, StopsThePreviousTimer)
{
    AdSession session;
    session.open();
    session->startTrackingInterval(1);
    const NSTimer before = session->timerSendTrackingToServer;

    session->startTrackingInterval(2);

    EXPECT_FALSE(before.isValid());
}

TEST(Heartbeat, RunsEveryThreeSecondsByDefault)
{
    AdSession session;
    session.ad().strVideoTrackingUrl = "http://t/beat";
    play(session);

    session.let_pass(2.9);
    EXPECT_THAT(session.fetched(), IsEmpty());
    session.let_pass(3.2);

    EXPECT_THAT(session.fetched(), ElementsAre("http://t/beat", "http://t/beat"));
}

TEST(Heartbeat, ExpandsItsAddressEachTime)
{
    AdSession session;
    session.ad().strVideoTrackingUrl = "http://t/beat?at={CurrentTime}";
    session.ad().fTrackingInterval = 1;
    play(session);

    session.player_is_at(0.5);
    session.let_pass(1);
    session.player_is_at(1.5);
    session.let_pass(1);

    EXPECT_THAT(session.fetched(), ElementsAre("http://t/beat?at=0.500000", "http://t/beat?at=1.500000"));
}

TEST(Heartbeat, IsSilentWhilePaused)
{
    AdSession session;
    session.ad().strVideoTrackingUrl = "http://t/beat";
    play(session);
    session.pauses_at(1);

    session.let_pass(10);

    EXPECT_THAT(session.fetched(), IsEmpty());
}

TEST(Heartbeat, IsNotSentWithMilestones)
{
    AdSession session;
    track_milestones(session);
    session.ad().strVideoTrackingUrl = "http://t/beat";
    play(session);

    session.let_pass(10);

    EXPECT_THAT(session.fetched(), ElementsAre("http://t/start"));
}

TEST(Milestones, StartIsSentOnTheFirstTickAndOnce)
{
    AdSession session;
    track_milestones(session);
    play(session);

    session.let_pass(0.9);
    EXPECT_THAT(session.fetched(), IsEmpty());
    session.let_pass(5);

    EXPECT_THAT(session.fetched(), ElementsAre("http://t/start"));
}

TEST(Milestones, AreDueFromTheirShareOn)
{
    const std::vector<std::string> all = {"http://t/start", "http://t/first", "http://t/mid", "http://t/third"};
    const struct {
        double time;
        std::size_t due;
    } rows[] = {
        {-1, 1}, {0, 1}, {9.99, 1}, {10, 2}, {19.99, 2}, {20, 3}, {29.99, 3}, {30, 4}, {40, 4}, {41, 4},
    };
    for (const auto& row : rows) {
        AdSession session;
        track_milestones(session);
        play(session, 40);
        session.player_is_at(row.time);
        session->checkSendVideoTracking();
        EXPECT_THAT(session.fetched(),
                    testing::UnorderedElementsAreArray(all.begin(), all.begin() + static_cast<int>(row.due)))
            << row.time;
    }
}

TEST(Milestones, TheTimesAreRoundedToSinglePrecision)
{
    AdSession session;
    track_milestones(session);
    play(session, 40);

    // Below a quarter in double precision; rounds up to 10 in single precision.
    session.player_is_at(9.9999999);
    session->checkSendVideoTracking();

    EXPECT_THAT(session.fetched(), ElementsAre("http://t/start", "http://t/first"));
}

TEST(Milestones, TheShareIsComputedInSinglePrecision)
{
    // Below three quarters in double precision; rounds up to them in single precision.
    constexpr float duration = 6.1F;
    constexpr float time = 4.575F;
    static_assert(static_cast<double>(time) / static_cast<double>(duration) < 0.75);
    AdSession session;
    track_milestones(session);
    play(session, duration);

    session.player_is_at(time);
    session->checkSendVideoTracking();

    EXPECT_THAT(session.fetched(), Contains("http://t/third"));
}

TEST(Milestones, AtATimeThatIsNoNumberOnlyStartIsSent)
{
    AdSession session;
    track_milestones(session);
    session.ad().dicProgressTrackingUrls = {{"0", NSArray::of_strings({"http://t/0"})}};
    play(session, 40);

    session.player_is_at(std::numeric_limits<double>::quiet_NaN());
    session.let_pass(3);

    EXPECT_THAT(session.fetched(), ElementsAre("http://t/start"));
}

TEST(Milestones, WithoutATableOfSentOnesAreSentOnEveryTick)
{
    AdSession session;
    session.ad().strVideoUrl = "";
    session.open();
    session->playNextVideo({{"v_u", "http://ad/next.mp4"},
                            {"v_tracking", NSDictionary{{"start", NSArray::of_strings({"http://t/start"})}}}});
    session.plays();

    session.let_pass(3);

    EXPECT_THAT(session.fetched(), ElementsAre("http://t/start", "http://t/start", "http://t/start"));
}

TEST(Milestones, AreMarkedBeforeTheyAreSent)
{
    AdSession session;
    session.ad().dicTrackingUrls = {{"start", NSArray::of_strings({"c"})}};
    const auto parent = std::make_shared<AskingParent>();
    session->setParentViewController(parent);
    play(session);
    parent->ask = [&session] { return as_text(session->dicSendTrackingState); };

    session->checkSendVideoTracking();

    EXPECT_EQ(parent->answer, R"({"start":"1"})");
}

TEST(Milestones, ASeekFromTenToEightyPercentSendsThreeEachOnce)
{
    AdSession session;
    track_milestones(session);
    play(session, 40);
    session.player_is_at(4);
    session.let_pass(1);
    session.forget();

    session.player_is_at(32);
    session.let_pass(3);

    EXPECT_THAT(session.fetched(), testing::UnorderedElementsAre("http://t/first", "http://t/mid", "http://t/third"));
}

TEST(Milestones, WithAnUnknownDurationOnlyStartIsSent)
{
    AdSession session;
    track_milestones(session);
    play(session, 0);

    session.player_is_at(20);
    session.let_pass(3);

    EXPECT_THAT(session.fetched(), ElementsAre("http://t/start"));
}

TEST(Milestones, TheTickDoesNotSendComplete)
{
    AdSession session;
    track_milestones(session);
    play(session, 40);

    session.player_is_at(40);
    session.let_pass(3);

    EXPECT_THAT(session.fetched(), ElementsAre("http://t/start", "http://t/first", "http://t/mid", "http://t/third"));
}

TEST(Milestones, OneWithoutAddressesIsMarkedAndSendsNothing)
{
    AdSession session;
    session.ad().dicTrackingUrls = {{"complete", NSArray::of_strings({"http://t/complete"})}};
    play(session);

    session->checkSendVideoTracking();

    EXPECT_EQ(as_text(session->dicSendTrackingState), R"({"complete":"0","start":"1"})");
    EXPECT_THAT(session.fetched(), IsEmpty());
}

TEST(Milestones, AreSilentWhilePaused)
{
    AdSession session;
    track_milestones(session);
    play(session);
    session.pauses_at(20);

    session.let_pass(5);

    EXPECT_THAT(session.fetched(), IsEmpty());
}

TEST(Milestones, AreSentAgainAfterAReplay)
{
    AdSession session;
    track_milestones(session);
    play(session);
    session.let_pass(1);
    session.ends();
    session.tap(session->btnReplay);
    session.player_is_at(0);
    session.plays_on();
    session.forget();

    session.let_pass(1);

    EXPECT_THAT(session.fetched(), ElementsAre("http://t/start"));
}

TEST(Milestones, ARequestThatFailedIsNotSentAgain)
{
    World world = AdSession::manual_world();
    world.net["http://t/start"] = NetAnswer{.ok = false, .error = "gone", .body = {}, .after = 0};
    AdSession session(world);
    track_milestones(session);
    play(session);

    session.let_pass(5);

    EXPECT_THAT(session.fetched(), ElementsAre("http://t/start"));
    EXPECT_EQ(session.count_of("log 0 failSendTracking"), 1U);
}

TEST(TimeOffsets, AreSentOnceOnTheFirstTickThatReachesThem)
{
    AdSession session;
    track_milestones(session);
    session.ad().dicProgressTrackingUrls = {{"15", NSArray::of_strings({"http://t/15"})}};
    play(session, 100);
    session.player_is_at(14.9);
    session.let_pass(1);
    session.forget();

    session.player_is_at(15);
    session.let_pass(2);

    EXPECT_THAT(session.fetched(), ElementsAre("http://t/15"));
    EXPECT_EQ(as_text(session.ad().dicProgressTrackingUrls), "{}");
}

TEST(TimeOffsets, ZeroAndInvalidNumbersAreDueAtOnceInTheirOrder)
{
    AdSession session;
    track_milestones(session);
    session.ad().dicProgressTrackingUrls = {{"0", NSArray::of_strings({"http://t/0"})},
                                            {"soon", NSArray::of_strings({"http://t/soon"})},
                                            {"9", NSArray::of_strings({"http://t/9"})}};
    play(session);

    session->checkSendVideoTracking();

    EXPECT_THAT(session.fetched(), ElementsAre("http://t/0", "http://t/soon", "http://t/start"));
    EXPECT_EQ(as_text(session.ad().dicProgressTrackingUrls), R"({"9":["http://t/9"]})");
}

TEST(TimeOffsets, AreSentBeforeTheyAreForgotten)
{
    AdSession session;
    track_milestones(session);
    session.ad().dicProgressTrackingUrls = {{"0", NSArray::of_strings({"c"})}};
    const auto parent = std::make_shared<AskingParent>();
    session->setParentViewController(parent);
    play(session);
    parent->ask = [&session] { return as_text(session.ad().dicProgressTrackingUrls); };

    session->checkSendVideoTracking();

    EXPECT_EQ(parent->answer, R"({"0":["c"]})");
    EXPECT_EQ(as_text(session.ad().dicProgressTrackingUrls), "{}");
}

TEST(TimeOffsets, AreNotSentAgainAfterAReplay)
{
    AdSession session;
    track_milestones(session);
    session.ad().dicProgressTrackingUrls = {{"0", NSArray::of_strings({"http://t/0"})}};
    play(session);
    session.let_pass(1);
    session.ends();
    session.tap(session->btnReplay);
    session.plays_on();
    session.forget();

    session.let_pass(3);

    EXPECT_EQ(session.count_of("request http://t/0 tracking"), 0U);
}

TEST(TimeOffsets, WithoutMilestonesAreNeverSent)
{
    AdSession session;
    session.ad().dicTrackingUrls = NSDictionary::dictionary();
    session.ad().dicProgressTrackingUrls = {{"0", NSArray::of_strings({"http://t/0"})}};
    play(session);

    session->checkSendVideoTracking();
    session.let_pass(10);

    EXPECT_THAT(session.fetched(), IsEmpty());
}

TEST(Milestones, OfAVideoOfLessThanASecondAreSharesToo)
{
    AdSession session;
    session.ad().dicTrackingUrls = {{"midpoint", NSArray::of_strings({"http://t/half"})}};
    session.open();
    session.plays(0.8);
    session.player_is_at(0.5);
    session.forget();

    session->checkSendVideoTracking();

    EXPECT_THAT(session.fetched(), ElementsAre("http://t/half"));
}

} // namespace
} // namespace qoro
