#pragma once

#include "workbench/explore/SessionStore.h"

#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

namespace qoro
{

/// The sessions of a command's searches, in a file from which the next run goes on.
class SearchState
{
public:
    /// Reads the file if there is one.
    /// @param file empty: nothing is read or written
    /// @param wanted the searches, without sessions
    /// @throws InputError for a file that is none, and for that of other searches
    SearchState(std::string file, std::vector<SearchPart> wanted);

    SessionStore& store(std::size_t search) { return parts_[search].sessions; }
    /// Replaces the file; a reader sees the old one or the new one. Does nothing without a file.
    /// @throws InputError if it can't be written
    void write();
    /// As write(), unless the file was written a moment ago.
    void write_if_due();
    std::string text() const;

private:
    using Clock = std::chrono::steady_clock;

    std::string file_;
    std::vector<SearchPart> parts_;
    Clock::time_point due_;
};

/// The content of a file of sessions, of any size; "-": standard input.
/// @throws InputError if it can't be read
std::string read_sessions(const std::string& file);

/// What of two searches is not the same, for people: "the depth is 2, not 3"; empty if they are the same.
std::string difference_of(const SearchIdentity& wanted, const SearchIdentity& found);

} // namespace qoro
