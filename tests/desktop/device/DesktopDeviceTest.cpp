#include "desktop/device/DesktopDevice.h"
#include "platform/Foundation.h"
#include "tests/desktop/support/BarePlatform.h"
#include "tests/desktop/support/Programs.h"

#include <gtest/gtest.h>

#include <vector>

using namespace qoro;

namespace
{
constexpr double Deadline = 90;

class Listener : public Object
{
public:
    void turned() { ++count; }
    int count = 0;
};

class DesktopDeviceTest : public testing::Test
{
protected:
    void SetUp() override
    {
        NSNotificationCenter::defaultCenter().addObserver(action<&Listener::turned>(listener.get(), "turned"),
                                                          UIApplicationDidChangeStatusBarFrameNotification);
    }
    void let_events_pass()
    {
        bool passed = false;
        platform.loop().post([&passed] { passed = true; });
        platform.loop().run_until([&passed] { return passed; }, Deadline);
    }

    test::BarePlatform platform;
    PlatformScope scope{platform};
    std::shared_ptr<Listener> listener = std::make_shared<Listener>();
    DesktopDevice device{platform, DesktopDeviceOptions{.autorotates = {1, 3}}};
};
} // namespace

TEST_F(DesktopDeviceTest, TurningReportsTheStatusBarWhereTheHostAllowsTheOrientation)
{
    device.turn(UIDeviceOrientationLandscapeLeft);
    EXPECT_EQ(device.orientation(), 3);
    EXPECT_EQ(device.status_bar_orientation(), 3);
    EXPECT_EQ(listener->count, 0) << "posted inside the call";
    let_events_pass();
    EXPECT_EQ(listener->count, 1);
}

TEST_F(DesktopDeviceTest, AnInterfaceHasRotatedAfterItsStatusBarWasReported)
{
    std::vector<int> rotated_from;
    device.on_interface_rotated = [&](int from) {
        EXPECT_EQ(listener->count, static_cast<int>(rotated_from.size()) + 1);
        rotated_from.push_back(from);
    };

    device.turn(UIDeviceOrientationLandscapeLeft);
    device.turn(UIDeviceOrientationLandscapeRight);
    EXPECT_TRUE(rotated_from.empty()) << "posted inside the call";
    let_events_pass();
    EXPECT_EQ(rotated_from, std::vector<int>{1});

    device.change({.status_bar_orientation = UIInterfaceOrientationPortrait});
    let_events_pass();
    EXPECT_EQ(rotated_from, (std::vector<int>{1, 3}));
}

TEST_F(DesktopDeviceTest, NoInterfaceRotatesToWhereTheViewerBegins)
{
    int rotations = 0;
    device.on_interface_rotated = [&](int) { ++rotations; };

    device.hold(UIDeviceOrientationLandscapeLeft);
    let_events_pass();

    EXPECT_EQ(device.orientation(), 3);
    EXPECT_EQ(device.status_bar_orientation(), 3);
    EXPECT_EQ(listener->count, 1);
    EXPECT_EQ(rotations, 0);
}

TEST_F(DesktopDeviceTest, TurningToAnOrientationTheHostForbidsReportsNothing)
{
    device.turn(UIDeviceOrientationLandscapeRight);
    let_events_pass();
    EXPECT_EQ(device.orientation(), 4);
    EXPECT_EQ(device.status_bar_orientation(), 1);
    EXPECT_EQ(listener->count, 0);
}

TEST_F(DesktopDeviceTest, AfterLyingFlatItTurnsFromItsPreviousOrientation)
{
    device.turn(UIDeviceOrientationLandscapeLeft);
    device.turn(UIDeviceOrientationFaceUp);
    EXPECT_EQ(device.orientation(), 5);
    EXPECT_EQ(device.status_bar_orientation(), 3);
    device.turn_clockwise();
    EXPECT_EQ(device.orientation(), 1);
}

TEST_F(DesktopDeviceTest, AForcedOrientationLastsUntilTheDeviceIsTurned)
{
    device.turn(UIDeviceOrientationLandscapeLeft);
    device.force_orientation(UIDeviceOrientationPortrait);
    EXPECT_EQ(device.orientation(), 1);
    EXPECT_EQ(device.status_bar_orientation(), 3);
    device.turn(UIDeviceOrientationLandscapeRight);
    EXPECT_EQ(device.orientation(), 4);
}

TEST_F(DesktopDeviceTest, FourQuarterTurnsAreAFullTurn)
{
    device.turn_counterclockwise();
    EXPECT_EQ(device.orientation(), 3);
    device.turn_counterclockwise();
    EXPECT_EQ(device.orientation(), 2);
    device.turn_counterclockwise();
    EXPECT_EQ(device.orientation(), 4);
    device.turn_counterclockwise();
    EXPECT_EQ(device.orientation(), 1);
    device.turn_clockwise();
    EXPECT_EQ(device.orientation(), 4);
    device.turn_clockwise();
    EXPECT_EQ(device.orientation(), 2);
}

