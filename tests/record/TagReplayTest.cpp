#include "record/RecordedScenario.h"
#include "record/Recording.h"
#include "simulator/Simulation.h"
#include "tests/record/RecordedSession.h"
#include "tests/support/TagRun.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

// Sessions of VAST tags, recorded and replayed: one recording holds all ads of the tag.

namespace qoro::test
{

namespace
{

using testing::Contains;
using testing::HasSubstr;

/// A pod whose trackers have macros that differ from session to session.
std::string pod()
{
    const auto ad = [](const std::string& n) {
        return ad_element({.attributes = "sequence=\"" + n + "\"",
                           .in_line = "<Error>http://t/" + n + "/error?[ERRORCODE]</Error>",
                           .linear = R"(skipoffset="00:00:01")",
                           .events = all_events(),
                           .tracking = R"(<Tracking event="progress" offset="00:00:02">http://t/)" + n +
                                       "/two?[CACHEBUSTING]&amp;[TIMESTAMP]&amp;[TRANSACTIONID]</Tracking>",
                           .prefix = n + "/"});
    };
    return vast_document(ad("1") + ad("2") + ad("3"));
}

constexpr const char* SkipsTheSecond = R"({"at": 14, "touch": [25, 69]}, {"at": 15, "app": "background"},
                                          {"at": 16, "app": "active"})";

} // namespace

TEST(TagReplay, GivesTheSameTraceOfAPodWithMacros)
{
    const std::string scenario =
        scenario_of({.documents = {{TagAddress, pod()}}, .steps = SkipsTheSecond, .until = 40}).dump();
    const Recorded made = record(scenario);
    for (const char* tracker : {"http://t/1/complete", "http://t/2/skip", "http://t/3/start"})
        EXPECT_THAT(trackers_of(made.trace), Contains(tracker));
    EXPECT_THAT(trackers_of(made.trace), Contains(HasSubstr("/1/two?")));
    EXPECT_EQ(replayed(made.text), made.trace);
}

TEST(TagReplay, GivesTheSameTraceOfWrappersErrorsAndATagWithoutAnAd)
{
    const std::string wrapper =
        vast_document(wrapper_element("http://ads/inner?[CACHEBUSTING]", "<Impression>http://t/w</Impression>"));
    const std::string inner = vast_document(ad_element({.events = all_events()}));
    for (const TagScenario& scenario :
         {TagScenario{.documents = {{TagAddress, wrapper}, {"http://ads/inner?[CACHEBUSTING]", inner}}},
          TagScenario{.documents = {{TagAddress, wrapper}}}, TagScenario{.documents = {{TagAddress, "<VAST/>"}}},
          TagScenario{.documents = {{TagAddress, "no document"}}}, TagScenario{.documents = {}},
          TagScenario{.documents = {{TagAddress, pod()}}, .until = 0.1}}) {
        const std::string text = scenario_of(scenario).dump();
        SCOPED_TRACE(text);
        expect_same(text);
    }
}

TEST(TagReplay, WhyAPlayerHasFailedDecidesOnTheErrorAgain)
{
    const std::string scenario = scenario_of({.documents = {{TagAddress, pod()}},
                                              .further = {{"video", {{"loadAfter", 1}, {"errorForGood", 0}}}}})
                                     .dump();
    const Recorded made = record(scenario, {.why_video_fails = "HTTP status 404"});
    EXPECT_THAT(trackers_of(made.trace), Contains("http://t/1/error?401"));
    EXPECT_EQ(replayed(made.text), made.trace);
}

TEST(TagReplay, ATagThatIsAFileIsInTheRecordingWhateverItsEncoding)
{
    std::string wide = "\xff\xfe";
    for (const char c : pod())
        wide += {c, '\0'};
    for (const std::string& document : {pod(), wide}) {
        nlohmann::json scenario = scenario_of({.documents = {}});
        scenario["ad"]["vast"] = FileTag;
        const Recorded made = record(scenario.dump(), {.document = document});
        EXPECT_THAT(trackers_of(made.trace), Contains("http://t/1/start"));
        EXPECT_EQ(replayed(made.text), made.trace);
        const std::string again = simulate(read_scenario(scenario_of_recording(made.text, "recording"), "scenario"));
        EXPECT_THAT(trackers_of(again), Contains("http://t/1/start"));
    }
}

TEST(TagReplay, AScenarioOfATagFindsItsDocumentsAgain)
{
    const std::string address = "http://ads/tag?[CACHEBUSTING]&[TIMESTAMP]";
    const std::string onward = "http://ads/inner?[CACHEBUSTING]";
    nlohmann::json scenario = scenario_of({.documents = {{address, vast_document(wrapper_element(onward, ""))},
                                                         {onward, vast_document(ad_element({.events = all_events()}))}},
                                           .until = 20});
    scenario["ad"]["vast"] = address;
    const Recorded made = record(scenario.dump());
    EXPECT_THAT(trackers_of(made.trace), Contains("http://t/complete"));
    const std::string again = simulate(read_scenario(scenario_of_recording(made.text, "recording"), "scenario"));
    EXPECT_EQ(trackers_of(again), trackers_of(made.trace));
}

} // namespace qoro::test
