#include "app/Explore.h"

#include "formats/DeviceModels.h"

#include <CLI/CLI.hpp>

#include <charconv>
#include <sstream>

namespace qoro
{

namespace
{

constexpr unsigned MostJobs = 256;

constexpr const char* Description = "Search everything that can happen to an ad for what a viewer must not meet";

constexpr const char* Advice =
    "The search taps every control that can be tapped, turns the device, leaves and returns, interrupts, stalls and\n"
    "breaks the video and gives the page's commands, at every time at which something changes, and tries the shortest\n"
    "courses first. It finds traps, late closes, what is left after the close, and violated rules of qoro-ad check,\n"
    "each with the shortest course. docs/explore.md describes it; docs/scale.md spreads it over machines.\n\n"
    "Examples:\n"
    "  qoro-ad explore ad.json                              to three moves and 20,000 sessions\n"
    "  qoro-ad explore ad.json --depth 2 --jobs 4           shorter courses, on four threads; the same output\n"
    "  qoro-ad explore ad.json --out found                  and a scenario of each finding, for simulate\n"
    "  qoro-ad explore ad.json --device ipad-pro-11,375x667  on a tablet, then on a phone\n"
    "  qoro-ad explore ad.json --state search.jsonl         goes on where the last run with this file ended\n"
    "  qoro-ad explore ad.json --shard 1/4 >1.jsonl         a quarter of the search, for qoro-ad merge\n"
    "  qoro-ad explore --jsonl <list >results.jsonl         an ad a line, a result a line\n\n"
    "Exit status: 0 nothing was found; 1 something was found; 2 the input or an option is not usable (one line on\n"
    "standard error says what, where and what was expected). With --shard and --jsonl, 0 or 2.\n";

constexpr const char* MergeDescription = "Put the shards of a search, or the results of a catalogue, together";

constexpr const char* MergeAdvice =
    "Of shards, the output is that of the whole search. Of a catalogue's results, all lines in the order of their "
    "ids.\n"
    "A missing shard, and a part or a result that is there twice, is an error. docs/scale.md has an example.\n\n"
    "Examples:\n"
    "  qoro-ad merge 1.jsonl 2.jsonl              the shards of qoro-ad explore ad.json --shard\n"
    "  qoro-ad merge results-*.jsonl --list list  the results of qoro-ad explore --jsonl; says which ads lack one\n\n"
    "Exit status: 0 nothing was found; 1 something was found; 2 the input is not usable or not whole.\n";

bool add_devices(const std::string& text, std::vector<std::string>& devices)
{
    if (device_model(text)) {
        devices.push_back(text);
        return true;
    }
    std::istringstream list(text);
    std::size_t count = 0;
    for (std::string each; std::getline(list, each, ','); ++count) {
        if (!device_model(each))
            return false;
        devices.push_back(each);
    }
    return count > 0;
}

/// "2/4": the second of four.
bool set_shard(const std::string& text, SearchOptions& search)
{
    const char* const end = text.data() + text.size();
    const auto shard = std::from_chars(text.data(), end, search.shard);
    if (shard.ec != std::errc() || shard.ptr == end || *shard.ptr != '/')
        return false;
    const auto shards = std::from_chars(shard.ptr + 1, end, search.shards);
    constexpr std::size_t MostShards = 1'000'000;
    if (shards.ec != std::errc() || shards.ptr != end || search.shard < 1 || search.shard > search.shards ||
        search.shards > MostShards)
        return false;
    --search.shard;
    return true;
}

CLI::Option* add_format_option(CLI::App& command, bool& json)
{
    return command
        .add_option_function<std::string>(
            "--format",
            [&json](const std::string& name) {
                if (name != "text" && name != "json")
                    throw CLI::ValidationError("--format: expected text or json, got \"" + name + "\"");
                json = name == "json";
            },
            "Text to read, or one JSON object in one line; text by default")
        ->type_name("text|json");
}

CLI::Option* add_out_option(CLI::App& command, std::string& folder)
{
    return command.add_option("--out", folder, "Writes a scenario of each finding into this folder")
        ->type_name("FOLDER");
}

void add_jobs_option(CLI::App& command, unsigned& jobs)
{
    command.add_option("--jobs", jobs, "Threads; the output does not depend on it")
        ->check(CLI::Range(1U, MostJobs))
        ->capture_default_str();
}

} // namespace

void add_explore_options(CLI::App& command, ExploreOptions& options)
{
    SearchOptions& search = options.search;
    command.description(Description);
    command.footer(Advice);
    auto* ad = command
                   .add_option("ad", options.file,
                               "An ad file, an ad's folder, a VAST tag or a scenario; - for standard input")
                   ->type_name("AD");
    command
        .add_option_function<std::vector<std::string>>(
            "--device",
            [&options](const std::vector<std::string>& names) {
                for (const std::string& name : names)
                    if (!add_devices(name, options.devices))
                        throw CLI::ValidationError(
                            "--device: expected a model's name as for play, or a size like 375x812, got \"" + name +
                            "\"");
            },
            "A device, or several with commas: models' names as for play, or sizes of screens in points; each has a "
            "search of its own. Repeatable")
        ->type_name("MODEL|375x812")
        ->allow_extra_args(false);
    command.add_option("--depth", search.depth, "Moves in a course, at most")
        ->check(CLI::Range(0, 64))
        ->capture_default_str();
    command.add_option("--budget", search.sessions, "Sessions, at most")
        ->check(CLI::Range(std::size_t{1}, std::size_t{1'000'000'000}))
        ->capture_default_str();
    command.add_option("--seconds", search.seconds, "Ends the search after this time; the output then depends on it")
        ->check(CLI::Range(0.0, 1e6));
    command
        .add_option("--policy-seconds", search.policy_seconds,
                    "A close must be reachable this many seconds after the opening")
        ->check(CLI::Range(0.0, 1e6))
        ->capture_default_str();
    add_jobs_option(command, search.jobs);
    command.add_flag("--guard", options.guard, "With the close guard and the request limit, as a viewer has them");
    auto* format = add_format_option(command, options.json);
    auto* out = add_out_option(command, options.folder);
    auto* verify = command
                       .add_option("--verify-merge", search.verify,
                                   "Explores so many states again that two courses reached, and compares both futures")
                       ->type_name("STATES");
    auto* state =
        command
            .add_option("--state", options.state,
                        "Keeps the sessions in this file: the next run with it goes on, with another --budget "
                        "or --seconds too")
            ->type_name("FILE");
    auto* shard = command
                      .add_option_function<std::string>(
                          "--shard",
                          [&options](const std::string& text) {
                              if (!set_shard(text, options.search))
                                  throw CLI::ValidationError("--shard: expected one of how many, such as 1/4, got \"" +
                                                             text + "\"");
                              options.sharded = true;
                          },
                          "One of so many parts of the search, as lines of JSON for qoro-ad merge; with --jsonl, every "
                          "so manieth line")
                      ->type_name("I/N");
    auto* jsonl =
        command.add_flag("--jsonl", options.jsonl,
                         "Reads ads from standard input, a line each (a path, {\"ad\": path, \"id\": …}, an ad "
                         "or a scenario), and writes a line of JSON for each");
    jsonl->excludes(ad)->excludes(state)->excludes(out)->excludes(format);
    shard->excludes(out)->excludes(format)->excludes(verify);
}

void add_merge_options(CLI::App& command, MergeOptions& options)
{
    command.description(MergeDescription);
    command.footer(MergeAdvice);
    command
        .add_option("files", options.files, "Output of explore --shard, or of explore --jsonl; - for standard input")
        ->type_name("FILE")
        ->required();
    add_jobs_option(command, options.jobs);
    add_format_option(command, options.json);
    add_out_option(command, options.folder);
    command.add_option("--list", options.list, "The catalogue: every ad of it must have a result")->type_name("FILE");
}

} // namespace qoro
