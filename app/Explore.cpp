#include "app/Explore.h"

#include "app/WorkbenchInput.h"
#include "formats/InputError.h"
#include "workbench/explore/Setup.h"

#include <CLI/CLI.hpp>

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>

namespace qoro
{

namespace
{

constexpr unsigned MostJobs = 256;
constexpr int Findings = 1;

constexpr const char* Description = "Search everything that can happen to an ad for what a viewer must not meet";

constexpr const char* Advice =
    "The search taps every control that can be tapped, turns the device, leaves and returns, interrupts, stalls and\n"
    "breaks the video and gives the page's commands, at every time at which something changes, and tries the shortest\n"
    "courses first. docs/explore.md describes it.\n\n"
    "Examples:\n"
    "  qoro-ad explore ad.json                              to three moves and 20,000 sessions\n"
    "  qoro-ad explore ad.json --depth 2 --jobs 4           shorter courses, on four threads; the same output\n"
    "  qoro-ad explore ad.json --out found                  and a scenario of each finding, for simulate\n"
    "  qoro-ad explore ad.json --device 'iPad Pro 11-inch'  on a tablet\n\n"
    "Exit status: 0 nothing was found; 1 something was found; 2 the input or an option is not usable (one line on\n"
    "standard error says what, where and what was expected).\n";

std::string number(std::size_t value)
{
    return std::to_string(value);
}

void write_file(const std::filesystem::path& path, const std::string& text)
{
    std::ofstream file(path, std::ios::binary);
    file << text;
    file.close();
    if (!file)
        throw InputError(path.string(), "", "can't be written");
}

std::string file_name(std::size_t n, const SearchFinding& finding)
{
    return number(n + 1) + "-" + finding.rule + ".json";
}

void print(const std::string& line)
{
    std::fwrite(line.data(), 1, line.size(), stdout);
    std::fputc('\n', stdout);
}

void print_findings(const SearchSetup& setup, const SearchResult& result, const std::string& folder)
{
    for (std::size_t n = 0; n < result.findings.size(); ++n) {
        const SearchFinding& finding = result.findings[n];
        print(finding.rule + ": " + finding.text);
        std::string course = "  " + in_words(setup.run, finding.course);
        if (finding.others > 0)
            course += "; and " + number(finding.others) + (finding.others == 1 ? " other course" : " other courses");
        print(course);
        if (folder.empty())
            continue;
        const std::filesystem::path path = std::filesystem::path(folder) / file_name(n, finding);
        write_file(path, scenario_of_course(setup, finding.course, finding.until).text());
        print("  " + path.string());
    }
}

void print_wrong_merges(const SearchSetup& setup, const SearchResult& result)
{
    for (const WrongMerge& wrong : result.wrong_merges) {
        print("wrong-merge: Two courses reach the same state, but go on differently.");
        print("  " + in_words(setup.run, wrong.first) + ": " + wrong.first_line);
        print("  " + in_words(setup.run, wrong.second) + ": " + wrong.second_line);
    }
}

} // namespace

void add_explore_options(CLI::App& command, ExploreOptions& options)
{
    SearchOptions& search = options.search;
    command.description(Description);
    command.footer(Advice);
    command.add_option("ad", options.file, "An ad file, an ad's folder or a scenario; - for standard input")
        ->type_name("AD")
        ->required();
    add_device_option(command, options.ad.parts.device);
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
    command.add_option("--jobs", search.jobs, "Threads; the output does not depend on it")
        ->check(CLI::Range(1U, MostJobs))
        ->capture_default_str();
    command.add_flag("--guard", options.guard, "With the close guard and the request limit, as a viewer has them");
    command.add_option("--out", options.folder, "Writes a scenario of each finding into this folder")
        ->type_name("FOLDER");
    command
        .add_option("--verify-merge", search.verify,
                    "Explores so many states again that two courses reached, and compares both futures")
        ->type_name("STATES");
}

int explore_command(const ExploreOptions& options)
{
    const BaseScenario base = read_base_scenario(options.file, options.ad);
    if (base.kind == InputKind::Tag)
        throw InputError(options.file, "",
                         "a tag can't be explored; import it with qoro-ad import, and explore the ad");
    ScenarioText scenario = base.scenario;
    if (options.ad.parts.device)
        scenario.set_device(*options.ad.parts.device);
    const SearchSetup setup = search_setup(scenario, options.guard);
    if (!options.folder.empty()) {
        std::error_code failed;
        std::filesystem::create_directories(options.folder, failed);
        if (failed)
            throw InputError(options.folder, "", "can't be created: " + failed.message());
    }
    const SearchResult result = search(setup.run, options.search);

    print(number(result.sessions) + " sessions, " + number(result.states) + " distinct states, " +
          number(result.merged) + " courses led to known ones; all courses of up to " + number(result.complete_depth) +
          (result.complete_depth == 1 ? " move" : " moves"));
    if (result.unnamed > 0)
        print(number(result.unnamed) + " states could not be compared with others");
    if (result.worst_close) {
        std::array<char, 64> text;
        std::snprintf(text.data(), text.size(), "%.6g", static_cast<double>(*result.worst_close) / 1e6);
        print(std::string("a close is reachable after ") + text.data() +
              " s at worst: " + in_words(setup.run, result.worst_course));
    } else {
        print("no course leads to a close by itself");
    }
    print_findings(setup, result, options.folder);
    if (options.search.verify > 0)
        print(number(result.verified) + " merged states explored again, " + number(result.wrong_merges.size()) +
              " wrong");
    print_wrong_merges(setup, result);
    print("not covered:");
    for (const std::string& line : result.not_covered)
        print("  " + line);
    std::fflush(stdout);
    return result.findings.empty() && result.wrong_merges.empty() ? 0 : Findings;
}

} // namespace qoro
