#include "host/OpenedTag.h"
#include "host/Rehearsal.h"

#include "host/OpenedAd.h"
#include "simulator/SimulatedPlatform.h"
#include "tests/host/PlayingAd.h"
#include "tests/support/TagRun.h"
#include "vast/Reader.h"

#include <gmock/gmock.h>

#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace qoro
{
namespace
{

using test::ad_element;
using test::TagAd;
using test::vast_document;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testing::UnorderedElementsAre;
using Texts = std::vector<std::string>;

/// An ad with trackers of start and complete and an error address, at paths that begin with a name.
TagAd named(const std::string& name, const std::string& attributes = "")
{
    return {.attributes = attributes,
            .in_line = "<Error>http://t/" + name + "/error?[ERRORCODE]</Error>",
            .events = {"start", "complete"},
            .media = "<MediaFile delivery=\"progressive\" type=\"video/mp4\">http://m/" + name + ".mp4</MediaFile>",
            .prefix = name + "/"};
}

event::PageError resource_error(const char* address)
{
    return {.kind = "resource", .message = "", .file = address, .line = {}, .status = 404, .times = 1};
}

/// Records the trackers and the lines of tags.
class Record final : public EventSink
{
public:
    void receive(const Event& event) override
    {
        if (const auto* const tracked = std::get_if<event::VastTracked>(&event))
            sent.emplace_back(tracked->url.view().substr(std::string_view("http://t/").size()));
        if (const auto* const begun = std::get_if<event::VastAdBegun>(&event))
            begun_videos.emplace_back(begun->video.view());
        if (const auto* const failed = std::get_if<event::VastFailed>(&event))
            failures.push_back(static_cast<int>(failed->error));
        if (const auto* const without = std::get_if<event::VastWithoutAd>(&event))
            without_ad.push_back(static_cast<int>(without->error));
        if (const auto* const fault = std::get_if<event::Faulted>(&event))
            faults.emplace_back(fault->operation.view());
        if (reacts)
            reacts(event);
    }

    Texts sent;
    Texts begun_videos;
    std::vector<int> failures;
    std::vector<int> without_ad;
    Texts faults;
    std::function<void(const Event&)> reacts;
};

/// A host that opens tags in virtual time. Each video lasts four seconds and plays 0.3 s after its ad has opened.
class OpenedTagTest : public testing::Test
{
protected:
    OpenedTagTest()
    {
        world.video.duration = 4;
        host.guard.reset();
    }
    ~OpenedTagTest() override
    {
        tag.reset();
        platform->set_event_sink(nullptr);
    }

    void serve(const std::string& address, const std::string& ads) { world.net[address].body = vast_document(ads); }
    void open(const std::string& address = test::TagAddress)
    {
        if (!platform) {
            platform.emplace(world);
            platform->set_event_sink(&record);
        }
        tag = std::make_unique<OpenedTag>(
            *platform, OpenedTag::Tag{.address = address},
            [this](const TagOutcome& outcome) {
                outcomes.push_back(outcome);
                if (at_end)
                    at_end();
            },
            host, options);
    }
    void let_pass(double seconds) { platform->run_until(platform->loop().now() + seconds); }
    /// The player of the ad that is open fails for good, with a reason.
    void fail_video(const std::string& reason)
    {
        platform->emit(event::PlayerFailed{reason});
        const auto controller = open_controller(*platform);
        PlayerNews news;
        news.finish = MPMovieFinishReasonPlaybackError;
        platform->bring_news(controller->qoroMoviePlayer, news);
    }

    World world;
    HostSetup host;
    TagOptions options;
    Record record;
    std::optional<SimulatedPlatform> platform;
    std::unique_ptr<OpenedTag> tag;
    std::vector<TagOutcome> outcomes;
    std::function<void()> at_end;
};

/// Calls a function for each of a tag's ads.
struct Observer : TagObserver {
    void ad_begins(const vast::ResolvedAd&, std::size_t n, std::size_t of) override
    {
        calls.push_back("begins " + std::to_string(n) + "/" + std::to_string(of));
        if (begins)
            begins();
    }
    void ad_ended(std::size_t n, const AdOutcome& outcome) override
    {
        calls.push_back("ended " + std::to_string(n) + " " + std::string(words_for(outcome.end)));
        if (ended)
            ended();
    }
    void ad_failed(const vast::FailedAd& failed) override
    {
        failures.push_back(std::to_string(failed.code) + " with " + std::to_string(failed.errors.size()));
        if (fails)
            fails();
    }
    Texts calls;
    Texts failures;
    std::function<void()> begins;
    std::function<void()> ended;
    std::function<void()> fails;
};

// -----------------------------------------------------------------------------------------------------------------
// pods

TEST_F(OpenedTagTest, APodPlaysItsAdsInTheirSequenceAndEndsWithTheViewersClose)
{
    serve(test::TagAddress, ad_element(named("b", "sequence=\"2\"")) + ad_element(named("a", "sequence=\"1\"")));
    Observer observer;
    options.observer = &observer;
    open();
    let_pass(20);

    EXPECT_THAT(record.begun_videos, ElementsAre("http://m/a.mp4", "http://m/b.mp4"));
    EXPECT_THAT(record.sent,
                ElementsAre("a/impression", "a/start", "a/complete", "b/impression", "b/start", "b/complete"));
    EXPECT_THAT(outcomes, IsEmpty()) << "the last ad stays until it is closed";
    tap_on(*platform, &QoroVideoWebViewController::btnClose);
    let_pass(0);

    ASSERT_THAT(outcomes, SizeIs(1));
    ASSERT_THAT(outcomes[0].ads, SizeIs(2));
    EXPECT_EQ(outcomes[0].ads[0].end, AdEnd::Video);
    EXPECT_EQ(outcomes[0].ads[1].end, AdEnd::Viewer);
    EXPECT_EQ(outcomes[0].error, std::nullopt);
    EXPECT_THAT(observer.calls, ElementsAre("begins 0/2", "ended 0 closed at its video's end", "begins 1/2",
                                            "ended 1 closed by the viewer"));
}

TEST_F(OpenedTagTest, ASkipGoesOnWithTheNextAd)
{
    TagAd first = named("a", "sequence=\"1\"");
    first.linear = "skipoffset=\"00:00:01\"";
    first.events.emplace_back("skip");
    serve(test::TagAddress, ad_element(first) + ad_element(named("b", "sequence=\"2\"")));
    open();
    let_pass(2);
    tap_on(*platform, &QoroVideoWebViewController::btnClose);
    let_pass(1);

    EXPECT_THAT(record.sent, ElementsAre("a/impression", "a/start", "a/skip", "b/impression", "b/start"));
}

TEST_F(OpenedTagTest, TheHostsCloseEndsThePodAndTheOtherAdsAreReportedAsNotServed)
{
    serve(test::TagAddress, ad_element(named("a", "sequence=\"1\"")) + ad_element(named("b", "sequence=\"2\"")) +
                                ad_element(named("c", "sequence=\"3\"")));
    open();
    let_pass(2);
    tag->close();
    let_pass(10);

    EXPECT_THAT(record.sent, ElementsAre("a/impression", "a/start", "b/error?206", "c/error?206"));
    ASSERT_THAT(outcomes, SizeIs(1));
    ASSERT_THAT(outcomes[0].ads, SizeIs(1));
    EXPECT_EQ(outcomes[0].ads[0].end, AdEnd::Host);
}

TEST_F(OpenedTagTest, AnAdThatFailsDoesNotEndThePod)
{
    serve(test::TagAddress, ad_element(named("a", "sequence=\"1\"")) + ad_element(named("b", "sequence=\"2\"")));
    open();
    let_pass(0.1);
    fail_video("HTTP status 404");
    let_pass(1);

    EXPECT_THAT(record.sent, ElementsAre("a/error?401", "b/impression", "b/start"));
    EXPECT_THAT(record.failures, ElementsAre(401));
    tag->close();
    let_pass(0);
    ASSERT_THAT(outcomes, SizeIs(1));
    EXPECT_EQ(outcomes[0].ads[0].end, AdEnd::Failed);
    EXPECT_EQ(outcomes[0].ads[0].error, "HTTP status 404");
    EXPECT_EQ(outcomes[0].ads[1].end, AdEnd::Host);
}

// --------------------------------------------------------------------------------------------------- stand-alone ads

TEST_F(OpenedTagTest, AStandAloneAdReplacesAnAdOfThePodThatFailsWhileItIsPlayed)
{
    serve(test::TagAddress, ad_element(named("spare")) + ad_element(named("a", "sequence=\"1\"")) +
                                ad_element(named("b", "sequence=\"2\"")));
    open();
    let_pass(0.1);
    fail_video("");
    let_pass(9);

    EXPECT_THAT(record.sent, ElementsAre("a/error?405", "spare/impression", "spare/start", "spare/complete",
                                         "b/impression", "b/start", "b/complete"));
}

TEST_F(OpenedTagTest, StandAloneAdsAreTriedInOrderAlsoThoseInWrappers)
{
    serve(test::TagAddress,
          ad_element(named("a")) +
              test::wrapper_element("http://ads/none", "<Error>http://t/w/error?[ERRORCODE]</Error>") +
              test::wrapper_element("http://ads/spare", "<Impression>http://t/w/impression</Impression>"));
    serve("http://ads/none", "");
    serve("http://ads/spare", ad_element(named("spare")));
    open();
    let_pass(0.1);
    fail_video("");
    let_pass(1);

    EXPECT_THAT(record.sent,
                ElementsAre("a/error?405", "w/error?303", "spare/impression", "w/impression", "spare/start"));
    EXPECT_THAT(record.failures, ElementsAre(405, 303));
}

TEST_F(OpenedTagTest, AnAdThatHasPlayedIsNotReplaced)
{
    serve(test::TagAddress, ad_element(named("a")) + ad_element(named("spare")));
    open();
    let_pass(2);
    fail_video("");
    platform->run_until(platform->loop().now());
    fail_video("");
    let_pass(30);

    EXPECT_THAT(record.begun_videos, ElementsAre("http://m/a.mp4"));
}

// -------------------------------------------------------------------------------------------------------- error codes

struct Reason {
    const char* reason;
    int code;
};

class VideoFailure : public OpenedTagTest, public testing::WithParamInterface<Reason>
{
};

TEST_P(VideoFailure, HasTheStandardsCode)
{
    serve(test::TagAddress, ad_element(named("a")));
    open();
    let_pass(0.1);
    fail_video(GetParam().reason);
    let_pass(1);

    EXPECT_THAT(record.sent, ElementsAre("a/error?" + std::to_string(GetParam().code)));
    ASSERT_THAT(outcomes, SizeIs(1));
    EXPECT_EQ(outcomes[0].ads.at(0).end, AdEnd::Failed);
}

INSTANTIATE_TEST_SUITE_P(Reasons, VideoFailure,
                         testing::Values(Reason{"HTTP status 404", 401}, Reason{"its server can't be reached", 401},
                                         Reason{"its server does not answer", 402}, Reason{"it is no video", 405},
                                         Reason{"", 405}, Reason{"GStreamer has no element decodebin", 400}));

TEST_F(OpenedTagTest, ARequiredCompanionThatCannotBeShownIsError602AndTheAdIsNotPlayed)
{
    TagAd ad = named("a", "sequence=\"1\"");
    ad.creatives = R"(<Creative><CompanionAds required="all"><Companion width="1" height="1"><StaticResource
                      creativeType="application/x-shockwave-flash">http://i/c.swf</StaticResource></Companion>
                      </CompanionAds></Creative>)";
    serve(test::TagAddress, ad_element(ad) + ad_element(named("b", "sequence=\"2\"")));
    open();
    let_pass(1);

    EXPECT_THAT(record.sent, ElementsAre("a/error?602", "b/impression", "b/start"));
    EXPECT_THAT(record.begun_videos, ElementsAre("http://m/b.mp4"));
}

TEST_F(OpenedTagTest, ATagOfWhichNoAdCouldBeOpenedHasAnError)
{
    TagAd ad = named("a");
    ad.creatives =
        R"(<Creative><CompanionAds required="any"><Companion width="1" height="1"/></CompanionAds></Creative>)";
    serve(test::TagAddress, "<Error>http://t/document/error?[ERRORCODE]</Error>" + ad_element(ad));
    Observer observer;
    options.observer = &observer;
    open();
    let_pass(1);

    EXPECT_THAT(record.sent, ElementsAre("a/error?602", "document/error?602")) << "those of every document";
    EXPECT_THAT(record.failures, ElementsAre(602));
    EXPECT_THAT(record.without_ad, ElementsAre(602));
    EXPECT_THAT(observer.failures, ElementsAre("602 with 0", "602 with 2")) << "the ad, and the tag";
    EXPECT_THAT(observer.calls, IsEmpty());
    ASSERT_THAT(outcomes, SizeIs(1));
    EXPECT_EQ(outcomes[0].error, 602);
    EXPECT_THAT(outcomes[0].ads, IsEmpty());
}

TEST_F(OpenedTagTest, TheHostIsNotifiedOfAnAdThatIsNotOpenedBeforeItsErrorTrackers)
{
    TagAd ad = named("a", "sequence=\"1\"");
    ad.media = R"(<MediaFile delivery="streaming" type="video/mp4">http://m/a.mp4</MediaFile>)";
    serve(test::TagAddress, ad_element(ad) + ad_element(named("b", "sequence=\"2\"")));
    Observer observer;
    options.observer = &observer;
    observer.fails = [&] { EXPECT_THAT(record.sent, IsEmpty()); };
    open();
    let_pass(0.1);

    EXPECT_THAT(observer.failures, ElementsAre("403 with 1"));
    EXPECT_THAT(observer.calls, ElementsAre("begins 0/1"));
    EXPECT_THAT(record.sent, ElementsAre("a/error?403"));
}

TEST_F(OpenedTagTest, TheHostsLogHasWhatOfTheTagHasNoEffectOnce)
{
    TagAd ad = named("a");
    ad.in_line = "<Survey>http://t/survey</Survey>";
    serve(test::TagAddress, ad_element(ad));
    Texts notes;
    host.log = [&](ZulixLogTag level, std::string_view message) {
        if (level == ZulixLogTagOfNote && message.find("Survey") != std::string_view::npos)
            notes.emplace_back(message);
    };
    open();
    let_pass(1);

    EXPECT_THAT(notes, ElementsAre("/VAST/Ad/InLine/Survey: surveys are not supported"));
}

TEST_F(OpenedTagTest, TheHostMayDestroyTheTagWhenAnAdFails)
{
    TagAd ad = named("a", "sequence=\"1\"");
    ad.media = R"(<MediaFile delivery="streaming" type="video/mp4">http://m/a.mp4</MediaFile>)";
    serve(test::TagAddress, ad_element(ad) + ad_element(named("b", "sequence=\"2\"")));
    Observer observer;
    options.observer = &observer;
    observer.fails = [&] { tag.reset(); };
    open();
    let_pass(20);

    EXPECT_THAT(outcomes, IsEmpty());
    EXPECT_THAT(observer.calls, IsEmpty());
    EXPECT_THAT(record.begun_videos, IsEmpty());
    EXPECT_THAT(record.sent, UnorderedElementsAre("a/error?403", "b/error?206"));
    EXPECT_EQ(platform->event_sink(), &record);
}

TEST_F(OpenedTagTest, ACompanionThatCannotBeFetchedIsError603)
{
    TagAd ad = named("a");
    ad.creatives = R"(<Creative><CompanionAds><Companion width="1" height="1"><StaticResource creativeType="image/png">
                      http://i/c.png?[ASSETURI]</StaticResource></Companion></CompanionAds></Creative>)";
    serve(test::TagAddress, ad_element(ad));
    open();
    let_pass(1);
    record.sent.clear();
    platform->emit(resource_error("http://i/other.png"));
    EXPECT_THAT(record.sent, IsEmpty());
    platform->emit(resource_error("http://i/c.png?http%3A%2F%2Fm%2Fa.mp4"));

    EXPECT_THAT(record.sent, ElementsAre("a/error?603"));
    EXPECT_NE(open_controller(*platform), nullptr) << "the ad goes on";
}

TEST_F(OpenedTagTest, ATagThatCannotBeFetchedHasNoAd)
{
    world.net[test::TagAddress].ok = false;
    world.net[test::TagAddress].error = "HTTP status 500";
    open();
    let_pass(1);

    ASSERT_THAT(outcomes, SizeIs(1));
    EXPECT_EQ(outcomes[0].error, 900);
    EXPECT_THAT(outcomes[0].why, testing::HasSubstr("HTTP status 500"));
}

// ------------------------------------------------------------------------------------------------------------ the host

TEST_F(OpenedTagTest, ATextThatIsNoTagThrowsAndLeavesThePlatformAsItWas)
{
    platform.emplace(world);
    platform->set_event_sink(&record);

    EXPECT_THROW(OpenedTag(*platform, {.text = "<html/>"}, nullptr, host, options), vast::DocumentError);
    EXPECT_EQ(platform->event_sink(), &record);
}

TEST_F(OpenedTagTest, ASecondTagOnThePlatformThrows)
{
    serve(test::TagAddress, ad_element(named("a")));
    open();

    EXPECT_THROW(OpenedTag(*platform, {.address = "http://ads/other"}, nullptr, host, options), std::logic_error);
    let_pass(1);
    EXPECT_THAT(record.begun_videos, SizeIs(1));
}

TEST_F(OpenedTagTest, AnAdAndATagExcludeEachOther)
{
    serve(test::TagAddress, ad_element(named("a")));
    platform.emplace(world);
    platform->set_event_sink(&record);
    auto ad = std::make_unique<OpenedAd>(*platform, playing_ad(), nullptr);
    EXPECT_THROW(open(), std::logic_error);
    ad.reset();

    open();
    EXPECT_THROW(OpenedAd(*platform, playing_ad(), nullptr), std::logic_error) << "while it is resolved";
    let_pass(1);
    EXPECT_THROW(OpenedAd(*platform, playing_ad(), nullptr), std::logic_error);
    tag.reset();
    EXPECT_NO_THROW(OpenedAd(*platform, playing_ad(), nullptr));
    EXPECT_EQ(platform->event_sink(), &record);
}

TEST_F(OpenedTagTest, ATagMayFollowAnAdThatHasEndedAndStillExists)
{
    serve(test::TagAddress, ad_element(named("a")));
    platform.emplace(world);
    platform->set_event_sink(&record);
    auto ad = std::make_unique<OpenedAd>(*platform, playing_ad(), [this](const AdOutcome&) { open(); });
    let_pass(1);
    ad->close();
    let_pass(1);
    ad.reset();
    let_pass(1);

    EXPECT_THAT(record.sent, ElementsAre("a/impression", "a/start"));
}

TEST_F(OpenedTagTest, TheNextTagMayBeOpenedInTheReportOfTheEnd)
{
    serve(test::TagAddress, ad_element(named("a")));
    serve("http://ads/next", ad_element(named("b")));
    std::unique_ptr<OpenedTag> first;
    at_end = [&] {
        if (outcomes.size() > 1)
            return;
        first = std::move(tag);
        open("http://ads/next");
    };
    open();
    let_pass(1);
    tag->close();
    let_pass(1);
    first.reset();
    let_pass(1);
    tag->close();
    let_pass(0);

    EXPECT_THAT(record.sent, ElementsAre("a/impression", "a/start", "b/impression", "b/start"));
    EXPECT_THAT(outcomes, SizeIs(2));
}

TEST_F(OpenedTagTest, ATagThatHasEndedLeavesThePlatformToAnAd)
{
    serve(test::TagAddress, ad_element(named("a")));
    std::unique_ptr<OpenedAd> ad;
    at_end = [&] { ad = std::make_unique<OpenedAd>(*platform, playing_ad(), nullptr); };
    open();
    let_pass(1);
    tag->close();
    let_pass(1);
    tag.reset();
    let_pass(1);

    EXPECT_FALSE(ad->has_ended());
    ad.reset();
    EXPECT_EQ(platform->event_sink(), &record);
}

TEST_F(OpenedTagTest, ItMayBeDestroyedInEachCallback)
{
    serve(test::TagAddress, ad_element(named("a", "sequence=\"1\"")) + ad_element(named("b", "sequence=\"2\"")));
    Observer observer;
    options.observer = &observer;
    const auto destroy = [&] { tag.reset(); };

    observer.begins = destroy;
    open();
    let_pass(20);
    EXPECT_THAT(record.begun_videos, SizeIs(1));
    EXPECT_EQ(open_controller(*platform), nullptr);
    EXPECT_EQ(platform->event_sink(), &record);

    observer = {};
    observer.ended = destroy;
    open();
    let_pass(20);
    EXPECT_THAT(observer.calls, SizeIs(2)) << "after it, no call follows";
    EXPECT_EQ(platform->event_sink(), &record);

    observer = {};
    at_end = destroy;
    open();
    let_pass(20);
    tap_on(*platform, &QoroVideoWebViewController::btnClose);
    let_pass(1);
    EXPECT_EQ(tag, nullptr);
    EXPECT_THAT(outcomes, SizeIs(1));
    EXPECT_EQ(platform->event_sink(), &record);
}

TEST_F(OpenedTagTest, ItMayBeClosedInEachCallbackAndEndsOnce)
{
    serve(test::TagAddress, ad_element(named("a", "sequence=\"1\"")) + ad_element(named("b", "sequence=\"2\"")));
    Observer observer;
    options.observer = &observer;
    observer.begins = [&] { tag->close(); };
    open();
    let_pass(1);
    ASSERT_THAT(outcomes, SizeIs(1));
    EXPECT_THAT(outcomes[0].ads, IsEmpty());
    EXPECT_EQ(outcomes[0].error, std::nullopt) << "the host wanted it so";
    EXPECT_THAT(record.sent, ElementsAre("a/error?206", "b/error?206"));
    tag.reset();

    observer = {};
    observer.ended = [&] { tag->close(); };
    open();
    let_pass(20);
    ASSERT_THAT(outcomes, SizeIs(2));
    EXPECT_THAT(outcomes[1].ads, SizeIs(1));
}

TEST_F(OpenedTagTest, ItMayBeClosedAndDestroyedWhileItIsResolved)
{
    serve(test::TagAddress, ad_element(named("a")));
    world.net[test::TagAddress].after = 2;
    open();
    let_pass(1);
    tag->close();
    let_pass(5);
    ASSERT_THAT(outcomes, SizeIs(1));
    EXPECT_THAT(outcomes[0].ads, IsEmpty());
    tag.reset();

    open();
    let_pass(1);
    tag.reset();
    let_pass(5);
    EXPECT_THAT(outcomes, SizeIs(1));
    EXPECT_THAT(record.begun_videos, IsEmpty());
}

TEST_F(OpenedTagTest, ExceptionsOfTheHostAreReportedAndTheAdsGoOn)
{
    serve(test::TagAddress, ad_element(named("a", "sequence=\"1\"")) + ad_element(named("b", "sequence=\"2\"")));
    const auto throws = [] { throw std::runtime_error("no"); };
    Observer observer;
    observer.begins = throws;
    observer.ended = throws;
    options.observer = &observer;
    options.clock = [&]() -> double { throw std::runtime_error("no clock"); };
    options.random = [&]() -> std::uint32_t { throw std::runtime_error("no numbers"); };
    options.resolver.requests = [&](const std::string&) { throw std::runtime_error("no"); };
    at_end = throws;
    open();
    let_pass(20);
    tap_on(*platform, &QoroVideoWebViewController::btnClose);
    let_pass(1);

    EXPECT_THAT(record.sent,
                ElementsAre("a/impression", "a/start", "a/complete", "b/impression", "b/start", "b/complete"));
    EXPECT_THAT(outcomes, SizeIs(1));
    for (const char* callback : {"ResolverOptions::requests", "TagObserver::ad_begins", "TagObserver::ad_ended",
                                 "OpenedTag::OnEnd", "TagOptions::clock"})
        EXPECT_THAT(record.faults, testing::Contains(callback));
}

TEST_F(OpenedTagTest, WhatPermitsCannotSayIsRefused)
{
    serve(test::TagAddress, test::wrapper_element("http://ads/2", "<Error>http://t/w/error?[ERRORCODE]</Error>"));
    serve("http://ads/2", ad_element(named("a")));
    options.resolver.permits = [](const std::string&, const std::string&) -> bool { throw std::runtime_error("no"); };
    open();
    let_pass(1);

    EXPECT_THAT(record.sent, ElementsAre("w/error?300"));
}

struct Unsupporting final : vast::MediaSupport {
    bool can_play(const std::string&, const std::string&) const override { throw std::runtime_error("no"); }
};

TEST_F(OpenedTagTest, WhatTheSupportCannotSayCannotBePlayed)
{
    serve(test::TagAddress, ad_element(named("a")));
    const Unsupporting support;
    options.support = &support;
    open();
    let_pass(1);

    EXPECT_THAT(record.sent, ElementsAre("a/error?403"));
}

TEST_F(OpenedTagTest, TheHostsValuesOfMacrosReachTheTrackersAndTheTagsAddress)
{
    options.macros.publisher.domain = "news.example";
    options.clock = [] { return 1'700'000'000.5; };
    options.random = [] { return 12'345'678U; };
    TagAd ad = named("a");
    ad.tracking = "<Tracking event=\"start\">http://t/[DOMAIN]/[TIMESTAMP]/[PODSEQUENCE]/[ADCOUNT]</Tracking>";
    serve("http://ads/tag?d=news.example", ad_element(ad));
    open("http://ads/tag?d=[DOMAIN]");
    let_pass(1);

    EXPECT_THAT(record.sent,
                ElementsAre("a/impression", "a/start", "news.example/2023-11-14T22%3A13%3A20.500%2B00/-1/1"));
}

TEST_F(OpenedTagTest, AllRequestsOfATagHaveTheSameTransactionId)
{
    const std::string id = "00000001-0002-4000-8003-000000000004";
    options.random = [bits = 0U]() mutable {
        ++bits;
        return bits == 2 || bits == 3 ? bits << 16 : bits;
    };
    TagAd ad = named("a");
    ad.impression = "http://t/i?[TRANSACTIONID]";
    serve("http://ads/tag?" + id, test::wrapper_element("http://ads/inner?[TRANSACTIONID]",
                                                        "<Impression>http://t/w?[TRANSACTIONID]</Impression>"));
    serve("http://ads/inner?" + id, ad_element(ad));
    open("http://ads/tag?[TRANSACTIONID]");
    let_pass(1);

    EXPECT_THAT(record.sent, ElementsAre("i?" + id, "w?" + id, "a/start"));
}

TEST_F(OpenedTagTest, TheHostMayGiveTheTransactionId)
{
    options.macros.ad_break.transaction_id = "own";
    TagAd ad = named("a");
    ad.impression = "http://t/i?[TRANSACTIONID]";
    serve(test::TagAddress, ad_element(ad));
    open();
    let_pass(1);

    EXPECT_THAT(record.sent, ElementsAre("i?own", "a/start"));
}

} // namespace
} // namespace qoro
