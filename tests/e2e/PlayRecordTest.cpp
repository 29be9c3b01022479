#include "Places.h"
#include "tests/e2e/DemoAd.h"
#include "tests/e2e/PlayedAd.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

// A recording of a real session, replayed by the program.

namespace qoro::test
{

namespace
{

std::vector<nlohmann::json> replayed(const std::string& recording)
{
    const std::string output = recording + ".replayed";
    EXPECT_EQ(std::system((std::string(QORO_AD) + " simulate " + recording + " >" + output).c_str()), 0);
    std::vector<nlohmann::json> trace;
    std::ifstream lines(output);
    for (std::string line; std::getline(lines, line);)
        trace.push_back(nlohmann::json::parse(line));
    return trace;
}

} // namespace

TEST(PlayRecord, AReplayGivesTheTraceOfAClickATurnAndAClose)
{
    const DemoAd demo;
    const std::string recording = demo.folder() + "/recording.json";
    PlayedAd ad({demo.file(), "--record", recording});
    ASSERT_TRUE(ad.reaches_second(1));
    ad.click(187, 120);
    ad.press("Left");
    const auto lies = [](const nlohmann::json& line) {
        return line.value("event", "") == "video_orientation" &&
               line["data"].dump().find("landscape") != std::string::npos;
    };
    ASSERT_FALSE(ad.wait_for(lies).is_null());
    ad.press("Escape");
    EXPECT_EQ(ad.exit_status(), 0) << ad.complaints();
    EXPECT_EQ(replayed(recording), ad.trace());
}

TEST(PlayRecord, AKilledSessionLosesLessThanItsLastSecond)
{
    const DemoAd demo;
    const std::string recording = demo.folder() + "/recording.json";
    PlayedAd ad({demo.file(), "--record", recording});
    ASSERT_TRUE(ad.reaches_second(3));
    kill(ad.process(), SIGKILL);
    ad.exit_status();
    const std::vector<nlohmann::json> replay = replayed(recording);
    const std::vector<nlohmann::json>& trace = ad.trace();
    ASSERT_FALSE(replay.empty());
    ASSERT_LE(replay.size(), trace.size());
    EXPECT_TRUE(std::equal(replay.begin(), replay.end(), trace.begin()));
    // The recording has everything until a flush in the last second before the last line.
    const double last = trace.back().at("t").get<double>();
    for (std::size_t n = replay.size(); n < trace.size(); ++n)
        EXPECT_GT(trace[n].at("t").get<double>(), last - 1);
}

} // namespace qoro::test
