#pragma once

#include "app/SimulatedAd.h"
#include "workbench/explore/Search.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace CLI
{
class App;
}

namespace qoro
{

struct Explored;

/// The command line of `qoro-ad explore`.
struct ExploreOptions {
    /// An ad file, an ad's folder, a tag or a scenario; empty with jsonl.
    std::string file;
    /// How the scenario of an ad is made.
    SimulatedAdOptions ad;
    /// The scenarios of a tag's ads for a device; throws InputError. Empty: this build cannot resolve a tag.
    std::function<std::vector<std::string>(const AdInput& tag, const std::optional<DeviceModel>& device)> ads_of_tag;
    /// As the user named them; none: the scenario's own.
    std::vector<std::string> devices;
    SearchOptions search;
    bool guard = false;
    bool json = false;
    /// Whether ads are read from standard input, a line each.
    bool jsonl = false;
    /// Whether a shard was chosen.
    bool sharded = false;
    /// Where the courses of the findings are written; empty for nowhere.
    std::string folder;
    /// Where the sessions are kept; empty for nowhere.
    std::string state;
};

/// The command line of `qoro-ad merge`.
struct MergeOptions {
    std::vector<std::string> files;
    unsigned jobs = 1;
    bool json = false;
    /// Where the courses of the findings are written; empty for nowhere.
    std::string folder;
    /// The catalogue whose results these are; empty: not compared.
    std::string list;
};

/// Adds the command's description, options and arguments.
/// @{
void add_explore_options(CLI::App& command, ExploreOptions& options);
void add_merge_options(CLI::App& command, MergeOptions& options);
/// @}

/// Explores ads and writes what was found to standard output.
/// @return the exit status: 0 without a finding, 1 with findings; 0 for a catalogue and for a shard
/// @throws InputError for unusable input
int explore_command(const ExploreOptions& options);

/// Puts shards, or the results of a catalogue, together and writes them to standard output.
/// @return the exit status: 0 without a finding, 1 with findings
/// @throws InputError for unusable input, and for input that is not whole
int merge_command(const MergeOptions& options);

/// Prints searches of an ad, with the scenarios of their findings in a folder.
/// @param folder empty: no scenarios are written
/// @return the exit status
int print_explored(const std::string& id, std::vector<Explored>& searches, bool json, const std::string& folder);

} // namespace qoro