TEST_F(DesktopDeviceTest, AChangeToTheSameOrientationReportsNothing)
{
    device.change({.orientation = UIDeviceOrientationPortrait,
                   .status_bar_orientation = UIInterfaceOrientationPortrait,
                   .status_bar_hidden = true});
    let_events_pass();
    EXPECT_TRUE(device.status_bar_hidden());
    EXPECT_EQ(listener->count, 0);
}

TEST_F(DesktopDeviceTest, TheHostsListOfOpenableSchemesIsUsed)
{
    DesktopDevice named(platform, {.can_open = {{"http:", "tel:"}}});
    EXPECT_TRUE(named.can_open(NSURL::URLWithString("tel:123")));
    EXPECT_FALSE(named.can_open(NSURL::URLWithString("sms:123")));
    EXPECT_FALSE(named.can_open(NSURL()));
}

TEST_F(DesktopDeviceTest, ASchemeCanBeOpenedWhenThisMachineHasAProgramForIt)
{
    EXPECT_TRUE(device.can_open(NSURL::URLWithString("qoro-test:x")));
    EXPECT_TRUE(device.can_open(NSURL::URLWithString("QORO-TEST:x")));
    EXPECT_FALSE(device.can_open(NSURL::URLWithString("qoro-other:x")));
    EXPECT_FALSE(device.can_open(NSURL::URLWithString("12345")));
}

TEST_F(DesktopDeviceTest, FilesOfThisMachineAreNotOpened)
{
    EXPECT_FALSE(device.can_open(NSURL::URLWithString("file:///etc/hostname")));
    EXPECT_FALSE(device.can_open(NSURL::fileURLWithPath("/etc/hostname")));
}

TEST_F(DesktopDeviceTest, OpeningPassesTheAddressToTheSchemesProgram)
{
    device.open(NSURL::URLWithString("qoro-test:some/where?x=1"));
    const test::Programs& programs = test::Programs::instance();
    EXPECT_TRUE(platform.loop().run_until([&] { return programs.opened() == "qoro-test:some/where?x=1\n"; }, Deadline))
        << programs.opened();
}

TEST_F(DesktopDeviceTest, AStandInShowsTheAddressesThatItTakes)
{
    std::vector<std::string> shown;
    std::function<void()> viewer_closes;
    DesktopDevice with(platform,
                       {.can_open = {{"tel:"}},
                        .stand_in = {.takes = [](const NSURL& address,
                                                 bool waits) { return waits || address.parts().has_scheme("sms"); },
                                     .show =
                                         [&](const NSURL& address, std::function<void()> closed) {
                                             shown.push_back(address.absoluteString().text());
                                             viewer_closes = std::move(closed);
                                         }}});
    EXPECT_TRUE(with.can_open(NSURL::URLWithString("sms:1")));
    EXPECT_FALSE(with.can_open(NSURL::URLWithString("https://shop.example/")));

    with.open(NSURL::URLWithString("sms:1"));
    EXPECT_FALSE(viewer_closes) << "the ad does not wait";
    int done = 0;
    with.open_and_wait(NSURL::URLWithString("https://store.example/"), [&done] { ++done; });
    let_events_pass();
    EXPECT_EQ(shown, (std::vector<std::string>{"sms:1", "https://store.example/"}));
    EXPECT_EQ(done, 0) << "the viewer is still there";
    viewer_closes();
    let_events_pass();
    EXPECT_EQ(done, 1);
}

TEST_F(DesktopDeviceTest, AWaitingScreenContinuesOnceTheProgramHasStartedOrIsMissing)
{
    int done = 0;
    device.open_and_wait(NSURL::URLWithString("qoro-test:waits"), [&] { ++done; });
    device.open_and_wait(NSURL::URLWithString("qoro-nobody:x"), [&] { ++done; });
    device.open_and_wait(NSURL::fileURLWithPath("/etc/hostname"), [&] { ++done; });
    EXPECT_EQ(done, 0) << "called inside the call";

    EXPECT_TRUE(platform.loop().run_until([&done] { return done == 3; }, Deadline)) << done;
}

TEST_F(DesktopDeviceTest, TurningIsReportedAlsoWhereTheHostDoesNotFollow)
{
    const auto watcher = std::make_shared<Listener>();
    NSNotificationCenter::defaultCenter().addObserver(action<&Listener::turned>(watcher.get(), "turned"),
                                                      UIDeviceOrientationDidChangeNotification);
    device.turn(UIDeviceOrientationLandscapeRight);
    EXPECT_EQ(watcher->count, 0) << "posted inside the call";
    let_events_pass();
    device.turn(UIDeviceOrientationLandscapeRight);
    let_events_pass();

    EXPECT_EQ(watcher->count, 1);
    EXPECT_EQ(listener->count, 0);
}
