#pragma once

#include "workbench/ScenarioText.h"
#include "workbench/studio/StudioEvent.h"

#include <cstddef>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace qoro
{

/// The session that a person works on: the ad's own course, and what is added to it, moved and removed. Every edit can
/// be undone.
class StudioSession
{
public:
    /// @param own a scenario: the ad's own course
    explicit StudioSession(ScenarioText own);

    /// Takes another version of the ad. What was added stays, and so does what was removed, where it still exists.
    void renew(ScenarioText own);

    /// Performs one edit: {"do": "add", "event": {…}}, {"do": "change", "id": 3, "event": {…}},
    /// {"do": "remove", "id": 3}, {"do": "undo"}, {"do": "redo"} or {"do": "reset"}. An event has the keys of state();
    /// a change names only those that change. A touch that is added begins a new course: touches added for later times
    /// are dropped.
    /// @throws InputError for anything else, and for an event that a scenario cannot contain; the session is unchanged
    void edit(std::string_view json);

    /// The session as a scenario. It lasts at least as long as the ad's own course.
    ScenarioText scenario() const;

    /// {"events": […], "undo": whether an edit can be undone, "redo": …}: the events in order of time, without keys
    /// that do not apply: "id", "kind", "at", "seconds", "point", "label", "orientation", "server", "volume", "key" and
    /// "value", and "fixed" for the opening, which cannot be moved or removed.
    std::string state() const;

private:
    /// What the edits have made of the ad's own course.
    struct Edits {
        std::vector<StudioEvent> added = {};
        /// Identities of the ad's own steps that do not take place.
        std::set<std::string> removed = {};
    };

    void add(std::string_view event);
    void change(int id, std::string_view event);
    void remove(int id);
    const StudioEvent& event(int id) const;
    /// In order of time.
    std::vector<StudioEvent> events() const;
    /// The ad's own step with a number in events(); null for what was added.
    const StudioEvent* own_step(int id) const;

    ScenarioText own_;
    /// By their numbers: -1, -2, …
    std::vector<StudioEvent> own_steps_;
    std::vector<std::string> identities_;
    Edits edits_;
    std::vector<Edits> undone_;
    std::vector<Edits> done_;
    int last_id_ = 0;
};

} // namespace qoro
