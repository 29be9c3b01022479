#include "workbench/report/Report.h"

#include "formats/Base64.h"
#include "formats/JsonText.h"
#include "simulator/Simulation.h"
#include "workbench/SessionRecord.h"
#include "workbench/detail/Json.h"
#include "workbench/report/DeviceMatrix.h"
#include "workbench/report/Drawing.h"
#include "workbench/report/Ledger.h"
#include "workbench/report/VideoTrack.h"

#include <algorithm>
#include <cmath>
#include <string_view>
#include <utility>

namespace qoro
{

namespace
{

using detail::Json;

/// Bytes of a text in a trace line that a report shows; the rest, such as the source of a page, is cut.
constexpr std::size_t LongestText = 600;
/// Microseconds between two looks at the video, which advances without an event.
constexpr std::int64_t LookEvery = 50000;
/// Frames of all videos together. More would make a report too large for a mail.
constexpr std::size_t MostStills = 24;

/// Everything that the report shows of the session itself.
struct Course {
    /// What the screen shows from this time, in microseconds.
    struct Frame {
        std::int64_t at = 0;
        Drawing drawing;
    };
    /// The main thread waits for the network.
    struct Block {
        std::int64_t at = 0;
        std::int64_t lasts = 0;
    };

    explicit Course(bool video_advances) : video(video_advances) {}

    std::vector<Frame> frames;
    VideoTrack video;
    std::vector<Block> blocks;
    SessionRecord record;
};

/// Looks at a session whenever something changes, and at its video all the time.
class Onlooker
{
public:
    Onlooker(Course& course, Draughtsman& draughtsman) : course_(course), draughtsman_(draughtsman) {}

    void look(Simulation& simulation)
    {
        VirtualLoop& loop = simulation.platform().loop();
        const std::int64_t now = loop.now_microseconds();
        look_at_video(simulation);
        const std::int64_t blocked = to_microseconds(simulation.platform().fetcher().blocked_seconds());
        if (blocked > blocked_)
            course_.blocks.push_back({now, blocked - std::exchange(blocked_, blocked)});
        Drawing drawing = draughtsman_.draw(simulation);
        auto& frames = course_.frames;
        if (!frames.empty() && frames.back().drawing == drawing)
            return;
        if (!frames.empty() && frames.back().at == now)
            frames.pop_back();
        frames.push_back({now, std::move(drawing)});
    }

private:
    void look_at_video(Simulation& simulation)
    {
        VirtualLoop& loop = simulation.platform().loop();
        course_.video.look(simulation, loop.now_microseconds());
        if (std::exchange(looks_on_, true))
            return;
        look_again(simulation);
    }
    void look_again(Simulation& simulation)
    {
        simulation.platform().loop().after(LookEvery, [this, &simulation] {
            course_.video.look(simulation, simulation.platform().loop().now_microseconds());
            look_again(simulation);
        });
    }

