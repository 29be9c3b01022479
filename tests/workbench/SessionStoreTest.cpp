#include "workbench/explore/SessionStore.h"

#include "formats/InputError.h"
#include "simulator/VirtualLoop.h"
#include "workbench/explore/Search.h"
#include "workbench/explore/Setup.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace qoro
{
namespace
{

/// @param later a step after the opening; empty for none
SearchSetup setup_of(const std::string& later = "")
{
    return search_setup(ScenarioText(R"({"video": {"duration": 4}, "ad": {"strVideoUrl": "http://m/v.mp4",
        "fVideoWidth": 16, "fVideoHeight": 9, "portraitModeType": 2, "portraitVideoPos": 1, "bIsAutoStart": true,
        "iCloseBtnCountdown": 2, "iBufferingSufferTime": 4}, "steps": [{"open": 0})" +
                                     later + "]}"),
                        false);
}

std::string outcome(const SearchSetup& setup, const SearchResult& result)
{
    std::string text = std::to_string(result.sessions) + " " + std::to_string(result.states) + " " +
                       std::to_string(result.merged) + " " + std::to_string(result.complete_depth) + "\n" +
                       in_words(setup.run, result.worst_course) + "\n";
    for (const SearchFinding& each : result.findings)
        text += each.rule + each.text + in_words(setup.run, each.course) + std::to_string(each.others) + "\n";
    for (const std::string& each : result.not_covered)
        text += each + "\n";
    return text;
}

SearchPart read_again(const SearchPart& part)
{
    std::string text;
    write_part(text, part);
    return read_parts(text, "file").front();
}

} // namespace

TEST(SessionStore, MakesALaterSearchTheSameWithFewerSessions)
{
    const SearchSetup setup = setup_of();
    const SearchResult fresh = search(setup.run, {.depth = 2, .sessions = 300});
    SearchPart part;
    search(setup.run, {.depth = 2, .sessions = 100, .store = &part.sessions});
    EXPECT_GT(part.sessions.size(), 50U);
    part = read_again(part);
    const SearchResult resumed = search(setup.run, {.depth = 2, .sessions = 300, .store = &part.sessions});
    EXPECT_EQ(outcome(setup, resumed), outcome(setup, fresh));
    EXPECT_LT(resumed.simulated, 260U);
    part = read_again(part);
    const SearchResult again = search(setup.run, {.depth = 2, .sessions = 300, .store = &part.sessions});
    EXPECT_EQ(outcome(setup, again), outcome(setup, fresh));
    EXPECT_EQ(again.simulated, 0U);
}

TEST(SessionStore, MakesShardsOneSearch)
{
    const SearchSetup setup = setup_of();
    const SearchResult whole = search(setup.run, {.depth = 2, .sessions = 600});
    SessionStore all;
    std::size_t simulated = 0;
    for (std::size_t n = 0; n < 3; ++n) {
        SessionStore own;
        simulated += search(setup.run, {.depth = 2, .sessions = 600, .shard = n, .shards = 3, .store = &own}).simulated;
        all.add_all(own);
    }
    const SearchResult merged = search(setup.run, {.depth = 2, .sessions = 600, .store = &all});
    EXPECT_EQ(outcome(setup, merged), outcome(setup, whole));
    EXPECT_LT(merged.simulated, whole.sessions / 5);
    EXPECT_LT(simulated, whole.sessions * 2);
}

TEST(SessionStore, RefusesWhatIsNotWhole)
{
    SearchPart part;
    search(setup_of().run, {.depth = 0, .store = &part.sessions});
    std::string text;
    write_part(text, part);
    EXPECT_EQ(read_parts(text + text, "file").size(), 2U);
    EXPECT_THROW(read_parts("", "file"), InputError);
    EXPECT_THROW(read_parts(text.substr(0, text.rfind("{\"sessions\"")), "file"), InputError);
    EXPECT_THROW(read_parts(text.substr(text.find('\n') + 1), "file"), InputError);
    std::string without_session = text;
    without_session.erase(without_session.find("{\"session\""),
                          without_session.rfind("{\"sessions\"") - without_session.find("{\"session\""));
    EXPECT_THROW(read_parts(without_session, "file"), InputError);
    EXPECT_THROW(read_parts(text.substr(0, text.size() / 2), "file"), InputError);
}

TEST(StateKeys, IncludeTheTimeOfTheScenariosNextStep)
{
    // At these times, long after the end of the video, the state is the same, unless something is still to come.
    const auto key = [](const SearchSetup& setup, double seconds) {
        const Move move{.kind = Move::Kind::Leave, .name = "leave the app"};
        return run_course(setup.run, 0, {{to_microseconds(seconds), move}}, {}).moments.front().key;
    };
    const SearchSetup alone = setup_of();
    ASSERT_TRUE(key(alone, 22));
    EXPECT_EQ(key(alone, 22), key(alone, 40));
    const SearchSetup followed = setup_of(R"(, {"at": 60, "player": {"broken": true}})");
    EXPECT_NE(key(followed, 22), key(followed, 40));
}

} // namespace qoro
