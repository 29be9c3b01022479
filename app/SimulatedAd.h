#pragma once

#include "formats/AdInput.h"
#include "formats/AdScenario.h"

#include <functional>
#include <optional>
#include <string>

namespace CLI
{
class App;
class Option;
} // namespace CLI

namespace qoro
{

/// The options of `qoro-ad simulate` for an ad without a scenario.
struct SimulatedAdOptions {
    /// Without an ad file there is no such ad.
    AdScenarioParts parts;
    /// Resolves a tag for a device, and throws InputError. Empty: this build cannot.
    std::function<TagDocuments(const AdInput& tag, const std::optional<DeviceModel>& device)> fetch_tag = {};
    /// Where the scenario is written; empty for nowhere.
    std::string scenario_file;
    /// Where the trace is written; empty and "-" for standard output.
    std::string trace_file;
};

/// Adds --device, whose value parsing writes.
/// @param device outlives the parsing
/// @param what the device is, for the help
CLI::Option* add_device_option(CLI::App& command, std::optional<DeviceModel>& device,
                               const std::string& what = "The device");

/// Adds the options, which parsing fills.
/// @param options outlives the parsing
void add_simulated_ad_options(CLI::App& command, SimulatedAdOptions& options);

} // namespace qoro