    Course& course_;
    Draughtsman& draughtsman_;
    std::int64_t blocked_ = 0;
    bool looks_on_ = false;
};

Course course_of(const Scenario& scenario, Draughtsman& draughtsman)
{
    Course course(!scenario.world.video.manual);
    Onlooker onlooker(course, draughtsman);
    course.record = record_session(scenario, [&onlooker](Simulation& simulation) { onlooker.look(simulation); });
    return course;
}

// ---------------------------------------------------------------------------------------------------------------- JSON

Json moment(const std::optional<std::int64_t>& microseconds)
{
    return microseconds ? Json(*microseconds) : Json();
}

/// Cuts at a whole character.
std::string beginning_of(const std::string& text, std::size_t longest)
{
    if (text.size() <= longest)
        return text;
    std::size_t end = longest;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80)
        --end;
    return text.substr(0, end) + "…";
}

void cut_long_texts(Json& json)
{
    if (json.is_string())
        json = beginning_of(json.get_ref<const std::string&>(), LongestText);
    else if (json.is_structured())
        for (Json& each : json)
            cut_long_texts(each);
}

/// The fields of a line but for its time, which precedes it.
Json line_json(const RecordedLine& line)
{
    Json fields = Json::parse(line.json, nullptr, false);
    if (!fields.is_object())
        fields = Json{{"what", line.json}};
    fields.erase("t");
    cut_long_texts(fields);
    return Json::array({line.at, std::move(fields)});
}

Json lines_json(const SessionRecord& record)
{
    Json lines = Json::array();
    for (const RecordedLine& line : record.lines)
        lines.push_back(line_json(line));
    return lines;
}

Json rect_json(const CGRect& rect)
{
    const auto rounded = [](double number) { return std::round(number * 100) / 100; };
    return Json::array({rounded(rect.x), rounded(rect.y), rounded(rect.width), rounded(rect.height)});
}

Json insets_json(const SafeAreaInsets& insets)
{
    return Json::array({insets.top, insets.left, insets.bottom, insets.right});
}

/// Only the changes of what can be tapped.
Json sights_json(const SessionRecord& record)
{
    Json sights = Json::array();
    Json before;
    for (const Sight& sight : record.sights) {
        Json tappable = Json::array();
        for (const SeenControl& control : sight.controls)
            if (control.is_button && control.touchable)
                tappable.push_back(control.name);
        Json json{{"open", sight.open},   {"close", sight.close},        {"video", sight.video}, {"page", sight.page},
                  {"sound", sight.sound}, {"other", sight.other_screen}, {"tap", tappable}};
        if (json == before)
            continue;
        before = json;
        sights.push_back(Json::array({sight.at, std::move(json)}));
    }
    return sights;
}

Json video_json(const VideoTrack& video)
{
    Json points = Json::array();
    for (const VideoTrack::Point& point : video.points())
        points.push_back(Json::array({point.at, name_of(point.state), point.position, point.duration, point.source}));
    return points;
}

Json ledger_json(const Course& course, bool of_tag)
{
    Json entries = Json::array();
    for (const LedgerEntry& entry : ledger_of(course.record.summary, course.video, of_tag))
        entries.push_back(
            {{"kind", entry.kind}, {"url", entry.url}, {"due", moment(entry.due)}, {"sent", moment(entry.sent)}});
    return entries;
}

/// Answers that do not arrive at once, or not at all: by address.
Json answers_json(const World& world)
{
    Json answers = Json::object();
    for (const auto& [address, answer] : world.net)
        if (answer.after > 0 || !answer.ok)
            answers[address] = Json{{"after", to_microseconds(answer.after)}, {"ok", answer.ok}};
    return answers;
}

Json summary_json(const Summary& summary)
{
    std::string text;
    append_json(text, summary);
    Json json = Json::parse(text, nullptr, false);
    // The ledger has them.
    json.erase("trackers");
    return json;
}

std::string_view name_of(ListedFinding::Severity severity)
{
    switch (severity) {
    case ListedFinding::Severity::Note:
        return "note";
    case ListedFinding::Severity::Error:
        return "error";
    case ListedFinding::Severity::Warning:
        break;
    }
    return "warning";
}

Json findings_json(const std::vector<ListedFinding>& findings)
{
    Json json = Json::array();
    for (const ListedFinding& finding : findings)
        json.push_back({{"rule", finding.rule},
                        {"severity", name_of(finding.severity)},
                        {"sentence", finding.sentence},
                        {"at", moment(finding.at)}});
    return json;
}

Json drawing_json(const Drawing& drawing)
{
    return Json::array({drawing.turn, drawing.views});
}

std::string_view name_of(Holding holding)
{
    switch (holding) {
    case Holding::Turned:
        return "turned";
    case Holding::TurnedInUprightHost:
        return "turned, host locked upright";
    case Holding::TurnedInTurnedHost:
        return "turned, host locked to landscape";
    case Holding::Upright:
        break;
    }
    return "upright";
}

/// @param sources of the session's videos
Json matrix_json(const std::vector<MatrixEntry>& entries, const std::vector<std::string>& sources)
{
    Json json = Json::array();
    for (const MatrixEntry& entry : entries) {
        Json faults = Json::array();
        for (const MisplacedControl& control : entry.faults) {
            Json fault{{"name", control.name}, {"fault", name_of(control.fault)}, {"at", control.at}};
            if (control.drawn)
                fault["frame"] = rect_json(control.frame);
            faults.push_back(std::move(fault));
        }
        json.push_back({{"models", entry.models},
                        {"screen", {entry.screen.width, entry.screen.height}},
                        {"insets", insets_json(entry.insets)},
                        {"phone", entry.phone},
                        {"holding", name_of(entry.holding)},
                        {"at", entry.at},
                        {"drawing", drawing_json(entry.drawing)},
                        {"position", entry.position},
                        {"source", std::ranges::find(sources, entry.source) - sources.begin()},
                        {"faults", std::move(faults)}});
    }
    return json;
}

Json device_json(const ReportParts& parts, const Scenario& scenario)
{
    const CGSize screen = scenario.world.device.facts.screen.value_or(CGSize{});
    const DeviceModel model = parts.device.value_or(DeviceModel{.phone = scenario.world.device.facts.phone});
    return {{"name", model.name},
            {"screen", {screen.width, screen.height}},
            {"phone", scenario.world.device.facts.phone},
            {"portrait", insets_json(model.portrait)},
            {"landscape", insets_json(model.landscape)}};
}

Json stills_json(const ReportParts& parts, const std::vector<std::string>& sources)
{
    Json json = Json::array();
    if (!parts.stills_of || sources.empty())
        return json;
    const std::size_t most = std::max<std::size_t>(MostStills / sources.size(), 1);
    for (std::size_t source = 0; source < std::min(sources.size(), MostStills); ++source)
        for (const VideoStill& still : parts.stills_of(sources[source], most)) {
            const bool png = still.bytes.starts_with("\x89PNG");
            json.push_back(Json::array(
                {still.at, (png ? "data:image/png;base64," : "data:image/jpeg;base64,") + to_base64(still.bytes),
                 source}));
        }
    return json;
}

Json parsed(const std::vector<std::string>& texts)
{
    Json json = Json::array();
    for (const std::string& text : texts)
        json.push_back(Json::parse(text));
    return json;
}

/// In JSON "<" occurs in strings only. An HTML parser must not see it: it could end the script element.
std::string without_angle_brackets(const std::string& json)
{
    std::string text;
    text.reserve(json.size());
    for (const char c : json)
        if (c == '<')
            text += "\\u003c";
        else
            text += c;
    return text;
}

ScenarioText scenario_of(const ReportParts& parts)
{
    ScenarioText text = parts.scenario;
    if (parts.device)
        text.set_device(*parts.device);
    return text;
}

/// Of the session alone, without the tables of the draughtsman.
Json session_json(const ReportParts& parts, const Scenario& scenario, Draughtsman& draughtsman)
{
    const Course course = course_of(scenario, draughtsman);
    Json frames = Json::array();
    for (const Course::Frame& frame : course.frames)
        frames.push_back(Json::array({frame.at, frame.drawing.turn, frame.drawing.views}));
    Json blocks = Json::array();
    for (const Course::Block& block : course.blocks)
        blocks.push_back(Json::array({block.at, block.lasts}));
    return {{"title", parts.title},
            {"device", device_json(parts, scenario)},
            {"end", course.record.end},
            {"summary", summary_json(course.record.summary)},
            {"findings", findings_json(parts.findings)},
            {"remarks", parts.remarks},
            {"lines", lines_json(course.record)},
            {"frames", std::move(frames)},
            {"sights", sights_json(course.record)},
            {"video", video_json(course.video)},
            {"advances", !scenario.world.video.manual},
            {"size", {scenario.ad ? scenario.ad->fVideoWidth : 0, scenario.ad ? scenario.ad->fVideoHeight : 0}},
            {"blocked", std::move(blocks)},
            {"answers", answers_json(scenario.world)},
            {"trackers", ledger_json(course, !scenario.tag.empty())},
            {"sources", course.video.sources()}};
}

std::string written(Json data, const Draughtsman& draughtsman)
{
    data["views"] = parsed(draughtsman.views());
    data["pictures"] = draughtsman.pictures();
    return without_angle_brackets(data.dump(-1, ' ', false, Json::error_handler_t::replace));
}

} // namespace

