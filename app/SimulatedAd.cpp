#include "app/SimulatedAd.h"

#include "formats/InputError.h"

#include <CLI/CLI.hpp>

#include <array>
#include <charconv>
#include <optional>
#include <string_view>

namespace qoro
{

namespace
{

constexpr double LongestTime = 1e6;

/// A time in seconds, 0 to LongestTime; absent for any other text.
std::optional<double> seconds_of(std::string_view text)
{
    double number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool good = error == std::errc() && end == text.data() + text.size() && number >= 0 && number <= LongestTime;
    return good ? std::optional(number) : std::nullopt;
}

struct Setting {
    std::string_view key;
    /// Whether there is a value at all.
    bool given = false;
    std::string_view value;
};

Setting setting_of(std::string_view text)
{
    const std::size_t equals = text.find('=');
    if (equals == std::string_view::npos)
        return {text, false, {}};
    return {text.substr(0, equals), true, text.substr(equals + 1)};
}

/// "2", or "2@5" for an interruption at second 5.
std::optional<AdFaults::Stall> stall_of(std::string_view text)
{
    const std::size_t mark = text.find('@');
    const auto lasts = seconds_of(text.substr(0, mark));
    if (!lasts)
        return std::nullopt;
    if (mark == std::string_view::npos)
        return AdFaults::Stall{.seconds = *lasts};
    const auto at = seconds_of(text.substr(mark + 1));
    return at ? std::optional(AdFaults::Stall{.seconds = *lasts, .at = at}) : std::nullopt;
}

/// @return whether the setting is one of a video
bool set_video(AdFaults& faults, const Setting& setting)
{
    if (setting.key == "fails") {
        faults.fails = true;
        return true;
    }
    if (setting.key == "stalls") {
        const auto stall = stall_of(setting.value);
        if (stall)
            faults.stalls.push_back(*stall);
        return stall.has_value();
    }
    const auto seconds = seconds_of(setting.value);
    if (!seconds)
        return false;
    if (setting.key == "duration" && *seconds > 0)
        faults.duration = seconds;
    else if (setting.key == "loads")
        faults.load_after = seconds;
    else if (setting.key == "fails-at")
        faults.fails_at = seconds;
    else
        return false;
    return true;
}

/// @return whether the setting is one of an answer
bool set_answer(AdFaults::Answer& answer, const Setting& setting)
{
    if (setting.key == "fails") {
        answer.failure = setting.value.empty() ? "fails" : std::string(setting.value);
        return true;
    }
    const auto seconds = seconds_of(setting.value);
    if (setting.key != "after" || !seconds)
        return false;
    answer.after = *seconds;
    return true;
}

void add_answer_option(CLI::App& command, const std::string& name, const std::string& what, const std::string& property,
                       AdFaults& faults, CLI::Option* needed)
{
    command
        .add_option_function<std::vector<std::string>>(
            name,
            [&faults, name, property](const std::vector<std::string>& settings) {
                for (const std::string& each : settings)
                    if (!set_answer(faults.answers[property], setting_of(each)))
                        throw CLI::ValidationError(name + ": expected fails, fails=REASON or after=SECONDS, got \"" +
                                                   each + "\"");
            },
            "What happens to " + what + ": it fails, or arrives so many seconds later; repeatable")
        ->type_name("fails|fails=REASON|after=SECONDS")
        ->allow_extra_args(false)
        ->needs(needed);
}

} // namespace

CLI::Option* add_device_option(CLI::App& command, std::optional<DeviceModel>& device, const std::string& what)
{
    return command
        .add_option_function<std::string>(
            "--device",
            [&device](const std::string& name) {
                device = device_model(name);
                if (!device)
                    throw CLI::ValidationError("--device: expected a model's name as for play, or a size like 375x812, "
                                               "got \"" +
                                               name + "\"");
            },
            what + ": a model's name as for play, or the size of its screen in points")
        ->type_name("MODEL|375x812");
}

void add_simulated_ad_options(CLI::App& command, SimulatedAdOptions& options)
{
    AdFaults& faults = options.parts.faults;
    auto* ad = command
                   .add_option("--ad", options.parts.ad_file,
                               "An ad or a VAST tag instead of scenarios: an ad's folder is the network, its video as "
                               "long as the file; a tag's documents are fetched first")
                   ->type_name("AD");
    command
        .add_option("--steps", options.parts.steps_file,
                    "What the viewer of --ad does: a JSON file; by default watches to the end, then closes the ad")
        ->type_name("FILE")
        ->needs(ad);
    add_device_option(command, options.parts.device, "The device of --ad")->needs(ad);
    command
        .add_option_function<std::vector<std::string>>(
            "--video",
            [&faults](const std::vector<std::string>& settings) {
                for (const std::string& each : settings)
                    if (!set_video(faults, setting_of(each)))
                        throw CLI::ValidationError(
                            "--video: expected fails, fails-at=SECONDS, stalls=SECONDS, stalls=SECONDS@POSITION, "
                            "loads=SECONDS or duration=SECONDS, got \"" +
                            each + "\"");
            },
            "What happens to the video of --ad: it never plays (fails, fails=404), fails once at a position, gets no "
            "data for some seconds in its middle or at a position, can play after so many seconds, is as long as "
            "given; repeatable")
        ->type_name("fails|fails-at=SECONDS|stalls=SECONDS@POSITION|loads=SECONDS|duration=SECONDS")
        ->allow_extra_args(false)
        ->needs(ad);
    add_answer_option(command, "--page", "the page of --ad", "strWebViewUrl", faults, ad);
    add_answer_option(command, "--icon", "the brand icon of --ad", "strBrandIconUrl", faults, ad);
    command.add_option("--write-scenario", options.scenario_file, "Write the scenario made of --ad, to go on from")
        ->type_name("FILE")
        ->needs(ad);
    command.add_option("--trace", options.trace_file, "Write the trace of --ad to a file; - for standard output")
        ->type_name("FILE")
        ->needs(ad);
}

} // namespace qoro
