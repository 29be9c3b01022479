// Callbacks of the host that throw, or that open the next ad.
#include "host/OpenedAd.h"

#include "simulator/SimulatedPlatform.h"

#include <gmock/gmock.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace qoro
{
namespace
{

using testing::Contains;
using testing::HasSubstr;
using testing::SizeIs;

std::shared_ptr<QoroVideoAd> ten_second_ad()
{
    auto ad = std::make_shared<QoroVideoAd>();
    ad->strVideoUrl = "http://ad/v.mp4";
    ad->fVideoWidth = 1280;
    ad->fVideoHeight = 720;
    ad->portraitModeType = ONLY_VIDEO;
    ad->bIsAutoStart = true;
    return ad;
}

/// Keeps the faults, and throws on request.
struct Faults final : EventSink {
    void receive(const Event& event) override
    {
        ++received;
        if (throws)
            throw std::runtime_error("the sink is full");
        if (const auto* fault = std::get_if<event::Faulted>(&event))
            faults.emplace_back(fault->operation.view(), fault->message.view());
    }
    std::vector<std::pair<std::string, std::string>> faults;
    int received = 0;
    bool throws = false;
};

class HostCallbackTest : public testing::Test
{
protected:
    ~HostCallbackTest() override
    {
        opened.reset();
        platform.set_event_sink(nullptr);
    }
    void open(OpenedAd::OnEnd on_end, LogSink log = nullptr)
    {
        HostSetup host;
        host.log = std::move(log);
        opened = std::make_unique<OpenedAd>(platform, ten_second_ad(), std::move(on_end), host);
    }
    void let_pass(double seconds) { platform.run_until(platform.loop().now() + seconds); }

    Faults sink;
    SimulatedPlatform platform{World{}};
    std::unique_ptr<OpenedAd> opened;
};

TEST_F(HostCallbackTest, AnExceptionOfOnEndIsReportedAndThePlatformContinues)
{
    platform.set_event_sink(&sink);
    std::vector<std::string> log;
    open([](const AdOutcome&) { throw std::runtime_error("no disk"); },
         [&log](ZulixLogTag level, std::string_view line) {
             if (level == ZulixLogTagOfError)
                 log.emplace_back(line);
         });
    let_pass(1);

    opened->close();
    EXPECT_NO_THROW(let_pass(1));

    EXPECT_THAT(sink.faults, Contains(std::pair<std::string, std::string>("OpenedAd::OnEnd", "no disk")));
    EXPECT_THAT(log, Contains("OpenedAd::OnEnd has thrown: no disk"));
    int ends = 0;
    open([&ends](const AdOutcome&) { ++ends; });
    opened->close();
    let_pass(1);
    EXPECT_EQ(ends, 1);
}

TEST_F(HostCallbackTest, AnExceptionThatIsNoStandardOneIsReportedToo)
{
    platform.set_event_sink(&sink);
    open([](const AdOutcome&) { throw 3; });
    opened->close();

    EXPECT_NO_THROW(let_pass(1));

    EXPECT_THAT(sink.faults, SizeIs(1));
}

TEST_F(HostCallbackTest, ALogThatThrowsIsNotCalledAgainAndTheAdContinues)
{
    int calls = 0;
    int ends = 0;
    testing::internal::CaptureStderr();
    open([&ends](const AdOutcome&) { ++ends; },
         [&calls](ZulixLogTag, std::string_view) {
             ++calls;
             throw std::runtime_error("the log is full");
         });
    let_pass(3);
    const std::string errors = testing::internal::GetCapturedStderr();

    EXPECT_EQ(calls, 1);
    EXPECT_EQ(errors, "qoro: HostSetup::log has thrown: the log is full\n");
    EXPECT_FALSE(opened->has_ended());
    opened->close();
    let_pass(1);
    EXPECT_EQ(ends, 1);
}

TEST_F(HostCallbackTest, AnEventSinkThatThrowsIsNotCalledAgainWhileTheAdIsOpen)
{
    sink.throws = true;
    platform.set_event_sink(&sink);
    testing::internal::CaptureStderr();
    open(nullptr);
    let_pass(3);
    const std::string errors = testing::internal::GetCapturedStderr();

    EXPECT_EQ(sink.received, 1);
    EXPECT_THAT(errors, HasSubstr("EventSink has thrown: the sink is full"));
    EXPECT_FALSE(opened->has_ended());
}

TEST_F(HostCallbackTest, TheNextAdOpensInOnEndWhileTheLastObjectExists)
{
    std::vector<AdOutcome> outcomes;
    platform.set_event_sink(&sink);
    open([&](const AdOutcome& first) {
        outcomes.push_back(first);
        // The new ad is opened before the assignment destroys the last.
        opened = std::make_unique<OpenedAd>(platform, ten_second_ad(),
                                            [&](const AdOutcome& second) { outcomes.push_back(second); });
    });
    let_pass(4);
    opened->close(ClosedBy::Viewer);
    let_pass(3);
    ASSERT_THAT(outcomes, SizeIs(1));
    EXPECT_EQ(outcomes[0].end, AdEnd::Viewer);
    EXPECT_FALSE(opened->has_ended());

    opened->close();
    let_pass(1);

    ASSERT_THAT(outcomes, SizeIs(2));
    EXPECT_EQ(outcomes[1].end, AdEnd::Host);
    EXPECT_EQ(outcomes[1].lasted, 3);
    opened.reset();
    EXPECT_EQ(platform.event_sink(), &sink) << "the host's own sink is back";
}

TEST_F(HostCallbackTest, AnEndedAdThatIsStillOwnedLeavesTheNextOneAlone)
{
    std::unique_ptr<OpenedAd> next;
    open([&](const AdOutcome&) { next = std::make_unique<OpenedAd>(platform, ten_second_ad(), nullptr); });
    opened->close();
    let_pass(1);
    ASSERT_TRUE(next);

    opened->close();
    EXPECT_FALSE(opened->leave_screen());
    opened.reset();
    let_pass(3);

    EXPECT_FALSE(next->has_ended());
}

TEST_F(HostCallbackTest, AnAdIsRefusedUntilTheEndOfTheLastHasBeenReported)
{
    open(nullptr);
    opened->close();

    EXPECT_THROW(OpenedAd(platform, ten_second_ad(), nullptr), std::logic_error);
    let_pass(1);
    EXPECT_NO_THROW(OpenedAd(platform, ten_second_ad(), nullptr));
}

} // namespace
} // namespace qoro
