#include "workbench/studio/StudioSession.h"

#include "formats/InputError.h"
#include "formats/JsonText.h"
#include "workbench/detail/Json.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <optional>
#include <utility>

namespace qoro
{

namespace
{

using detail::Json;
using Kind = StudioEvent::Kind;

constexpr std::size_t MostEvents = 200;
constexpr std::size_t MostUndone = 200;
/// Seconds.
constexpr double LatestTime = 1e6;
/// Seconds, where a length must be given.
constexpr double DefaultLength = 4;

constexpr std::array Kinds{Kind::Step,    Kind::Touch, Kind::Turn,  Kind::Stall, Kind::VideoFails,
                           Kind::Servers, Kind::Call,  Kind::Leave, Kind::Volume};

[[noreturn]] void refuse(const std::string& path, const std::string& expected)
{
    throw InputError("studio", path, "expected " + expected);
}

double number_in(const Json& json, const char* key, double least, double most, double otherwise)
{
    if (!json.contains(key))
        return otherwise;
    const Json& value = json.at(key);
    const double number = value.is_number() ? value.get<double>() : NAN;
    if (!(number >= least && number <= most))
        refuse(std::string("/event/") + key,
               "a number from " + Json(least).dump() + " to " + Json(most).dump() + ", got " + value.dump());
    return number;
}

std::string text_in(const Json& json, const char* key, const std::string& otherwise)
{
    constexpr std::size_t LongestText = 500;
    if (!json.contains(key))
        return otherwise;
    const Json& value = json.at(key);
    if (!value.is_string() || value.get_ref<const std::string&>().size() > LongestText)
        refuse(std::string("/event/") + key, "a short text");
    return value.get<std::string>();
}

Kind kind_in(const Json& json)
{
    const std::string name = text_in(json, "kind", "");
    for (const Kind kind : Kinds)
        if (kind != Kind::Step && name == name_of(kind))
            return kind;
    refuse("/event/kind", "touch, turn, stall, videoFails, servers, call, leave or volume");
}

CGPoint point_in(const Json& json, CGPoint otherwise)
{
    if (!json.contains("point"))
        return otherwise;
    const Json& value = json.at("point");
    if (!value.is_array() || value.size() != 2 || !value[0].is_number() || !value[1].is_number())
        refuse("/event/point", "[x, y]");
    return {value[0].get<double>(), value[1].get<double>()};
}

/// Sets what a description gives.
void read_event(StudioEvent& event, const Json& json)
{
    for (const auto& [key, value] : json.items())
        if (constexpr std::array<std::string_view, 8> known{"kind", "at", "seconds", "point", "label", "orientation",
                                                            "server", "volume"};
            std::ranges::find(known, key) == known.end())
            refuse("/event/" + key, "kind, at, seconds, point, label, orientation, server or volume as the key");
    // A scenario has whole microseconds.
    event.at = std::round(number_in(json, "at", 0, LatestTime, event.at) * 1e6) / 1e6;
    const bool ends = event.kind == Kind::Call || event.kind == Kind::Leave;
    event.seconds = number_in(json, "seconds", 0, LatestTime, event.seconds);
    if (ends && event.seconds <= 0)
        event.seconds = DefaultLength;
    event.point = point_in(json, event.point);
    event.label = text_in(json, "label", event.label);
    event.orientation =
        static_cast<UIDeviceOrientation>(number_in(json, "orientation", 1, 4, static_cast<int>(event.orientation)));
    event.server = text_in(json, "server", event.server);
    event.volume = number_in(json, "volume", 0, 1, event.volume);
}

bool opens(const StudioEvent& event)
{
    return event.kind == Kind::Step && event.step.key == "open";
}

Json json_of(const StudioEvent& event)
{
    Json json{{"id", event.id}, {"kind", name_of(event.kind)}, {"at", event.at}};
    switch (event.kind) {
    case Kind::Step:
        json["key"] = event.step.key;
        json["value"] = Json::parse(event.step.json);
        if (opens(event))
            json["fixed"] = true;
        break;
    case Kind::Touch:
        json["point"] = Json::array({event.point.x, event.point.y});
        json["label"] = event.label;
        break;
    case Kind::Turn:
        json["orientation"] = static_cast<int>(event.orientation);
        break;
    case Kind::Volume:
        json["volume"] = event.volume;
        break;
    case Kind::Servers:
        json["server"] = event.server;
        json["seconds"] = event.seconds;
        break;
    case Kind::Stall:
    case Kind::Call:
    case Kind::Leave:
        json["seconds"] = event.seconds;
        break;
    case Kind::VideoFails:
        break;
    }
    return json;
}

} // namespace

StudioSession::StudioSession(ScenarioText own) : own_(std::move(own))
{
    renew(own_);
}

void StudioSession::renew(ScenarioText own)
{
    std::vector<StudioEvent> steps;
    std::vector<std::string> identities;
    std::map<std::string, int> alike;
    for (const Step& step : own.scenario().steps) {
        StudioEvent& event = steps.emplace_back();
        event.id = -static_cast<int>(steps.size());
        event.at = step.at;
        event.step = {step.at, step.key, {}};
        append_json(event.step.json, step.value);
        const std::string text = Json(step.at).dump() + step.key + event.step.json;
        identities.push_back(text + '#' + std::to_string(++alike[text]));
    }
    own_ = std::move(own);
    own_steps_ = std::move(steps);
    identities_ = std::move(identities);
}

const StudioEvent* StudioSession::own_step(int id) const
{
    const auto place = static_cast<std::size_t>(-static_cast<long>(id)) - 1;
    return id < 0 && place < own_steps_.size() && !edits_.removed.contains(identities_[place]) ? &own_steps_[place]
                                                                                               : nullptr;
}

const StudioEvent& StudioSession::event(int id) const
{
    if (const StudioEvent* own = own_step(id))
        return *own;
    const auto added = std::ranges::find(edits_.added, id, &StudioEvent::id);
    if (added == edits_.added.end())
        refuse("/id", "the number of an event of the session, got " + std::to_string(id));
    return *added;
}

std::vector<StudioEvent> StudioSession::events() const
{
    std::vector<StudioEvent> all;
    for (const StudioEvent& own : own_steps_)
        if (own_step(own.id))
            all.push_back(own);
    all.insert(all.end(), edits_.added.begin(), edits_.added.end());
    std::ranges::stable_sort(all, {}, &StudioEvent::at);
    return all;
}

void StudioSession::add(std::string_view text)
{
    const Json json = Json::parse(text);
    if (edits_.added.size() >= MostEvents)
        refuse("/event", "at most " + std::to_string(MostEvents) + " events");
    StudioEvent event;
    event.kind = kind_in(json);
    read_event(event, json);
    event.id = ++last_id_;
    if (event.kind == Kind::Touch)
        std::erase_if(edits_.added,
                      [&event](const StudioEvent& other) { return other.kind == Kind::Touch && other.at > event.at; });
    edits_.added.push_back(std::move(event));
}

void StudioSession::change(int id, std::string_view text)
{
    StudioEvent changed = event(id);
    Json json = Json::parse(text);
    if (opens(changed))
        refuse("/id", "an event other than the opening, which stays");
    if (json.contains("kind") && json["kind"] != name_of(changed.kind))
        refuse("/event/kind", "the event's own kind");
    read_event(changed, json);
    if (own_step(id)) {
        remove(id);
        changed.id = ++last_id_;
        edits_.added.push_back(std::move(changed));
    } else {
        *std::ranges::find(edits_.added, id, &StudioEvent::id) = std::move(changed);
    }
}

void StudioSession::remove(int id)
{
    if (opens(event(id)))
        refuse("/id", "an event other than the opening, which stays");
    if (own_step(id))
        edits_.removed.insert(identities_[static_cast<std::size_t>(-id) - 1]);
    else
        std::erase_if(edits_.added, [id](const StudioEvent& each) { return each.id == id; });
}

void StudioSession::edit(std::string_view json)
{
    const Json parsed = Json::parse(json, nullptr, false);
    const auto text = [&parsed](const char* key) {
        return parsed.is_object() && parsed.contains(key) && parsed[key].is_string() ? parsed[key].get<std::string>()
                                                                                     : std::string();
    };
    const auto id = [&parsed] {
        if (!parsed.contains("id") || !parsed["id"].is_number_integer() || std::abs(parsed["id"].get<double>()) > 1e9)
            refuse("/id", "the number of an event");
        return parsed["id"].get<int>();
    };
    const auto event_text = [&parsed] {
        if (!parsed.contains("event") || !parsed["event"].is_object())
            refuse("/event", "an event");
        return parsed["event"].dump(-1, ' ', false, Json::error_handler_t::replace);
    };
    const std::string what = text("do");
    if (what == "undo" || what == "redo") {
        std::vector<Edits>& from = what == "undo" ? done_ : undone_;
        if (from.empty())
            return;
        (what == "undo" ? undone_ : done_).push_back(std::move(edits_));
        edits_ = std::move(from.back());
        from.pop_back();
        return;
    }
    const Edits before = edits_;
    try {
        if (what == "add")
            add(event_text());
        else if (what == "change")
            change(id(), event_text());
        else if (what == "remove")
            remove(id());
        else if (what == "reset")
            edits_ = {};
        else
            refuse("/do", "add, change, remove, undo, redo or reset");
        scenario().scenario();
    } catch (...) {
        edits_ = before;
        throw;
    }
    undone_.clear();
    done_.push_back(before);
    if (done_.size() > MostUndone)
        done_.erase(done_.begin());
}

ScenarioText StudioSession::scenario() const
{
    std::vector<StudioEvent::Step> steps;
    for (const StudioEvent& event : events())
        for (StudioEvent::Step& step : event.steps())
            steps.push_back(std::move(step));
    std::ranges::stable_sort(steps, {}, &StudioEvent::Step::at);
    ScenarioText text = own_;
    text.clear_steps();
    for (const StudioEvent::Step& step : steps)
        text.add_step(step.at, step.key, step.json);
    // Nothing happens then, but the session lasts as long.
    if (const double end = own_steps_.empty() ? 0 : own_steps_.back().at; steps.empty() || steps.back().at < end)
        text.add_step(end, "device", "{}");
    return text;
}

std::string StudioSession::state() const
{
    Json all = Json::array();
    for (const StudioEvent& event : events())
        all.push_back(json_of(event));
    return Json{{"events", std::move(all)}, {"undo", !done_.empty()}, {"redo", !undone_.empty()}}.dump(
        -1, ' ', false, Json::error_handler_t::replace);
}

} // namespace qoro
