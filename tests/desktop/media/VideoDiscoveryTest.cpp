#include "desktop/media/VideoDiscovery.h"

#include "PlayerTest.h"
#include "tests/desktop/app/Command.h"

#include <gtest/gtest.h>

namespace qoro::test
{
namespace
{

TEST(VideoDiscovery, FindsTheDurationAndTheSizeOfAFile)
{
    const auto video = discover_video(Clip);
    ASSERT_TRUE(video);
    // tests/desktop/media/clips/make.sh
    EXPECT_EQ(video->duration, Duration);
    EXPECT_EQ(video->size, (CGSize{320, 180}));
}

TEST(VideoDiscovery, AFileThatIsNoVideoHasNoFacts)
{
    const ScratchFolder folder;
    EXPECT_FALSE(discover_video(folder.write("page.mp4", "<html>Sorry</html>")));
    EXPECT_FALSE(discover_video(folder.write("empty.mp4", "")));
    EXPECT_FALSE(discover_video(folder.path("missing.mp4")));
}

class GstPlayerDurationTest : public GstPlayerTest
{
};

TEST_F(GstPlayerDurationTest, IsReportedOncePerPlayerAndIsTheDiscoverers)
{
    std::vector<double> durations;
    watch.factory().options.on_duration = [&durations](double duration) { durations.push_back(duration); };
    watch.open(NSURL::fileURLWithPath(Clip));
    EXPECT_TRUE(watch.until([&] { return watch.has("state 1"); }));
    EXPECT_EQ(durations, std::vector<double>{discover_video(Clip)->duration});
}

} // namespace
} // namespace qoro::test
