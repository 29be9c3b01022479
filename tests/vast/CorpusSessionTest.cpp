#include "simulator/Simulation.h"
#include "tests/support/TagRun.h"
#include "tests/vast/Corpus.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

// Each document of the corpus, played in virtual time, with the trackers of its whole session.

namespace qoro::test
{

namespace
{

using Json = nlohmann::json;
using Texts = std::vector<std::string>;

constexpr const char* Address = "http://ads.example/tag.xml";

/// Until it is known that there is no ad, in seconds: a whole chain takes 10 at most.
constexpr double Resolving = 11;

double video_duration(const Json& expected)
{
    for (const Json& ad : expected.value("ads", Json::array()))
        return ad["duration"].is_number() ? ad["duration"].get<double>() : 30;
    return 30;
}

Scenario session_of(const std::string& name, const Json& expected)
{
    const double duration = video_duration(expected);
    // Two seconds more than each video lasts: it takes 0.3 to load.
    const double end = Resolving + static_cast<double>(expected.value("ads", Json::array()).size()) * (duration + 2);
    Json scenario{
        {"ad", {{"vast", Address}}},
        {"video", {{"duration", duration}}},
        {"steps", {{{"open", 0}}, {{"at", end}, {"tap", "btnClose"}}, {{"at", end + 1}, {"snapshot", true}}}}};
    scenario.update(expected.value("scenario", Json::object()), true);
    Scenario session = read_scenario(scenario.dump(), name);
    session.world.net = corpus_network(name).net;
    session.world.net[Address].body = corpus_document(name);
    for (const Json& ad : expected.value("ads", Json::array()))
        for (const Json& icon : ad["icons"])
            if (icon["kind"] == "static" && icon["resource"].is_string())
                session.world.net[icon["resource"].get<std::string>()].body = "\x89PNG\r\n\x1a\n";
    return session;
}

std::vector<Json> trace_of(const Scenario& scenario)
{
    std::istringstream lines(simulate(scenario));
    std::vector<Json> trace;
    for (std::string line; std::getline(lines, line);)
        if (line.find(R"("what":"request")") != std::string::npos || line.find(R"("what":"vast")") != std::string::npos)
            trace.push_back(Json::parse(line));
    return trace;
}

Texts sent_in(const std::vector<Json>& trace)
{
    Texts sent;
    for (const Json& line : trace)
        if (line["what"] == "request" && line.contains("event"))
            sent.push_back(line["event"].get<std::string>() + " " + line["url"].get<std::string>());
    return sent;
}

Texts expected_in(const Json& session)
{
    Texts texts;
    for (const Json& tracker : session)
        texts.push_back(tracker[0].get<std::string>() + " " + tracker[1].get<std::string>());
    return texts;
}

/// An expression for a tracker whose macros with values of the moment are still in it.
std::regex pattern_of(const std::string& expected)
{
    static const std::regex special(R"([.?*+^$|(){}\[\]\\])");
    std::string pattern = std::regex_replace(expected, special, R"(\$&)");
    for (const auto& [macro, values] :
         {std::pair{R"(\[TIMESTAMP\])", R"(20\d\d-\d\d-\d\dT\d\d%3A\d\d%3A\d\d\.\d\d\d%2B00)"},
          std::pair{R"(\[CACHEBUSTING\])", R"([1-9]\d{7})"},
          std::pair{R"(\[TRANSACTIONID\])", "[0-9a-f]{8}-[0-9a-f]{4}-[0-9a-f]{4}-[0-9a-f]{4}-[0-9a-f]{12}"}})
        for (std::size_t at = pattern.find(macro); at != std::string::npos; at = pattern.find(macro))
            pattern.replace(at, std::string(macro).size(), values);
    return std::regex(pattern);
}

/// Gives trackers that were sent back the macros that the expected ones at their places have.
void name_values_of_the_moment(Texts& sent, const Texts& expected)
{
    for (std::size_t n = 0; n < std::min(sent.size(), expected.size()); ++n)
        if (expected[n].find('[') != std::string::npos && std::regex_match(sent[n], pattern_of(expected[n])))
            sent[n] = expected[n];
}

/// One a line, for which a failed comparison shows the difference.
std::string lines(const Texts& texts)
{
    std::string all;
    for (const std::string& text : texts)
        all += text + "\n";
    return all;
}

class CorpusSession : public testing::TestWithParam<std::string>
{
};

} // namespace

TEST_P(CorpusSession, SendsItsTrackersInOrder)
{
    const Json expected = corpus_expectation(GetParam());
    const std::vector<Json> trace = trace_of(session_of(GetParam(), expected));
    const std::vector<Json> no_ad = lines_of(trace, "vast", "noAd");
    Texts sent = sent_in(trace);

    if (expected.contains("refused")) {
        // Without a byte in it, an answer is no document, but an empty response.
        const Json code = corpus_document(GetParam()).empty() ? Json(303) : expected["refused"]["code"];
        ASSERT_EQ(no_ad.size(), 1U);
        EXPECT_EQ(no_ad[0]["error"], code);
        EXPECT_EQ(lines(sent), "");
        return;
    }
    ASSERT_TRUE(expected.contains("session")) << "the document has no expected session";
    const Texts wanted = expected_in(expected["session"]);
    name_values_of_the_moment(sent, wanted);
    EXPECT_EQ(lines(wanted), lines(sent));
    EXPECT_EQ(no_ad.empty() ? Json() : no_ad[0]["error"], expected["error"]);
}

INSTANTIATE_TEST_SUITE_P(Documents, CorpusSession, testing::ValuesIn(corpus_names()),
                         [](const auto& test) { return test_name(test.param); });

TEST(CorpusSessions, SendEachEventAndEachErrorThatCanOccurHere)
{
    std::set<std::string> events;
    std::set<std::string> errors;
    for (const std::string& name : corpus_names()) {
        const Json expected = corpus_expectation(name);
        for (const Json& tracker : expected.value("session", Json::array())) {
            events.insert(tracker[0]);
            const std::string address = tracker[1];
            if (tracker[0] == "error" && address.size() >= 3)
                errors.insert(address.substr(address.size() - 3));
        }
    }
    for (const char* event : {"loaded",         "impression",
                              "creativeView",   "start",
                              "firstQuartile",  "midpoint",
                              "thirdQuartile",  "progress",
                              "complete",       "pause",
                              "resume",         "mute",
                              "unmute",         "rewind",
                              "skip",           "closeLinear",
                              "close",          "playerExpand",
                              "fullscreen",     "playerCollapse",
                              "exitFullscreen", "companionView",
                              "companionClick", "clickTracking",
                              "customClick",    "iconView",
                              "iconClick",      "viewable",
                              "notViewable",    "viewUndetermined",
                              "error",          "verificationNotExecuted"})
        EXPECT_TRUE(events.contains(event)) << event;
    // Not 206, which a host causes; not 400 to 402 and 603, which players and pages that are not simulated report; not
    // 900, of a tag that has no document.
    for (const char* error :
         {"100", "101", "102", "201", "205", "300", "301", "302", "303", "403", "405", "409", "410", "602", "604"})
        EXPECT_TRUE(errors.contains(error)) << error;
}

} // namespace qoro::test
