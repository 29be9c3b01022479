#pragma once

#include "app/SimulatedAd.h"
#include "platform/Geometry.h"
#include "platform/Ports.h"

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace CLI
{
class App;
}

namespace qoro
{

/// The command line of `qoro-ad shrink`.
struct ShrinkCommandOptions {
    /// A scenario, an ad, an ad's folder, a VAST tag, or "-" for standard input.
    std::string input;
    /// Id of a rule, or an expression.
    std::string condition;
    /// File that the smaller scenario is written to; "-" for standard output.
    std::string out_file = "-";
    /// JSON paths of the scenario that are kept.
    std::vector<std::string> kept;
    /// Sessions, at most.
    std::size_t budget = 100'000;
    /// For a rule: seconds after which the viewer must be able to close the ad.
    double policy_seconds = 15;
    /// How the scenario of an ad or a tag is made.
    SimulatedAdOptions ad;
    /// As CheckCommandOptions::measure.
    std::function<CGSize(const std::string& text, const FontSpec& font)> measure = {};
};

/// Adds the command's description, options and arguments.
/// @param options outlives the parsing
void add_shrink_options(CLI::App& command, ShrinkCommandOptions& options);

/// Writes the smallest scenario for which a condition still holds.
/// @return the exit status: 0, or 1 if the condition does not hold in the first place
/// @throws InputError for unusable input, and for a file that cannot be written
int shrink_command(const ShrinkCommandOptions& options);

} // namespace qoro
