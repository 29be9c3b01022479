#include "Places.h"
#include "simulator/Simulation.h"
#include "tests/desktop/media/VideoServer.h"
#include "tests/e2e/DemoAd.h"
#include "tests/e2e/PlayedAd.h"
#include "tests/support/TagRun.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <fstream>
#include <functional>
#include <iterator>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

// VAST tags from local servers, played with real pointer events. What happens does not depend on the machine's speed:
// where a viewer acts in the middle, the server holds the rest of the video back.

namespace qoro::test
{

namespace
{

using nlohmann::json;
using Texts = std::vector<std::string>;

std::string content(const std::string& path)
{
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

/// The demo's video, of 14 seconds.
const std::string& clip()
{
    static const std::string bytes = content(QORO_SOURCE_DIR "/examples/demo/clip.mp4");
    return bytes;
}

/// A part of the demo's video that ends between its middle and three quarters.
std::size_t middle_of_clip()
{
    return clip().size() * 6 / 10;
}

std::string media_file(const std::string& address)
{
    return R"(<MediaFile delivery="progressive" type="video/mp4" width="640" height="360">)" + address + "</MediaFile>";
}

VideoServer::Answer document(const std::string& ads)
{
    return {.body = vast_document(ads), .type = "application/xml"};
}

Texts sorted(Texts texts)
{
    std::ranges::sort(texts);
    return texts;
}

/// All requests but those for the video, of which a player may make several.
Texts requests_of(VideoServer& server)
{
    Texts paths = server.paths();
    std::erase(paths, "/clip.mp4");
    return paths;
}

bool has_tracked(PlayedAd& ad, const std::string& event)
{
    return std::ranges::any_of(
        ad.trace(), [&](const json& line) { return line["what"] == "request" && line.value("event", "") == event; });
}

} // namespace

TEST(PlayTag, ATagBehindTwoWrappersSendsWhatEveryDocumentAsksForAndNothingElse)
{
    VideoServer first;
    VideoServer second;
    for (VideoServer* server : {&first, &second})
        server->serve_others({.body = "", .type = "image/gif"});
    second.serve("/clip.mp4", {.body = clip(), .holds_at = middle_of_clip()});
    first.serve("/c.png", {.body = content(QORO_SOURCE_DIR "/examples/demo/hidden.png"), .type = "image/png"});
    const auto trackers_at = [](VideoServer& server, const std::string& name, const Texts& events) {
        std::string tracking;
        for (const std::string& event : events)
            tracking += "<Tracking event=\"" + event + "\">" + server.address("/" + name + "/" + event) + "</Tracking>";
        return tracking;
    };
    const auto wrapper = [&](VideoServer& server, const std::string& name, const std::string& leads_to) {
        return document(wrapper_element(leads_to, "<Impression>" + server.address("/" + name + "/impression") +
                                                      "</Impression><Error>" +
                                                      server.address("/" + name + "/error?[ERRORCODE]") +
                                                      "</Error><Creatives><Creative><Linear><TrackingEvents>" +
                                                      trackers_at(server, name, {"start", "skip", "complete"}) +
                                                      "</TrackingEvents></Linear></Creative></Creatives>"));
    };
    first.serve("/tag", wrapper(first, "outer", second.address("/inner")));
    second.serve("/inner", wrapper(second, "inner", first.address("/ad")));
    first.serve(
        "/ad",
        document(ad_element(
            {.in_line = "<Impression>" + second.address("/ad/impression") +
                        "</Impression><ViewableImpression><Viewable>" + first.address("/ad/viewable") +
                        "</Viewable></ViewableImpression>",
             .linear = R"(skipoffset="00:00:02")",
             .tracking = trackers_at(first, "ad",
                                     {"loaded", "creativeView", "start", "firstQuartile", "midpoint", "thirdQuartile",
                                      "complete", "skip", "closeLinear", "pause", "resume", "rewind"}) +
                         R"(<Tracking event="progress" offset="00:00:05">)" + second.address("/ad/progress/5") +
                         "</Tracking>",
             .media = media_file(second.address("/clip.mp4")),
             .creatives =
                 R"(<Creative><CompanionAds required="all"><Companion width="300" height="250">)"
                 R"(<StaticResource creativeType="image/png">)" +
                 first.address("/c.png") + R"(</StaticResource><TrackingEvents><Tracking event="creativeView">)" +
                 first.address("/ad/companion") + "</Tracking></TrackingEvents></Companion></CompanionAds></Creative>",
             .impression = second.address("/ad/first-impression")})));
    {
        PlayedAd ad({first.address("/tag")});
        ASSERT_TRUE(ad.eventually([&] { return has_tracked(ad, "midpoint"); })) << ad.complaints();
        EXPECT_TRUE(ad.clicks_until(25, 69, [&] { return has_tracked(ad, "skip"); }));
        EXPECT_EQ(ad.exit_status(), 0) << ad.complaints();

        EXPECT_THAT(trackers(ad.trace()),
                    testing::IsSupersetOf({"loaded", "impression", "creativeView", "start", "viewable", "firstQuartile",
                                           "progress", "midpoint", "skip", "companionView"}));
    }

    EXPECT_EQ(sorted(requests_of(first)),
              sorted({"/tag", "/ad", "/c.png", "/outer/impression", "/outer/start", "/outer/skip", "/ad/loaded",
                      "/ad/creativeView", "/ad/companion", "/ad/start", "/ad/viewable", "/ad/firstQuartile",
                      "/ad/midpoint", "/ad/skip"}));
    EXPECT_EQ(sorted(requests_of(second)),
              sorted({"/inner", "/ad/first-impression", "/ad/impression", "/inner/impression", "/inner/start",
                      "/inner/skip", "/ad/progress/5"}));
}

TEST(PlayTag, AClickOnTheCompanionOpensItsAddressAndIsTracked)
{
    VideoServer server;
    server.serve_others({.body = "", .type = "image/gif"});
    server.serve("/clip.mp4", {.body = clip(), .holds_at = middle_of_clip()});
    server.serve("/c.png", {.body = content(QORO_SOURCE_DIR "/examples/demo/hidden.png"), .type = "image/png"});
    server.serve(
        "/tag",
        document(ad_element({.media = media_file(server.address("/clip.mp4")),
                             .creatives = R"(<Creative><CompanionAds><Companion width="300" height="250"><StaticResource
                                      creativeType="image/png">)" +
                                          server.address("/c.png") + "</StaticResource><CompanionClickThrough>" +
                                          server.address("/shop") + "</CompanionClickThrough><CompanionClickTracking>" +
                                          server.address("/companion/click") +
                                          "</CompanionClickTracking></Companion></CompanionAds></Creative>",
                             .impression = server.address("/impression")})));
    const DemoAd folder;
    const std::string host = folder.folder() + "/host.json";
    std::ofstream(host) << R"({"device": {"canOpen": ["http:"]}})";
    PlayedAd ad({"--host", host, server.address("/tag")});
    ASSERT_TRUE(ad.eventually([&] { return has_tracked(ad, "companionView") || ad.second() > 0; }));

