#include "host/Rehearsal.h"

#include "formats/Steps.h"
#include "host/OpenedAd.h"
#include "simulator/SimulatedPlatform.h"

#include <gmock/gmock.h>

#include <functional>
#include <memory>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

// Steps that run while an ad is open, in virtual time.

namespace qoro
{
namespace
{

using testing::SizeIs;

struct RehearsalTest : testing::Test {
    void rehearse(std::string_view steps, std::function<void()> prepared = {})
    {
        const auto ad = std::make_shared<QoroVideoAd>();
        ad->strVideoUrl = "http://ad/v.mp4";
        ad->fVideoWidth = 1280;
        ad->fVideoHeight = 720;
        ad->portraitModeType = ONLY_VIDEO;
        ad->bIsAutoStart = true;
        opened = std::make_unique<OpenedAd>(
            platform, ad, [this](const AdOutcome& outcome) { outcomes.push_back(outcome); }, unguarded_host(),
            Rehearsal{read_steps(steps, "steps", true), platform, std::move(prepared)});
    }

    SimulatedPlatform platform;
    std::unique_ptr<OpenedAd> opened;
    std::vector<AdOutcome> outcomes;
};

TEST_F(RehearsalTest, WithoutAnOpenStepTheAdOpensAsTheFirstEventOfTheLoop)
{
    rehearse(R"([{"at": 4, "call": ["closeAction"]}])");
    platform.run_until(3.9);
    EXPECT_THAT(outcomes, SizeIs(0));

    platform.run_until(4);

    ASSERT_THAT(outcomes, SizeIs(1));
    EXPECT_EQ(outcomes[0].end, AdEnd::Viewer);
    EXPECT_EQ(outcomes[0].lasted, 4);
}

TEST_F(RehearsalTest, AnOpenStepOpensTheAdAtItsTime)
{
    rehearse(R"([{"at": 1, "open": 0}, {"at": 4, "call": ["closeAction"]}])");

    platform.run_until(4);

    ASSERT_THAT(outcomes, SizeIs(1));
    EXPECT_EQ(outcomes[0].lasted, 3);
}

TEST_F(RehearsalTest, TheCallbackRunsBetweenTheControllersCreationAndTheOpening)
{
    struct : EventSink {
        void receive(const Event& event) override { videos += std::holds_alternative<event::PlayerCreated>(event); }
        int videos = 0;
    } sink;
    platform.set_event_sink(&sink);
    // The controller forces the device upright as it is created.
    platform.device().force_orientation(UIDeviceOrientationLandscapeLeft);
    UIDeviceOrientation seen{};
    int videos = -1;

    rehearse("[]", [&] {
        seen = platform.device().orientation();
        videos = sink.videos;
    });
    platform.run_until(0);

    EXPECT_EQ(seen, UIDeviceOrientationPortrait);
    EXPECT_EQ(videos, 0);
    EXPECT_EQ(sink.videos, 1);
    opened.reset();
    platform.set_event_sink(nullptr);
}

TEST_F(RehearsalTest, AnAdWhoseControllerIsReleasedBeforeItOpensHasEnded)
{
    rehearse(R"([{"at": 1, "release": true}, {"at": 2, "open": 0}])");

    platform.run_until(5);

    ASSERT_THAT(outcomes, SizeIs(1));
    EXPECT_EQ(outcomes[0].end, AdEnd::Host);
}

TEST_F(RehearsalTest, NoStepRunsAfterTheAdWasDestroyed)
{
    rehearse(R"([{"at": 1, "call": ["closeAction"]}])");
    opened.reset();

    platform.run_until(2);

    EXPECT_THAT(outcomes, SizeIs(0));
}

TEST_F(RehearsalTest, ACloseOnBehalfOfTheViewerIsReportedAsTheViewers)
{
    rehearse("[]");
    platform.run_until(2);

    opened->close(ClosedBy::Viewer);
    platform.run_until(2);

    ASSERT_THAT(outcomes, SizeIs(1));
    EXPECT_EQ(outcomes[0].end, AdEnd::Viewer);
}

TEST_F(RehearsalTest, WithoutAScreenOfTheKitLeavingItHasNoEffect)
{
    rehearse("[]");
    platform.run_until(2);

    EXPECT_FALSE(opened->leave_screen());
    EXPECT_FALSE(opened->has_ended());
}

} // namespace
} // namespace qoro
