#include "app/PlayInput.h"
#include "formats/AdScenario.h"
#include "formats/DeviceModels.h"
#include "formats/InputError.h"
#include "tests/desktop/app/Command.h"

#include <gtest/gtest.h>

using namespace qoro;
using namespace qoro::test;

namespace
{
class PlayInputTest : public testing::Test
{
protected:
    PlayInputTest() { options.ad_file = folder.write("ad.json", R"({"strVideoUrl": "v.mp4"})"); }

    ScratchFolder folder;
    PlayOptions options;
};
} // namespace

TEST(PlayOptionsTest, ADeviceIsAModelOrASize)
{
    EXPECT_EQ(device_model("phone")->screen, (CGSize{375, 812}));
    EXPECT_TRUE(device_model("phone")->phone);
    EXPECT_EQ(device_model("tablet")->screen, (CGSize{768, 1024}));
    EXPECT_FALSE(device_model("tablet")->phone);
    EXPECT_EQ(device_model("320x568")->screen, (CGSize{320, 568}));
    EXPECT_TRUE(device_model("320x568")->phone);
    EXPECT_FALSE(device_model("600x960")->phone);
    EXPECT_FALSE(device_model("0x568"));
    EXPECT_FALSE(device_model("320x"));
    EXPECT_FALSE(device_model("320x568x2"));
    EXPECT_FALSE(device_model("320x-568"));
    EXPECT_FALSE(device_model("99999x1"));
    EXPECT_FALSE(device_model(""));
}

TEST_F(PlayInputTest, ByDefaultTheHostFollowsTheDeviceAndIdentifiersAreInvented)
{
    const PlayInput input = read_play_input(options);
    EXPECT_EQ(input.host.autorotates, (std::vector<std::int64_t>{1, 3, 4}));
    EXPECT_EQ(input.platform.device.autorotates, input.host.autorotates);
    EXPECT_TRUE(input.host.parent);
    EXPECT_EQ(input.platform.device.facts.imei, "356938035643809");
    EXPECT_EQ(input.host.guid, "g-1");
    EXPECT_FALSE(input.platform.device.can_open);
    EXPECT_TRUE(input.platform.calendar.allowed);
    EXPECT_FALSE(input.platform.volume);
    EXPECT_EQ(input.orientation, 1);
}

TEST_F(PlayInputTest, AFakeProgramTakesItsOwnAddressesOnly)
{
    const auto takes = [this](const char* address, bool waits) {
        return read_play_input(options).platform.device.stand_in.takes(NSURL::URLWithString(address), waits);
    };
    EXPECT_FALSE(read_play_input(options).platform.calendar.stand_in);
    EXPECT_FALSE(takes("sms:1", true));
    EXPECT_FALSE(takes("https://store.example/", true));
    options.fake_calendar = options.fake_composer = true;
    EXPECT_TRUE(read_play_input(options).platform.calendar.stand_in);
    EXPECT_TRUE(takes("sms:1", true));
    EXPECT_TRUE(takes("sms:1", false)) << "mraid.open does not wait";
    EXPECT_FALSE(takes("https://store.example/", true));
    EXPECT_EQ(read_play_input(options).host.store_page, "https://flathub.org/apps/{id}");
    options.fake_composer = false;
    options.fake_store = true;
    EXPECT_FALSE(takes("sms:1", true));
    EXPECT_TRUE(takes("https://store.example/", true));
    EXPECT_FALSE(takes("https://shop.example/", false)) << "the browser's";
    EXPECT_TRUE(takes("appstream://org.example.App", false));
    EXPECT_EQ(read_play_input(options).host.store_page, "");
}