    EXPECT_TRUE(ad.clicks_until(187, 530, [&] { return has_tracked(ad, "companionClick"); })) << ad.complaints();
    EXPECT_TRUE(ad.reports({{"what", "openURL"}, {"url", server.address("/shop")}}));
}

// ---------------------------------------------------------------------------------------- the simulator and the
// desktop

namespace
{

/// A tag that is played and simulated, and what the viewer does.
struct Session {
    const char* name;
    /// The ads of the tag, from the address of a server.
    std::function<std::string(const std::function<std::string(const std::string&)>&)> ads;
    /// Bytes of the video that the server sends.
    std::size_t holds_at = VideoServer::Never;
    /// The event after which the viewer closes the ad.
    std::string closes_after;
    /// The same in the simulator: seconds.
    double closes_at = 0;
    /// Number of ads, of which the viewer closes the last.
    int ads_played = 1;
};

const std::vector<Session>& sessions()
{
    static const std::vector<Session> all{
        {.name = "AnAdThatIsSkipped",
         .ads =
             [](const auto& at) {
                 return ad_element({.in_line = "<ViewableImpression><Viewable>" + at("/viewable") +
                                               "</Viewable><NotViewable>" + at("/not") +
                                               "</NotViewable></ViewableImpression>",
                                    .linear = R"(skipoffset="00:00:01")",
                                    .events = all_events(),
                                    .media = media_file(at("/clip.mp4"))});
             },
         .holds_at = middle_of_clip(),
         .closes_after = "midpoint",
         .closes_at = 8},
        {.name = "AnAdThatIsWatched",
         .ads =
             [](const auto& at) {
                 return ad_element(
                     {.in_line = "<Error>" + at("/error?[ERRORCODE]") +
                                 R"(</Error><AdVerifications><Verification vendor="a"><TrackingEvents>)"
                                 R"(<Tracking event="verificationNotExecuted">)" +
                                 at("/not?[REASON]") + "</Tracking></TrackingEvents></Verification></AdVerifications>",
                      .events = all_events(),
                      .tracking = R"(<Tracking event="progress" offset="00:00:01.500">)" + at("/p1") +
                                  R"(</Tracking><Tracking event="progress" offset="60%">)" + at("/p2") + "</Tracking>",
                      .media = media_file(at("/clip.mp4"))});
             },
         .closes_after = "complete",
         .closes_at = 20},
        {.name = "APodWithAnAdThatFails",
         .ads =
             [](const auto& at) {
                 const auto ad = [&](const std::string& n, const std::string& file) {
                     return ad_element({.attributes = "sequence=\"" + n + "\"",
                                        .in_line = "<Error>" + at("/error?[ERRORCODE]") + "</Error>",
                                        .events = all_events(),
                                        .media = media_file(at(file)),
                                        .prefix = n + "/"});
                 };
                 return ad("1", "/clip.mp4") + ad("2", "/clip.mp4");
             },
         .closes_after = "complete",
         .closes_at = 35,
         .ads_played = 2},
    };
    return all;
}

class InBoth : public testing::TestWithParam<Session>
{
};

/// The events of a trace. Those of the page, which loads beside the video, are not ordered with it.
Texts events_of(const std::vector<json>& trace)
{
    Texts events = trackers(trace);
    std::erase(events, "companionView");
    return events;
}

} // namespace

TEST_P(InBoth, ATagHasTheSameTrackersInTheSameOrder)
{
    const Session& session = GetParam();
    VideoServer server;
    server.serve_others({.body = "", .type = "image/gif"});
    server.serve("/clip.mp4", {.body = clip(), .holds_at = session.holds_at});
    const auto at = [&](const std::string& path) { return server.address(path); };
    std::string ads = session.ads(at);
    for (std::size_t place = 0; (place = ads.find("http://t/", place)) != std::string::npos;)
        ads.replace(place, std::string_view("http://t/").size(), server.address("/t/"));
    server.serve("/tag", document(ads));

    PlayedAd played({server.address("/tag")});
    const auto times = [&] {
        const Texts events = trackers(played.trace());
        return std::ranges::count(events, session.closes_after);
    };
    ASSERT_TRUE(played.eventually([&] { return times() == session.ads_played; })) << played.complaints();
    EXPECT_TRUE(
        played.clicks_until(25, 69, [&] { return has_tracked(played, "skip") || has_tracked(played, "closeLinear"); }));
    EXPECT_EQ(played.exit_status(), 0) << played.complaints();

    const auto simulated =
        trace_of({.documents = {{TagAddress, vast_document(ads)}},
                  .steps = R"({"at": )" + std::to_string(session.closes_at) + R"(, "touch": [25, 69]})",
                  .until = 60,
                  .further = {{"video", {{"duration", 14}}}}});
    EXPECT_EQ(events_of(played.trace()), events_of(simulated));
    EXPECT_GT(events_of(simulated).size(), 6U);
}

INSTANTIATE_TEST_SUITE_P(PlayTag, InBoth, testing::ValuesIn(sessions()),
                         [](const auto& each) { return std::string(each.param.name); });

} // namespace qoro::test
