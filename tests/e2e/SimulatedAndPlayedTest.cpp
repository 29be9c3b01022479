#include "Places.h"
#include "tests/desktop/media/VideoServer.h"
#include "tests/e2e/DemoAd.h"
#include "tests/e2e/PlayedAd.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// Plays the demo ad with real pointer and key events, simulates it, and compares what leaves the controller.
//
// The machine's speed does not matter: the video's data is held back until the page listens, the ad pauses its video
// automatically at two points, and the viewer and the page act only while it is paused. The simulator receives the
// facts that no ad determines: the server's address, and the order of the page's arrival and the end of the 1.5 s that
// the controller waits for the video. The page's script, which does not run in the simulator, is replaced by its
// subscriptions and its commands.
//
// Compared are all lines and fields of the traces, in order; lines of separate timers are ordered separately. Excluded
// are lines that only one of them has (OnlyOnDesktop, OnlyInSimulator) and the log's "didSendTracking", which depends
// on the network's answers. A real position may be later than the simulated one.

namespace qoro::test
{

namespace
{

using nlohmann::json;

const std::string DemoFolder = QORO_SOURCE_DIR "/examples/demo";

/// Requests to the ad's server, actions that the web view rejected or lost, and the script library's own requests.
constexpr std::array<std::string_view, 3> OnlyOnDesktop{"hit", "web", "mraid"};
/// Test actions on the ad, done by hand here; and the result of a step's operation.
constexpr std::array<std::string_view, 2> OnlyInSimulator{"step", "return"};

/// Events to which examples/demo/page.html subscribes, in its order.
constexpr std::array Subscriptions{"video_loading",
                                   "video_loaded",
                                   "video_play",
                                   "video_pause",
                                   "video_ended",
                                   "video_timeupdate",
                                   "video_volumechange",
                                   "video_orientation",
                                   "video_visibilitychange",
                                   "onhide"};

/// Seconds between two reports of the position.
constexpr double Tick = 1;
/// Seconds from opening until the controller treats an unreported video as loaded.
constexpr double Loaded = 1.5;
/// Seconds from a page's arrival to the end of its load in the simulator, and to the start of its script in this test.
constexpr double SimulatedLoad = 0.1;
constexpr double SimulatedScript = 0.06;

/// Far from the last tracker tick before them, which is more than a second earlier.
const json Pauses{5, 10};
/// Simulated seconds at which the video becomes playable, and at which the viewer acts: in the first pause, in the
/// second pause, and after the end.
constexpr double Plays = 2.5;
constexpr double First = 9;
constexpr double Second = 17;
constexpr double End = 27;

/// A temporary folder; removed by the destructor.
class Folder
{
public:
    Folder()
    {
        std::string name = (std::filesystem::temp_directory_path() / "simulated-and-played-XXXXXX").string();
        if (!mkdtemp(name.data()))
            throw std::runtime_error("no folder could be made");
        path_ = name;
    }
    ~Folder() { std::filesystem::remove_all(path_); }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    std::string write(const std::string& name, const json& content) const
    {
        std::ofstream(path_ / name) << content;
        return (path_ / name).string();
    }

private:
    std::filesystem::path path_;
};

std::string content(const std::string& path)
{
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

std::vector<json> simulated(const std::string& scenario)
{
    const std::string command = std::string(QORO_AD) + " simulate " + scenario;
    std::FILE* output = popen(command.c_str(), "r");
    std::string text;
    std::array<char, 4096> piece;
    while (const std::size_t length = std::fread(piece.data(), 1, piece.size(), output))
        text.append(piece.data(), length);
    EXPECT_EQ(pclose(output), 0);
    std::vector<json> trace;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);)
        trace.push_back(json::parse(line));
    return trace;
}

/// Index of the first line with these fields; past the end if none has them.
std::size_t first(const std::vector<json>& trace, const json& fields)
{
    for (std::size_t i = 0; i < trace.size(); ++i) {
        json merged = trace[i];
        merged.merge_patch(fields);
        if (merged == trace[i])
            return i;
    }
    return trace.size();
}

/// Indexes of the page's arrival, the end of its script's subscriptions, and the end of its load, as far as a trace
/// shows them.
std::array<std::size_t, 3> page_moments(const std::vector<json>& trace)
{
    return {
        first(trace, {{"what", "page"}}), first(trace, {{"event", "video_visibilitychange"}, {"listeners", 1}}),
        first(trace,
              {{"event", "video_orientation"}, {"data", {{"e", {{"orientation", "portrait"}}}}}, {"listeners", 1}})};
}

/// Makes the ad's relative addresses absolute on the server.
void serve(json& value, const std::string& server)
{
    if (value.is_string()) {
        const std::string text = value;
        if (text.starts_with("t/") || std::filesystem::is_regular_file(DemoFolder + "/" + text))
            value = server + text;
    } else if (value.is_structured()) {
        for (json& each : value)
            serve(each, server);
    }
}

/// Changes of the demo ad for this test: its pause points, and the server that can hold its video back.
json differences(const std::string& clip)
{
    return {{"arrayPrePauseLocations", Pauses}, {"strVideoUrl", clip}};
}

/// The scenario of a played session.
json scenario_of(const std::vector<json>& played, const std::string& clip)
{
    const json& page = played.at(first(played, {{"what", "request"}, {"for", "page"}}));
    const std::string page_address = page["url"];
    const std::string server = page_address.substr(0, page_address.rfind('/') + 1);

    // Number of the page's events before the video was treated as loaded.
    const std::array<double, 4> page_to_loaded{0.02, -0.03, -0.08, -0.15};
    const std::size_t loaded = first(played, {{"event", "video_loaded"}});
    const auto before =
        std::ranges::count_if(page_moments(played), [&](std::size_t moment) { return moment < loaded; });
    const double page_after = Loaded + page_to_loaded.at(static_cast<std::size_t>(before));

    json scenario{
        {"device", {{"outputVolume", 1}}},
        {"host", {{"autorotates", {1, 3, 4}}, {"parent", true}}},
        {"video", {{"duration", 14}, {"loadAfter", Plays}}},
        {"net", {{page_address, {{"body", content(DemoFolder + "/page.html")}, {"after", page_after}}}}},
        {"ad", json::parse(content(DemoFolder + "/ad.json"))},
    };
    scenario["ad"].merge_patch(differences(clip));
    serve(scenario["ad"], server);
    json::array_t steps{json{{"at", 0}, {"open", 0}}};
    for (const char* subscription : Subscriptions)
        steps.push_back(
            {{"at", page_after + SimulatedScript}, {"script", {"addEventListener", subscription, subscription}}});
    for (const json& step : json::array_t{{{"at", First}, {"touch", {350, 230}}},
                                          {{"device", {{"orientation", 3}, {"statusBarOrientation", 3}}}},
                                          {{"device", {{"orientation", 1}, {"statusBarOrientation", 1}}}},
                                          {{"at", First + 1}, {"script", {"setVideoPlay"}}},
                                          {{"at", Second}, {"script", {"setVideoUnmute"}}},
                                          {{"at", Second + 1}, {"script", {"setVideoPlay"}}},
                                          {{"at", End}, {"touch", {25, 69}}}})
        steps.push_back(step);
    scenario["steps"] = steps;
    return scenario;
}

/// Performs the scenario's steps on the real ad.
void play(PlayedAd& ad, VideoServer& videos)
{
    const auto has = [&](const json& fields) { return first(ad.trace(), fields) < ad.trace().size(); };
    const auto count = [&](const std::string& event) {
        return std::ranges::count_if(ad.trace(), [&](const json& line) { return line.value("event", "") == event; });
    };
    ASSERT_TRUE(ad.eventually([&] {
        return std::ranges::all_of(page_moments(ad.trace()), [&](std::size_t at) { return at < ad.trace().size(); });
    })) << ad.complaints();
    ASSERT_TRUE(ad.hears("video_loaded"));
    videos.release();

    ASSERT_TRUE(ad.server_gets("/t/pause?")) << ad.complaints();
    ad.click(350, 230);
    ASSERT_TRUE(ad.server_gets("/t/mute?"));
    for (const auto& [key, orientation] : {std::pair{"Left", "landscape"}, std::pair{"Right", "portrait"}}) {
        const auto turns = count("video_orientation");
        ad.press(key);
        ASSERT_TRUE(ad.eventually([&] { return count("video_orientation") > turns; })) << orientation;
    }
    ASSERT_TRUE(ad.shows(5, 770, {0x17, 0x1a, 0x29})) << "the page is where it was";
    ad.click(47, 453); // its "Play"
    ASSERT_TRUE(ad.eventually([&] { return ad.hits_of("/t/pause?") == 2; }));
    ad.click(117, 453); // "Unmute"
    ASSERT_TRUE(ad.server_gets("/t/unmute?"));
    ad.click(47, 453);
    ASSERT_TRUE(ad.server_gets("/t/complete?"));
    ASSERT_TRUE(ad.eventually([&] { return has({{"what", "console"}}); }));
    EXPECT_TRUE(ad.clicks_until(25, 69, [&] { return ad.hits_of("/t/close?") > 0; }));
    EXPECT_EQ(ad.exit_status(), 0) << ad.complaints();
}

/// A trace line for comparison, without numbers that depend on a clock.
struct Line {
    /// The video's position in a tracker; −1 in other lines.
    double position = -1;
    json rest;
};

/// Removes the position from an address.
double take_position(json& url)
{
    const std::string text = url;
    const std::size_t at = text.find("?at=");
    if (at == std::string::npos)
        return -1;
    const std::size_t begin = at + 4;
    const std::size_t end = std::min(text.find('&', begin), text.size());
    url = text.substr(0, begin) + text.substr(end);
    return std::stod(text.substr(begin, end - begin));
}

/// The controller's timer that produces a line; empty for lines of no timer, and of the session itself.
std::string timer_of(const json& line)
{
    const std::string url = line.value("what", "") == "request" ? line.value("url", "") : "";
    if (url.find("/t/progress/") != std::string::npos)
        return "progress";
    for (const char* part : {"/t/start?", "/t/firstQuartile?", "/t/midpoint?", "/t/thirdQuartile?"})
        if (url.find(part) != std::string::npos)
            return "parts";
    if (line.value("message", "").starts_with("Buffer Suffer Time"))
        return "buffering";
    return line.value("event", "") == "video_timeupdate" ? "position" : "";
}

/// The lines of each timer. Those of the tracker timer also count the pauses before them.
std::map<std::string, std::vector<Line>> compared(const std::vector<json>& trace)
{
    std::map<std::string, std::vector<Line>> lines;
    int pauses = 0;
    for (const json& record : trace) {
        const std::string what = record["what"];
        const bool answered = record.value("message", "") == "didSendTracking";
        if (std::ranges::find(OnlyOnDesktop, what) != OnlyOnDesktop.end() ||
            std::ranges::find(OnlyInSimulator, what) != OnlyInSimulator.end() || answered)
            continue;
        pauses += record.value("event", "") == "video_pause" ? 1 : 0;
        Line line{-1, record};
        line.rest.erase("t");
        if (what == "request")
            line.position = take_position(line.rest["url"]);
        const std::string timer = timer_of(record);
        if (timer == "progress" || timer == "parts")
            line.rest["pauses before"] = pauses;
        lines[timer].push_back(std::move(line));
    }
    return lines;
}

/// The seconds that the script receives, in order and without repeats: a slow machine may skip some.
std::vector<int> seconds_received(const std::vector<Line>& lines)
{
    std::vector<int> seconds;
    for (const Line& line : lines)
        seconds.push_back(std::stoi(line.rest["data"]["e"]["current_time"].get<std::string>()));
    return seconds;
}

} // namespace

