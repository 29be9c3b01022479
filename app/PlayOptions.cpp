#include "app/PlayOptions.h"

#include "app/LogOption.h"
#include "formats/DeviceModels.h"
#include "formats/HostSetup.h"
#include "platform/UIKit.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <array>
#include <charconv>
#include <string_view>

namespace qoro
{

namespace
{
struct NamedOrientation {
    std::string_view name;
    std::string_view number;
    UIDeviceOrientation orientation;
};
constexpr auto Orientations = std::to_array<NamedOrientation>({
    {"portrait", "1", UIDeviceOrientationPortrait},
    {"upside-down", "2", UIDeviceOrientationPortraitUpsideDown},
    {"landscape-left", "3", UIDeviceOrientationLandscapeLeft},
    {"landscape-right", "4", UIDeviceOrientationLandscapeRight},
});

std::string model_names()
{
    std::string names;
    for (const DeviceModel& model : device_models())
        names += std::string(model.name) + ", ";
    return names;
}

std::string check_device(const std::string& name)
{
    return device_model(name) ? ""
                              : "expected one of " + model_names() + "or a size like 375x812, got \"" + name + "\"";
}

std::string check_orientation(const std::string& name)
{
    if (device_orientation(name))
        return "";
    return "expected one of portrait, upside-down, landscape-left, landscape-right, got \"" + name + "\"";
}

std::string check_store_page(const std::string& pattern)
{
    return is_store_page(pattern)
               ? ""
               : "expected an address that begins with http:// or https://, with {id} in it, got \"" + pattern + "\"";
}

/// Adds an option that selects the machine's program or a screen that shows what the program would receive.
void add_program_option(CLI::App& command, const std::string& name, bool& fake, const std::string& description)
{
    command
        .add_option_function<std::string>(
            name, [&fake](const std::string& which) { fake = which == "fake"; }, description)
        ->type_name("system|fake")
        ->check(CLI::Validator(
            [](const std::string& which) {
                return which == "system" || which == "fake" ? "" : "expected system or fake, got \"" + which + "\"";
            },
            ""));
}

std::string check_seconds(const std::string& text)
{
    double number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool good = error == std::errc() && end == text.data() + text.size() && number >= 0 && number <= 1e6;
    return good ? "" : "expected seconds, got \"" + text + "\"";
}

std::string check_megabytes(const std::string& text)
{
    double number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool good = error == std::errc() && end == text.data() + text.size() && number >= 1 && number <= 1e6;
    return good ? "" : "expected megabytes from 1 to 1000000, got \"" + text + "\"";
}
} // namespace

void add_play_options(CLI::App& command, PlayOptions& options)
{
    command.footer(
        "Exit status: 0 an ad was shown; 1 nothing was shown, a file of the ad is missing (see --lenient) or a\n"
        "picture could not be written; 2 the ad, another file or an option is not usable.\n");
    const CLI::Validator seconds(check_seconds, "");
    command
        .add_option("ad", options.ad_file,
                    "The ad: a JSON file with its properties under their own names, or a folder with the file ad.json; "
                    "or a VAST tag, a file or an address of http or https")
        ->type_name("AD")
        ->required();
    command
        .add_option("--device", options.device, "The device: " + model_names() + "or the size of its screen in points")
        ->type_name("MODEL|375x812")
        ->check(CLI::Validator(check_device, ""));
    command.add_option("--orientation", options.orientation, "How the device is held when the ad opens")
        ->type_name("portrait|upside-down|landscape-left|landscape-right")
        ->check(CLI::Validator(check_orientation, ""));
    command.add_flag("--lenient", options.lenient, "Exit with 0 although a file of the ad's own folder is missing");
    command.add_flag("--safe-areas", options.safe_areas, "Mark what the device's camera, corners and bars may cover");
    auto* phone = command.add_flag("--phone", options.phone, "The device is a phone, whatever its size");
    command.add_flag("--tablet", options.tablet, "The device is a tablet, whatever its size")->excludes(phone);
    command.add_flag("--locked-landscape", options.locked_landscape, "The host application is locked to landscape");
    command.add_option("--host", options.host_file, "The device and the host around the ad: a JSON file")
        ->type_name("FILE");
    command
        .add_option("--store-page", options.store_page,
                    "The address at which the host's store shows an item, {id} being the item's")
        ->type_name("ADDRESS")
        ->check(CLI::Validator(check_store_page, ""));
    add_program_option(command, "--calendar", options.fake_calendar,
                       "Where calendar events go: to the machine's calendar, or to a screen that shows them");
    add_program_option(command, "--composer", options.fake_composer,
                       "Where messages go: to the machine's message composer, or to a screen that shows them");
    add_program_option(command, "--store", options.fake_store,
                       "Where store items go: to the store's page or program, or to a screen that shows them");
    command.add_flag("--mute-output", options.mute_output, "Play without a sound; the ad's volume works all the same");
    command.add_flag("--system-volume", options.system_volume,
                     "The ad's volume is the machine's, not only this program's");
    command.add_flag("--no-web-sandbox", options.no_web_sandbox,
                     "Run the page outside a sandbox, for trusted pages on a machine without one");
    command
        .add_option("--page-memory", options.page_memory,
                    "End the page when its process uses more than so many megabytes (512)")
        ->type_name("MB")
        ->check(CLI::Validator(check_megabytes, ""));
    command
        .add_option("--page-processor", options.page_processor,
                    "End the page when its process uses more than one processor for so many seconds while the video "
                    "drops frames (no limit)")
        ->type_name("SECONDS")
        ->check(seconds);
    command.add_flag("--allow-private-network", options.allow_private_network,
                     "The ad and its page reach private networks, such as a studio's own servers");
    command.add_flag("--inspect", options.inspect, "Open the page's inspector, in a window of its own");
    auto* watch = command.add_flag("--watch", options.watch, "Open the ad again whenever one of its files changes");
    command.add_option("--for", options.seconds, "Close the ad after so many seconds")
        ->type_name("SECONDS")
        ->check(seconds);
    command.add_option("--steps", options.steps_file, "What the viewer does, and when: a JSON file")->type_name("FILE");
    add_log_option(command, options.log);
    command
        .add_option("--trace-startup", options.startup_file,
                    "Write down when each step of the start was reached, until the first picture")
        ->type_name("FILE");
    command.add_option("--trace", options.trace_file, "Write down what happens; - for standard output")
        ->type_name("FILE");
    auto* record = command
                       .add_option("--record", options.record_file,
                                   "Record the session, for qoro-ad simulate to replay; identifiers are redacted, in "
                                   "the recording and in the trace")
                       ->type_name("FILE")
                       ->excludes(watch);
    command
        .add_flag("--record-identifiers", options.record_identifiers,
                  "Leave identifiers of the device, the viewer and the session in the recording and in the trace")
        ->needs(record);
    auto* snapshots =
        command.add_option("--snapshot", options.snapshots, "Take pictures of the screen at these times: 2,6")
            ->delimiter(',')
            ->type_name("SECONDS,...")
            ->check(seconds);
    auto* out = command.add_option("--out", options.out_folder, "The folder for the pictures")->type_name("DIR");
    snapshots->needs(out);
}

std::optional<UIDeviceOrientation> device_orientation(const std::string& name)
{
    const auto* row = std::ranges::find_if(
        Orientations, [&name](const NamedOrientation& one) { return one.name == name || one.number == name; });
    if (row == Orientations.end())
        return std::nullopt;
    return row->orientation;
}

} // namespace qoro
