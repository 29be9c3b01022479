#include "app/Import.h"

#include "desktop/GlibLoop.h"
#include "desktop/net/Reach.h"
#include "desktop/net/SoupFetcher.h"
#include "formats/DeviceModels.h"
#include "formats/InputError.h"
#include "formats/InputFile.h"
#include "platform/AddressParts.h"
#include "vast/Describe.h"
#include "vast/Reader.h"
#include "vast/Resolver.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <deque>
#include <iostream>
#include <limits>
#include <optional>

namespace qoro
{

namespace
{

constexpr const char* Description = "Resolve a VAST tag: describe it, or write it as the folder of an ad";

constexpr const char* Advice =
    "Wrappers are followed as a player follows them; no tracker is requested. docs/vast.md says what is supported.\n\n"
    "Exit status: 0; 1 the tag has no ad to write; 2 the tag is no VAST document, or an option is not usable.\n";

/// Width of the video's band in pixels.
double band_of(const std::string& device)
{
    if (device.empty())
        return vast::Band().width;
    const std::optional<DeviceModel> model = device_model(device);
    if (!model)
        throw InputError("--device", "", "expected a device's name or a size such as 375x812, got \"" + device + "\"");
    return model->screen.width * std::max(model->scale, 1.0);
}

vast::Resolution resolve(const ImportOptions& options)
{
    GlibLoop loop;
    SoupFetcher fetcher(loop);
    const vast::CommonMediaSupport support;
    const bool is_web = AddressParts(options.tag).is_web();
    // What the user's tag names may be anywhere. From there nothing may lead further inside, neither a document nor a
    // redirect.
    const ReachRule rule(NetworkZone::Public);
    std::deque<NamedHosts> named;
    vast::Resolver resolver(
        fetcher, loop, support,
        {.band = {.width = band_of(options.device)},
         .permits = [](const std::string& from,
                       const std::string& to) { return from.empty() || !leads_inward(from, to); },
         .requests = [&named](const std::string& address) { named.emplace_back(std::vector<std::string>{address}); }});
    std::optional<vast::Resolution> result;
    const auto done = [&](vast::Resolution resolution) { result = std::move(resolution); };
    if (is_web)
        resolver.resolve(options.tag, done);
    else {
        try {
            resolver.resolve_text(read_input_file(options.tag), "", done);
        } catch (const vast::DocumentError& error) {
            throw InputError(options.tag, "", error.what());
        }
    }
    loop.run_until([&] { return result.has_value(); }, std::numeric_limits<double>::infinity());
    if (result->malformed)
        throw InputError(options.tag, "", result->why);
    return std::move(*result);
}

} // namespace

void add_import_options(CLI::App& command, ImportOptions& options)
{
    command.description(Description);
    command.footer(Advice);
    command.add_option("tag", options.tag, "The tag: a file, - for standard input, or an address of http or https")
        ->type_name("TAG")
        ->required();
    command.add_flag("--describe", options.describe, "Print what the tag leads to, as a JSON object");
    command.add_option("--device", options.device, "The device whose screen decides which file of the video is chosen")
        ->type_name("NAME|WxH");
}

int import_command(const ImportOptions& options)
{
    const vast::Resolution resolution = resolve(options);
    std::cout << vast::describe(resolution) << std::flush;
    return 0;
}

} // namespace qoro
