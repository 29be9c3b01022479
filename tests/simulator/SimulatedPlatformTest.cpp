#include "simulator/SimulatedPlatform.h"

#include "platform/Foundation.h"
#include "platform/Numbers.h"
#include "platform/UIKit.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace qoro
{
namespace
{

using Texts = std::vector<std::string>;

/// Records every notification that it observes.
struct Observer : Object {
    void heard(const NSNotification& notification) { names.emplace_back(notification.name); }
    Texts names;
};

struct Page : WebListener {
    explicit Page(SimulatedPlatform& on_platform) : platform(on_platform) {}
    void did_start_load() override { note("start"); }
    void did_finish_load() override { note("end"); }
    bool should_start_load(const NSURL&, int) override { return true; }
    ScriptAnswer message(const ScriptMessage&) override { return {}; }
    void died(const std::string&) override {}
    void note(const char* what) { reports.push_back(shortest_text(platform.loop().now()) + " " + what); }

    SimulatedPlatform& platform;
    Texts reports;
};

std::shared_ptr<Observer> observe(SimulatedPlatform& platform, std::string_view name)
{
    const PlatformScope scope(platform);
    auto observer = std::make_shared<Observer>();
    NSNotificationCenter::defaultCenter().addObserver(action<&Observer::heard>(observer.get(), "heard:"), name);
    return observer;
}

World world_with_answer(const std::string& address, const NetAnswer& answer)
{
    World world;
    world.net[address] = answer;
    return world;
}

// ------------------------------------------------------------------------------------------------------------ network

TEST(SimulatedNet, AnUnlistedAddressAnswersWithSuccessAndNoBodyAsAnEventOfItsOwn)
{
    SimulatedPlatform platform;
    FetchAnswer answer;
    answer.body = "untouched";

    platform.fetcher().fetch("http://t/x", FetchKind::Tracker, [&](FetchAnswer got) { answer = std::move(got); });
    EXPECT_EQ(answer.body, "untouched");
    platform.run_until(0);

    EXPECT_TRUE(answer.ok);
    EXPECT_EQ(answer.body, "");
    EXPECT_EQ(answer.final_address, "http://t/x");
}

TEST(SimulatedNet, ANamedAddressAnswersAfterItsDelay)
{
    SimulatedPlatform platform(world_with_answer("http://ad/p", {true, "", "page", 0.2}));
    Texts answers;
    platform.fetcher().fetch("http://ad/p", FetchKind::Tracker,
                             [&](const FetchAnswer& got) { answers.push_back(got.body); });

    platform.run_until(0.199999);
    EXPECT_TRUE(answers.empty());
    platform.run_until(0.2);

    EXPECT_EQ(answers, Texts{"page"});
}

TEST(SimulatedNet, AFailureCarriesItsText)
{
    SimulatedPlatform platform(world_with_answer("http://ad/gone", {false, "not found", "", 0}));

    const FetchAnswer answer = platform.fetcher().fetch_now("http://ad/gone");

    EXPECT_FALSE(answer.ok);
    EXPECT_EQ(answer.error, "not found");
}

TEST(SimulatedNet, ASynchronousFetchAnswersAtOnceAndCountsTheTimeItWouldHaveBlocked)
{
    SimulatedPlatform platform(world_with_answer("http://ad/icon", {true, "", "icon", 0.7}));

    EXPECT_EQ(platform.fetcher().fetch_now("http://ad/icon").body, "icon");

    EXPECT_EQ(platform.loop().now(), 0);
    EXPECT_EQ(platform.fetcher().blocked_seconds(), 0.7);
}

TEST(SimulatedVideoCache, KnowsOnlyTheCopiesOfItsScenario)
{
    World world;
    world.cached["http://ad/v.mp4"] = "/cache/v.mp4";
    SimulatedPlatform platform(world);

    EXPECT_EQ(platform.video_cache().path_for("http://ad/v.mp4"), NSString("/cache/v.mp4"));
    EXPECT_EQ(platform.video_cache().path_for("http://ad/other.mp4"), NSString());
    EXPECT_EQ(platform.video_cache().path_for(nullptr), NSString());
}

// ----------------------------------------------------------------------------------------------------- text and images

TEST(SimulatedText, MeasuresATextByItsCodePoints)
{
    SimulatedPlatform platform;
    const CGSize box{1000, 1000};

    EXPECT_EQ(platform.text().measure("abc", {}, box), (CGSize{21, 16}));
    EXPECT_EQ(platform.text().measure("äß€😀", {}, box), (CGSize{28, 16}));
    EXPECT_EQ(platform.text().measure("", {}, box), (CGSize{0, 16}));
    EXPECT_EQ(platform.text().measure(nullptr, {}, box), (CGSize{0, 0}));
}

TEST(SimulatedText, ANamedTextHasItsSizeWhateverTheFont)
{
    World world;
    world.text["Buy now!"] = {80.3, 17.9};
    SimulatedPlatform platform(world);

    EXPECT_EQ(platform.text().measure("Buy now!", {"Arial", 99}, {1000, 1000}), (CGSize{80.3, 17.9}));
}

TEST(SimulatedText, IsCutToTheBox)
{
    SimulatedPlatform platform;

    EXPECT_EQ(platform.text().measure("abcdef", {}, {30, 10}), (CGSize{30, 10}));
}

TEST(SimulatedImages, RecognisePicturesByTheSignaturesOfPngAndJpeg)
{
    SimulatedPlatform platform;

    EXPECT_TRUE(platform.images().decode(NSData(std::string("\x89PNG\r\n\x1a\n rest"))));
    EXPECT_TRUE(platform.images().decode(NSData(std::string("\xff\xd8\xff\xe0"))));
    EXPECT_FALSE(platform.images().decode(NSData(std::string("\x89PNG\r\n"))));
    EXPECT_FALSE(platform.images().decode(NSData(std::string("GIF89a"))));
    EXPECT_FALSE(platform.images().decode(NSData(std::string())));
}

// ------------------------------------------------------------------------------------------------------------- device

TEST(SimulatedDevice, OpensAddressesWithAListedPrefix)
{
    SimulatedPlatform platform;

    EXPECT_TRUE(platform.device().can_open(NSURL::URLWithString("tel:123")));
    EXPECT_TRUE(platform.device().can_open(NSURL::URLWithString("https://a")));
    EXPECT_FALSE(platform.device().can_open(NSURL::URLWithString("market://a")));
}

TEST(SimulatedDevice, AForcedOrientationLastsUntilTheDeviceIsTurned)
{
    SimulatedPlatform platform;

    platform.device().force_orientation(UIDeviceOrientationLandscapeRight);
    EXPECT_EQ(platform.device().orientation(), 4);
    DeviceChange turn;
    turn.orientation = UIDeviceOrientationLandscapeLeft;
    platform.change_device(turn);

    EXPECT_EQ(platform.device().orientation(), 3);
}

TEST(SimulatedDevice, ANewStatusBarOrientationPostsItsNotificationAndTheSameOneDoesNot)
{
    SimulatedPlatform platform;
    const auto observer = observe(platform, UIApplicationDidChangeStatusBarFrameNotification);
    DeviceChange change;
    change.status_bar_orientation = UIInterfaceOrientationLandscapeRight;

    platform.change_device(change);
    platform.change_device(change);

    EXPECT_EQ(observer->names.size(), 1U);
}

TEST(SimulatedDevice, ANewDeviceOrientationPostsNoStatusBarNotification)
{
    SimulatedPlatform platform;
    const auto observer = observe(platform, UIApplicationDidChangeStatusBarFrameNotification);
    DeviceChange change;
    change.orientation = UIDeviceOrientationLandscapeLeft;

    platform.change_device(change);
    platform.run_until(1);

    EXPECT_TRUE(observer->names.empty());
}

TEST(SimulatedVolume, AChangeIsReportedAsAnEventOfItsOwn)
{
    SimulatedPlatform platform;
    const auto observer = observe(platform, SystemVolumeDidChangeNotification);
    DeviceChange change;
    change.output_volume = 0.25F;

    platform.change_device(change);
    EXPECT_TRUE(observer->names.empty());
    EXPECT_EQ(platform.volume().value(), 0.25F);
    platform.run_until(0);

    EXPECT_EQ(observer->names.size(), 1U);
}

TEST(SimulatedVolume, SettingTheCurrentVolumeIsNoChange)
{
    SimulatedPlatform platform;
    const auto observer = observe(platform, SystemVolumeDidChangeNotification);

    platform.volume().set_value(0.6F);
    platform.run_until(1);

    EXPECT_TRUE(observer->names.empty());
}

// --------------------------------------------------------------------------------------------------------------- page

TEST(SimulatedWebEngine, ReportsALoadsStartAsAnEventOfItsOwnAndItsEndATenthOfASecondLater)
{
    SimulatedPlatform platform;
    Page page(platform);
    const auto engine = platform.web_engines().make_web_engine(page, PageKind::Creative);

    engine->load_html("<p>", NSURL::URLWithString("http://ad/p"));
    EXPECT_TRUE(page.reports.empty());
    platform.run_until(1);

    EXPECT_EQ(page.reports, (Texts{"0 start", "0.1 end"}));
    EXPECT_EQ(engine->current_address().absoluteString(), NSString("http://ad/p"));
}

TEST(SimulatedWebEngine, ANullPageReportsLikeAnyOther)
{
    SimulatedPlatform platform;
    Page page(platform);
    const auto engine = platform.web_engines().make_web_engine(page, PageKind::Creative);

    engine->load_html(nullptr, nullptr);
    platform.run_until(1);

    EXPECT_EQ(page.reports, (Texts{"0 start", "0.1 end"}));
}

TEST(SimulatedWebEngine, AFurtherPageEndsTheLoadBeforeIt)
{
    SimulatedPlatform platform;
    Page page(platform);
    const auto engine = platform.web_engines().make_web_engine(page, PageKind::Creative);

    engine->load_html("first", nullptr);
    platform.run_until(0.05);
    engine->load_html("second", nullptr);
    platform.run_until(1);

    EXPECT_EQ(page.reports, (Texts{"0 start", "0.05 start", "0.15 end"}));
}

TEST(SimulatedWebEngine, ADestroyedEngineReportsNothing)
{
    SimulatedPlatform platform;
    Page page(platform);
    auto engine = platform.web_engines().make_web_engine(page, PageKind::Creative);

    engine->load_html("page", nullptr);
    engine.reset();
    platform.run_until(1);

    EXPECT_TRUE(page.reports.empty());
}

} // namespace
} // namespace qoro
