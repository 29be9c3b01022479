#include "host/OpenedAd.h"

#include "Base/VideoPlayer/QoroVideoWebViewController.h"
#include "simulator/SimulatedPlatform.h"
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

std::shared_ptr<QoroVideoAd> playing_ad()
{
    auto ad = std::make_shared<QoroVideoAd>();
    ad->strVideoUrl = "http://ad/v.mp4";
    ad->fVideoWidth = 1280;
    ad->fVideoHeight = 720;
    ad->portraitModeType = VIDEO_AND_WEBVIEW;
    ad->portraitVideoPos = TOP;
    ad->landscapeModeType = ONLY_VIDEO;
    ad->bIsAutoStart = true;
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
    std::shared_ptr<QoroVideoWebViewController> controller()
    {
        const PlatformScope scope(platform);
        for (const UIWindow& window : UIApplication::sharedApplication().windows())
            if (auto found = std::dynamic_pointer_cast<QoroVideoWebViewController>(window.rootViewController()))
                return found;
        return nullptr;
    }

    SimulatedPlatform platform{world_of(GetParam())};
    OpenedAd ad{platform, playing_ad(), nullptr};
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