TEST_F(PlayInputTest, ASimulatedAdHasTheDeviceAndTheHostOfAPlayedOne)
{
    AdScenarioParts parts{.ad_file = options.ad_file};
    parts.faults.duration = 10;
    const Scenario simulated = read_scenario(scenario_of_ad(parts).text, "test");
    const PlayInput played = read_play_input(options);

    EXPECT_EQ(simulated.world.device.facts.screen, played.platform.device.facts.screen);
    EXPECT_EQ(simulated.world.device.facts.phone, played.platform.device.facts.phone);
    EXPECT_EQ(simulated.host.autorotates, played.host.autorotates);
    EXPECT_EQ(simulated.host.root_view, played.host.root_view);
    EXPECT_EQ(simulated.host.parent, played.host.parent);
    EXPECT_EQ(simulated.host.key_window, played.host.key_window);
    EXPECT_EQ(simulated.host.guard.has_value(), played.host.guard.has_value());
    EXPECT_EQ(simulated.host.tracker_limit, played.host.tracker_limit);
    EXPECT_EQ(simulated.host.use_auto_rotate, played.host.use_auto_rotate);
    EXPECT_EQ(simulated.host.impression_policy, played.host.impression_policy);
}

TEST_F(PlayInputTest, AHostFileDescribesTheDeviceAndTheHost)
{
    options.host_file =
        folder.write("host.json", R"({"device": {"screen": [320, 568], "imei": null, "canOpen": ["tel:"],
        "outputVolume": 0.25, "volumeSlider": false, "calendar": false}, "host": {"autorotates": [1, 2], "guid": "other"}})");
    const PlayInput input = read_play_input(options);
    EXPECT_EQ(input.platform.device.facts.screen, (CGSize{320, 568}));
    EXPECT_FALSE(input.platform.device.facts.imei);
    EXPECT_EQ(input.platform.device.can_open, (std::vector<std::string>{"tel:"}));
    EXPECT_EQ(input.platform.volume, 0.25F);
    EXPECT_FALSE(input.platform.volume_slider);
    EXPECT_FALSE(input.platform.calendar.allowed);
    EXPECT_EQ(input.platform.device.autorotates, (std::vector<std::int64_t>{1, 2}));
    EXPECT_EQ(input.host.guid, "other");
    EXPECT_FALSE(input.host.parent);
}

TEST_F(PlayInputTest, ADeviceOnTheCommandLineOverridesTheHostFiles)
{
    options.host_file = folder.write("host.json", R"({"device": {"screen": [320, 568]}})");
    options.device = "tablet";
    options.phone = true;
    const PlayInput input = read_play_input(options);
    EXPECT_EQ(input.platform.device.facts.screen, (CGSize{768, 1024}));
    EXPECT_EQ(input.host.root_view, (CGSize{768, 1024}));
    EXPECT_TRUE(input.platform.device.facts.phone);
}

TEST_F(PlayInputTest, AHostThatIsLockedToLandscapeHasAWideScreen)
{
    options.locked_landscape = true;
    const PlayInput input = read_play_input(options);
    EXPECT_EQ(input.platform.device.facts.screen, (CGSize{812, 375}));
    EXPECT_EQ(input.host.root_view, (CGSize{812, 375}));
    EXPECT_EQ(input.platform.device.status_bar_orientation, 3);
    EXPECT_EQ(input.host.autorotates, (std::vector<std::int64_t>{3, 4}));
}

TEST_F(PlayInputTest, TheAdsFolderIsTheOneOfItsFile)
{
    EXPECT_EQ(read_play_input(options).folder + "/ad.json", options.ad_file);
}

TEST_F(PlayInputTest, AStorePageOnTheCommandLineOverridesTheHostFiles)
{
    EXPECT_EQ(read_play_input(options).host.store_page, "https://flathub.org/apps/{id}");
    options.host_file = folder.write("host.json", R"({"host": {"storePage": "http://host.example/{id}"}})");
    EXPECT_EQ(read_play_input(options).host.store_page, "http://host.example/{id}");
    options.store_page = "http://line.example/{id}";
    EXPECT_EQ(read_play_input(options).host.store_page, "http://line.example/{id}");
}

TEST_F(PlayInputTest, SafeAreasAreThoseOfTheModel)
{
    options.device = "iphone-15";
    options.safe_areas = true;

    EXPECT_EQ(read_play_input(options).portrait_insets.top, 59);
}

TEST_F(PlayInputTest, SafeAreasNeedAModel)
{
    options.device = "375x812";
    options.safe_areas = true;

    EXPECT_THROW(read_play_input(options), InputError);
}
