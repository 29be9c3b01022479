#include "Places.h"
#include "formats/InputFile.h"
#include "formats/Scenario.h"
#include "record/RecordFile.h"
#include "record/Recording.h"
#include "tests/record/RecordedSession.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <unistd.h>

// A simulated session is recorded as a played one is, and replayed.

namespace qoro::test
{

namespace
{

/// A session of random touches, turns, stalls and departures.
std::string random_session(unsigned seed)
{
    std::mt19937 random(seed);
    nlohmann::json scenario =
        nlohmann::json::parse(read_input_file(QORO_SOURCE_DIR "/examples/simulator/first-session.json"));
    scenario["host"] = {{"autorotates", {1, 3, 4}}, {"guard", true}, {"trackerLimit", true}};
    nlohmann::json steps = {{{"open", 0}}};
    double at = 0;
    for (int n = 0; n < 40; ++n) {
        at += static_cast<double>(random() % 1000) / 1000;
        nlohmann::json step{{"at", at}};
        switch (random() % 6) {
        case 0:
            step["device"] = {{"orientation", 1 + random() % 4}, {"statusBarOrientation", 1 + random() % 4}};
            break;
        case 1:
            step["device"] = {{"outputVolume", static_cast<double>(random() % 10) / 10}};
            break;
        case 2:
            step["app"] = random() % 2 == 0 ? "background" : "active";
            break;
        case 3:
            step["script"] = {"setVideoSeekToTime", random() % 12};
            break;
        case 4:
            step["player"] = {{"stall", 0.5}};
            break;
        default:
            step["touch"] = {random() % 375, random() % 812};
            break;
        }
        steps.push_back(step);
    }
    scenario["steps"] = steps;
    return scenario.dump();
}

} // namespace

TEST(Replay, GivesTheSameTraceOfTheExamples)
{
    int sessions = 0;
    for (const auto& file : std::filesystem::directory_iterator(QORO_SOURCE_DIR "/examples/simulator")) {
        const std::string text = file.path().extension() == ".json" ? read_input_file(file.path().string()) : "";
        if (text.empty() || !read_scenario(text, file.path().string()).ad)
            continue;
        SCOPED_TRACE(file.path().string());
        expect_same(text);
        ++sessions;
    }
    EXPECT_GT(sessions, 0);
}

TEST(Replay, GivesTheSameTraceOfRandomSessions)
{
    for (unsigned seed = 1; seed <= 12; ++seed) {
        SCOPED_TRACE(seed);
        expect_same(random_session(seed));
    }
}

TEST(Replay, GivesTheSameTraceOfAPageThatTurnsTheScreen)
{
    nlohmann::json scenario = nlohmann::json::parse(first_session());
    scenario["host"] = {{"autorotates", {1, 3, 4}}, {"parent", true}};
    scenario["ad"]["landscapeModeType"] = 2;
    scenario["steps"] = {
        {{"open", 0}},
        {{"at", 0.5}, {"script", {"mraid.load", "page"}}},
        {{"at", 1}, {"script", {"mraid.setOrientationProperties", {{"forceOrientation", "landscape"}}}}},
        {{"at", 3}, {"script", {"mraid.setOrientationProperties", {{"forceOrientation", "portrait"}}}}},
        {{"at", 5}, {"device", {{"orientation", 3}, {"statusBarOrientation", 3}}}},
        {{"at", 8}, {"release", true}}};
    EXPECT_NE(record(scenario.dump()).trace.find(R"("forceOrientation","orientation":"landscape")"), std::string::npos);
    expect_same(scenario.dump());
}

TEST(Replay, EndsWhereARecordingWasCutOff)
{
    const Recorded made = record(first_session());
    const std::size_t middle = made.text.rfind(",\n", made.text.size() / 2);
    const std::string trace = replayed(made.text.substr(0, middle) + std::string(RecordingTail));
    EXPECT_FALSE(trace.empty());
    EXPECT_LT(trace.size(), made.trace.size());
    EXPECT_TRUE(made.trace.starts_with(trace));
}

TEST(Replay, NamesTheEntryAtWhichItDiffers)
{
    nlohmann::ordered_json recording = nlohmann::ordered_json::parse(record(first_session()).text);
    auto& entries = recording["replay"];
    std::size_t changed = 0;
    for (std::size_t n = 0; n < entries.size() && changed == 0; ++n)
        if (entries[n].contains("line") && entries[n]["line"]["what"] == "request") {
            entries[n]["line"]["url"] = "http://t.example/another";
            changed = n;
        }
    ASSERT_GT(changed, 0U);
    try {
        replayed(recording.dump());
        FAIL() << "no difference was found";
    } catch (const ReplayDifference& difference) {
        EXPECT_EQ(std::string(difference.what()).find('\n'), std::string::npos);
        EXPECT_TRUE(std::string(difference.what()).starts_with("/replay/" + std::to_string(changed)))
            << difference.what();
    }
}

TEST(Replay, NothingIdentifiesTheViewerUnlessAskedFor)
{
    nlohmann::json scenario = nlohmann::json::parse(first_session());
    scenario["device"]["imei"] = "490154203237518";
    scenario["host"]["guid"] = "viewer-0815-cookie";
    scenario["host"]["session"] = 1723456789;
    scenario["ad"]["dicTrackingUrls"]["start"] = {
        "http://t.example/s?g={Zulix-Guid}&s={Zulix-Sid}&u={Zulix-uuid}&m={Zulix-uuid-md5}"};
    const Recorded redacted = record(scenario.dump());
    const Recorded whole = record(scenario.dump(), {.redacts = false});
    for (const char* identifier : {"490154203237518", "viewer-0815-cookie", "1723456789"}) {
        EXPECT_EQ(redacted.text.find(identifier), std::string::npos) << identifier;
        EXPECT_EQ(redacted.trace.find(identifier), std::string::npos) << identifier;
        EXPECT_NE(whole.text.find(identifier), std::string::npos) << identifier;
        EXPECT_NE(whole.trace.find(identifier), std::string::npos) << identifier;
    }
    EXPECT_EQ(replayed(redacted.text), redacted.trace);
    EXPECT_EQ(replayed(whole.text), whole.trace);
    EXPECT_NE(redacted.text.substr(0, redacted.text.find('\n')).find("personal data"), std::string::npos);
}

TEST(RecordFile, IsCompleteJsonAfterEveryFlush)
{
    std::string name = (std::filesystem::temp_directory_path() / "record-XXXXXX").string();
    close(mkstemp(name.data()));
    const auto entries = [&] {
        std::stringstream text;
        text << std::ifstream(name).rdbuf();
        return nlohmann::json::parse(text.str()).value("replay", nlohmann::json::array()).size();
    };
    {
        RecordFile file(name);
        EXPECT_EQ(entries(), 0U);
        file.begin("{\"recording\":\"\",\n\"replay\":[");
        EXPECT_EQ(entries(), 0U);
        for (std::size_t n = 0; n < 5; ++n) {
            file.add(R"({"read":"now"})");
            file.add(R"({"read":"now"})");
            EXPECT_EQ(entries(), 2 * n);
            file.flush();
            EXPECT_EQ(entries(), 2 * n + 2);
        }
        file.add(R"({"read":"now"})");
    }
    EXPECT_EQ(entries(), 11U);
    std::filesystem::remove(name);
}

} // namespace qoro::test
