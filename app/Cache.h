#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace CLI
{
class App;
}

namespace qoro
{

/// The command line of `qoro-ad cache`.
struct CacheOptions {
    enum class Do { List, Prefetch, Empty };
    Do what = Do::List;
    /// Empty for the user's own cache folder.
    std::string folder;
    /// Print the list as JSON, one object per line.
    bool json = false;
    /// Addresses of the videos to prefetch.
    std::vector<std::string> addresses;
    /// Limit of all copies together, megabytes; absent for the cache's default.
    std::optional<std::uint64_t> most_megabytes;
};

/// Adds the command's description, subcommands and options.
/// @param options outlives the parsing
void add_cache_options(CLI::App& command, CacheOptions& options);

/// Lists, fills or empties the video cache.
/// @return the exit status: 0, or 1 when a video could not be fetched; errors are on standard error
/// @throws InputError for an invalid address
/// @throws std::system_error when the folder is unusable
int cache_command(const CacheOptions& options);

} // namespace qoro
