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

// The demo ad is played with a real pointer and real keys, and simulated, and the same leaves its controller.
//
// How long the machine takes for anything does not matter. The video's data is held back until the page listens, the ad
// pauses its video by itself at two points, and whatever the viewer and the page do they do while it is paused. What
// the simulator is told of the desktop's world is what no ad decides: the server's address, and what was there first,
// the page or the end of the second and a half that the controller waits for the video. The page's script, which does
// not run in the simulator, is stood in for by its subscriptions and its commands.
//
// What is compared: every line and field of the traces, in order; what comes of a timer of its own in an order of its
// own. Left out are the lines that only one of them has (OnlyOnDesktop, OnlyInSimulator) and the log's
// "didSendTracking", which comes whenever the network answers. A real position may be later than the simulated one.

namespace qoro::test
{

namespace
{

using nlohmann::json;

const std::string DemoFolder = QORO_SOURCE_DIR "/examples/demo";

/// What the ad's own server got, what the web view refused or lost, and what the script library asks for by itself.
constexpr std::array<std::string_view, 3> OnlyOnDesktop{"hit", "web", "mraid"};
/// What is done about the ad, here by hand; and what a step's operation gave back.
constexpr std::array<std::string_view, 2> OnlyInSimulator{"step", "return"};

/// What examples/demo/page.html listens to, in its order.
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

/// Between two reports of the position, in seconds.
constexpr double Tick = 1;
/// Seconds from the opening until the controller takes a video for loaded that has not said so.
constexpr double Loaded = 1.5;
/// Seconds from a page's arrival to the end of its load in the simulator, and to its script's run in this test.
constexpr double SimulatedLoad = 0.1;
constexpr double SimulatedScript = 0.06;

/// Far from what a tick of the trackers may still report: the last of them before is more than a second away.
const json Pauses{5, 10};
/// Seconds in the simulator at which the video can be played, and at which the viewer acts: in the first pause, in the
/// second, after the end.
constexpr double Plays = 2.5;
constexpr double First = 9;
constexpr double Second = 17;
constexpr double End = 27;

/// A folder of its own, gone with the object.
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

/// The place of the first line that has these fields; behind the last one when none has.
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

/// Where the page had come, its script had subscribed to everything, and its load had ended, as far as a trace shows.
std::array<std::size_t, 3> page_moments(const std::vector<json>& trace)
{
    return {
        first(trace, {{"what", "page"}}), first(trace, {{"event", "video_visibilitychange"}, {"listeners", 1}}),
        first(trace,
              {{"event", "video_orientation"}, {"data", {{"e", {{"orientation", "portrait"}}}}}, {"listeners", 1}})};
}

/// Puts the server's address before every address of the ad that has none.
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

/// What the demo is played with: the points at which it pauses, and the server that can hold its video back.
json differences(const std::string& clip)
{
    return {{"arrayPrePauseLocations", Pauses}, {"strVideoUrl", clip}};
}

/// The scenario of a session that was played.
json scenario_of(const std::vector<json>& played, const std::string& clip)
{
    const json& page = played.at(first(played, {{"what", "request"}, {"for", "page"}}));
    const std::string page_address = page["url"];
    const std::string server = page_address.substr(0, page_address.rfind('/') + 1);

    // How many of the page's moments came before the video was taken for loaded.
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

/// Does with the real ad what the scenario's steps do.
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

/// A trace as it is compared: numbers that a clock moves are taken out.
struct Line {
    /// The video's position in a tracker; −1 in other lines.
    double position = -1;
    json rest;
};

/// Takes the position out of an address.
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

/// Which of the controller's timers a line comes of; empty for what comes of none, or of the session itself.
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

/// The lines of each timer. Those of the trackers' timer also say how many pauses came before.
std::map<std::string, std::vector<Line>> compared(const std::vector<json>& trace)
{
    std::map<std::string, std::vector<Line>> lines;
    int pauses = 0;
    for (const json& told : trace) {
        const std::string what = told["what"];
        const bool answered = told.value("message", "") == "didSendTracking";
        if (std::ranges::find(OnlyOnDesktop, what) != OnlyOnDesktop.end() ||
            std::ranges::find(OnlyInSimulator, what) != OnlyInSimulator.end() || answered)
            continue;
        pauses += told.value("event", "") == "video_pause" ? 1 : 0;
        Line line{-1, told};
        line.rest.erase("t");
        if (what == "request")
            line.position = take_position(line.rest["url"]);
        const std::string timer = timer_of(told);
        if (timer == "progress" || timer == "parts")
            line.rest["pauses before"] = pauses;
        lines[timer].push_back(std::move(line));
    }
    return lines;
}

/// The seconds that the script hears, in order and each once: on a slow machine there may be fewer.
std::vector<int> seconds_told(const std::vector<Line>& lines)
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
    const std::vector<int> seconds = seconds_told(played["position"]);
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

    // Something was to be compared.
    for (const char* tracker : {"start", "mute", "firstQuartile", "midpoint", "thirdQuartile", "pause", "resume",
                                "unmute", "complete", "close", "progress/3", "progress/8"})
        EXPECT_GT(ad.hits_of(std::string("/t/") + tracker + "?"), 0) << tracker;
}

} // namespace qoro::test
