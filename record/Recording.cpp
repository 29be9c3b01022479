#include "record/Recording.h"

#include "formats/AdFile.h"
#include "formats/InputError.h"
#include "formats/JsonText.h"
#include "formats/LogLines.h"
#include "formats/ScenarioParts.h"
#include "host/OpenedAd.h"
#include "host/OpenedTag.h"
#include "host/Rehearsal.h"
#include "kit/NetworkZone.h"
#include "platform/Inbound.h"
#include "record/Replayer.h"
#include "record/StandIns.h"
#include "record/TapedPlatform.h"
#include "record/TapedTag.h"
#include "record/detail/Entries.h"
#include "views/RootControllers.h"
#include "views/TearDown.h"
#include "views/ViewNode.h"
#include "views/ViewPath.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace qoro
{

namespace
{

using detail::Json;

constexpr const char* Note =
    "Recording of one ad session. It may hold personal data: what the viewer touched and typed into pages, the pages "
    "themselves, addresses with their parameters, consent strings, names of files. ";

/// The session of a recording on a platform that has no machine.
class ReplayedSession
{
public:
    ReplayedSession(const Scenario& scenario, const RecordedEntries& entries, TraceFormat format, const LineSink& sink,
                    const LogSink& log)
        : scenario_(scenario), trace_(clock_, format, sink), filter_(log, trace_),
          replayer_(platform_, entries, filter_, clock_)
    {
        platform_.replay_from(replayer_, scenario.world.device.facts);
        platform_.set_event_sink(&replayer_);
        replayer_.on("host", [this](const Value& what) { act(what.dictionary()); });
        replayer_.on("touch", [this](const Value& what) {
            touch_view(platform_, view_at(platform_, what.dictionary()["view"]));
        });
        replayer_.on("pageTouch", [this](const Value& what) {
            if (const auto page = view_at(platform_, what.dictionary()["view"]))
                page->page_touched = what.dictionary()["at"].doubleValue();
        });
        replayer_.on("rotated", [this](const Value& from) {
            notify_rotation(platform_, static_cast<UIInterfaceOrientation>(from.integer()));
        });
        replayer_.on("appeared", [this](const Value&) { notify_appearance(platform_); });
        replayer_.on("scaled", [this](const Value&) { platform_.views_changed(); });
        replayer_.on("volume", [this](const Value&) { platform_.output_volume_changed(); });
        replayer_.on("orientation", [this](const Value&) { platform_.device_orientation_changed(); });
        replayer_.on("statusBar", [this](const Value&) { platform_.status_bar_frame_changed(); });
        replayer_.on("background", [this](const Value&) { platform_.application_did_enter_background(); });
        replayer_.on("foreground", [this](const Value&) { platform_.application_will_enter_foreground(); });
        replayer_.on("active", [this](const Value&) { platform_.application_did_become_active(); });
        replay_stand_ins(replayer_, platform_);
        replayer_.on("interrupted", [this](const Value& type) {
            platform_.audio_interrupted(static_cast<AVAudioSessionInterruptionType>(type.integer()));
        });
    }
    ~ReplayedSession()
    {
        platform_.set_event_sink(nullptr);
        opened_.reset();
        tag_.reset();
        tear_down(platform_);
    }
    ReplayedSession(const ReplayedSession&) = delete;
    ReplayedSession& operator=(const ReplayedSession&) = delete;

    const Replayer& run()
    {
        replayer_.run();
        return replayer_;
    }

private:
    void act(const NSDictionary& what)
    {
        const std::string& action = what["do"].text();
        const auto closer = static_cast<ClosedBy>(what["of"].integer());
        if (action == "open" && scenario_.ad)
            open(what["of"]);
        else if (action == "openTag" && !scenario_.ad)
            open_tag(what["of"].dictionary());
        else if (action == "close" && opened_)
            opened_->close(closer);
        else if (action == "close" && tag_)
            tag_->close(closer);
        else if (action == "leaveScreen" && opened_)
            opened_->leave_screen();
        else if (action == "leaveScreen" && tag_)
            tag_->leave_screen();
    }

    Rehearsal rehearsal() { return {scenario_.steps, controls_, nullptr}; }

    void open(const Value& zone)
    {
        platform_.shared<OpenNetworks>().open = static_cast<NetworkZone>(zone.integer());
        opened_.emplace(
            platform_, copy_of(*scenario_.ad), [](const AdOutcome&) {}, scenario_.host, rehearsal());
    }

    void open_tag(const NSDictionary& opening)
    {
        TagOptions options = taped_tag_.options({});
        const OpenedTag::Tag tag = opened_tag(platform_, opening, scenario_.tag, options);
        tag_.emplace(platform_, tag, nullptr, scenario_.host, std::move(options), rehearsal());
    }

    const Scenario& scenario_;
    EventClock clock_;
    Trace trace_;
    LogFilter filter_;
    TapedPlatform platform_;
    Replayer replayer_;
    TapedControls controls_{replayer_, nullptr};
    TapedTag taped_tag_{replayer_};
    std::optional<OpenedAd> opened_;
    /// Instead, for a tag.
    std::optional<OpenedTag> tag_;
};

/// The line of a file on which its entries begin, if they are one a line.
std::size_t first_line(std::string_view text)
{
    const std::size_t begin = text.find("\"replay\"");
    return static_cast<std::size_t>(std::ranges::count(text.substr(0, begin), '\n')) + 2;
}

RecordedEntries read_entries(const Json& json, const std::string& file)
{
    RecordedEntries entries;
    const Json& replay = json.at("replay");
    if (!replay.is_array())
        throw InputError(file, "/replay", "expected a list of entries");
    entries.all.reserve(replay.size());
    for (std::size_t n = 0; n < replay.size(); ++n) {
        const Json& entry = replay[n];
        const auto is_text = [&](const char* key) { return entry.contains(key) && entry[key].is_string(); };
        const bool known = entry.is_object() && (is_text("in") || is_text("read") || is_text("open") ||
                                                 (entry.contains("line") && entry["line"].is_object()));
        if (!known)
            throw InputError(file, "/replay/" + std::to_string(n),
                             "expected an object with \"in\", \"read\", \"open\" or \"line\"");
        entries.all.push_back(entry);
    }
    return entries;
}

} // namespace

namespace
{

/// @param ad JSON
std::string head_of(const DeviceSetup& device, const HostSetup& host, const std::string& ad,
                    const std::vector<Step>& steps, bool redacted)
{
    std::string head = "{\"recording\":";
    append_json_text(head, std::string(Note) +
                               (redacted ? "Identifiers of the device, the viewer and the session are redacted."
                                         : "It holds identifiers of the device, the viewer and the session."));
    head += ",\n\"device\":" + device_text(device);
    head += ",\n\"host\":" + host_text(host);
    head += ",\n\"ad\":" + ad;
    head += ",\n\"steps\":" + steps_text(steps);
    head += ",\n\"replay\":[";
    return head;
}

} // namespace

std::string recording_head(const DeviceSetup& device, const HostSetup& host, const QoroVideoAd& ad,
                           const std::vector<Step>& steps, bool redacted)
{
    return head_of(device, host, ad_text(ad), steps, redacted);
}

std::string recording_head(const DeviceSetup& device, const HostSetup& host, const std::string& tag,
                           const std::vector<Step>& steps, bool redacted)
{
    std::string ad = R"({"vast":)";
    append_json_text(ad, tag);
    ad += '}';
    return head_of(device, host, ad, steps, redacted);
}

bool is_recording(std::string_view text)
{
    if (text.find("\"replay\"") == std::string_view::npos)
        return false;
    const Json json = Json::parse(text, nullptr, false);
    return json.is_object() && json.contains("replay");
}

void replay(const std::string& text, const std::string& file, TraceFormat format, const LineSink& sink,
            const LogSink& log)
{
    const Scenario scenario = read_scenario(text, file);
    const RecordedEntries entries = read_entries(Json::parse(text), file);
    ReplayedSession session(scenario, entries, format, sink, log);
    const Replayer& replayer = session.run();
    if (!replayer.difference().empty())
        throw ReplayDifference("/replay/" + std::to_string(replayer.place()) + " (line " +
                               std::to_string(first_line(text) + replayer.place()) +
                               "): the replay differs after line " + std::to_string(replayer.lines()) +
                               " of the trace: " + replayer.difference());
}

} // namespace qoro
