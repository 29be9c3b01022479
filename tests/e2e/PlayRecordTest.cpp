#include "Places.h"
#include "tests/desktop/media/VideoServer.h"
#include "tests/e2e/DemoAd.h"
#include "tests/e2e/PlayedAd.h"
#include "tests/support/TagRun.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <ios>
#include <sstream>
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

/// Whether something was handed over to a screen in a program's place.
bool hands_over(PlayedAd& ad, const std::string& to, double seconds = PlayedAd::Patience)
{
    return ad.reports({{"what", "kit"}, {"do", "handOver"}, {"to", to}}, seconds);
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

TEST(PlayRecord, AReplayGivesTheTraceOfAPodWhoseFirstAdIsSkipped)
{
    std::ostringstream clip;
    clip << std::ifstream(QORO_SOURCE_DIR "/examples/demo/clip.mp4", std::ios::binary).rdbuf();
    VideoServer server;
    server.serve_others({.body = "", .type = "image/gif"});
    server.serve("/clip.mp4", {.body = clip.str(), .holds_at = clip.str().size() * 6 / 10});
    const auto ad_of_pod = [&](const std::string& n) {
        return ad_element({.attributes = "sequence=\"" + n + "\"",
                           .linear = R"(skipoffset="00:00:01")",
                           .tracking = "<Tracking event=\"start\">" + server.address("/" + n + "/start") +
                                       "?[CACHEBUSTING]&amp;[TIMESTAMP]</Tracking><Tracking event=\"skip\">" +
                                       server.address("/" + n + "/skip") + "?[TRANSACTIONID]</Tracking>",
                           .media = R"(<MediaFile delivery="progressive" type="video/mp4" width="640" height="360">)" +
                                    server.address("/clip.mp4") + "</MediaFile>",
                           .impression = server.address("/" + n + "/impression")});
    };
    server.serve("/tag", {.body = vast_document(ad_of_pod("1") + ad_of_pod("2")), .type = "application/xml"});
    const DemoAd folder;
    const std::string recording = folder.folder() + "/recording.json";
    PlayedAd ad({server.address("/tag"), "--record", recording});
    const auto times = [&](const std::string& event) {
        return std::ranges::count_if(ad.trace(), [&](const nlohmann::json& line) {
            return line["what"] == "request" && line.value("event", "") == event;
        });
    };
    ASSERT_TRUE(ad.eventually([&] { return times("start") == 1; })) << ad.complaints();
    ASSERT_TRUE(ad.clicks_until(25, 69, [&] { return times("skip") == 1; }));
    ASSERT_TRUE(ad.eventually([&] { return times("start") == 2; })) << ad.complaints();
    ad.press("Escape");
    EXPECT_EQ(ad.exit_status(), 0) << ad.complaints();
    EXPECT_EQ(replayed(recording), ad.trace());
}

TEST(PlayRecord, AReplayGivesTheTraceOfACalendarEventAndAMessageThatScreensShow)
{
    const nlohmann::json button{{"btn_text", "Write"}, {"action", "send_sms"}, {"data", {{"tel", "tel:5551"}}}};
    const DemoAd demo(nlohmann::json{{"arrayButtonsInfo", nlohmann::json::array({button})}});
    std::ofstream(demo.folder() + "/page.html")
        << R"(<html><head><script src="mraid.js"></script></head><body style="height:100vh"><script>
document.onclick = () => mraid.createCalendarEvent(
  { summary: "Lesson", description: "Room 7", start: "2027-03-22T22:00-08:00", end: "2027-03-22T23:00-08:00" });
</script></body></html>)";
    const std::string steps = demo.folder() + "/steps.json";
    std::ofstream(steps) << R"([{"at": 1.2, "tap": "btnActionOne"}])";
    const std::string recording = demo.folder() + "/recording.json";
    PlayedAd ad({demo.file(), "--calendar", "fake", "--composer", "fake", "--steps", steps, "--record", recording});
    ASSERT_TRUE(hands_over(ad, "composer")) << ad.complaints();
    ad.press("Escape");
    ASSERT_TRUE(ad.reports({{"what", "super"}, {"do", "closeInAppApplication"}}));
    ASSERT_TRUE(ad.clicks_until(90, 600, [&] { return hands_over(ad, "calendar", 1); }));
    ad.press("Escape");
    ad.press("Escape");
    EXPECT_EQ(ad.exit_status(), 0) << ad.complaints();
    EXPECT_EQ(replayed(recording), ad.trace());
}

TEST(PlayRecord, ARecordingThatIsCutInTheMiddleOfAWriteReplaysItsBeginning)
{
    const DemoAd demo;
    const std::string recording = demo.folder() + "/recording.json";
    PlayedAd ad({demo.file(), "--record", recording});
    ASSERT_TRUE(ad.reaches_second(2));
    kill(ad.process(), SIGKILL);
    ad.exit_status();
    std::filesystem::resize_file(recording, std::filesystem::file_size(recording) - 20);
    const std::vector<nlohmann::json> replay = replayed(recording);
    ASSERT_FALSE(replay.empty());
    ASSERT_LE(replay.size(), ad.trace().size());
    EXPECT_TRUE(std::equal(replay.begin(), replay.end(), ad.trace().begin()));
}

} // namespace qoro::test
