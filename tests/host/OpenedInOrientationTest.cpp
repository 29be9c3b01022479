#include "host/OpenedAd.h"

#include "simulator/SimulatedPlatform.h"
#include "tests/host/PlayingAd.h"
#include "views/ViewNode.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace qoro
{
namespace
{

struct Held {
    std::string name;
    UIDeviceOrientation device;
    UIInterfaceOrientation status_bar;
    bool landscape;
};

void PrintTo(const Held& held, std::ostream* out)
{
    *out << held.name;
}

std::shared_ptr<QoroVideoAd> ad_for_both()
{
    auto ad = playing_ad();
    ad->landscapeModeType = ONLY_VIDEO;
    return ad;
}

World world_of(const Held& held)
{
    World world;
    world.video.duration = 10;
    world.device.orientation = held.device;
    world.device.status_bar_orientation = held.status_bar;
    return world;
}

/// An ad that a host opens on a device of 375 × 812 points that is held in each orientation.
class OpenedInOrientation : public testing::TestWithParam<Held>
{
protected:
    std::shared_ptr<QoroVideoWebViewController> controller() { return open_controller(platform); }

    SimulatedPlatform platform{world_of(GetParam())};
    OpenedAd ad{platform, ad_for_both(), nullptr};
};

TEST_P(OpenedInOrientation, TheDeviceStaysAsItIsHeld)
{
    platform.run_until(2);

    EXPECT_EQ(platform.device().orientation(), GetParam().device);
}

TEST_P(OpenedInOrientation, TheAdTakesTheArrangementOfTheOrientation)
{
    platform.run_until(2);

    EXPECT_EQ(controller()->bIsVideoOrientationLandscape, GetParam().landscape);
}

TEST_P(OpenedInOrientation, ATouchReachesTheControls)
{
    platform.run_until(2);

    const auto held = controller();
    const PlatformScope scope(platform);
    for (const UIButton& button : {held->btnMute, held->btnPlayAndPause, held->btnClose})
        EXPECT_TRUE(touchable_point(*button.node()));
}

INSTANTIATE_TEST_SUITE_P(
    Each, OpenedInOrientation,
    testing::Values(Held{"Portrait", UIDeviceOrientationPortrait, UIInterfaceOrientationPortrait, false},
                    Held{"LandscapeLeft", UIDeviceOrientationLandscapeLeft, UIInterfaceOrientationLandscapeRight, true},
                    Held{"LandscapeRight", UIDeviceOrientationLandscapeRight, UIInterfaceOrientationLandscapeLeft,
                         true}),
    testing::PrintToStringParamName());

} // namespace
} // namespace qoro