std::string report_data(const ReportParts& parts)
{
    const ScenarioText text = scenario_of(parts);
    Draughtsman draughtsman;
    Json data = session_json(parts, text.scenario(), draughtsman);
    const auto sources = data["sources"].get<std::vector<std::string>>();
    data["matrix"] = matrix_json(device_matrix(text, draughtsman), sources);
    data["stills"] = stills_json(parts, sources);
    return written(std::move(data), draughtsman);
}

std::string session_data(const ReportParts& parts)
{
    Draughtsman draughtsman;
    Json data = session_json(parts, scenario_of(parts).scenario(), draughtsman);
    data["matrix"] = Json::array();
    data["stills"] = Json::array();
    return written(std::move(data), draughtsman);
}

std::string lists_data(const ReportParts& parts)
{
    const Json data{{"findings", findings_json(parts.findings)}, {"remarks", parts.remarks}};
    return without_angle_brackets(data.dump(-1, ' ', false, Json::error_handler_t::replace));
}

std::string matrix_data(const ReportParts& parts)
{
    const ScenarioText text = scenario_of(parts);
    Draughtsman of_session;
    const std::vector<std::string> sources = course_of(text.scenario(), of_session).video.sources();
    Draughtsman draughtsman;
    Json data{{"matrix", matrix_json(device_matrix(text, draughtsman), sources)},
              {"stills", stills_json(parts, sources)},
              {"sources", sources}};
    return written(std::move(data), draughtsman);
}

} // namespace qoro
