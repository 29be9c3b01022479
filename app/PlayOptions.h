#pragma once

#include "platform/QoroAdManager.h"

#include <optional>
#include <string>
#include <vector>

namespace CLI
{
class App;
}

namespace qoro
{

/// The command line of `qoro-ad play`.
struct PlayOptions {
    std::string ad_file;
    /// A model's name or a size ("375x812"); empty when not given.
    std::string device;
    /// A name or number for device_orientation().
    std::string orientation = "portrait";
    /// Whether to mark what the model's camera, corners and bars may cover.
    bool safe_areas = false;
    /// Whether files that the ad lacks leave the exit status as it is.
    bool lenient = false;
    bool phone = false;
    bool tablet = false;
    bool locked_landscape = false;
    /// Empty for none, as for every file below.
    std::string host_file;
    /// Empty for the host file's pattern, or the default.
    std::string store_page;
    /// Programs that a screen of this program replaces.
    /// @{
    bool fake_calendar = false;
    bool fake_composer = false;
    bool fake_store = false;
    /// @}
    bool mute_output = false;
    bool system_volume = false;
    bool no_web_sandbox = false;
    /// Memory limit of the page's process, megabytes; absent for the platform's default.
    std::optional<double> page_memory;
    /// Seconds for which the page's process may starve the video; absent for no limit.
    std::optional<double> page_processor;
    bool allow_private_network = false;
    /// Opens the page's inspector.
    bool inspect = false;
    /// Opens the ad again whenever one of its files changes.
    bool watch = false;
    /// Time after which to end, seconds; absent to wait for the ad's close.
    std::optional<double> seconds;
    std::string steps_file;
    /// Level from which lines of the ad's log go to standard error; absent for none.
    std::optional<ZulixLogTag> log = ZulixLogTagOfWarnning;
    /// "-" for standard output.
    std::string trace_file;
    /// Receives the times of the program's start.
    std::string startup_file;
    /// Where the session is recorded; empty for nowhere.
    std::string record_file;
    /// Whether the recording and the trace hold identifiers as they are.
    bool record_identifiers = false;
    /// Times of pictures, seconds.
    std::vector<double> snapshots;
    std::string out_folder;
};

/// Adds the command's options, which parsing fills.
/// @param options outlives the parsing
void add_play_options(CLI::App& command, PlayOptions& options);

/// A UIDeviceOrientation by its command-line name or its number; absent for any other text.
std::optional<UIDeviceOrientation> device_orientation(const std::string& name);

} // namespace qoro