TEST(SimulatedAndPlayed, TheDemoAdIsTheSameInBoth)
{
    VideoServer videos;
    videos.serve("/clip.mp4", {.body = content(DemoFolder + "/clip.mp4"), .holds_at = 0});
    const std::string clip = videos.address("/clip.mp4");
    json changes = differences(clip);
    for (const char* own : {"iCloseBtnCountdown", "iBufferingSufferTime"})
        changes[own] = json::parse(content(DemoFolder + "/ad.json"))[own];
    const DemoAd demo(changes);
    PlayedAd ad({demo.file()});
    ASSERT_NO_FATAL_FAILURE(play(ad, videos));
    const Folder folder;
    const std::vector<json> simulated_trace = simulated(folder.write("scenario.json", scenario_of(ad.trace(), clip)));

    auto played = compared(ad.trace());
    auto simulated = compared(simulated_trace);
    const std::vector<int> seconds = seconds_received(played["position"]);
    EXPECT_TRUE(std::ranges::is_sorted(seconds));
    EXPECT_FALSE(seconds.empty());
    played.erase("position");
    simulated.erase("position");
    ASSERT_EQ(played.size(), simulated.size());
    for (const auto& [timer, lines] : simulated) {
        const std::vector<Line>& same = played[timer];
        for (std::size_t i = 0; i < std::min(lines.size(), same.size()); ++i) {
            ASSERT_EQ(same[i].rest, lines[i].rest) << "line " << i << " of timer \"" << timer << '"';
            EXPECT_GE(same[i].position, lines[i].position - Tick) << lines[i].rest;
        }
        EXPECT_EQ(same.size(), lines.size()) << timer;
    }

    // The comparison must not be vacuous.
    for (const char* tracker : {"start", "mute", "firstQuartile", "midpoint", "thirdQuartile", "pause", "resume",
                                "unmute", "complete", "close", "progress/3", "progress/8"})
        EXPECT_GT(ad.hits_of(std::string("/t/") + tracker + "?"), 0) << tracker;
}

} // namespace qoro::test
