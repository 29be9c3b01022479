#include "formats/Scenario.h"
#include "host/Session.h"
#include "simulator/SimulatedPlatform.h"
#include "tests/support/ScenarioRun.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>

// Limits of an ad's requests when the host enables them: a long-term average of twenty heartbeats per second, and
// 20,000 requests of all other kinds.

namespace qoro
{
namespace
{

using test::of_kind;
using test::trace_of;

constexpr const char* Limited = R"("host": {"trackerLimit": true},)";

/// The trace of a video of ten seconds that plays from 0.3 s on.
/// @param host "host" followed by a comma, or empty
std::vector<std::string> played(const std::string& host, const std::string& ad, const std::string& steps = "")
{
    return trace_of("{" + host + R"("video": {"duration": 10}, "ad": {"strVideoUrl": "http://ad/v.mp4",
        "fVideoWidth": 1280, "fVideoHeight": 720, "portraitModeType": 2, "portraitVideoPos": "TOP",
        "bIsAutoStart": true, "iBufferingSufferTime": -1, )" +
                    ad + R"(}, "steps": [{"open": 0})" + steps + R"(, {"at": 20, "snapshot": true}]})");
}

std::string heartbeat(const std::string& interval)
{
    return R"("strVideoTrackingUrl": "http://t/beat?{CurrentTime}", "fTrackingInterval": )" + interval;
}

std::vector<nlohmann::json> with_text(const std::vector<std::string>& trace, std::string_view text)
{
    std::vector<nlohmann::json> found;
    for (const std::string& line : trace)
        if (line.find(text) != std::string::npos)
            found.push_back(nlohmann::json::parse(line));
    return found;
}

std::int64_t refusals_reported(const std::vector<std::string>& trace)
{
    std::int64_t sum = 0;
    for (const nlohmann::json& line : with_text(trace, "request.refused"))
        sum += line["times"].get<std::int64_t>();
    return sum;
}

TEST(RequestLimit, TwentyHeartbeatsASecondAreSent)
{
    const auto trace = played(Limited, heartbeat("0.001"));
    std::vector<double> at;
    for (const nlohmann::json& line : with_text(trace, R"("what":"request")"))
        at.push_back(line["t"].get<double>());

    // Ten seconds of video, and a burst of twenty.
    EXPECT_GE(at.size(), 10U * 20);
    EXPECT_LE(at.size(), 10U * 20 + 20);
    for (std::size_t n = 40; n < at.size(); ++n)
        EXPECT_GE(at[n] - at[n - 20], 0.99) << n;
}

TEST(RequestLimit, AnIntervalAboveATwentiethOfASecondLosesNothing)
{
    const auto trace = played(Limited, heartbeat("0.06"));

    EXPECT_GE(of_kind(trace, "request").size(), 160U);
    EXPECT_TRUE(with_text(trace, "request.refused").empty());
}

TEST(RequestLimit, AScenarioHasNoneUnlessItEnablesIt)
{
    EXPECT_GE(of_kind(played("", heartbeat("0.001")), "request").size(), 9900U);
    EXPECT_GE(of_kind(played(R"("host": {},)", heartbeat("0.001")), "request").size(), 9900U);
    EXPECT_GE(of_kind(played(R"("host": {"trackerLimit": false},)", heartbeat("0.001")), "request").size(), 9900U);
}

TEST(RequestLimit, ARealHostHasItUnlessItDisablesIt)
{
    EXPECT_TRUE(HostSetup{}.tracker_limit);
    EXPECT_TRUE(read_surroundings("{}", "host.json").host.tracker_limit);
    EXPECT_TRUE(read_surroundings(R"({"host": {}})", "host.json").host.tracker_limit);
    EXPECT_FALSE(read_surroundings(R"({"host": {"trackerLimit": false}})", "host.json").host.tracker_limit);
}

TEST(RequestLimit, ARefusedRequestCallsItsFailAction)
{
    const auto trace = played(Limited, heartbeat("0.001"));
    const std::size_t sent = of_kind(trace, "request").size();
    const std::size_t failed = with_text(trace, R"("failSendTracking")").size();

    EXPECT_EQ(with_text(trace, R"("didSendTracking")").size(), sent);
    EXPECT_GE(sent + failed, 9900U);
    EXPECT_EQ(refusals_reported(trace), static_cast<std::int64_t>(failed));
}

TEST(RequestLimit, RefusalsAreCountedInOneLineASecond)
{
    const auto lines = with_text(played(Limited, heartbeat("0.001")), "request.refused");

    ASSERT_GE(lines.size(), 9U);
    EXPECT_LE(lines.size(), 12U);
    for (std::size_t n = 1; n < lines.size(); ++n)
        EXPECT_GE(lines[n]["t"].get<double>() - lines[n - 1]["t"].get<double>(), 0.999999);
    EXPECT_EQ(lines[0]["what"], "kit");
    EXPECT_EQ(lines[0]["why"], "more than 20 heartbeats a second");
    EXPECT_TRUE(lines[0]["url"].get<std::string>().starts_with("http://t/beat?"));
}

/// A tracking list that a tap sends.
std::string muting(std::size_t count)
{
    std::string list;
    for (std::size_t n = 0; n < count; ++n)
        list += (n > 0 ? ",\"http://t/" : "\"http://t/") + std::to_string(n) + "\"";
    return R"("arrayMuteTrackingUrls": [)" + list + "]";
}

TEST(RequestLimit, OtherRequestsAreBoundedInTotal)
{
    const auto trace = played(Limited, muting(15'000), R"(, {"at": 2, "tap": "btnMute"}, {"at": 3, "tap": "btnMute"},
        {"at": 4, "tap": "btnMute"})");
    const auto lines = with_text(trace, "request.refused");

    EXPECT_EQ(of_kind(trace, "request").size(), 20'000U);
    EXPECT_EQ(with_text(trace, R"("failSendTracking")").size(), 10'000U);
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0]["times"], 10'000);
    EXPECT_EQ(lines[0]["url"], "http://t/5000");
    EXPECT_EQ(lines[0]["why"], "more than 20000 requests of one ad");
}

TEST(RequestLimit, SimultaneousRequestsAreNotHeartbeats)
{
    const auto trace = played(Limited, muting(500), R"(, {"at": 2, "tap": "btnMute"})");

    EXPECT_EQ(of_kind(trace, "request").size(), 500U);
}

TEST(RequestLimit, HeartbeatsDoNotBlockOthers)
{
    const auto trace = played(Limited, heartbeat("0.001") + ", " + muting(500), R"(, {"at": 5, "tap": "btnMute"})");

    const auto sent = of_kind(trace, "request");
    EXPECT_EQ(std::ranges::count_if(sent, [](const std::string& line) { return line.find("beat") == line.npos; }), 500);
}

TEST(RequestLimit, EachAdIsCountedSeparately)
{
    SimulatedPlatform platform{World{}};
    const PlatformScope scope(platform);
    const auto opened_and_closed = [&platform] {
        auto ad = std::make_shared<QoroVideoAd>();
        ad->strVideoUrl = "http://ad/v.mp4";
        ad->portraitModeType = VIDEO_AND_WEBVIEW;
        ad->portraitVideoPos = TOP;
        ad->arrayCloseTrackingUrls = NSArray(std::vector<Value>(15'000, Value(NSString("http://t/close"))));
        struct : EventSink {
            void receive(const Event& event) override { sent += std::holds_alternative<event::Requested>(event); }
            int sent = 0;
        } sink;
        platform.set_event_sink(&sink);
        {
            Session session(platform, platform, {}, ad);
            platform.dispatch([&] { session.open(0); });
            platform.run_until(platform.loop().now() + 1);
            platform.dispatch([&] { session.controller()->closeAction(); });
            platform.run_until(platform.loop().now() + 1);
        }
        platform.set_event_sink(nullptr);
        return sink.sent;
    };

    EXPECT_EQ(opened_and_closed(), 15'000);
    EXPECT_EQ(opened_and_closed(), 15'000);
}

} // namespace
} // namespace qoro
