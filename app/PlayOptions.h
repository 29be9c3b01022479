#pragma once

#include "platform/Geometry.h"

#include <optional>
#include <string>
#include <vector>

namespace CLI
{
class App;
}

namespace qoro
{

/// What `qoro-ad play` was told on its command line.
struct PlayOptions {
    std::string ad_file;
    /// A model's name or "375x812"; empty when it was left out.
    std::string device;
    /// As device_orientation() knows it.
    std::string orientation = "portrait";
    bool phone = false;
    bool tablet = false;
    bool locked_landscape = false;
    /// Empty for none, like every file below.
    std::string host_file;
    /// Empty for the host file's, or the usual one.
    std::string store_page;
    bool mute_output = false;
    bool system_volume = false;
    bool no_web_sandbox = false;
    /// Megabytes that the page's process may use; absent for the platform's own limit.
    std::optional<double> page_memory;
    bool allow_private_network = false;
    /// Absent: until the ad is closed.
    std::optional<double> seconds;
    std::string steps_file;
    /// "-" for standard output.
    std::string trace_file;
    /// Seconds.
    std::vector<double> snapshots;
    std::string out_folder;
};

/// Adds the command's options; they are filled when the command line is parsed.
/// @param options outlives the parsing
void add_play_options(CLI::App& command, PlayOptions& options);

/// A device by its screen.
struct DeviceModel {
    /// Points, held upright.
    CGSize screen;
    bool phone = true;
};

/// A model by its name, or by a size ("375x812"); absent for any other text. A short edge of 600 points and more makes
/// a tablet.
std::optional<DeviceModel> device_model(const std::string& name);

/// A UIDeviceOrientation by its name on the command line, or its number; absent for any other text.
std::optional<int> device_orientation(const std::string& name);

} // namespace qoro
