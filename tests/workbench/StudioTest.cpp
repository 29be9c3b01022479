#include "formats/InputError.h"
#include "simulator/Simulation.h"
#include "workbench/SessionRecord.h"
#include "workbench/studio/StudioEvent.h"
#include "workbench/studio/StudioSession.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <string>
#include <vector>

// The sessions that a person makes in the studio, without its page and server.

namespace qoro
{
namespace
{

using Json = nlohmann::json;
using testing::HasSubstr;
using testing::Not;

/// A video of six seconds above a page; the viewer closes the ad at 9 s, and the host releases it at 12 s.
ScenarioText watched_ad(const std::string& color = "4278190080", double duration = 6)
{
    const std::string close = std::to_string(duration + 3);
    return ScenarioText(R"({"video": {"duration": )" + std::to_string(duration) +
                        R"(}, "net": {"http://m/p.html": {"body": "<head></head>", "after": 1}},
        "ad": {"strVideoUrl": "http://m/v.mp4", "strWebViewUrl": "http://m/p.html", "fVideoWidth": 16,
        "fVideoHeight": 9, "portraitModeType": 2, "portraitVideoPos": 1, "bIsAutoStart": true,
        "strBackgroundColor": ")" +
                        color + R"(", "iBufferingSufferTime": -1,
        "arrayMuteTrackingUrls": ["http://t/mute"], "dicTrackingUrls": {"complete": ["http://t/complete"]},
        "arrayCloseTrackingUrls": ["http://t/close"]},
        "steps": [{"open": 0}, {"at": )" +
                        close + R"(, "tap": "btnClose"}, {"at": 12, "release": true}]})");
}

std::string add(const std::string& event)
{
    return R"({"do": "add", "event": )" + event + "}";
}

Json events_of(const StudioSession& session)
{
    return Json::parse(session.state())["events"];
}

std::vector<std::string> kinds_of(const StudioSession& session)
{
    std::vector<std::string> kinds;
    for (const Json& event : events_of(session))
        kinds.push_back(event["kind"] == "step" ? event["key"] : event["kind"]);
    return kinds;
}

std::string trace_of(const StudioSession& session)
{
    return simulate(session.scenario().scenario());
}

/// The time of the first line that contains a text, in seconds; -1 without one.
double time_of(const std::string& trace, const std::string& text)
{
    const std::size_t at = trace.find(text);
    if (at == std::string::npos)
        return -1;
    return Json::parse(trace.substr(trace.rfind('\n', at) + 1, trace.find('\n', at) - trace.rfind('\n', at) - 1))["t"];
}

/// Where a touch reaches the close button at 2 s: "[x, y]".
std::string close_button(const StudioSession& session)
{
    CGPoint point{};
    for (const Sight& sight : record_session(session.scenario().scenario()).sights)
        for (const SeenControl& control : sight.controls)
            if (sight.at <= 2000000 && control.name == "btnClose" && control.touchable)
                point = *control.touchable;
    return Json::array({point.x, point.y}).dump();
}

using Kinds = std::vector<std::string>;

} // namespace

TEST(StudioSession, BeginsWithTheAdsOwnCourse)
{
    const StudioSession session(watched_ad());

    EXPECT_EQ(kinds_of(session), (Kinds{"open", "tap", "release"}));
    EXPECT_EQ(trace_of(session), simulate(watched_ad().scenario()));
    EXPECT_EQ(Json::parse(session.state())["undo"], false);
}

TEST(StudioSession, ATouchChangesTheSessionFromItsTimeOn)
{
    StudioSession session(watched_ad());
    const std::string before = trace_of(session);
    session.edit(add(R"({"kind": "touch", "at": 2, "point": )" + close_button(session) + R"(, "label": "Close"})"));
    const std::string after = trace_of(session);

    EXPECT_EQ(before.substr(0, before.find("{\"t\":2")), after.substr(0, after.find("{\"t\":2")))
        << "what was before the touch is the same";
    EXPECT_EQ(time_of(before, "http://t/close"), 9);
    EXPECT_EQ(time_of(after, R"("hit":"btnClose")"), 2);
    EXPECT_EQ(time_of(after, "http://t/close"), 2);
    EXPECT_THAT(after, Not(HasSubstr("http://t/complete")));
}

TEST(StudioSession, ATouchBeginsANewCourse)
{
    StudioSession session(watched_ad());
    session.edit(add(R"({"kind": "touch", "at": 2, "point": [1, 1]})"));
    session.edit(add(R"({"kind": "stall", "at": 5, "seconds": 1})"));
    session.edit(add(R"({"kind": "touch", "at": 4, "point": [2, 2]})"));
    session.edit(add(R"({"kind": "touch", "at": 3, "point": [3, 3]})"));

    const Json events = events_of(session);
    ASSERT_EQ(kinds_of(session), (Kinds{"open", "touch", "touch", "stall", "tap", "release"}))
        << "the later touch is gone, everything else stays";
    EXPECT_EQ(events[1]["at"], 2);
    EXPECT_EQ(events[2]["at"], 3);

    session.edit(R"({"do": "undo"})");
    EXPECT_EQ(events_of(session)[2]["at"], 4);
}

TEST(StudioSession, AStallHoldsTheVideo)
{
    StudioSession session(watched_ad());
    EXPECT_NEAR(time_of(trace_of(session), "http://t/complete"), 6.3, 0.1);
    session.edit(add(R"({"kind": "stall", "at": 3, "seconds": 2})"));
    EXPECT_NEAR(time_of(trace_of(session), "http://t/complete"), 8.3, 0.1);
    session.edit(R"({"do": "change", "id": 1, "event": {"seconds": 0}})");
    EXPECT_THAT(trace_of(session), Not(HasSubstr("http://t/complete"))) << "without end";
}

TEST(StudioSession, EveryKindIsAStepOfTheScenario)
{
    StudioSession session(watched_ad());
    for (const std::string event :
         {R"({"kind": "turn", "at": 1, "orientation": 3})", R"({"kind": "call", "at": 2, "seconds": 1})",
          R"({"kind": "leave", "at": 4, "seconds": 1})", R"({"kind": "volume", "at": 6, "volume": 0.25})",
          R"({"kind": "servers", "at": 7, "server": "http://t", "seconds": 1})",
          R"({"kind": "videoFails", "at": 8.5})"})
        session.edit(add(event));
    const std::string trace = trace_of(session);

    EXPECT_EQ(time_of(trace, R"("device":{"orientation":3)"), 1);
    EXPECT_EQ(time_of(trace, R"("interrupt":1)"), 2);
    EXPECT_EQ(time_of(trace, R"("interrupt":0)"), 3);
    EXPECT_EQ(time_of(trace, R"("app":"background")"), 4);
    EXPECT_EQ(time_of(trace, R"("app":"active")"), 5);
    EXPECT_EQ(time_of(trace, R"("device":{"outputVolume":0.25)"), 6);
    EXPECT_EQ(time_of(trace, R"("servers":{"http://t":")"), 7);
    EXPECT_EQ(time_of(trace, R"("servers":{"http://t":null})"), 8);
    EXPECT_EQ(time_of(trace, R"("player":{"broken":true})"), 8.5);
}

TEST(StudioSession, AServerThatFailsLosesThePage)
{
    StudioSession session(watched_ad());
    EXPECT_THAT(trace_of(session), HasSubstr(R"("what":"page")"));
    session.edit(add(R"({"kind": "servers", "at": 0.5, "server": "http://m"})"));
    EXPECT_THAT(trace_of(session), Not(HasSubstr(R"("what":"page")")));
}

TEST(StudioSession, EventsAreMovedAndRemoved)
{
    StudioSession session(watched_ad());
    session.edit(add(R"({"kind": "volume", "at": 3})"));
    session.edit(R"({"do": "change", "id": 1, "event": {"at": 10.5}})");
    EXPECT_EQ(kinds_of(session), (Kinds{"open", "tap", "volume", "release"}));
    session.edit(R"({"do": "remove", "id": 1})");
    EXPECT_EQ(kinds_of(session), (Kinds{"open", "tap", "release"}));
}

TEST(StudioSession, TheAdsOwnStepsAreMovedAndRemovedToo)
{
    StudioSession session(watched_ad());
    session.edit(R"({"do": "change", "id": -2, "event": {"at": 4}})");
    EXPECT_EQ(time_of(trace_of(session), "http://t/close"), 4);
    session.edit(R"({"do": "remove", "id": 1})");
    EXPECT_EQ(time_of(trace_of(session), "http://t/close"), -1);
    EXPECT_EQ(session.scenario().end(), 12) << "the session lasts as long";
    session.edit(R"({"do": "remove", "id": -3})");
    EXPECT_EQ(session.scenario().end(), 12);
    EXPECT_EQ(kinds_of(session), Kinds{"open"});
}

TEST(StudioSession, EveryEditIsUndoneAndDoneAgain)
{
    StudioSession session(watched_ad());
    std::vector<std::string> states{session.scenario().text()};
    for (const std::string& edit :
         {add(R"({"kind": "stall", "at": 3, "seconds": 2})"), std::string(R"({"do": "remove", "id": -2})"),
          std::string(R"({"do": "change", "id": 1, "event": {"at": 2}})"), std::string(R"({"do": "reset"})")}) {
        session.edit(edit);
        states.push_back(session.scenario().text());
    }
    for (std::size_t n = states.size() - 1; n-- > 0;) {
        session.edit(R"({"do": "undo"})");
        EXPECT_EQ(session.scenario().text(), states[n]);
    }
    session.edit(R"({"do": "undo"})");
    for (std::size_t n = 1; n < states.size(); ++n) {
        session.edit(R"({"do": "redo"})");
        EXPECT_EQ(session.scenario().text(), states[n]);
    }
    EXPECT_EQ(Json::parse(session.state())["redo"], false);
}

TEST(StudioSession, AChangedAdKeepsWhatWasAddedAndRemoved)
{
    StudioSession session(watched_ad());
    session.edit(add(R"({"kind": "stall", "at": 3, "seconds": 2})"));
    session.edit(R"({"do": "remove", "id": -3})");
    session.renew(watched_ad("4294967295", 8));

    EXPECT_EQ(kinds_of(session), (Kinds{"open", "stall", "tap"}));
    EXPECT_EQ(events_of(session)[2]["at"], 11) << "the new ad's own close";
    EXPECT_EQ(session.scenario().value("/ad/strBackgroundColor"), "\"4294967295\"");
}

TEST(StudioSession, RefusesWhatIsNoEditAndStaysAsItWas)
{
    StudioSession session(watched_ad());
    session.edit(add(R"({"kind": "stall", "at": 3})"));
    const std::string before = session.state();
    for (const std::string& edit :
         {std::string("{"), std::string("[]"), std::string(R"({"do": "explode"})"), std::string(R"({"do": "add"})"),
          add(R"({"kind": "meteor", "at": 1})"), add(R"({"kind": "stall", "at": -1})"),
          add(R"({"kind": "stall", "at": 1e12})"), add(R"({"kind": "stall", "at": "soon"})"),
          add(R"({"kind": "touch", "at": 1, "point": [1]})"), add(R"({"kind": "volume", "at": 1, "volume": 2})"),
          add(R"({"kind": "servers", "at": 1, "server": "no server"})"), add(R"({"kind": "stall", "color": 1})"),
          std::string(R"({"do": "remove", "id": 7})"), std::string(R"({"do": "remove", "id": "1"})"),
          std::string(R"({"do": "remove", "id": -1})"),
          std::string(R"({"do": "change", "id": -1, "event": {"at": 2}})")}) {
        EXPECT_THROW(session.edit(edit), InputError) << edit;
        EXPECT_EQ(session.state(), before) << edit;
    }
}

TEST(StudioSession, HasALimitedNumberOfEvents)
{
    StudioSession session(watched_ad());
    for (int n = 0; n < 200; ++n)
        session.edit(add(R"({"kind": "volume", "at": 1})"));
    EXPECT_THROW(session.edit(add(R"({"kind": "volume", "at": 1})")), InputError);
}

} // namespace qoro
