#include "Places.h"
#include "tests/e2e/PlayedAd.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

// The demo ad goes through the same steps on the desktop and in the simulator, and the same leaves its controller.
//
// What the simulator is told of the desktop's world is what no ad decides: the server's address, and how long the
// machine took until the video could play. The page's script, which does not run in the simulator, is stood in for by
// its subscriptions.
//
// What is compared: every line and field of the traces, in order. Left out are the lines that only a desktop has
// (OnlyOnDesktop) and the log's "didSendTracking", which comes whenever the network answers. Numbers that a real
// player's clock moves (times, positions) may differ by so much.

namespace qoro::test
{

namespace
{

using nlohmann::json;

const std::string DemoFolder = QORO_SOURCE_DIR "/examples/demo";

/// What the ad's own server got, what the web view refused or lost, and what the script library asks for by itself.
constexpr std::array<std::string_view, 3> OnlyOnDesktop{"hit", "web", "mraid"};

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

constexpr double TwoFrames = 2.0 / 30;
/// Between two reports of the position, in seconds.
constexpr double Tick = 1;
/// Seconds from a page's arrival to the end of its load in the simulator, and to its script's run in this test.
constexpr double SimulatedLoad = 0.1;
constexpr double SimulatedScript = 0.06;

/// A real position at a whole second's tick may lie on either side of the second, and what is due there comes with this
/// tick or with the next. So the video pauses early: from then on each tick comes some tenths into a second of the
/// video, about half a second from every step.
json steps()
{
    return json::parse(R"([
        {"at": 0.2, "open": 0},
        {"at": 1.0, "script": ["setVideoPause"]},
        {"at": 1.6, "script": ["setVideoPlay"]},
        {"at": 2.1, "touch": [350, 230]},
        {"at": 4.1, "device": {"orientation": 3, "statusBarOrientation": 3}},
        {"at": 7.1, "device": {"orientation": 1, "statusBarOrientation": 1}},
        {"at": 9.1, "script": ["setVideoPause"]},
        {"at": 9.8, "script": ["setVideoPlay"]},
        {"at": 11.3, "script": ["setVideoUnmute"]},
        {"at": 17.3, "touch": [25, 69]}
    ])");
}

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

/// When the first line came that has these fields; the end of time when none did.
double first(const std::vector<json>& trace, const json& fields)
{
    for (const json& line : trace) {
        json merged = line;
        merged.merge_patch(fields);
        if (merged == line)
            return line["t"];
    }
    return INFINITY;
}

/// The moment at which the page's script had subscribed to everything, as far as the trace shows.
double subscribed(const std::vector<json>& trace)
{
    return first(trace, {{"event", "video_visibilitychange"}, {"listeners", 1}});
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

/// The scenario of a session that was played.
json scenario_of(const std::vector<json>& played)
{
    const auto create = std::ranges::find_if(played, [](const json& line) { return line.value("do", "") == "create"; });
    if (create == played.end())
        throw std::runtime_error("nothing was played");
    const std::string clip = (*create)["url"];
    const std::string server = clip.substr(0, clip.rfind('/') + 1);
    const double opened = (*create)["t"];
    const double plays = first(played, {{"event", "video_play"}});

    // Where the arrival of the page, its script and its end stood to the start of the video, kept within the
    // simulator's quicker load.
    const double page = first(played, {{"what", "page"}});
    const double script = subscribed(played);
    const double loaded =
        first(played, {{"event", "video_orientation"}, {"data", {{"orientation", "portrait"}}}, {"listeners", 1}});
    const std::array<double, 4> page_to_play{0.02, -0.03, -0.08, -0.15};
    const auto before = static_cast<std::size_t>(int(page < plays) + int(script < plays) + int(loaded < plays));
    const double page_after = std::max(0.0, plays + page_to_play[before] - opened);

    json scenario{
        {"device", {{"outputVolume", 1}}},
        {"host", {{"autorotates", {1, 3, 4}}, {"parent", true}}},
        {"video", {{"duration", 14}, {"loadAfter", plays - opened}}},
        {"net", {{server + "page.html", {{"body", content(DemoFolder + "/page.html")}, {"after", page_after}}}}},
        {"ad", json::parse(content(DemoFolder + "/ad.json"))},
    };
    serve(scenario["ad"], server);
    json::array_t all = steps();
    for (std::size_t i = 0; i < Subscriptions.size(); ++i) {
        const json subscription{{"at", opened + page_after + SimulatedScript},
                                {"script", {"addEventListener", Subscriptions[i], Subscriptions[i]}}};
        all.insert(all.begin() + 1 + static_cast<std::ptrdiff_t>(i), subscription);
    }
    scenario["steps"] = all;
    return scenario;
}

/// A trace as it is compared: numbers that a clock moves are taken out.
struct Line {
    double t = 0;
    /// Where the video stood, as a tracker or the script is told; −1 in other lines.
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

std::vector<Line> compared(const std::vector<json>& trace)
{
    std::vector<Line> lines;
    for (const json& told : trace) {
        const std::string what = told["what"];
        const bool subscribes = what == "step" && told.contains("script") && told["script"][0] == "addEventListener";
        const bool answered = told.value("message", "") == "didSendTracking";
        if (std::ranges::find(OnlyOnDesktop, what) != OnlyOnDesktop.end() || subscribes || answered)
            continue;
        Line line{told["t"], -1, told};
        line.rest.erase("t");
        if (what == "step")
            line.rest.erase("n"); // the simulator's subscriptions are steps too
        if (what == "request")
            line.position = take_position(line.rest["url"]);
        if (line.rest.value("event", "") == "video_timeupdate") {
            line.position = std::stod(line.rest["data"]["e"]["current_time"].get<std::string>());
            line.rest.erase("data");
        }
        lines.push_back(std::move(line));
    }
    return lines;
}

} // namespace

TEST(SimulatedAndPlayed, TheDemoAdIsTheSameInBoth)
{
    const Folder folder;
    const std::string steps_file = folder.write("steps.json", steps());
    std::unique_ptr<PlayedAd> ad;
    std::vector<json> played_trace;
    // When the video plays and the page listens.
    const auto listens = [](const std::vector<json>& trace) {
        return std::max(first(trace, {{"event", "video_play"}}), subscribed(trace));
    };
    // That has to be before the first step; a machine that is busy with other things is given another chance.
    for (int chances = 3; played_trace.empty() || listens(played_trace) > 0.8; --chances) {
        if (chances == 0)
            GTEST_SKIP() << "this machine is too busy to show the page within a second";
        ad = std::make_unique<PlayedAd>(std::vector{DemoFolder + "/ad.json", std::string("--steps"), steps_file});
        ASSERT_EQ(ad->exit_status(60), 0) << ad->complaints();
        played_trace = ad->trace();
    }
    const std::vector<json> simulated_trace = simulated(folder.write("scenario.json", scenario_of(played_trace)));

    const std::vector<Line> played = compared(played_trace);
    const std::vector<Line> simulated = compared(simulated_trace);
    // The machine alone decides when the page and the video are there.
    const double ready = listens(played_trace) + SimulatedLoad;
    for (std::size_t i = 0; i < std::min(played.size(), simulated.size()); ++i) {
        ASSERT_EQ(played[i].rest, simulated[i].rest)
            << "at " << played[i].t << " s when played, " << simulated[i].t << " s when simulated";
        if (played[i].t > ready) {
            EXPECT_NEAR(played[i].t, simulated[i].t, TwoFrames) << played[i].rest;
        }
        EXPECT_NEAR(played[i].position, simulated[i].position, Tick) << played[i].rest;
    }
    EXPECT_EQ(played.size(), simulated.size());

    // Something was to be compared.
    for (const char* tracker : {"start", "mute", "firstQuartile", "midpoint", "thirdQuartile", "pause", "resume",
                                "unmute", "complete", "close", "progress/3", "progress/8"})
        EXPECT_GT(ad->hits_of(std::string("/t/") + tracker + "?"), 0) << tracker;
}

} // namespace qoro::test
