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

/// What `qoro-ad cache` was asked for.
struct CacheOptions {
    enum class Do { List, Prefetch, Empty };
    Do what = Do::List;
    /// Empty for the user's own.
    std::string folder;
    /// A list as JSON, an object a line.
    bool json = false;
    /// Of the videos to prefetch.
    std::vector<std::string> addresses;
    /// Megabytes of all copies together; absent for the cache's own bound.
    std::optional<std::uint64_t> most_megabytes;
};

/// Gives the command its description, subcommands and options.
/// @param options outlives the parsing
void add_cache_options(CLI::App& command, CacheOptions& options);

/// Lists, fills or empties the video cache.
/// @return the exit status: 0, or 1 when a video could not be had; complaints stand on standard error
/// @throws InputError for an address that is none
/// @throws std::system_error when the folder can't be used
int cache_command(const CacheOptions& options);

} // namespace qoro
