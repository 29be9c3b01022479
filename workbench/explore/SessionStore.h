#pragma once

#include "workbench/explore/Run.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace qoro
{

/// Identifies a session of a search: by its beginning, or by the state that it sets out from and the move. What follows
/// depends on nothing else, so the identifier is the same whichever course leads to the state.
StateKey session_of_beginning(std::size_t start);
StateKey session_of_move(const StateKey& from, const Move& move);

/// The sessions that have been simulated. A search that asks for one of them does not simulate it again: this is how a
/// search goes on after an interruption, and how the sessions of several processes become one search.
class SessionStore
{
public:
    /// @param at microseconds: when the session's last move is made
    /// @param known whether a state is known: the session is given up to the first of them
    /// @return absent if there is no such session, or if it ends at a state that was known then and is not now
    std::optional<CourseRun> find(const StateKey& session, std::int64_t at,
                                  const std::function<bool(const StateKey&)>& known) const;
    /// Adds a session, or replaces it.
    void add(const StateKey& session, std::int64_t at, const CourseRun& run);
    std::size_t size() const { return sessions_.size(); }

    /// Appends the sessions as lines of JSON, in the order in which they were added.
    void write(std::string& out) const;
    /// Adds what a line of write() contains. Lines depend on those before them.
    /// @return whether the line is one of write()
    bool read(std::string_view line);
    /// Adds all sessions of another store.
    void add_all(const SessionStore& other);

private:
    /// A moment's moves and what happened before it, as indices into lists_ and passages_.
    struct Places {
        std::size_t moves = 0;
        std::size_t happened = 0;
    };

    struct Kept {
        /// With their times since the last move, and without what is in places.
        std::vector<Moment> moments;
        std::vector<Places> places;
        bool merged = false;
        /// What happened after the last moment, as an index into passages_.
        std::size_t rest = 0;
    };

    void keep(const StateKey& session, Kept kept);
    std::size_t list_of(const std::vector<Move>& moves);
    std::size_t place_of(const Passage& happened);

    std::unordered_map<StateKey, std::size_t> places_;
    std::vector<std::pair<StateKey, Kept>> sessions_;
    /// The distinct lists of moves, which are few.
    std::vector<std::vector<Move>> lists_;
    std::unordered_map<std::string, std::size_t> list_places_;
    /// What has happened; much of it is the same in many sessions.
    std::vector<Passage> passages_;
    std::unordered_map<std::string, std::size_t> passage_places_;
    /// Places of what the text that is being read has had so far.
    /// @{
    std::vector<std::size_t> lists_read_;
    std::vector<std::size_t> passages_read_;
    /// @}
};

/// What a search is of: a file of sessions is of use only where all of this is the same.
struct SearchIdentity {
    /// Version of this program.
    std::string program;
    /// Name of the ad, for people.
    std::string ad;
    /// Its number among those of a tag; 0 if there is only one.
    std::size_t number = 0;
    /// Name of the device; empty for the scenario's own.
    std::string device;
    /// The scenario, on the device, as text.
    std::string scenario;
    bool guard = false;
    std::size_t depth = 0;
    double policy_seconds = 0;

    bool operator==(const SearchIdentity&) const = default;
};

/// The sessions of a search, with what it is of: a part of a file. A file has one for each ad and device.
struct SearchPart {
    SearchIdentity identity;
    /// Sessions, at most.
    std::size_t budget = 0;
    /// Number of the shard from 1, and how many there are.
    std::size_t shard = 1;
    std::size_t shards = 1;
    SessionStore sessions = {};
};

/// Lines of JSON: a heading, the sessions, and an end.
void write_part(std::string& out, const SearchPart& part);

/// Whether a text begins as write_part() does.
bool is_search_part(std::string_view text);

/// @param file name for messages
/// @throws InputError for anything but whole parts, and for those that another build of this program has written
std::vector<SearchPart> read_parts(std::string_view text, const std::string& file);

} // namespace qoro
